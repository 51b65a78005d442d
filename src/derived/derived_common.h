// Small helpers of the derived stages: the run's row range checked against
// the table, a slot's column as a plain pointer, and the log switch.
#pragma once

#include <cstdint>
#include <sstream>

#include "convert/slot_columns.h"
#include "core/log.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl::derived {

// The rows of a run, valid only when ok: 1 <= run <= 11, 1 <= first <= last
// <= the table's upper row.
struct RunRows {
    int32_t first = 0;
    int32_t last = -1;
    int32_t length = 0;
    bool ok = false;
};

inline RunRows RowsOf(int32_t run) {
    RunRows r;
    if (run < 1 || run > 11) return r;
    const RunRecord& rec = Store().RunInfo[run];
    r.first = rec.RunStart;
    r.last = rec.RunEnd;
    r.length = rec.RunLength;
    r.ok = r.first >= 1 && r.last >= r.first && r.last <= Store().RunData.UpperRow();
    return r;
}

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
