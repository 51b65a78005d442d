#include "results/track_markers.h"

#include <algorithm>
#include <cmath>

#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "core/upcall.h"
#include "results/laps.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl {

void TrackMarkerTable::ResizeRuns(int runCount) {
    if (runCount < 0) runCount = 0;
    for (TrackMarker& m : Entries) m.Crossings.resize(static_cast<size_t>(runCount) + 1);
}

void TrackMarkerTable::Reset() {
    for (TrackMarker& m : Entries) m = TrackMarker{};
}

TrackMarkerTable& Markers() {
    static TrackMarkerTable table;
    return table;
}

void MeasurementTables::Reset() {
    Rows.fill(MeasurementRow{});
    for (auto& row : Selection) row.fill(std::string{});
}

MeasurementTables& Measurements() {
    static MeasurementTables tables;
    return tables;
}

std::string WithoutHash(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (char c : name)
        if (c != '#') out.push_back(c);
    return out;
}

namespace {

constexpr double kVertical = 1.0E+9;

// The marker's end points in double, with the slope and intercept of its line
// and a box around it that is a little wider than any test below accepts, so
// that most steps of the path are rejected by four comparisons.
struct MarkerLine {
    double x1, y1, x2, y2;
    double m1, c1;
    double boxLoX, boxHiX, boxLoY, boxHiY;

    MarkerLine(double ax, double ay, double bx, double by) : x1(ax), y1(ay), x2(bx), y2(by) {
        m1 = x1 == x2 ? kVertical : (y1 - y2) / (x1 - x2);
        c1 = y1 - m1 * x1;
        constexpr double margin = 0.001;
        boxLoX = std::min(x1, x2) - margin;
        boxHiX = std::max(x1, x2) + margin;
        boxLoY = std::min(y1, y2) - margin;
        boxHiY = std::max(y1, y2) + margin;
    }

    // One step of the path, P to Q.
    bool Crossed(double px, double py, double qx, double qy) const {
        // The cheap range tests first: the segments must overlap in X and in Y.
        if (!(IsBetween(x1, px, x2) || IsBetween(x1, qx, x2) || IsBetween(px, x1, qx) ||
              IsBetween(px, x2, qx)))
            return false;
        if (!(IsBetween(y1, py, y2) || IsBetween(y1, qy, y2) || IsBetween(py, y1, qy) ||
              IsBetween(py, y2, qy)))
            return false;
        const double m2 = px == qx ? kVertical : (py - qy) / (px - qx);
        const double c2 = py - m2 * px;
        // Parallel lines meet "at" 1E+9, which no real marker reaches.
        const double xi = m1 == m2 ? kVertical : (c2 - c1) / (m1 - m2);
        const double yi = m2 * xi + c2;
        return IsBetween(x1, xi, x2) && IsBetween(px, xi, qx) && IsBetween(y1, yi, y2) &&
               IsBetween(py, yi, qy);
    }
};

}  // namespace

CrossingSearch FindMarkerCrossings(double x1, double y1, double x2, double y2, int32_t lastRow) {
    CrossingSearch result;
    float* px = SlotColumn(slot::PositionX);
    float* py = SlotColumn(slot::PositionY);
    if (!px || !py) return result;
    lastRow = std::min(lastRow, Store().RunData.UpperRow());
    const MarkerLine line(x1, y1, x2, y2);
    // The box test is a pre-filter only: every step it lets through is
    // decided by the exact tests of Crossed.
    const float loX = static_cast<float>(line.boxLoX), hiX = static_cast<float>(line.boxHiX);
    const float loY = static_cast<float>(line.boxLoY), hiY = static_cast<float>(line.boxHiY);
    for (int32_t i = 1; i < lastRow; ++i) {
        const float ax = px[i], bx = px[i + 1];
        if ((ax < loX && bx < loX) || (ax > hiX && bx > hiX)) continue;
        const float ay = py[i], by = py[i + 1];
        if ((ay < loY && by < loY) || (ay > hiY && by > hiY)) continue;
        if (!line.Crossed(ax, ay, bx, by)) continue;
        if (static_cast<int>(result.rows.size()) + 1 >= kMaxMarkerCrossings) {
            result.overflow = true;
            Message("Internal intersection count error");
            return result;
        }
        result.rows.push_back(i);
        // A second after a crossing is skipped, so that noise near the line
        // can't make two crossings out of one.
        i += 100;
    }
    return result;
}

