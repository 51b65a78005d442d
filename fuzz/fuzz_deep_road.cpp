// The whole road of a run, for the longer fuzzing runs: the raw file loaders
// on whole files (the first input byte chooses the family in force, the rest
// is the file as it lies on disk, head and all: raw, session and summary
// types, damaged heads, short and long counts), then every run loaded through
// the whole processing, derived stages and all, and both CSV exports (the
// processed one with its time stamps).
#include <cstdint>
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tl;
    if (size < 1) return 0;
    static const Family kFamilies[] = {Family::HX40, Family::MQ7, Family::SV63, Family::SW63};
    fuzz::UseFamily(kFamilies[data[0] & 3]);
    const std::string path =
        fuzz::WriteInputFile(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    fuzz::LoadConvertAndClear(path, true);
    return 0;
}
