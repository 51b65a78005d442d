#include "results/laps.h"

#include <cmath>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "core/upcall.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl {

namespace {

// A slot's column as a plain pointer.
float* Col(int slotNumber) {
    return SlotColumn(slotNumber);
}

bool HoldsHash(const std::string& name) {
    return name.find('#') != std::string::npos;
}

float TimeAt(int32_t row) {
    const float* t = Col(slot::Time);
    if (!t || row < 0 || row > Store().RunData.UpperRow()) return 0.0f;
    return t[row];
}

float DistanceAt(int32_t row) {
    const float* d = Col(slot::DistanceKm);
    if (!d || row < 0 || row > Store().RunData.UpperRow()) return 0.0f;
    return d[row];
}

// A text box's whole number, limited as the form limits it.
int LimitWhole(const std::string& text, int low, int high) {
    const double v = std::floor(GetVal(text));
    if (!(v >= low)) return low;  // NaN reads as the low limit
    if (v > high) return high;
    return static_cast<int>(v);
}

// A marker placed by the system through FindFreeMarkerName; false when no
// entry is free.
bool PlaceSystemMarker(std::string& name, int32_t row, float halfLength) {
    int index = 0;
    if (!FindFreeMarkerName(index, name)) return false;
    AutoPlaceMarker(index, row, halfLength, name);
    return true;
}

}  // namespace

int CheckForLapMarker() {
    int found = -1;
    for (int i = 1; i < kTrackMarkerCount; ++i) {
        std::string& name = Markers().Entries[i].Name;
        if (!HoldsHash(name)) continue;
        if (found == -1)
            found = i;
        else
            name = WithoutHash(name);  // never more than one lap marker
    }
    return found;
}

void SetLapMarker(int index) {
    Procedure("SetLapMarker", [&] {
        const bool existed = CheckForLapMarker() != -1;
        if (index < 1 || index > kLastMarkerEntry) return;
        TrackMarkerTable& table = Markers();
        if (table.Entries[index].Name.empty()) return;
        for (TrackMarker& m : table.Entries) m.Name = WithoutHash(m.Name);
        auto& rows = Measurements().Rows;
        for (int r = 1; r <= kLastSectorRow; ++r) {
            rows[r].StartMarker = WithoutHash(rows[r].StartMarker);
            rows[r].EndMarker = WithoutHash(rows[r].EndMarker);
        }
        const std::string name = table.Entries[index].Name;
        for (int r = 1; r <= kLastSectorRow; ++r) {
            if (rows[r].StartMarker == name) rows[r].StartMarker += "#";
            if (rows[r].EndMarker == name) rows[r].EndMarker += "#";
        }
        table.Entries[index].Name += "#";

        const std::string& cfg = Paths().TracelabCfgPath;
        if (GetConfig(cfg, "AutoPlaceSectors") == 1.0f && !existed &&
            rows[kFirstSectorRow].Mode.empty()) {
            float n = GetConfig(cfg, "NumOfAutoSectorsTxt");
            n = FindMin(FindMax(n, 2.0f), 10.0f);
            const float len = FindClip(2.0f, GetConfig(cfg, "MarkerLengthTxt"), 200.0f);
            // The full length goes in as the half length here, so these markers
            // are twice as long as those of the form's button.
            AutoAddSectorMarkers(1, static_cast<int>(n) - 1, len);
        }
    });
}