void ShareCrossingsAmongRuns(TrackMarker& marker, const std::vector<int32_t>& rows) {
    const RunStore& s = Store();
    marker.Crossings.resize(static_cast<size_t>(std::max(s.RunCount, 0)) + 1);
    for (int32_t run = 1; run <= s.RunCount && run < static_cast<int32_t>(s.RunInfo.size());
         ++run) {
        const RunRecord& rec = s.RunInfo[run];
        auto& mine = marker.Crossings[run];
        mine.clear();
        for (int32_t row : rows)
            if (IsBetween(rec.RunStart, row, rec.RunEnd)) mine.push_back(row);
    }
}

void CheckAllTrackMarkers() {
    Procedure("CheckAllTrackMarkers", [&] {
        TrackMarkerTable& table = Markers();
        table.ResizeRuns(Store().RunCount);
        const int32_t last = Store().RunData.UpperRow();
        for (int index = 1; index < kTrackMarkerCount; ++index) {
            TrackMarker& m = table.Entries[index];
            if (m.Name.empty()) continue;
            const CrossingSearch found = FindMarkerCrossings(m.X1, m.Y1, m.X2, m.Y2, last);
            if (found.overflow) return;
            LogDebug(
                "resetting node cross count while checking all track markers after "
                "processing");
            ShareCrossingsAmongRuns(m, found.rows);
            size_t total = 0;
            for (const auto& rows : m.Crossings) total += rows.size();
            // A marker that no run crosses any more is deleted silently.
            if (total == 0) m.Name.clear();
        }
        for (TrackMarker& m : table.Entries)
            if (m.Name.empty())
                for (auto& rows : m.Crossings) rows.clear();
    });
}

const std::vector<int32_t>& MarkerCrossings(int index, int32_t run) {
    static const std::vector<int32_t> none;
    if (index < 1 || index >= kTrackMarkerCount) return none;
    const auto& c = Markers().Entries[index].Crossings;
    if (run < 1 || run >= static_cast<int32_t>(c.size())) return none;
    return c[run];
}

int FindTrackMarkerIndex(const std::string& name) {
    const TrackMarkerTable& table = Markers();
    for (int i = 1; i <= kLastMarkerEntry; ++i)
        if (table.Entries[i].Name == name) return i;
    return 0;
}

int32_t FindIndexFromDistance(float distance, int32_t startRow, int32_t run) {
    const auto rows = RowsOf(run);
    const float* d = SlotColumn(slot::DistanceKm);
    const int32_t upper = Store().RunData.UpperRow();
    if (!d || upper < 1) return startRow;
    // A hint outside the table (the time-slip search passes a crossing's
    // ordinal, which is small) reads as the run's start.
    const int32_t runStart = rows.ok ? rows.first : 1;
    const int32_t runEnd = rows.ok ? rows.last : upper;
    int32_t i = startRow;
    if (i < 0 || i > upper) i = runStart;
    if (d[i] > distance) i = runStart;
    int32_t step = 32768;
    while (step > rows.length / 4 && step > 1)
        step = static_cast<int32_t>(std::nearbyint(step / 2.0));
    while (d[i] < distance && i + step < runEnd && step > 1) {
        while (d[i] < distance && i + step < runEnd) i += step;
        i -= step;
        step = static_cast<int32_t>(step / 2.0 + 0.5);
    }
    return i;
}

DistanceFinder::DistanceFinder(int32_t run) : run_(run) {
    const auto rows = RowsOf(run);
    d_ = SlotColumn(slot::DistanceKm);
    upper_ = Store().RunData.UpperRow();
    if (!rows.ok || !d_) return;
    first_ = rows.first;
    last_ = rows.last;
    length_ = rows.length;
    rising_ = true;
    for (int32_t i = first_; i < last_ && rising_; ++i)
        rising_ = d_[i + 1] >= d_[i];  // false for a NaN as well
}

int32_t DistanceFinder::Find(float distance, int32_t startRow) {
    if (!rising_ || !d_) return FindIndexFromDistance(distance, startRow, run_);
    int32_t i = startRow;
    if (i < 0 || i > upper_) i = first_;
    if (d_[i] > distance) i = first_;
    // The walk below reads rows i to last_ - 1 only; outside the run (a hint
    // in another run) the distance may fall, so the walk itself is taken.
    if (i < first_ || i > last_) return FindIndexFromDistance(distance, startRow, run_);

    // reach: the first row from i whose distance is not below the target. As
    // the distance never falls, "d(x) < distance" is "x < reach" for every
    // row x the walk reads.
    if (cursorBase_ != i || cursor_ < i || distance < lastTarget_) {
        cursor_ = static_cast<int32_t>(std::lower_bound(d_ + i, d_ + last_ + 1, distance) - d_);
        cursorBase_ = i;
    } else {
        while (cursor_ <= last_ && d_[cursor_] < distance) ++cursor_;
    }
    lastTarget_ = distance;
    const int32_t reach = cursor_;

    int32_t step = 32768;
    while (step > length_ / 4 && step > 1) step = static_cast<int32_t>(std::nearbyint(step / 2.0));
    if (i >= reach || step <= 1) return i;
    // The steps are powers of two, so every level keeps the parity of i, and
    // each level ends on the last row of that parity below reach. When even
    // the first step from below reach stays inside the run, no level is cut
    // short by the run's end and the walk ends there.
    if (static_cast<int64_t>(reach) + step <= last_)
        return (reach - 1 - i) % 2 == 0 ? reach - 1 : reach - 2;
    while (i < reach && i + step < last_ && step > 1) {
        while (i < reach && i + step < last_) i += step;
        i -= step;
        step = static_cast<int32_t>(step / 2.0 + 0.5);
    }
    return i;
}

