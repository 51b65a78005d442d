// The track marker table and the tables of measurements and sectors that are
// defined by markers. For now this holds the data only: the crossing search,
// the placing of markers and the look-ups arrive with the laps work.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tl {

struct TrackMarker {
    float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
    // A free entry has an empty name; a name ending in "#" is the lap marker.
    std::string Name;
    // Crossings[run] for run 1 to RunCount (index 0 unused): the rows at which
    // the run's path crosses the line, ascending. Count is Rows.size().
    std::vector<std::vector<int32_t>> Crossings;
};

inline constexpr int kTrackMarkerCount = 101;  // entries 0 to 100

struct TrackMarkerTable {
    std::array<TrackMarker, kTrackMarkerCount> Entries;
    // Every entry's per-run array to runs 1 to runCount, keeping the
    // crossings of the runs both sizes share.
    void ResizeRuns(int runCount);
    // Re-creates the table: all entries free, no per-run arrays.
    void Reset();
};

TrackMarkerTable& Markers();

// MeasurementRows 0 to 100: 1 to 89 measurements, 90 to 100 sectors. This is
// also the sector table that a clear re-creates.
struct MeasurementRow {
    std::string Mode;
    std::string VarName;
    std::string StartMarker;
    std::string EndMarker;
};

struct MeasurementTables {
    std::array<MeasurementRow, 101> Rows;
    // The measurement selection table, 3 by 7 (indices [0..2][0..6]).
    std::array<std::array<std::string, 7>, 3> Selection;
    void Reset();
};

MeasurementTables& Measurements();

// Recomputes every marker's crossings for all runs. Until the crossing
// search arrives with the laps work this only empties every marker's crossing
// lists for runs 1 to RunCount, so no stale crossing outlives a change of
// runs.
void CheckAllTrackMarkers();

}  // namespace tl
