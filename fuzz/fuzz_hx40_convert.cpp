// HX40 row count and conversion, lean: the input is the run's eight header
// bytes and its frames (GPS blocks and all), put straight into the raw data
// of one run, counted, allocated and converted by the HX40 converter.
#include <cstdint>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tl::fuzz::UseFamily(tl::Family::HX40);
    tl::fuzz::ConvertPlanes(data, size);
    return 0;
}
