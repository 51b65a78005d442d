// The reference lap of the wheel-speed track map and of the beacons: one lap
// of the reference run dead-reckoned from speed (slot 10) and lateral
// acceleration (slot 4), forced to close on itself, and resampled every
// 0.1 m; and the stages that lay every lap of every run onto it by distance
// (slot 11), with the beacons keeping the distances in step (mapping modes 1
// and 2). Beacons are numbered as in derived/beacons.h: column c of the beacon
// table, 0 to NumOfBeacons - 1, and RefSections[c] from beacon c to c + 1.
#pragma once

#include <cstdint>
#include <vector>

#include "derived/beacons.h"

namespace tl {

struct ReferenceLap {
    int32_t RefRun = 0;
    // Fix(RefLapLength / 0.1 + 1); RefLapX/Y hold entries 0 to RefLapPoints.
    int32_t RefLapPoints = 0;
    float RefLapLength = 0;
    // Entry 1 is the lap's start (beacon 0), entry j lies (j - 1) * 0.1 m on.
    // Entry 0 repeats the last entry, so that an index that wraps round the
    // lap to 0 finds the lap's end rather than the plane's origin.
    std::vector<float> RefLapX;
    std::vector<float> RefLapY;
    // Beacons per lap, read from the options at each clear.
    int32_t NumOfBeacons = 0;
    // Metres between consecutive beacons.
    std::vector<float> RefSections;
    // Empties the arrays; NumOfBeacons is left to the caller.
    void Reset();
};

ReferenceLap& RefLap();

// Makes the lap from row first to row last a closed loop by correcting the
// lateral acceleration (a private copy of slot 4): one full turn of heading,
// then up to 50 rounds of two parameters that pull the path north-south and
// east-west until its end lies within 0.1 m of its start. The closed path is
// stored in slots 21 and 22 over the rows. Returns the rounds taken.
int CloseTrackMap(int32_t first, int32_t last);
// The reference lap from lap `lap` of the table (beacon 0 of that lap to beacon
// 0 of the next), whose positions stand in slots 21 and 22: length, points,
// sections and the 0.1 m resampling.
void SetRefLap(int32_t lap, const BeaconTable& table, int32_t run);
// Rows first to last, in either direction, placed on the reference lap by
// their distance from row first, divided by scale, plus offset metres.
void OverLayLapOnToReference(int32_t first, int32_t last, int32_t run, float offset, float scale);
// Rows from..to (either direction) dead-reckoned from row from's position
// with heading 0. Going backwards the speed is negated, so those rows hold
// the start position.
void TrackMapOpenSection(int32_t from, int32_t to);

}  // namespace tl
