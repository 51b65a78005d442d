#include "results/track_markers.h"

#include "store/run_store.h"

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

void CheckAllTrackMarkers() {
    // Seam: the crossing search (marker line against each step of the
    // position path) arrives with the laps work. Until then the lists are
    // emptied and sized to the runs in memory.
    TrackMarkerTable& table = Markers();
    table.ResizeRuns(Store().RunCount);
    for (TrackMarker& m : table.Entries)
        for (auto& rows : m.Crossings) rows.clear();
}

}  // namespace tl
