// The counting pass over the record stream of the MQ7 and SW63 families, as
// the run store needs it.
#pragma once

#include <cstdint>

namespace tl {

// The scan's sample count of the run: the run's end row lies this many rows
// after its RunStart (so the run has this many rows plus one).
int32_t CountStreamRows(int32_t run);

// The raw index at which the run's stream reaches the given time in
// hundredths of a second (the scan's raw mark), or -1 when it cannot be
// found.
int32_t StreamRawIndexOfTime(int32_t run, int32_t hundredths);

// True once the stream scan is built; the trim refuses stream runs until then.
bool StreamScanAvailable();

}  // namespace tl