void CalculateCurvesInNodata(int32_t run) {
    Procedure("CalculateCurvesInNodata", [&] {
        const auto rows = RowsOf(run);
        if (!rows.ok) return;
        const float* t = Col(slot::Time);
        const float* speed = Col(slot::SpeedKph);
        const float* lat = Col(slot::AccelLat);
        const float* px = Col(slot::PositionX);
        const float* py = Col(slot::PositionY);
        float* score = Col(slot::Scratch);
        if (!t || !speed || !lat || !px || !py || !score) return;
        const bool fromMap = SlotEnabled(slot::PositionX);
        constexpr float kTwoPi = 2.0f * kPi;
        float h = 0.0f;
        for (int32_t i = rows.first + 1; i <= rows.last; ++i) {
            const float prev = h;
            const float dt = t[i] - t[i - 1];
            const float v = speed[i] / 3600.0f * 1000.0f;
            float a = lat[i] * 9.80665f;
            if (a > v * v / 3.0f) a = v * v / 3.0f;
            if (fromMap)
                h = Atan2(px[i] - px[i - 1], py[i] - py[i - 1]);
            else if (v != 0.0f)
                h = h + a / v * dt;
            const float d = std::fabs(prev - h);
            // A row without time gives no rate of turn (the logger's clock
            // never repeats a row in practice).
            float rate = 0.0f;
            if (dt > 0.0f) rate = d <= kTwoPi * 0.9f ? d / dt : std::fabs(d - kTwoPi) / dt;
            if (rate > 0.02f)
                score[i] = FindMin(std::fabs(v / std::tan(rate)), 2000.0f) * speed[i];
            else
                score[i] = speed[i] * 2000.0f;
        }
        LinearFilterVar(run, ColumnOf(slot::Scratch), 1.0f);
        // Slot 25 gets the score whether or not it is in use, over "Analogue
        // Ch 1 [V]" when that is enabled; only slot 201 is cleared later.
        if (float* a1 = Col(25))
            for (int32_t i = rows.first; i <= rows.last; ++i) a1[i] = score[i];
    });
}

void AutoPlaceLapMarker(int32_t run, float halfLength) {
    Procedure("AutoPlaceLapMarker", [&] {
        const auto rows = RowsOf(run);
        if (!rows.ok) return;
        if (rows.length < 500) {
            Message("The run is too short to add a lap marker to");
            return;
        }
        CalculateCurvesInNodata(run);
        const float* score = Col(slot::Scratch);
        if (!score) return;
        int32_t best = 11;
        float most = 0.0f;
        for (int32_t i = rows.first + 100; i <= rows.last - 100; ++i)
            if (score[i] > most) {
                most = score[i];
                best = i;
            }
        // The score has served; the shared "*No Data*" column is left empty.
        DeleteVariableData(rows.first, rows.last, slot::Scratch);
        std::string name = "Lap Marker ";
        int index = 0;
        if (!FindFreeMarkerName(index, name)) {
            Message("The maximum number of track markers has been reached, no more can be added");
            return;
        }
        AutoPlaceMarker(index, best, halfLength, name);
        upcall::CheckInternalDataStillValid();
        SetLapMarker(index);
        upcall::CheckInternalDataStillValid();
    });
}

