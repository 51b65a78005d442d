// Small helpers the converters, the derived stages and the results share: a
// slot's storage column as a plain pointer (so the byte loops index rows
// without any look-up), its enabled flag, and a run's rows checked against
// the table.
#pragma once

#include <cstdint>

#include "core/build_profile.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl {

// The slot's column, rows 0 to RunData's upper row; a disabled slot gives the
// shared "*No Data*" column. nullptr when the table has no such column.
inline float* SlotColumn(int slotNumber) {
    RunArray& rd = Store().RunData;
    const int32_t c = ColumnOf(slotNumber);
    if (c < 0 || c >= rd.Columns()) return nullptr;
    auto col = rd.Column(c);
    if (col.empty()) return nullptr;
    return col.data();
}

inline bool SlotEnabled(int slotNumber) {
    return Catalogue().RunVars[slotNumber].Enabled;
}

// Time [s] of a row `ticks` hundredths into its run: the single-precision
// value of ticks / 100.0. The product with 0.01 rounds to the same float for
// every 32-bit tick count (checked over all of them), and a multiplication
// costs far less than a division on a path that runs once a row.
inline float SecondsOfTicks(int32_t ticks) {
    return static_cast<float>(ticks * 0.01);
}

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

}  // namespace tl
