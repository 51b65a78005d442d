// The wheel-speed track map (mapping modes 1 and 2): the reference lap made
// from the cleanest lap of the reference run, every run laid onto it between
// its beacons, and the track markers at the beacons.
#include "derived/reference_lap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "derived/derived_common.h"
#include "derived/lap_stages.h"
#include "derived/pipeline.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"

namespace tl {

using derived::Col;
using derived::RowsOf;

namespace {

constexpr float kNudge = 0.005f;  // g added to the lateral acceleration to probe the path
constexpr int kMaxClosureRounds = 50;
constexpr float kClosedWithin = 0.1f;  // metres
// More points than this (a lap of 200 km) is taken for a broken distance.
constexpr double kMaxRefLapPoints = 2.0e6;

inline float WrapPi(float x) {
    return Constrain(x, -kPi, kPi);
}

// The heading as the two parameters of the closure see it. Design note: the
// running heading is not wrapped by CalcCourse, so a counter-clockwise lap's
// heading runs negative; the bands are tested on the heading wrapped into 0
// to 2 pi, or neither band would ever hold there and both parameters would
// be the same uniform offset (a singular pair of equations).
inline float BandHeading(float h) {
    return Constrain(h, 0.0f, 2.0f * kPi);
}
inline bool InBand1(float h) {
    h = BandHeading(h);
    return h > 0.0f && h < 3.1415927f;
}
inline bool InBand2(float h) {
    h = BandHeading(h);
    return h > kPi / 2.0f && h < kPi * 3.0f / 2.0f;
}

// Conversion of a floating value to a 32-bit integer: to nearest, halves to
// even. False for a value that has none.
bool FpI4(double v, int32_t& out) {
    if (!std::isfinite(v) || v < -2147483648.0 || v > 2147483647.0) return false;
    out = static_cast<int32_t>(std::nearbyint(v));
    return true;
}

bool RowInTable(int32_t row) {
    return row >= 0 && row <= Store().RunData.UpperRow();
}

struct PathEnd {
    float x = 0, y = 0, h = 0;
};

// The dead reckoning of one lap over a private copy of the lateral
// acceleration.
class LoopCloser {
  public:
    LoopCloser(int32_t first, int32_t last) : first_(first), last_(last) {
        const float* lat = Col(slot::AccelLat);
        speed_ = Col(slot::WheelSpeedKph);
        lat_.assign(lat + first, lat + last + 1);
    }

    enum class Probe { None, Uniform, Band1, Band2 };

    // One dead reckoning of the lap with the probe's nudge and `extra` added
    // to every row; xs/ys receive the path when given.
    PathEnd Pass(Probe probe = Probe::None, float extra = 0.0f, float* xs = nullptr,
                 float* ys = nullptr) const {
        PathEnd e;
        for (int32_t i = first_; i <= last_; ++i) {
            float a = lat_[i - first_] + extra;
            switch (probe) {
                case Probe::None:
                    break;
                case Probe::Uniform:
                    a += kNudge;
                    break;
                case Probe::Band1:
                    a += InBand1(e.h) ? kNudge : -kNudge;
                    break;
                case Probe::Band2:
                    a += InBand2(e.h) ? kNudge : -kNudge;
                    break;
            }
            CalcCourse(a, speed_[i], e.x, e.y, e.h, 1.0f);
            if (xs) xs[i] = e.x;
            if (ys) ys[i] = e.y;
        }
        return e;
    }

    void AddToAll(float offset) {
        for (float& a : lat_) a += offset;
    }

    // Adds p in band 1 and q in band 2 (subtracts them outside), row by row
    // along the corrected path. Returns the final heading.
    float Apply(float p, float q) {
        PathEnd e;
        for (int32_t i = first_; i <= last_; ++i) {
            float& a = lat_[i - first_];
            a += InBand1(e.h) ? p : -p;
            a += InBand2(e.h) ? q : -q;
            CalcCourse(a, speed_[i], e.x, e.y, e.h, 1.0f);
        }
        return e.h;
    }

