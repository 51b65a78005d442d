// The external serial channels: variables decoded from the logger's serial
// stream by an optional conversion library. The original's
// ExternalSerialConversion.dll is, on Linux, the shared object
// libExternalSerialConversion.so beside the executable, loaded at run time
// with dlopen through the C interface of external_serial_api.h.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tl {

// Number of variables the loaded library reports; 0 when none is loaded (or
// the library failed its test).
int ExternalSerialVariableCount();
// The name of variable n (0-based), without the "S:" prefix.
std::string ExternalSerialVariableName(int n);

// Where the library is looked for: libExternalSerialConversion.so in
// Paths().AppDir, unless a path was set with SetExternalSerialLibraryPath.
std::string ExternalSerialLibraryPath();
// Overrides the location ("" restores the default) and unloads any library.
void SetExternalSerialLibraryPath(const std::string& path);
// True when a library file is at ExternalSerialLibraryPath().
bool ExternalSerialLibraryPresent();

// Loads the library and checks its answers: count within 0 to 48, names
// unique and not empty, a conversion of a random test block of 1 to 20 bytes
// giving as many values as the count. Shows the messages of a failure. On
// success the library stays loaded and its variables are offered; on failure
// it is unloaded and no "S:" variable is offered.
bool TestExternalSerialCode();

// Converts a block of serial bytes; empty when no library is loaded or the
// call fails.
std::vector<double> ExternalSerialConvert(const std::vector<uint8_t>& bytes);

}  // namespace tl
