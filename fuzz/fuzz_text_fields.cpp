// The readers of the program's text files: the quoted two-field records of
// the options files and the comma-separated fields of the user channel file,
// and the number reading every option goes through.
#include <cstdint>
#include <string>

#include "core/config_store.h"
#include "core/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    double sum = 0;
    for (const std::string& field : tl::SplitInputFields(text)) {
        sum += tl::GetVal_NI(field);
        sum += tl::GetVal(field);
        sum += tl::ValidNumber(field) ? 1 : 0;
    }
    volatile double keep = sum;
    (void)keep;
    return 0;
}
