#include "road/active_variables.h"

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/ui_services.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

void ActiveVariablesList::Activate() {
    auto& v = Catalogue().RunVars;
    // The always-on slots are those SetAlwaysOnVars makes available when
    // nothing else is: save Available, clear it, call it, note, restore, and
    // call it again.
    std::vector<bool> saved(v.size());
    for (size_t s = 0; s < v.size(); ++s) {
        saved[s] = v[s].Available;
        v[s].Available = false;
    }
    SetAlwaysOnVars();
    alwaysOn.assign(v.size(), false);
    for (size_t s = 0; s < v.size(); ++s) alwaysOn[s] = v[s].Available;
    for (size_t s = 0; s < v.size(); ++s) v[s].Available = saved[s];
    SetAlwaysOnVars();

    entries.clear();
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (v[s].Available && !alwaysOn[s]) entries.push_back({s, v[s].Name, v[s].Enabled});
}

void ActiveVariablesList::Refresh() {
    const auto& v = Catalogue().RunVars;
    for (auto& e : entries) e.checked = v[FindVar(e.name)].Enabled;
}

void ActiveVariablesList::SetAll() {
    for (auto& e : entries) e.checked = true;
}

void ActiveVariablesList::ReSetAll() {
    for (auto& e : entries) e.checked = false;
}

bool ActiveVariablesList::Okay() {
    if (Store().RunCount > 0 &&
        !OkCancelBox("Reprocess",
                     "To change the variables available, all the runs will need reprocessing, do "
                     "you wish to continue?"))
        return false;
    ShowPleaseWait("Updating variable list");
    // The key is the slot's plain name: "Speed [kph]" though the list may
    // show "GPS Speed [kph]".
    for (const auto& e : entries)
        SetConfig(Paths().TracelabCfgPath, PlainVarName(e.slot), e.checked ? -1.0f : 0.0f);
    HidePleaseWait();
    SetAvailableVars();
    if (Store().RunCount > 0) ReprocessAllRuns();
    return true;
}

}  // namespace tl