  private:
    int32_t first_, last_;
    const float* speed_ = nullptr;
    std::vector<float> lat_;
};

// The lateral offset that turns the heading change into the target. Design
// note: with no sensitivity at all (nothing moves) there is no such offset
// and none is applied, as a failed division leaves the offset unset.
float HeadingOffset(float target, float heading, float sens) {
    const float offset = -(target - heading) / sens;
    return std::isfinite(offset) ? offset : 0.0f;
}

// A parameter's probe as the parameter is applied: the nudge in its band and
// against it outside, and then the uniform offset that puts the heading back
// where it was. Design note: the nudges of a band seldom cancel in heading
// (the lap doesn't spend equal time in and out of the band), and a round
// applies the parameters and then corrects the heading; a probe without that
// correction measures a different change than the round makes, and on real
// laps the rounds then drive the loop further open instead of closing it.
PathEnd HeadingHeldProbe(const LoopCloser& loop, LoopCloser::Probe probe, float heading,
                         float sens) {
    const PathEnd nudged = loop.Pass(probe);
    return loop.Pass(probe, HeadingOffset(heading, nudged.h, sens));
}

}  // namespace

void ReferenceLap::Reset() {
    RefRun = 0;
    RefLapPoints = 0;
    RefLapLength = 0;
    RefLapX.clear();
    RefLapY.clear();
    RefSections.clear();
}

ReferenceLap& RefLap() {
    static ReferenceLap lap;
    return lap;
}

void GenerateWSBReferenceLap(int32_t run) {
    Procedure("GenerateWSBReferenceLap", [&] {
        const auto rr = RowsOf(run);
        if (!rr.ok) return;
        ReferenceLap& ref = RefLap();
        BeaconTable table;
        ExtractValidMarkers(run, table, ref.RefSections, false);
        const int N = table.beacons;
        const float* speed = Col(slot::WheelSpeedKph);
        if (!speed) return;

        int32_t chosen = -1;
        float bestMin = -1.0e20f;
        for (int32_t k = 1; k <= table.laps - 2; ++k) {
            bool complete = table.At(k + 1, 0) != 0;
            for (int c = 0; c < N && complete; ++c) complete = table.At(k, c) != 0;
            const int32_t a = table.At(k, 0), b = table.At(k + 1, 0);
            if (!complete || b <= a) {
                derived::LogParts("markers missing on lap counter ", k);
                continue;
            }
            derived::LogParts("all markers present");
            const float least = *std::min_element(speed + a, speed + b + 1);
            derived::LogParts("Min speed= ", least);
            if (least > bestMin) {
                bestMin = least;
                chosen = k;
                derived::LogParts("New maximum min speed found on lap ", k);
            }
        }
        if (chosen < 0) {
            // No complete lap, no reference.
            const int32_t keepRun = ref.RefRun;
            ref.Reset();
            ref.RefRun = keepRun;
            return;
        }
        derived::LogParts("Lap to be used as reference: ", chosen);
        derived::LogParts(
            "close the track map to form a single comlete loop and copy it to the reference lap "
            "array");
        CloseTrackMap(table.At(chosen, 0), table.At(chosen + 1, 0));
        derived::LogParts("copy the reference lap into the ref lap");
        SetRefLap(chosen, table, run);
        derived::LogParts("tidy up the vectors used");
        DeleteVariableData(rr.first, rr.last, slot::PositionX);
        DeleteVariableData(rr.first, rr.last, slot::PositionY);
    });
}

int CloseTrackMap(int32_t first, int32_t last) {
    return ProcedureValue("CloseTrackMap", 0, [&] {
        if (first < 1 || last < first || !RowInTable(last)) return 0;
        if (!Col(slot::AccelLat) || !Col(slot::WheelSpeedKph)) return 0;
        using Probe = LoopCloser::Probe;
        LoopCloser loop(first, last);

        const float H0 = loop.Pass().h;
        derived::LogParts("uncorrected heading is ", H0);
        float target;
        if (H0 <= 0.0f) {
            target = -2.0f * kPi;
            derived::LogParts("circuit is counter-clockwise");
        } else {
            target = 2.0f * kPi;
            derived::LogParts("circuit is clockwise");
        }
        PathEnd end = loop.Pass(Probe::Uniform);
        const float sens = WrapPi(H0 - end.h) / kNudge;
        float offset = HeadingOffset(target, H0, sens);
        derived::LogParts("the heading sensitivity is ", sens, " and hence the offset is ", offset);
        loop.AddToAll(offset);

        int rounds = 0;
        while ((std::fabs(end.x) > kClosedWithin || std::fabs(end.y) > kClosedWithin) &&
               rounds < kMaxClosureRounds) {
            ++rounds;
            derived::LogParts("iteration #", rounds);
            PathEnd base = loop.Pass();
            derived::LogParts("uncorrected x position is : ", base.x, "   y position is ", base.y);
            PathEnd probe = HeadingHeldProbe(loop, Probe::Band1, base.h, sens);
            const float sx1 = base.x - probe.x, sy1 = base.y - probe.y;
            derived::LogParts("X sensitivity, parameter 1 is ", sx1);
            derived::LogParts("Y sensitivity, parameter 1 is ", sy1);
            base = loop.Pass();
            probe = HeadingHeldProbe(loop, Probe::Band2, base.h, sens);
            const float sx2 = base.x - probe.x, sy2 = base.y - probe.y;
            derived::LogParts("X sensitivity, parameter 2 is ", sx2);
            derived::LogParts("Y sensitivity, parameter 2 is ", sy2);
            float p = 0, q = 0;
            SimEquat(sx1, sx2, base.x, sy1, sy2, base.y, p, q);
            derived::LogParts("Threoretical Parameter 1 is", p);
            derived::LogParts("Threoretical Parameter 2 is", q);
            p = FindClip(-5.0f, p * 0.6f, 5.0f) * kNudge;
            q = FindClip(-5.0f, q * 0.6f, 5.0f) * kNudge;
            derived::LogParts("Limited Parameter 1 is", p);
            derived::LogParts("Limited Parameter 2 is", q);
            const float h = loop.Apply(p, q);
            derived::LogParts("with parameters applied, new heading is ", h);
            loop.AddToAll(HeadingOffset(target, h, sens));
            end = loop.Pass();
            derived::LogParts("With heading corrected the new X is ", end.x, " and the new Y is ",
                              end.y);
        }
        derived::LogParts("__________________________completed loop closure___________________");
        float* xs = Col(slot::PositionX);
        float* ys = Col(slot::PositionY);
        if (xs && ys && SlotEnabled(slot::PositionX) && SlotEnabled(slot::PositionY))
            loop.Pass(Probe::None, 0.0f, xs, ys);
        return rounds;
    });
}

void SetRefLap(int32_t lap, const BeaconTable& table, int32_t run) {
    Procedure("SetRefLap", [&] {
        const auto rr = RowsOf(run);
        const float* dist = Col(slot::DistanceKm);
        const float* xs = Col(slot::PositionX);
        const float* ys = Col(slot::PositionY);
        if (!rr.ok || !dist || !xs || !ys) return;
        const int32_t a = table.At(lap, 0), b = table.At(lap + 1, 0);
        if (a < rr.first || b > rr.last || b <= a) return;
        ReferenceLap& ref = RefLap();
        const float length = (dist[b] - dist[a]) * 1000.0f;
        const double points = std::trunc(static_cast<double>(length) / 0.1 + 1.0);
        if (!(points >= 2.0 && points <= kMaxRefLapPoints)) return;
        ref.RefLapLength = length;
        ref.RefLapPoints = static_cast<int32_t>(points);
        ref.RefRun = run;

        // The table's width is the beacons per lap it was built for.
        const int N = table.beacons;
        ref.RefSections.assign(N, 0.0f);
        for (int k = 0; k + 1 < N; ++k) {
            const int32_t from = table.At(lap, k), to = table.At(lap, k + 1);
            if (from > 0 && to > 0) ref.RefSections[k] = (dist[to] - dist[from]) * 1000.0f;
        }
        if (N > 0 && table.At(lap, N - 1) > 0)
            ref.RefSections[N - 1] = (dist[b] - dist[table.At(lap, N - 1)]) * 1000.0f;

        const int32_t P = ref.RefLapPoints;
        ref.RefLapX.assign(P + 1, 0.0f);
        ref.RefLapY.assign(P + 1, 0.0f);
        int32_t row = a;
        for (int32_t j = 1; j <= P; ++j) {
            const float d = static_cast<float>((j - 1) * 0.1 / 1000.0 + dist[a]);
            row = FindIndexFromDistance(d, row, run);
            // The walk lands up to two rows short: step on to the two rows
            // that bracket the distance.
            row = std::clamp(row, a, b - 1);
            while (row + 1 < b && dist[row + 1] < d) ++row;
            const float span = dist[row + 1] - dist[row];
            const float f = span > 0.0f ? FindClip(0.0f, (d - dist[row]) / span, 1.0f) : 0.0f;
            ref.RefLapX[j] = (1.0f - f) * xs[row] + f * xs[row + 1];
            ref.RefLapY[j] = (1.0f - f) * ys[row] + f * ys[row + 1];
        }
        ref.RefLapX[0] = ref.RefLapX[P];
        ref.RefLapY[0] = ref.RefLapY[P];
    });
}

void OverlayWSBTrackMap(int32_t run) {
    Procedure("OverlayWSBTrackMap", [&] {
        const auto rr = RowsOf(run);
        const float* dist = Col(slot::DistanceKm);
        if (!rr.ok || !dist) return;
        ReferenceLap& ref = RefLap();
        BeaconTable table;
        ExtractValidMarkers(run, table, ref.RefSections, true);
        const int N = table.beacons;
        const std::string& cfg = Paths().TracelabCfgPath;
        if (!(GetConfig(cfg, "OverLayLaps") == 1.0f && ref.RefLapPoints > 10)) {
            TrackMapOpenSection(rr.first, rr.last);
            return;
        }
        const bool allData = GetConfig(cfg, "AllDataOntoTrack") == 1.0f;
        auto section = [&](int c) {
            return c >= 0 && c < static_cast<int>(ref.RefSections.size()) ? ref.RefSections[c]
                                                                          : 0.0f;
        };
        // Metres of beacon c from beacon 0 along the reference lap.
        auto offsetOf = [&](int c) {
            float sum = 0;
            for (int k = 0; k < c; ++k) sum += section(k);
            return sum;
        };

        derived::LogParts("map the main section of the data");
        int32_t last = rr.first;
        int lastCol = 0;
        bool started = false;
        float expect = 0;
        for (int32_t lap = 0; lap < table.laps; ++lap) {
            for (int c = 0; c < N; ++c) {
                // Expect: the sections since the last beacon seen. Design
                // note: it restarts at every beacon seen, also after a stretch
                // that didn't match, since the next stretch is measured from
                // that beacon.
                if (started) expect += section((c + N - 1) % N);
                const int32_t r = table.At(lap, c);
                if (r < rr.first || r > rr.last || (started && r <= last)) continue;
                const float measured = (dist[r] - dist[last]) * 1000.0f;
                if (!started) {
                    derived::LogParts("map the first section");
                    const float offset = offsetOf(c);
                    // The beacon's own row first: an open section starts from it.
                    OverLayLapOnToReference(r, r, run, offset, 1.0f);
                    if (allData)
                        OverLayLapOnToReference(r, rr.first, run, offset, 1.0f);
                    else
                        TrackMapOpenSection(r, rr.first);
                } else if (expect > 0.0f && TestLapDistance(measured, expect)) {
                    OverLayLapOnToReference(last, r, run, offsetOf(lastCol), measured / expect);
                } else {
                    derived::LogParts("Sections different lengths  ", last, " ", r);
                }
                last = r;
                lastCol = c;
                expect = 0;
                started = true;
            }
        }
        derived::LogParts("map the final section");
        if (allData)
            OverLayLapOnToReference(last, rr.last, run, started ? offsetOf(lastCol) : 0.0f, 1.0f);
        else
            TrackMapOpenSection(last, rr.last);
    });
}

void OverLayLapOnToReference(int32_t first, int32_t last, int32_t run, float offset, float scale) {
    Procedure("OverLayLapOnToReference", [&] {
        const auto rr = RowsOf(run);
        const float* dist = Col(slot::DistanceKm);
        float* xs = Col(slot::PositionX);
        float* ys = Col(slot::PositionY);
        const ReferenceLap& ref = RefLap();
        const int32_t P = ref.RefLapPoints;
        if (!rr.ok || !dist || !xs || !ys || P < 1) return;
        if (static_cast<int32_t>(ref.RefLapX.size()) <= P ||
            static_cast<int32_t>(ref.RefLapY.size()) <= P)
            return;
        if (first < rr.first || first > rr.last || last < rr.first || last > rr.last) return;
        if (!SlotEnabled(slot::PositionX) || !SlotEnabled(slot::PositionY)) return;
        const int step = first <= last ? 1 : -1;
        const float d0 = dist[first];
        for (int32_t i = first;; i += step) {
            int32_t idx = 0;
            const double at = ((dist[i] - d0) / scale * 1000.0f + offset) / 0.1 + 1.0;
            bool ok = FpI4(at, idx);
            if (ok) {
                if (step < 0) idx = static_cast<int32_t>((static_cast<int64_t>(P) + idx - 1) % P);
                idx %= P;
                if (idx < 0) idx += P;
                ok = idx >= 0 && idx <= P;
            }
            if (ok) {
                xs[i] = ref.RefLapX[idx];
                ys[i] = ref.RefLapY[idx];
            } else {
                derived::LogParts("search error in overlaylap");
            }
            if (i == last) break;
        }
    });
}

void TrackMapOpenSection(int32_t from, int32_t to) {
    Procedure("TrackMapOpenSection", [&] {
        if (from < 1 || to < 1 || !RowInTable(from) || !RowInTable(to)) return;
        float* xs = Col(slot::PositionX);
        float* ys = Col(slot::PositionY);
        const float* lat = Col(slot::AccelLat);
        const float* speed = Col(slot::WheelSpeedKph);
        if (!xs || !ys || !lat || !speed) return;
        if (!SlotEnabled(slot::PositionX) || !SlotEnabled(slot::PositionY)) return;
        const float direction = from <= to ? 1.0f : -1.0f;
        const int step = from <= to ? 1 : -1;
        float x = xs[from], y = ys[from], h = 0;
        for (int32_t i = from;; i += step) {
            CalcCourse(lat[i], speed[i] * direction, x, y, h, 1.0f);
            xs[i] = x;
            ys[i] = y;
            if (i == to) break;
        }
    });
}

void AddBeaconTrackMarkers() {
    Procedure("AddBeaconTrackMarkers", [&] {
        const ReferenceLap& ref = RefLap();
        const int32_t P = ref.RefLapPoints;
        if (P < 2 || static_cast<int32_t>(ref.RefLapX.size()) <= P ||
            static_cast<int32_t>(ref.RefLapY.size()) <= P)
            return;
        TrackMarkerTable& markers = Markers();
        const int beacons =
            std::min(ref.NumOfBeacons, static_cast<int32_t>(ref.RefSections.size()));
        for (int k = 1; k <= beacons; ++k) {
            float d = 0;
            for (int s = 0; s < k - 1 && s < static_cast<int>(ref.RefSections.size()); ++s)
                d += ref.RefSections[s];
            const double at = std::trunc(static_cast<double>(d) / 0.1 + 1.0);
            int32_t n =
                std::isfinite(at) ? static_cast<int32_t>(std::clamp(at, 1.0, double(P))) : 1;
            if (n == P) n -= 1;
            const float a =
                Atan2(ref.RefLapX[n + 1] - ref.RefLapX[n], ref.RefLapY[n + 1] - ref.RefLapY[n]);
            const std::string name = "Beacon #" + std::to_string(k);
            // Design note: the marker of beacon k is found again by its name
            // (without "#", as names are compared) so that processing the
            // reference run again moves it instead of adding another of the
            // same name; otherwise the first free entry takes it.
            int entry = 0;
            for (int i = 1; i <= kLastMarkerEntry && entry == 0; ++i)
                if (WithoutHash(markers.Entries[i].Name) == WithoutHash(name)) entry = i;
            for (int i = 1; i <= kLastMarkerEntry && entry == 0; ++i)
                if (markers.Entries[i].Name.empty()) entry = i;
            if (entry == 0) continue;
            TrackMarker& m = markers.Entries[entry];
            if (m.Name.empty()) m.Name = name;
            m.X1 = ref.RefLapX[n] + 2.5f * std::cos(a);
            m.Y1 = ref.RefLapY[n] - 2.5f * std::sin(a);
            m.X2 = ref.RefLapX[n] - 2.5f * std::cos(a);
            m.Y2 = ref.RefLapY[n] + 2.5f * std::sin(a);
        }
    });
}

}  // namespace tl
