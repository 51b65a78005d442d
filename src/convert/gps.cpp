#include "convert/gps.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <optional>

#include "core/log.h"
#include "store/slot_columns.h"

namespace tl {
namespace {

std::optional<int> g_biasOverride;

std::string TwoDigits(int v) {
    // Negative values keep their sign ahead of the two digits ("-05").
    char buf[16];
    std::snprintf(buf, sizeof buf, "%s%02d", v < 0 ? "-" : "", v < 0 ? -v : v);
    return buf;
}

int DigitsAt(const std::string& text, size_t pos) {
    // Two characters from pos read as a number; what is missing reads 0.
    if (pos >= text.size()) return 0;
    const std::string part = text.substr(pos, 2);
    int v = 0;
    bool any = false;
    for (char c : part) {
        if (c < '0' || c > '9') break;
        v = v * 10 + (c - '0');
        any = true;
    }
    return any ? v : 0;
}

}  // namespace

double DegsMins2Rads(double x) {
    const double d = std::trunc(x / 100.0);
    const double degrees = d + (x - d * 100.0) / 60.0;
    return degrees * 2.0 * kGpsPi / 360.0;
}

double FractDegree2Rads(double v) {
    return v * 2.0 * kGpsPi / 360.0;
}

namespace {

void Project(double lat, double lon, double lat2, double lon2, double& x, double& y) {
    // The cosine is of the first point's latitude, not the origin's.
    x = (lon - lon2) * kEarthRadius * std::cos(lat);
    y = (lat - lat2) * kEarthRadius;
}

}  // namespace

void GpsCoord(double lat, double lon, double originLat, double originLong, double& x, double& y) {
    Project(DegsMins2Rads(lat), DegsMins2Rads(lon), DegsMins2Rads(originLat),
            DegsMins2Rads(originLong), x, y);
}

void GpsCoord_FractDegree(double lat, double lon, double originLat, double originLong, double& x,
                          double& y) {
    Project(FractDegree2Rads(lat), FractDegree2Rads(lon), FractDegree2Rads(originLat),
            FractDegree2Rads(originLong), x, y);
}

void CalcDistBetweenCoords(double lat1, double long1, double lat2, double long2, double& dx,
                           double& dy) {
    GpsCoord(lat1, long1, lat2, long2, dx, dy);
}

void CalcDistBetweenCoords_FractDegree(double lat1, double long1, double lat2, double long2,
                                       double& dx, double& dy) {
    GpsCoord_FractDegree(lat1, long1, lat2, long2, dx, dy);
}

double FpMod(double a, double b) {
    if (b == 0) return static_cast<double>(1e20f);
    const double q = a / b;
    return (q - std::trunc(q)) * b;
}

double FpModPos(double a, double b) {
    if (b == 0) return static_cast<double>(1e20f);
    // A negative b with a negative a would never end; the callers pass a
    // positive b, and a non-positive one is taken as plain FpMod here.
    if (b > 0) {
        if (a < 0) a += std::ceil(-a / b) * b;
        while (a < 0) a += b;
    }
    return FpMod(a, b);
}

void ExtractSatCount(const std::string& textIn, int& count, bool& flag) {
    std::string text = textIn.empty() ? std::string("0") : textIn;
    const auto first = static_cast<unsigned char>(text[0]);
    if (first >= 129) {
        flag = true;
        text = std::string(1, static_cast<char>(first - 128));
    } else {
        flag = false;
    }
    if (LogOn()) LogDebug("sat string=" + text);
    count = -1;
    if (text.size() != 1) return;
    const char c = text[0];
    // A marked character carries the count itself once its top bit is off:
    // code 136 is a count of 8 with the mark (not the character "8", which
    // would be code 184). Both readings agree for the printable characters.
    if (flag && c >= 1 && c <= 16) {
        count = c;
        return;
    }
    if (c >= '1' && c <= '9')
        count = c - '0';
    else if (c >= ':' && c <= '@')
        count = 10 + (c - ':');
    else if (c == 'A')
        count = 6;  // receivers that give a status letter report a fixed 6
}

std::string SatCountText(int score) {
    if (score == 0) return " The run does not contain any GPS information.";
    std::string t = " The satelite lock score for this run is " + std::to_string(score);
    if (score > 100)
        t += " ,the GPS data is therefore classified as excellent.";
    else if (score > 64)
        t += " ,the GPS data is therefore classified as good.";
    else if (score > 49)
        t += " ,the GPS data is therefore classified as satisfactory.";
    else if (score > 36)
        t += " ,the GPS data is therefore classified as satisfactory, but could be improved.";
    else if (score > 25)
        t += " ,the GPS data is therefore classified as poor and may contain some inaccuracies.";
    else if (score > 16)
        t += " ,the GPS data is therefore classified as poor and will be inaccurate for at least "
             "some of the run.";
    else if (score > 9)
        t += " ,the GPS data is therefore classified as very poor and likely to be inaccurate.";
    return t;
}

int TimeZoneBiasMinutes() {
    if (g_biasOverride) return *g_biasOverride;
    // The standard bias only, with no daylight term: glibc's `timezone` is
    // the seconds west of UTC of the zone's standard time.
    tzset();
    return static_cast<int>(timezone / 60);
}

void SetTimeZoneBiasMinutes(int minutes) {
    g_biasOverride = minutes;
}
void UseSystemTimeZoneBias() {
    g_biasOverride.reset();
}

std::string ExtractGPSTime(const std::string& text) {
    LogDebug("calculating local time from GMT");
    const int hours = DigitsAt(text, 0);
    const int minutes = DigitsAt(text, 2);
    const int seconds = DigitsAt(text, 4);
    const int b = TimeZoneBiasMinutes();
    // Truncating division and remainder, no carry between the fields: a zone
    // half an hour off may give minutes outside 0 to 59.
    const int localHours = (hours - b / 60) % 24;
    const int localMinutes = minutes - b % 60;
    const std::string result = TwoDigits(localHours) + ":" + TwoDigits(localMinutes) + ":" +
                               TwoDigits(seconds) + " local time (" + TwoDigits(hours) + ":" +
                               TwoDigits(minutes) + ":" + TwoDigits(seconds) + " gmt) ";
    LogDebug(result);
    return result;
}

std::string NumberText(double value) {
    if (value == 0) return "0";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", value);
    return buf;
}

}  // namespace tl
