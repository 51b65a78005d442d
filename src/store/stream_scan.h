// The counting pass over a run of the MQ7 and SW63 record stream, as the run
// store needs it: the scan of formats/stream_records.h on the run's stretch
// of the raw byte stream.
#pragma once

#include <cstdint>

#include "formats/stream_records.h"

namespace tl {

// The counting pass on run's stretch of RawData. rawMarkIn and sampleMarkIn
// are the look-ups (-1: none).
StreamScan ScanRawStream(int32_t run, int32_t rawMarkIn = -1, int32_t sampleMarkIn = -1);

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
