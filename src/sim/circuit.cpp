#include "sim/circuit.h"

#include <algorithm>
#include <cmath>

namespace tl::sim {

double DegToRad(double deg) {
    return deg * 2.0 * kPi / 360.0;
}
double RadToDeg(double rad) {
    return rad * 360.0 / (2.0 * kPi);
}

void PlaneToLatLon(double x, double y, double lat0, double lon0, double& lat, double& lon) {
    const double latRad = DegToRad(lat0) + y / kEarthRadius;
    lat = RadToDeg(latRad);
    lon = RadToDeg(DegToRad(lon0) + x / (kEarthRadius * std::cos(latRad)));
}

void LatLonToPlane(double lat, double lon, double lat0, double lon0, double& x, double& y) {
    const double latRad = DegToRad(lat);
    x = (DegToRad(lon) - DegToRad(lon0)) * kEarthRadius * std::cos(latRad);
    y = (latRad - DegToRad(lat0)) * kEarthRadius;
}

namespace {

struct Pose {
    double x = 0.0, y = 0.0, heading = 0.0;
};

// Pose at distance d into a segment that starts at p.
Pose Advance(const Pose& p, const Segment& seg, double d) {
    Pose q;
    if (seg.radius == 0.0) {
        q.x = p.x + d * std::sin(p.heading);
        q.y = p.y + d * std::cos(p.heading);
        q.heading = p.heading;
    } else {
        const double k = 1.0 / seg.radius;
        q.heading = p.heading + k * d;
        q.x = p.x + (std::cos(p.heading) - std::cos(q.heading)) / k;
        q.y = p.y + (std::sin(q.heading) - std::sin(p.heading)) / k;
    }
    return q;
}

std::vector<Pose> SegmentStarts(const std::vector<Segment>& segs, double heading0) {
    std::vector<Pose> starts(segs.size() + 1);
    starts[0].heading = heading0;
    for (size_t i = 0; i < segs.size(); ++i)
        starts[i + 1] = Advance(starts[i], segs[i], segs[i].length);
    return starts;
}

double WrapAngle(double a) {
    const double twoPi = 2.0 * 3.14159265358979323846;
    a = std::fmod(a, twoPi);
    return a < 0.0 ? a + twoPi : a;
}

}  // namespace

bool BuildCircuit(const std::string& name, double lat, double lon, double startHeading,
                  std::vector<Segment> segments, double step, Circuit& out, std::string& error) {
    const double twoPi = 2.0 * 3.14159265358979323846;
    if (segments.empty() || step <= 0.0) {
        error = "circuit " + name + " has no segments";
        return false;
    }
    double turn = 0.0;
    for (const Segment& s : segments) {
        if (s.length <= 0.0) {
            error = "circuit " + name + " has a segment of no length";
            return false;
        }
        if (s.radius != 0.0) turn += s.length / s.radius;
    }
    if (std::fabs(std::fabs(turn) - twoPi) > 1e-6) {
        error = "the bends of circuit " + name + " do not turn through one full turn";
        return false;
    }
    std::vector<Pose> starts = SegmentStarts(segments, startHeading);
    const double gx = starts.back().x, gy = starts.back().y;
    if (std::hypot(gx, gy) > 1e-9) {
        // Spread the correction over all straights, each in proportion to
        // the square of its length (the least change relative to each
        // length): dl_i = L_i^2 * u_i . lambda with sum dl_i u_i = -gap.
        double a11 = 0.0, a12 = 0.0, a22 = 0.0;
        int straights = 0;
        for (size_t i = 0; i < segments.size(); ++i) {
            if (segments[i].radius != 0.0) continue;
            const double w = segments[i].length * segments[i].length;
            const double ux = std::sin(starts[i].heading), uy = std::cos(starts[i].heading);
            a11 += w * ux * ux;
            a12 += w * ux * uy;
            a22 += w * uy * uy;
            ++straights;
        }
        const double det = a11 * a22 - a12 * a12;
        if (straights < 2 || std::fabs(det) < 1e-9 * (a11 + a22) * (a11 + a22)) {
            error = "circuit " + name + " has no two straights that can close it";
            return false;
        }
        const double l1 = (-gx * a22 + gy * a12) / det;
        const double l2 = (-gy * a11 + gx * a12) / det;
        for (size_t i = 0; i < segments.size(); ++i) {
            if (segments[i].radius != 0.0) continue;
            const double w = segments[i].length * segments[i].length;
            segments[i].length +=
                w * (std::sin(starts[i].heading) * l1 + std::cos(starts[i].heading) * l2);
            if (segments[i].length < 5.0) {
                error = "circuit " + name + " cannot be closed without a negative straight";
                return false;
            }
        }
        starts = SegmentStarts(segments, startHeading);
    }

    out = Circuit{};
    out.name = name;
    out.originLat = lat;
    out.originLon = lon;
    out.step = step;
    out.segments = segments;
    double total = 0.0;
    for (const Segment& s : segments) total += s.length;
    out.length = total;
    const size_t count = static_cast<size_t>(std::floor(total / step)) + 1;
    out.points.resize(count + 1);
    size_t seg = 0;
    double segStart = 0.0;
    for (size_t k = 0; k <= count; ++k) {
        const double s = std::min(static_cast<double>(k) * step, total);
        while (seg + 1 < segments.size() && s >= segStart + segments[seg].length) {
            segStart += segments[seg].length;
            ++seg;
        }
        const Pose p = Advance(starts[seg], segments[seg], s - segStart);
        CircuitPoint& cp = out.points[k];
        cp.s = s;
        cp.x = p.x;
        cp.y = p.y;
        cp.heading = WrapAngle(p.heading);
        cp.curvature = segments[seg].radius == 0.0 ? 0.0 : 1.0 / segments[seg].radius;
    }
    // The last point stands on the line again: snap away the rounding.
    out.points.back().s = total;
    out.points.back().x = 0.0;
    out.points.back().y = 0.0;
    return true;
}

CircuitPoint Circuit::At(double s) const {
    s = std::fmod(s, length);
    if (s < 0.0) s += length;
    const size_t last = points.size() - 1;
    size_t i = std::min(static_cast<size_t>(s / step), last - 1);
    while (i + 1 < last && points[i + 1].s <= s) ++i;
    const CircuitPoint& a = points[i];
    const CircuitPoint& b = points[i + 1];
    const double span = b.s - a.s;
    const double f = span > 0.0 ? (s - a.s) / span : 0.0;
    CircuitPoint p;
    p.s = s;
    p.x = a.x + (b.x - a.x) * f;
    p.y = a.y + (b.y - a.y) * f;
    double dh = b.heading - a.heading;
    const double pi = 3.14159265358979323846;
    if (dh > pi) dh -= 2.0 * pi;
    if (dh < -pi) dh += 2.0 * pi;
    p.heading = WrapAngle(a.heading + dh * f);
    p.curvature = f < 0.5 ? a.curvature : b.curvature;
    return p;
}

double Circuit::MaxCurvatureNear(double s, double reach) const {
    double best = 0.0;
    for (double d = -reach; d <= reach + 1e-9; d += step)
        best = std::max(best, std::fabs(At(s + d).curvature));
    return best;
}

std::vector<std::string> BuiltinCircuitNames() {
    return {"kart", "road", "oval"};
}

bool BuiltinCircuit(const std::string& name, Circuit& out, std::string& error) {
    const double deg = 3.14159265358979323846 / 180.0;
    auto arc = [&](double radius, double angleDeg) {
        return Segment{std::fabs(radius * angleDeg * deg), angleDeg < 0.0 ? -radius : radius};
    };
    auto straight = [](double length) { return Segment{length, 0.0}; };
    if (name == "kart") {
        // A club kart track in the English Midlands: north of the equator,
        // just west of Greenwich.
        std::vector<Segment> segs = {straight(250), arc(20, 90),  straight(100), arc(12, -90),
                                     straight(75),  arc(15, 180), straight(190), arc(25, 45),
                                     straight(75),  arc(10, 135), straight(125), arc(18, -90),
                                     straight(75),  arc(20, 90),  straight(60)};
        return BuildCircuit(name, 52.0712, -1.0164, 90.0 * deg, segs, 0.25, out, error);
    }
    if (name == "road") {
        // A road circuit south of the equator and west of Greenwich, so that
        // both hemisphere letters and negative coordinates are exercised.
        std::vector<Segment> segs = {
            straight(800), arc(60, 90),   straight(250), arc(40, -60),  straight(150),
            arc(80, 120),  straight(500), arc(30, 90),   straight(200), arc(120, -45),
            straight(300), arc(50, 100),  straight(150), arc(35, -80),  straight(250),
            arc(70, 75),   straight(400), arc(25, 90),   straight(300), arc(90, -60),
            straight(200), arc(45, 60),   straight(150), arc(60, -20),  straight(250)};
        return BuildCircuit(name, -23.7036, -46.6997, 0.0, segs, 0.25, out, error);
    }
    if (name == "oval") {
        // A speedway oval north of the equator and east of Greenwich.
        std::vector<Segment> segs = {straight(600), arc(150, 180), straight(600), arc(150, 180)};
        return BuildCircuit(name, 35.3712, 138.9271, 90.0 * deg, segs, 0.25, out, error);
    }
    error = "unknown circuit \"" + name + "\"";
    return false;
}

}  // namespace tl::sim
