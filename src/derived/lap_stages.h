// The stages of the derived pipeline that belong to the laps and wheel-speed
// mapping work: the wheel-speed reference lap and its overlay (mapping modes 1
// and 2), the beacon markers, and the automatic lap marker of the first run.
// Until that work lands these are no-ops (lap_stages_seam.cpp): the pipeline
// calls them in their places, and a run mapped in mode 1 or 2 keeps cleared
// positions.
#pragma once

#include <cstdint>

namespace tl {

// The reference lap from the reference run's wheel (or GPS) speed.
void GenerateWSBReferenceLap(int32_t run);
// Positions of the run's rows laid over the reference lap.
void OverlayWSBTrackMap(int32_t run);
// Track markers at the beacons of the reference lap.
void AddBeaconTrackMarkers();
// The index of the marker that is the lap marker, -1 when there is none.
int CheckForLapMarker();
// Places a lap marker on the run's path, halfLength metres either side.
void AutoPlaceLapMarker(int32_t run, float halfLength);

}  // namespace tl
