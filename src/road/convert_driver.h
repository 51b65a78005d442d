// The conversion driver: the single door through which every run's raw bytes
// become RunData rows.
#pragma once

#include <cstdint>

namespace tl {

// Swaps in the run's own vehicle options, empties the run's rows, runs the
// family converter and the derived pipeline, then restores the options.
// Without derivedPipeline the conversion stops after the family converter,
// so the rows hold what the logger recorded (the command line's
// "--stage convert").
void ConvertRawToRunData(int32_t run, bool derivedPipeline = true);

}  // namespace tl
