// The conversion driver: the single door through which every run's raw bytes
// become RunData rows.
#pragma once

#include <cstdint>

namespace tl {

// Swaps in the run's own vehicle options, empties the run's rows, runs the
// family converter and the derived pipeline, then restores the options.
void ConvertRawToRunData(int32_t run);

}  // namespace tl
