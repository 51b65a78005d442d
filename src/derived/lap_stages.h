// The stages of the derived pipeline that map a run without GPS position
// (mapping modes 1 and 2): the wheel-speed reference lap, its overlay, and
// the beacon markers. The automatic lap marker is in results/laps.h.
#pragma once

#include <cstdint>

#include "results/laps.h"

namespace tl {

// The reference lap from the reference run's wheel (or GPS) speed.
void GenerateWSBReferenceLap(int32_t run);
// Positions of the run's rows laid over the reference lap.
void OverlayWSBTrackMap(int32_t run);
// Track markers at the beacons of the reference lap.
void AddBeaconTrackMarkers();

}  // namespace tl
