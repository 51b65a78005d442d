// Time slip: the time gained or lost against the reference lap.
#pragma once

namespace tl {

// Recomputes the time-slip slots of every run. Called by
// CheckInternalDataStillValid after any change of runs or options. The
// computation arrives with the time-slip work; until then this does nothing.
void RecalcTimeSlip();

}  // namespace tl
