// The GPS track map (mapping mode 0): the path dead-reckoned from speed and
// lateral acceleration between fixes is fitted onto the fixes over a
// look-ahead window by a lateral-acceleration offset and a distance
// multiplier; where the two can't be reconciled the map falls back to straight
// lines between fixes, or, when the user trusts the accelerometers, drops the
// doubtful GPS data and maps through the gap.
#include <cmath>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "derived/derived_common.h"
#include "derived/path_series.h"
#include "derived/pipeline.h"

namespace tl {

int CalcCourse(float latAccel, float speed, float& x, float& y, float& heading,
               float distMultiplier) {
    if (speed <= 0.0f) return 0;
    const float v = speed / 3600.0f * 1000.0f;
    float a = latAccel * 9.80665f;
    // A radius of no less than 3 m, on the positive side only.
    const float limit = v * v / 3.0f;
    if (a > limit) a = limit;
    heading = heading + a / v / 100.0f;
    const float step = v * distMultiplier / 100.0f;
    // Read once, so that the compiler may take the sine and cosine in one
    // call (glibc's sincosf gives sinf's and cosf's values to the bit).
    const float h = heading;
    x = x + step * std::sin(h);
    y = y + step * std::cos(h);
    return 0;
}

namespace {

constexpr float kTwoPi = 2.0f * kPi;
inline float Wrap2Pi(float x) {
    return Constrain(x, 0.0f, kTwoPi);
}
inline float WrapPi(float x) {
    return Constrain(x, -kPi, kPi);
}

struct Chord {
    float bearing = 0;
    float length = 0;
};

inline Chord ChordOf(float dx, float dy) {
    return {Wrap2Pi(Atan2(dx, dy)), std::sqrt(dx * dx + dy * dy)};
}

class GpsMapper {
  public:
    explicit GpsMapper(int32_t run) : rows_(derived::RowsOf(run)) {}
    void Run();

  private:
    bool Fix(int32_t i) const { return x_[i] != 0.0f || y_[i] != 0.0f; }
    // The chords of a path and of its probe. Each round of a fit asks for a
    // path and the probe of the round after it, which starts from the same
    // parameters; a round's parameters are the offset o and the multiplier m.
    // The power series of the window gives them at the cost of a few terms
    // (see derived/path_series.h); where it doesn't hold, the paths are run
    // row by row.
    void PathPair(int32_t s, int32_t e, float o, float m, float probeO, float probeM, Chord& path,
                  Chord& probe) {
        float dx, dy, h, probeDx, probeDy, probeH;
        if (seriesOk_ && series_.End(o, m, dx, dy, h) &&
            series_.End(probeO, probeM, probeDx, probeDy, probeH)) {
            path = ChordOf(dx, dy);
            probe = ChordOf(probeDx, probeDy);
            workHeading_ = h;
            return;
        }
        RunPathPair(s, e, o, m, probeO, probeM, path, probe);
    }
    // Row by row, as the fit defines a path: from Heading and row s's
    // position, CalcCourse on every row to e; the probe first, so that
    // WorkHeading is left as the path leaves it. Only windows the series
    // can't take come here, a few in a run.
    void RunPathPair(int32_t s, int32_t e, float o, float m, float probeO, float probeM,
                     Chord& path, Chord& probe) {
        probe = RunPath(s, e, probeO, probeM);
        path = RunPath(s, e, o, m);
    }
    Chord RunPath(int32_t s, int32_t e, float o, float m) {
        workHeading_ = heading_;
        float x = x_[s], y = y_[s];
        for (int32_t i = s; i <= e; ++i) CalcCourse(lat_[i] + o, spd_[i], x, y, workHeading_, m);
        return ChordOf(x - x_[s], y - y_[s]);
    }
    void Interpolate(int32_t s, int32_t e) {
        const float n = static_cast<float>(e - s);
        const float sx = n != 0.0f ? (x_[e] - x_[s]) / n : 0.0f;
        const float sy = n != 0.0f ? (y_[e] - y_[s]) / n : 0.0f;
        const float x0 = x_[s], y0 = y_[s];
        for (int32_t i = s; i <= e; ++i) {
            x_[i] = x0 + sx * static_cast<float>(i - s);
            y_[i] = y0 + sy * static_cast<float>(i - s);
        }
    }
    void HeadingFromChord(int32_t from, int32_t to) {
        heading_ = Wrap2Pi(Atan2(x_[to] - x_[from], y_[to] - y_[from]));
    }
    // Case C; returns the row where the next section starts.
    int32_t FitSection(int32_t s, int32_t e);

