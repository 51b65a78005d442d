// Seam of the derived-variable pipeline: the stages (accelerations, filters,
// GPS speed, track map, distance, power, gears, headings, user channels) arrive
// with the derived-channels work. Until then only the last stage is done: the
// scratch column of slot 201 is cleared over the run's rows.
#include <algorithm>

#include "derived/pipeline.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl {

void ProcessDerivedVariables(int32_t run) {
    RunStore& s = Store();
    if (run < 1 || run > 11) return;
    const RunRecord& r = s.RunInfo[run];
    const int32_t column = ColumnOf(slot::Scratch);
    if (column < 0 || column >= s.RunData.Columns()) return;
    const int32_t first = std::max(r.RunStart, 0);
    const int32_t last = std::min(r.RunEnd, s.RunData.UpperRow());
    auto col = s.RunData.Column(column);
    for (int32_t row = first; row <= last; ++row) col[row] = 0.0f;
}

}  // namespace tl
