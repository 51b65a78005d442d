// MQ7 and SW63 stream scan and conversion: the first input byte chooses the
// family, the rest is the run's byte stream, scanned, allocated, converted.
#include <cstdint>
#include <string>

#include "files/raw_run_files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tl;
    if (size < 1) return 0;
    const bool sw63 = data[0] & 1;
    fuzz::UseFamily(sw63 ? Family::SW63 : Family::MQ7);
    const std::string bytes = fuzz::RunFileHead(sw63 ? kFileTypeRawSW63 : kFileTypeRawMQ7) +
                              std::string(reinterpret_cast<const char*>(data + 1), size - 1);
    fuzz::LoadConvertAndClear(fuzz::WriteInputFile(bytes), false);
    return 0;
}
