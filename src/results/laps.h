// Laps and sectors: the lap marker, the automatic lap and sector markers, the
// sector rows (MeasurementRows 90 to 100), and the lap and sector time table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tl {

// The index of the lap marker (the first entry whose name holds "#"), or -1.
// Any later entry holding "#" loses it on the spot.
int CheckForLapMarker();

// Makes entry index (1 to 99, named) the lap marker: "#" leaves every other
// name and every StartMarker/EndMarker of rows 1 to 100, and is appended to
// those equal to this marker's name and to the name itself. With the option
// AutoPlaceSectors, when there was no lap marker before and row 90 is free,
// the automatic sectors are added on run 1.
void SetLapMarker(int index);

// Slot 201 (then copied into slot 25): how good each row is for a marker, high
// on a fast straight.
void CalculateCurvesInNodata(int32_t run);

// The automatic lap marker at the row of the best score, named "Lap Marker"
// (made unique), halfLength metres either side.
void AutoPlaceLapMarker(int32_t run, float halfLength);

// count markers "M1".."M<count>" at the best points of the fastest lap (or of
// the whole run, between "Start of Run" and "End of Run"), and count + 1
// sector rows from row 90.
void AutoAddSectorMarkers(int32_t run, int count, float halfLength);

// The options form of laps and sectors, as engine functions: the limits the
// form applies to its texts, and its two buttons.
int LimitMarkerLength(const std::string& text);     // whole number, 2 to 200
int LimitAutoSectorCount(const std::string& text);  // whole number, 2 to 10
void AutoAddLapMarkerCmd(int32_t run, const std::string& markerLengthText);
void AutoAddSectorsCmd(int32_t run, const std::string& sectorCountText,
                       const std::string& markerLengthText);
void ClearAllSectors();

// One run's laps from the lap marker's crossings: lap k runs from crossing k
// to crossing k + 1 (rows), its time the difference of slot 1.
struct LapInfo {
    int number = 0;  // 1-based
    int32_t startRow = 0;
    int32_t endRow = 0;
    double time = 0;
};
struct RunLaps {
    std::vector<LapInfo> laps;
    int fastest = 0;  // lap number of the fastest, 0 when none
};
// Laps of run (empty without a lap marker or with fewer than two crossings).
RunLaps LapsOfRun(int32_t run);

}  // namespace tl
