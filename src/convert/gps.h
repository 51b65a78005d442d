// The GPS primitives every family's conversion shares: degrees to metres on
// the program's flat earth, the wrapped modulo, the satellite character, the
// lock score text and the local time of a fix.
#pragma once

#include <string>

namespace tl {

// The earth model: a flat projection around an origin with this radius.
inline constexpr double kEarthRadius = 6379137.0;
// pi as the program takes it throughout the GPS and acceleration code, in
// double precision (the float kPi of the support routines rounds it).
inline constexpr double kGpsPi = 3.141592654;

// ddmm.mmmm (sign carried by the number) to radians.
double DegsMins2Rads(double x);
// Fractional degrees to radians, doubled first and then multiplied.
double FractDegree2Rads(double v);

// East (x) and north (y) of the origin in metres; degrees-and-minutes in.
void GpsCoord(double lat, double lon, double originLat, double originLong, double& x, double& y);
// The same with fractional degrees.
void GpsCoord_FractDegree(double lat, double lon, double originLat, double originLong, double& x,
                          double& y);
// Signed east and north distance, first point less second point.
void CalcDistBetweenCoords(double lat1, double long1, double lat2, double long2, double& dx,
                           double& dy);
void CalcDistBetweenCoords_FractDegree(double lat1, double long1, double lat2, double long2,
                                       double& dx, double& dy);

// Modulo keeping the sign of a; b of 0 gives the mark 1e20 (single precision).
double FpMod(double a, double b);
// As FpMod after adding b to a until it is not negative.
double FpModPos(double a, double b);

// The satellite character of a sentence: count (-1 for none) and the mark
// carried in the character's top bit.
void ExtractSatCount(const std::string& text, int& count, bool& flag);
// The lock score sentence for a run.
std::string SatCountText(int score);
// "hh:mm:ss local time (hh:mm:ss gmt) " from the hhmmss UTC text.
std::string ExtractGPSTime(const std::string& text);
// The platform's standard time-zone bias in minutes (UTC = local + bias).
int TimeZoneBiasMinutes();
// Overrides the bias for tests; pass nullptr-like reset with UseSystemTimeZoneBias.
void SetTimeZoneBiasMinutes(int minutes);
void UseSystemTimeZoneBias();

// A number as the program writes it into a text: up to 15 significant
// digits, no exponent for ordinary magnitudes, no trailing zeros.
std::string NumberText(double value);

}  // namespace tl
