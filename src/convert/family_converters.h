// The family converters: one run's raw bytes to RunData rows.
#pragma once

#include <cstdint>

namespace tl {

void ConvertRawToRunData_HX40(int32_t run);
// Also serves the SW63 family.
void ConvertRawToRunData_MQ7(int32_t run);
void ConvertRawToRunData_SV63(int32_t run);

}  // namespace tl
