// The external serial channels: names reported by the optional conversion
// library (libExternalSerialConversion.so beside the executable, standing for
// the original's ExternalSerialConversion.dll).
#pragma once

#include <string>

namespace tl {

// Number of variables the library reports; 0 when none is loaded.
int ExternalSerialVariableCount();
// The name of variable n (0-based), without the "S:" prefix.
std::string ExternalSerialVariableName(int n);

}  // namespace tl
