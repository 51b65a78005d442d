#include "results/ideal_lap.h"

#include "results/laps.h"
#include "results/measurement_table.h"
#include "results/track_markers.h"

namespace tl {

bool SectorsTileLap(std::vector<int>& rows) {
    rows.clear();
    const int lap = CheckForLapMarker();
    if (lap < 1) return false;
    const std::string& lapName = Markers().Entries[lap].Name;
    const auto& all = Measurements().Rows;
    std::string at = lapName;
    for (int m = kFirstSectorRow; m <= kLastSectorRow; ++m) {
        if (all[m].Mode.empty()) continue;
        if (all[m].StartMarker != at || all[m].EndMarker.empty()) return false;
        at = all[m].EndMarker;
        rows.push_back(m);
        if (at == lapName) break;
    }
    // Rows after the lap is closed would start a second lap.
    for (int m = rows.empty() ? kFirstSectorRow : rows.back() + 1; m <= kLastSectorRow; ++m)
        if (!all[m].Mode.empty()) return false;
    return !rows.empty() && at == lapName;
}

IdealLap IdealLapOfRun(int32_t run) {
    IdealLap ideal;
    if (!SectorsTileLap(ideal.rows)) return ideal;
    const RunLaps laps = LapsOfRun(run);
    if (laps.fastest < 1) return ideal;
    for (int m : ideal.rows) {
        double best = 0;
        int bestLap = 0;
        for (const MeasurementCell& cell : MeasurementCells(m, run)) {
            if (bestLap == 0 || cell.value < best) {
                best = cell.value;
                bestLap = cell.offset + 1;
            }
        }
        if (bestLap == 0) return IdealLap{};
        ideal.best.push_back(best);
        ideal.bestLap.push_back(bestLap);
        ideal.time += best;
    }
    ideal.valid = true;
    ideal.gapToFastest = laps.laps[static_cast<size_t>(laps.fastest - 1)].time - ideal.time;
    return ideal;
}

}  // namespace tl
