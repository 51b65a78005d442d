// The reference lap of the wheel-speed track map and of the beacons: one lap
// resampled every 0.1 m, and the spacing of the beacons along it.
#pragma once

#include <cstdint>
#include <vector>

namespace tl {

struct ReferenceLap {
    int32_t RefRun = 0;
    int32_t RefLapPoints = 0;
    float RefLapLength = 0;
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

}  // namespace tl
