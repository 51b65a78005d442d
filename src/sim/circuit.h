// Circuits: a centreline of straights and arcs anchored at a latitude and
// longitude, resampled at a fine arc length with the curvature known at every
// point.
//
// Plane coordinates: x east, y north, metres from the anchor (the start/finish
// line). Heading in radians clockwise from +y (north), as the analysis code
// measures angles. Curvature is positive in a right-hand (clockwise) bend.
#pragma once

#include <string>
#include <vector>

namespace tl::sim {

// The earth model of the analysis code: a flat projection around an origin
// with this radius, and this value of pi in degree conversions. The simulator
// uses the same figures so that a converted position is the simulated one.
inline constexpr double kEarthRadius = 6379137.0;
inline constexpr double kPi = 3.141592654;
inline constexpr double kGravity = 9.80665;

double DegToRad(double deg);
double RadToDeg(double rad);
// Plane position around an origin to latitude and longitude in degrees: the
// exact inverse of x = (long - long0) * R * cos(lat), y = (lat - lat0) * R.
void PlaneToLatLon(double x, double y, double lat0, double lon0, double& lat, double& lon);
void LatLonToPlane(double lat, double lon, double lat0, double lon0, double& x, double& y);

struct Segment {
    double length = 0.0;  // metres along the centreline
    double radius = 0.0;  // 0 for a straight; > 0 bends right, < 0 bends left
};

struct CircuitPoint {
    double s = 0.0;
    double x = 0.0;
    double y = 0.0;
    double heading = 0.0;
    double curvature = 0.0;
};

struct Circuit {
    std::string name;
    double originLat = 0.0;  // degrees, the start/finish line
    double originLon = 0.0;
    double step = 0.25;  // metres between points
    double length = 0.0;
    std::vector<Segment> segments;     // after closure
    std::vector<CircuitPoint> points;  // points[0] at s = 0; the lap closes at s = length

    // Interpolated point at any arc length; s is wrapped into [0, length).
    CircuitPoint At(double s) const;
    // Largest |curvature| between s - reach and s + reach.
    double MaxCurvatureNear(double s, double reach) const;
};

// Builds the centreline. The bends must turn through one full turn in total;
// the remaining gap in position is closed by changing the lengths of the
// straights (each in proportion to the square of its length), so the lap
// ends exactly where it began. Returns false with a message when the
// shape cannot be closed.
bool BuildCircuit(const std::string& name, double lat, double lon, double startHeading,
                  std::vector<Segment> segments, double step, Circuit& out, std::string& error);

// Built-in shapes: "kart" (about 1 km, anchored north and west), "road" (about
// 4.5 km with twelve corners, anchored south of the equator and west of
// Greenwich) and "oval" (about 2.1 km, north and east).
std::vector<std::string> BuiltinCircuitNames();
bool BuiltinCircuit(const std::string& name, Circuit& out, std::string& error);

}  // namespace tl::sim
