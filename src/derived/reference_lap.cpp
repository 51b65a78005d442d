#include "derived/reference_lap.h"

namespace tl {

void ReferenceLap::Reset() {
    RefRun = 0;
    RefLapPoints = 0;
    RefLapLength = 0;
    RefLapX.clear();
    RefLapY.clear();
    RefSections.clear();
}

ReferenceLap& RefLap() {
    static ReferenceLap lap;
    return lap;
}

}  // namespace tl
