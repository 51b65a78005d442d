// Helpers of the derived-channel tests: a bare run of n rows in the store with
// every variable enabled and time in slot 1, and access to a slot's rows.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::test {

inline void EnableEveryVariable() {
    SetAvailableVars();
    for (int s = 1; s <= 200; ++s)
        if (Catalogue().RunVars[s].Available && !Catalogue().RunVars[s].Name.empty())
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
    SetAvailableVars();
}

// Run 1 at rows 1 to n, all zero but time (0.00, 0.01, ...).
inline void MakeRun(int32_t n) {
    RunStore& s = Store();
    int32_t columns = 0;
    for (int v = 1; v <= kNoDataSlot; ++v)
        columns = std::max(columns, Catalogue().RunVars[v].Column + 1);
    s.RunData.Reset(n + 1, columns);
    s.RunCount = 1;
    RunRecord& r = s.RunInfo[1];
    r = RunRecord{};
    r.Name = "synthetic";
    r.RunStart = 1;
    r.RunEnd = n;
    r.RunLength = n;
    for (int32_t i = 1; i <= n; ++i) RunData(i, ColumnOf(slot::Time)) = (i - 1) / 100.0f;
}

inline float& V(int32_t row, int slotNumber) {
    return RunData(row, ColumnOf(slotNumber));
}

}  // namespace tl::test
