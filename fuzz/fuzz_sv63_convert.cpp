// SV63 row count and conversion: the input is the run's header bytes (the
// first is the sample period) and its frames, binary GPS blocks and all.
#include <cstdint>
#include <string>

#include "files/raw_run_files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tl;
    fuzz::UseFamily(Family::SV63);
    fuzz::LoadConvertAndClear(
        fuzz::WriteInputFile(fuzz::PlaneFileFromFrames(kFileTypeRawSV63, data, size)), false);
    return 0;
}
