// The track marker table, the geometry of a crossing, the placing of markers
// by the user or by the system, and the two look-ups every results stage uses:
// a marker's index from its name, and a run's row from a distance.
//
// Laps, sectors, measurements and time slip read only the crossing lists; none
// of them looks at positions again.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tl {

struct TrackMarker {
    // The two ends of the marker line, metres on the track plane.
    float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
    // A free entry has an empty name; a name holding "#" is the lap marker.
    std::string Name;
    // Crossings[run] for run 1 to RunCount (index 0 unused): the rows at which
    // the run's path crosses the line, ascending. Count is Rows.size(). The
    // row is the one before the path crosses; its time is V(row, 1).
    std::vector<std::vector<int32_t>> Crossings;
};

inline constexpr int kTrackMarkerCount = 101;  // entries 0 to 100; 1 to 99 given out
inline constexpr int kLastMarkerEntry = 99;
// The crossing search gives up when one marker has this many crossings over
// all runs in memory.
inline constexpr int kMaxMarkerCrossings = 1000;

struct TrackMarkerTable {
    std::array<TrackMarker, kTrackMarkerCount> Entries;
    // Every entry's per-run array to runs 1 to runCount, keeping the
    // crossings of the runs both sizes share.
    void ResizeRuns(int runCount);
    // Re-creates the table: all entries free, no per-run arrays.
    void Reset();
};

TrackMarkerTable& Markers();

// MeasurementRows 0 to 100: 1 to 89 measurements, 90 to 100 sectors. Row 0 is
// scratch for the lap column.
struct MeasurementRow {
    std::string Mode;
    std::string VarName;
    std::string StartMarker;
    std::string EndMarker;
};

inline constexpr int kFirstSectorRow = 90;
inline constexpr int kLastSectorRow = 100;

struct MeasurementTables {
    std::array<MeasurementRow, 101> Rows;
    // The measurement selection table, 3 by 7 (indices [0..2][0..6]).
    std::array<std::array<std::string, 7>, 3> Selection;
    void Reset();
};

MeasurementTables& Measurements();

// The name with every "#" removed: names are compared for uniqueness this way.
std::string WithoutHash(const std::string& name);

// The crossing search of one marker line over the whole of RunData, rows 1 to
// lastRow - 1 (steps i to i + 1 with i < lastRow), across the joins between
// runs. All arithmetic in double precision. After a crossing the next hundred
// rows are skipped. When the count reaches kMaxMarkerCrossings the search
// stops, shows "Internal intersection count error" and reports overflow.
struct CrossingSearch {
    std::vector<int32_t> rows;
    bool overflow = false;
};
CrossingSearch FindMarkerCrossings(double x1, double y1, double x2, double y2, int32_t lastRow);

// Shares the rows of a search among the runs in memory: each run keeps the
// rows within its RunStart to RunEnd, in order.
void ShareCrossingsAmongRuns(TrackMarker& marker, const std::vector<int32_t>& rows);

// Recomputes every named marker's crossings for all runs. A marker that no
// run crosses any more loses its name (it is deleted silently). On the
// 1000-crossing stop the remaining markers are left as they were.
void CheckAllTrackMarkers();

// The crossing rows of entry index in run; empty for an entry or run outside
// the table (entry 0, the "not found" of FindTrackMarkerIndex, has none).
const std::vector<int32_t>& MarkerCrossings(int index, int32_t run);

// The entry 1 to 99 whose name equals name exactly; 0 if none.
int FindTrackMarkerIndex(const std::string& name);

// The row of run at which slot 11 (km) reaches distance: a coarse-to-fine walk
// from the hint startRow (RunStart when the hint is already beyond the
// distance). The result is within two rows below the true crossing, or
// startRow itself when that row already reaches it.
int32_t FindIndexFromDistance(float distance, int32_t startRow, int32_t run);

// FindIndexFromDistance for many look-ups in one run, as the time slip makes
// them: the same result for every distance and hint, but where the run's
// distance never falls (the usual case) the walk's comparisons are decided
// by row numbers against the first row reaching the distance, which a cursor
// finds, instead of by reading the column at every step of the walk.
class DistanceFinder {
  public:
    explicit DistanceFinder(int32_t run);
    int32_t Find(float distance, int32_t startRow);

  private:
    int32_t run_;
    const float* d_ = nullptr;
    int32_t upper_ = 0;
    int32_t first_ = 0, last_ = 0, length_ = 0;
    bool rising_ = false;
    int32_t cursor_ = -1;  // first row reaching lastTarget_, from cursorBase_
    int32_t cursorBase_ = -1;
    float lastTarget_ = 0;
};

// Places entry index across the path at row: the direction of travel over the
// last ten rows turned a quarter turn to the left, halfLength metres either
// side of the row's position. Gives the entry its name.
void AutoPlaceMarker(int index, int32_t row, float halfLength, const std::string& name);

// The first free entry 1 to 99 (false when there is none), and a name no
// entry has: name itself, then name followed by 1, 2, ...
bool FindFreeMarkerName(int& index, std::string& name);

// --- Markers drawn by the user (the logic behind the track map's line tool
// and the dialog "Enter details forthe new marker") ---

// What the dialog proposes on load: the first free entry and "Marker <index>",
// and whether "Use this marker as the lap marker" starts checked (no lap
// marker yet). index is -1, after the message "The maximum number of track
// markers has been exceeded", when no entry is free.
struct NewMarkerProposal {
    int index = -1;
    std::string name;
    bool useAsLap = false;
};
NewMarkerProposal ProposeNewMarker();

// The dialog's OK: false, after "Track markers must have a unique name", when
// an entry already has this name (compared without "#"). Otherwise the entry
// takes the name and, if useAsLap, becomes the lap marker.
bool AcceptNewMarkerName(int index, const std::string& name, bool useAsLap);

// The dialog drops "#" from what is typed: true when the character is
// refused (the dialog beeps).
bool IsRefusedMarkerNameChar(char32_t c);

// Adds a marker along the line (x1, y1)-(x2, y2), in track coordinates, as the
// map's line tool does: "Calculating Intersection Times" in the wait form, the
// crossing search to the table's upper row less 1, "A track marker must cross
// the track" when nothing crosses; otherwise askName shows the dialog and
// returns the entry index or -1 (cancelled: nothing stored). Then the rows
// are shared among the runs, the ends stored, and the data checked. Returns
// the new entry's index or -1.
int CalcIntersectTime(double x1, double y1, double x2, double y2,
                      const std::function<int()>& askName);

// The map's delete: the entry loses its name and the data are checked.
void DeleteTrackMarker(int index);

}  // namespace tl
