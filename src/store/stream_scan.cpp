#include "store/stream_scan.h"

#include <algorithm>

#include "core/errors.h"
#include "store/run_store.h"

namespace tl {

StreamScan ScanRawStream(int32_t run, int32_t rawMarkIn, int32_t sampleMarkIn) {
    if (run < 1 || run > 11) return StreamScan{};
    const RunRecord& r = Store().RunInfo[run];
    const RawArray& raw = Store().RawData;
    std::span<const uint8_t> stream;
    if (!raw.planes() && raw.UpperIndex() >= 0)
        stream = raw.Vector(1).first(static_cast<size_t>(raw.UpperIndex()) + 1);
    return ScanStream(stream, r.RawStart, r.RawEnd, r.RunStart, rawMarkIn, sampleMarkIn);
}

int32_t CountStreamRows(int32_t run) {
    // A clock that steps back at the very start can leave the count below
    // -1; the run then has no rows, as a stream with no time record, and
    // never a negative length that would cut into the run before it.
    return ProcedureValue("ScanRawStream", int32_t{-1},
                          [&] { return std::max(ScanRawStream(run).sampleCount, int32_t{-1}); });
}

int32_t StreamRawIndexOfTime(int32_t run, int32_t hundredths) {
    return ProcedureValue("ScanRawStream", int32_t{-1},
                          [&] { return ScanRawStream(run, -1, hundredths).sampleMark; });
}

bool StreamScanAvailable() {
    return true;
}

}  // namespace tl