    derived::RunRows rows_;
    // The run's tables and the current window's sums of the series, kept
    // from run to run.
    static derived::PathSeries& KeptSeries() {
        thread_local derived::PathSeries series;
        return series;
    }
    derived::PathSeries& series_ = KeptSeries();
    // Whether the series serves the run, and the current window.
    bool seriesRun_ = false;
    bool seriesOk_ = false;
    float* x_ = nullptr;
    float* y_ = nullptr;
    const float* lat_ = nullptr;
    const float* spd_ = nullptr;
    float heading_ = 0;
    float workHeading_ = 0;
    bool fresh_ = true;
    bool raw_ = false;
    bool trustAccels_ = false;
    int32_t sectionLength_ = 150;
    double errorSum_ = 0;
    bool log_ = false;
};

int32_t GpsMapper::FitSection(int32_t s, int32_t e) {
    const int32_t start = rows_.first, end = rows_.last;
    const Chord target = ChordOf(x_[e] - x_[s], y_[e] - y_[s]);
    float latOffset = 0.0f, distMult = 1.0f, headSens = 1.0f, distSens = 1.0f;
    // Each round's probe is taken with the path before it (see RunPathPair);
    // the last one goes unused.
    Chord path, probe;
    seriesOk_ = seriesRun_ && series_.PrepareWindow(static_cast<size_t>(s - start),
                                                    static_cast<size_t>(e - s + 1), heading_);
    PathPair(s, e, latOffset, distMult, latOffset + 0.0001f, distMult * 1.05f, path, probe);
    float headErr = WrapPi(path.bearing - target.bearing);
    float distErr = path.length - target.length;
    int16_t count = 0;
    while (((std::fabs(distErr) > 0.5f && distSens != 0.0f) ||
            (std::fabs(headErr) > 0.017453292f && headSens != 0.0f)) &&
           count < 200) {
        const float prevLength = path.length, prevBearing = path.bearing;
        ++count;
        headSens = WrapPi(prevBearing - probe.bearing);
        headErr = WrapPi(prevBearing - target.bearing);
        float offsetStep = headSens != 0.0f ? headErr * 0.0001f / headSens : 0.0f;
        offsetStep = offsetStep * 0.4f;
        latOffset = latOffset + offsetStep;
        distSens = prevLength - probe.length;
        distErr = prevLength - target.length;
        float multStep = distSens != 0.0f ? distErr * 0.05f / distSens : 0.0f;
        multStep = multStep * 0.35f;
        distMult = distMult + multStep;
        PathPair(s, e, latOffset, distMult, latOffset + 0.0001f, distMult * 1.05f, path, probe);
        headErr = WrapPi(path.bearing - target.bearing);
        // From the second test on the loop's end condition sees the change of
        // bearing between rounds here; the body recomputes it before use.
        distErr = prevBearing - path.bearing;
    }
    // Only the stretch up to the next fix is written; the rest was look-ahead.
    int32_t r = s + 1;
    while (!Fix(r) && r < end - 1) ++r;
    e = r;
    if (std::fabs(latOffset) <= 0.5f && distMult <= 4.0f && distMult >= 0.25f) {
        workHeading_ = heading_;
        for (int32_t i = s; i <= e; ++i) {
            float x = x_[i - 1], y = y_[i - 1];
            CalcCourse(lat_[i] + latOffset, spd_[i], x, y, workHeading_, distMult);
            const float dx = x - x_[i - 1], dy = y - y_[i - 1];
            x_[i] = x;
            y_[i] = y;
            errorSum_ += static_cast<double>(dx * dx + dy * dy) * std::fabs(latOffset);
        }
        heading_ = Wrap2Pi(workHeading_);
        return e;
    }
    if (e - s < 1500 && s > 500 && e < end - 500 && trustAccels_) {
        const bool sats = SlotEnabled(45);
        float* satCol = derived::Col(45);
        const int32_t from = std::max(s - 74, start), to = std::min(e + 150, end);
        for (int32_t i = from; i <= to; ++i) {
            x_[i] = 0.0f;
            y_[i] = 0.0f;
            if (sats && satCol) satCol[i] = 0.0f;
        }
        LogDebug(std::to_string(from) + " to " + std::to_string(to) + " removed");
        if (log_)
            LogDebug("The required lat accel to correlate was " + std::to_string(latOffset) +
                     " and the distance multiplier was " + std::to_string(distMult));
        r = s - 75;
        HeadingFromChord(r - 10, r);
        if (log_)
            LogDebug("Back tracked to sample " + std::to_string(r) +
                     " and re-initialised the heading to " + std::to_string(heading_));
        return r;
    }
    Interpolate(s, e);
    HeadingFromChord(s, e);
    LogDebug("The required corrections were too large, so simply interpoloate between points");
    return e;
}

void GpsMapper::Run() {
    if (!rows_.ok) return;
    x_ = derived::Col(slot::PositionX);
    y_ = derived::Col(slot::PositionY);
    lat_ = derived::Col(slot::AccelLat);
    spd_ = derived::Col(slot::SpeedKph);
    if (!x_ || !y_ || !lat_ || !spd_) return;
    log_ = LogOn();
    const size_t rows = static_cast<size_t>(rows_.last - rows_.first) + 1;
    series_.PrepareRun(lat_ + rows_.first, spd_ + rows_.first, rows);
    // The series holds while the map is drawn, unless disabled slots make the
    // acceleration or the speed share the positions' column.
    seriesRun_ = lat_ != x_ && lat_ != y_ && spd_ != x_ && spd_ != y_;
    const std::string& cfg = Paths().TracelabCfgPath;
    trustAccels_ = GetConfigInt(cfg, "TrustAccels") != 0;
    raw_ = GetConfig(cfg, "UseRawGPSData") == 1.0f;
    if (raw_) LogDebug("only use raw GPS data");
    sectionLength_ = Profile().HardwareHX40 ? 300 : 150;
    const int32_t start = rows_.first, end = rows_.last;
    x_[start] = 0.0f;
    y_[start] = 0.0f;

    int32_t r = start;
    while (r < end) {
        const int32_t s = r;
        if (r == start) {
            do ++r;
            while (!Fix(r) && r < end);
            if (log_)
                LogDebug("start of run data, start sample=" + std::to_string(s) +
                         ", EndSample=" + std::to_string(r));
        } else {
            if (r + sectionLength_ > end) {
                r = end;
            } else {
                r += sectionLength_;
                while (!Fix(r) && r < end) ++r;
            }
            if (log_)
                LogDebug("regular section, start sample=" + std::to_string(s) +
                         ", EndSample=" + std::to_string(r));
        }
        int32_t e = r;
        if (r == end) {
            while (!Fix(r) && r > start) --r;
            if (s >= r) {
                e = end;
                LogDebug("End of data reached");
            } else {
                e = r;
                if (log_)
                    LogDebug("nearing end of the data, start sample = " + std::to_string(s) +
                             " , end sample = " + std::to_string(e));
            }
        }
        // The window's least speed (searched from 1.0E+20) serves only to
        // ask whether it is at least 30 kph, that is whether no row of the
        // window is below 30 (a row that is not a number never lowers it).
        // Asked so, the rows are tested several at a time.
        int slowRows = 0;
        for (int32_t i = s; i <= e; ++i) slowRows |= spd_[i] < 30.0f;
        const bool fastWindow = slowRows == 0;

        if (e == end && !raw_) {
            // Case A: the last of the data, dead-reckoned on from the last
            // section's heading.
            for (int32_t i = s + 1; i <= end; ++i) {
                float x = x_[i - 1], y = y_[i - 1];
                CalcCourse(lat_[i], spd_[i], x, y, workHeading_, 1.0f);
                x_[i] = x;
                y_[i] = y;
            }
            r = end;
        } else if (s == start && !raw_) {
            // Case B: the very first section, walked backwards from the first
            // fix with the heading reversed and the acceleration negated.
            LogDebug("mapping very first section");
            int32_t n = e + 1;
            if (e >= end) n = e;
            while (n < end && !Fix(n)) ++n;
            LogDebug("sample after the next found at " + std::to_string(n));
            if (n < end) {
                heading_ = Wrap2Pi(Atan2(x_[e] - x_[n], y_[e] - y_[n]));
                if (log_) LogDebug("Heading to end on is " + std::to_string(heading_));
                for (int32_t i = e - 1; i >= s; --i) {
                    float x = x_[i + 1], y = y_[i + 1];
                    CalcCourse(-lat_[i], spd_[i], x, y, heading_, 1.0f);
                    x_[i] = x;
                    y_[i] = y;
                }
            }
            r = e;
        } else if (fastWindow && !fresh_ && !raw_) {
            r = FitSection(s, e);
        } else {
            // Case D: slow, the first section after the very first, or raw.
            fresh_ = false;
            r = s + 1;
            while (r < end && !Fix(r)) ++r;
            e = r;
            if (e != end && s != start) {
                Interpolate(s, e);
            } else if (e != end) {
                for (int32_t i = s; i <= e; ++i) {
                    x_[i] = x_[e];
                    y_[i] = y_[e];
                }
            } else {
                for (int32_t i = s; i <= e; ++i) {
                    x_[i] = x_[s];
                    y_[i] = y_[s];
                }
            }
            HeadingFromChord(s, e);
        }
        // A removal that backs up to the run's very start would start over
        // with the first section; it cannot, since it needs s > 500, so r > s
        // - 75 > start. Guard all the same against a section that makes no
        // progress.
        if (r <= start) r = start + 1;
    }
    if (log_) LogDebug("error:" + std::to_string(errorSum_));
}

}  // namespace

void TrackMapGps(int32_t run) {
    Procedure("TrackMapGps", [&] { GpsMapper(run).Run(); });
}

}  // namespace tl
