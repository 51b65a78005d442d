// Small helpers of the derived stages: the run's row range checked against
// the table, a slot's column as a plain pointer, and the log switch.
#pragma once

#include <cstdint>
#include <sstream>

#include "core/log.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl::derived {

using tl::RowsOf;
using tl::RunRows;

// The slot's column (a disabled slot reads the shared "*No Data*" column).
// Never null for a slot 1 to 201 once the catalogue is built; the stages test
// for null all the same and skip.
inline float* Col(int slotNumber) {
    return SlotColumn(slotNumber);
}

// One log line joined from its parts, built only when the log writes.
template <class... T>
void LogParts(const T&... parts) {
    if (!LogOn()) return;
    std::ostringstream s;
    (s << ... << parts);
    LogDebug(s.str());
}

}  // namespace tl::derived