void AutoAddSectorMarkers(int32_t run, int count, float halfLength) {
    Procedure("AutoAddSectorMarkers", [&] {
        const auto rows = RowsOf(run);
        if (!rows.ok || rows.length < 500) return;
        const int lap = CheckForLapMarker();
        // Rows counted as if the run began at 0: exact for the first run, the
        // one this is meant for.
        const float total = DistanceAt(rows.length) - DistanceAt(0);

        int32_t first = 0, last = 0;
        const auto& laps = MarkerCrossings(lap, run);
        const bool onLap = lap > 0 && laps.size() > 2;
        std::string startName, endName;
        if (onLap) {
            double fastest = 0;
            for (size_t k = 1; k < laps.size(); ++k) {
                const double t = TimeAt(laps[k]) - TimeAt(laps[k - 1]);
                if (k == 1 || t < fastest) {
                    fastest = t;
                    first = laps[k - 1];
                    last = laps[k];
                }
            }
            startName = endName = Markers().Entries[lap].Name;
        } else {
            // The distances are in km, so the 50 of these limits never binds.
            first = FindIndexFromDistance(FindMin(total * 0.05f, 50.0f), 0, run);
            last = FindIndexFromDistance(FindMax(total * 0.95f, total - 50.0f), 0, run);
            startName = "Start of Run";
            if (!PlaceSystemMarker(startName, first, halfLength)) return;
            endName = "End of Run";
            if (!PlaceSystemMarker(endName, last, halfLength)) return;
        }

        CalculateCurvesInNodata(run);
        const float* score = Col(slot::Scratch);
        if (!score) return;
        const float base = DistanceAt(first);
        const float span = DistanceAt(last) - base;
        // Placing stops silently when no entry is free, with the rows written
        // so far left standing.
        auto placeSectors = [&] {
            auto& mrows = Measurements().Rows;
            const std::string timeName = Catalogue().RunVars[slot::Time].Name;
            const int upper = Store().RunData.UpperRow();
            for (int i = 1; i <= count; ++i) {
                const float denom = static_cast<float>(4 * count + 4);
                const float lo = base + span * static_cast<float>(4 * i - 1) / denom;
                const float hi = base + span * static_cast<float>(4 * i + 1) / denom;
                const int32_t from = FindIndexFromDistance(lo, 0, run);
                const int32_t to = FindIndexFromDistance(hi, 0, run);
                int32_t best = 21;
                float most = 0.0f;
                for (int32_t r = std::max(from, 0); r <= std::min(to, upper); ++r)
                    if (score[r] > most) {
                        most = score[r];
                        best = r;
                    }
                std::string name = "M" + std::to_string(i);
                if (!PlaceSystemMarker(name, best, halfLength)) return;
                const int row = kFirstSectorRow - 1 + i;
                if (row > kLastSectorRow) return;
                mrows[row].Mode = "Sector " + std::to_string(i);
                mrows[row].VarName = timeName;
                mrows[row].EndMarker = name;
                if (row + 1 <= kLastSectorRow) mrows[row + 1].StartMarker = name;
                if (i == 1) mrows[kFirstSectorRow].StartMarker = startName;
            }
            const int closing = kFirstSectorRow + count;
            if (closing < kFirstSectorRow || closing > kLastSectorRow) return;
            mrows[closing].Mode = "Sector " + std::to_string(count + 1);
            mrows[closing].VarName = timeName;
            mrows[closing].EndMarker = endName;
            if (count < 1) mrows[closing].StartMarker = startName;
            for (int r = closing + 1; r <= kLastSectorRow; ++r) mrows[r] = MeasurementRow{};
        };
        placeSectors();
        // The score has served; the shared "*No Data*" column is left empty.
        DeleteVariableData(rows.first, rows.last, slot::Scratch);
    });
}

int LimitMarkerLength(const std::string& text) {
    return LimitWhole(text, 2, 200);
}

int LimitAutoSectorCount(const std::string& text) {
    return LimitWhole(text, 2, 10);
}

void AutoAddLapMarkerCmd(int32_t run, const std::string& markerLengthText) {
    const int length = LimitMarkerLength(markerLengthText);
    AutoPlaceLapMarker(run, static_cast<float>(length) / 2.0f);
}

void AutoAddSectorsCmd(int32_t run, const std::string& sectorCountText,
                       const std::string& markerLengthText) {
    const int count = LimitAutoSectorCount(sectorCountText);
    const int length = LimitMarkerLength(markerLengthText);
    AutoAddSectorMarkers(run, count - 1, static_cast<float>(length) / 2.0f);
    upcall::CheckInternalDataStillValid();
}

void ClearAllSectors() {
    auto& rows = Measurements().Rows;
    for (int r = kFirstSectorRow; r <= kLastSectorRow; ++r) rows[r] = MeasurementRow{};
}

RunLaps LapsOfRun(int32_t run) {
    RunLaps out;
    const int lap = CheckForLapMarker();
    if (lap < 1) return out;
    const auto& c = MarkerCrossings(lap, run);
    double fastest = 0;
    for (size_t k = 1; k < c.size(); ++k) {
        LapInfo info;
        info.number = static_cast<int>(k);
        info.startRow = c[k - 1];
        info.endRow = c[k];
        info.time = static_cast<double>(TimeAt(c[k]) - TimeAt(c[k - 1]));
        if (k == 1 || info.time < fastest) {
            fastest = info.time;
            out.fastest = info.number;
        }
        out.laps.push_back(info);
    }
    return out;
}

}  // namespace tl
