// The derived-variable pipeline that follows every family conversion.
#pragma once

#include <cstdint>

namespace tl {

// Runs the derived stages on the run's rows, ending with the scratch slot 201
// cleared.
void ProcessDerivedVariables(int32_t run);

}  // namespace tl
