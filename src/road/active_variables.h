// The logic of frmSetActiveVariables: the list of variables the user may
// choose, with their check marks, and what Okay does with them. The window
// (VarListBox, SetAllVars, ReSetAllVars, Okay, Cancel) is a thin shell over
// this.
#pragma once

#include <string>
#include <vector>

namespace tl {

struct ActiveVariableEntry {
    int slot = 0;
    std::string name;  // as shown: the slot's current name
    bool checked = false;
};

class ActiveVariablesList {
  public:
    // Form_Activate: fills the list with every available slot that is not
    // always-on, checked when the slot is enabled.
    void Activate();
    // RefreshVarList: re-checks each entry from Enabled, found by name.
    void Refresh();
    void SetAll();
    void ReSetAll();
    // Okay: false when the user cancelled the "Reprocess" question (the form
    // stays open, nothing changed); true when the selection was stored, the
    // catalogue rebuilt and the runs reprocessed, and the form unloads.
    bool Okay();

    std::vector<ActiveVariableEntry> entries;
    // The always-on slots found on activate (1 to 201).
    std::vector<bool> alwaysOn;
};

}  // namespace tl
