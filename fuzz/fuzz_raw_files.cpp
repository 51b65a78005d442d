// The raw file loaders alone, lean: the input is the file as it lies on
// disk, head and all. The family in force is the one the file's type names
// (a file of no known type is offered to the family already in force), so
// the catalogue is rebuilt only when the type changes family. Nothing is
// processed; the store is emptied cheaply between inputs.
#include <cstdint>
#include <string>

#include "files/raw_run_files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tl;
    static Family family = Family::HX40;
    if (size >= 8) {
        const int32_t type = int32_t(uint32_t(data[4]) | uint32_t(data[5]) << 8 |
                                     uint32_t(data[6]) << 16 | uint32_t(data[7]) << 24);
        if (const Family f = FamilyOfRunFileType(type); f != Family::None) family = f;
    }
    fuzz::UseFamily(family);
    fuzz::LoadOnly(fuzz::WriteInputFile(std::string(reinterpret_cast<const char*>(data), size)));
    return 0;
}
