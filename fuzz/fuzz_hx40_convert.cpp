// HX40 row count and conversion: the input is the run's header bytes and its
// frames, GPS blocks and all, loaded, allocated and converted.
#include <cstdint>
#include <string>

#include "files/raw_run_files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tl;
    fuzz::UseFamily(Family::HX40);
    fuzz::LoadConvertAndClear(
        fuzz::WriteInputFile(fuzz::PlaneFileFromFrames(kFileTypeRawHX40, data, size)), false);
    return 0;
}
