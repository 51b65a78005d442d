// The MQ7 record stream, lean: the input is the run's byte stream, counted
// by the stream scan and converted by the stream conversion.
#include <cstdint>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tl::fuzz::UseFamily(tl::Family::MQ7);
    tl::fuzz::ConvertStream(data, size);
    return 0;
}
