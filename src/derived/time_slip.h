// Time slip: the time gained or lost against the best passage of each sector.
#pragma once

namespace tl {

// Rebuilds slots 24 (rate of time slip) and 23 (time slip) of every run from
// the sector rows and the markers' crossings. Called by
// CheckInternalDataStillValid after any change of runs, markers or sectors.
void RecalcTimeSlip();

}  // namespace tl
