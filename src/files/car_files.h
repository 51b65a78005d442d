// Car options files (.car): copies of the working options file CarCfgPath
// under a name of the user's. Saving and loading are file copies; nothing is
// parsed. A run's own .car file reaches the converters through the copy of
// the conversion driver.
#pragma once

#include <string>

namespace tl {

// The save dialog, the overwrite question, the write check, the copy.
void SaveCarFile();
// The open dialog, the existence check, the copy over CarCfgPath. Returns
// true when a file was loaded.
bool LoadCarFile();
// The run manager's "Change Vehicle" on the families with .car files: the
// dialog; returns the chosen path, empty on cancel.
std::string ChooseRunCarFile();

}  // namespace tl