void AutoPlaceMarker(int index, int32_t row, float halfLength, const std::string& name) {
    if (index < 1 || index > kLastMarkerEntry) return;
    const float* x = SlotColumn(slot::PositionX);
    const float* y = SlotColumn(slot::PositionY);
    if (!x || !y || row < 10 || row > Store().RunData.UpperRow()) return;
    // The direction of travel over the last ten rows, a quarter turn left.
    const float a = Atan2(x[row] - x[row - 10], y[row] - y[row - 10]) - kPi / 2.0f;
    TrackMarker& m = Markers().Entries[index];
    m.Name = name;
    m.X1 = x[row] - halfLength * std::sin(a);
    m.Y1 = y[row] - halfLength * std::cos(a);
    m.X2 = x[row] + halfLength * std::sin(a);
    m.Y2 = y[row] + halfLength * std::cos(a);
}

namespace {

bool NameTaken(const std::string& candidate) {
    for (const TrackMarker& m : Markers().Entries)
        if (!m.Name.empty() && WithoutHash(m.Name) == candidate) return true;
    return false;
}

int FirstFreeEntry() {
    for (int i = 1; i <= kLastMarkerEntry; ++i)
        if (Markers().Entries[i].Name.empty()) return i;
    return -1;
}

}  // namespace

bool FindFreeMarkerName(int& index, std::string& name) {
    const int free = FirstFreeEntry();
    if (free < 0) return false;
    index = free;
    const std::string base = name;
    std::string candidate = base;
    for (int n = 1; NameTaken(candidate); ++n) candidate = base + std::to_string(n);
    name = candidate;
    return true;
}

NewMarkerProposal ProposeNewMarker() {
    NewMarkerProposal p;
    const int free = FirstFreeEntry();
    if (free < 0) {
        Message("The maximum number of track markers has been exceeded");
        return p;
    }
    p.index = free;
    p.name = "Marker " + std::to_string(free);
    p.useAsLap = CheckForLapMarker() == -1;
    return p;
}

bool IsRefusedMarkerNameChar(char32_t c) {
    return c == U'#';
}

bool AcceptNewMarkerName(int index, const std::string& name, bool useAsLap) {
    if (index < 1 || index > kLastMarkerEntry) return false;
    // Entries 1 to 100 take part, with "#" removed from the stored names; the
    // typed text can't hold one.
    const std::string typed = WithoutHash(name);
    for (int i = 1; i < kTrackMarkerCount; ++i) {
        const TrackMarker& m = Markers().Entries[i];
        if (!m.Name.empty() && WithoutHash(m.Name) == typed) {
            Message("Track markers must have a unique name");
            return false;
        }
    }
    Markers().Entries[index].Name = typed;
    if (useAsLap) SetLapMarker(index);
    return true;
}

int CalcIntersectTime(double x1, double y1, double x2, double y2,
                      const std::function<int()>& askName) {
    return ProcedureValue<int>("CalcIntersectTime", -1, [&] {
        ShowPleaseWait("Calculating Intersection Times");
        const CrossingSearch found =
            FindMarkerCrossings(x1, y1, x2, y2, Store().RunData.UpperRow() - 1);
        HidePleaseWait();
        if (found.overflow) return -1;
        if (found.rows.empty()) {
            Message("A track marker must cross the track");
            return -1;
        }
        const int index = askName ? askName() : -1;
        if (index < 1 || index > kLastMarkerEntry) return -1;
        TrackMarker& m = Markers().Entries[index];
        ShareCrossingsAmongRuns(m, found.rows);
        m.X1 = static_cast<float>(x1);
        m.Y1 = static_cast<float>(y1);
        m.X2 = static_cast<float>(x2);
        m.Y2 = static_cast<float>(y2);
        upcall::CheckInternalDataStillValid();
        return index;
    });
}

void DeleteTrackMarker(int index) {
    if (index < 1 || index > kLastMarkerEntry) return;
    Markers().Entries[index].Name.clear();
    upcall::CheckInternalDataStillValid();
}

}  // namespace tl
