// SV63 row count and conversion, lean: header bytes (the first is the sample
// period) and frames with their binary GPS blocks, straight into one run.
#include <cstdint>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tl::fuzz::UseFamily(tl::Family::SV63);
    tl::fuzz::ConvertPlanes(data, size);
    return 0;
}
