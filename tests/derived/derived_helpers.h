// Helpers of the derived-channel tests: a bare run of n rows in the store with
// time in slot 1, and access to a slot's rows.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {

// Run 1 at rows 1 to n, all zero but time (0.00, 0.01, ...).
inline void MakeRun(int32_t n) {
    LayOutRuns(1, n, "synthetic");
    for (int32_t i = 1; i <= n; ++i) RunData(i, ColumnOf(slot::Time)) = (i - 1) / 100.0f;
}

inline float& V(int32_t row, int slotNumber) {
    return RunData(row, ColumnOf(slotNumber));
}

}  // namespace tl::test
