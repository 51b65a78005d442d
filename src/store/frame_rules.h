// The frame rules of the plane families as the run store applies them to
// count rows (AllocateRunArray) and to map rows back to raw indices (the
// trim). The conversions apply the same rules to fill the rows; the counts of
// the two must stay the same.
#pragma once

#include <cstdint>

#include "store/run_store.h"

namespace tl {

// HX40: frame i starts a GPS block of seven frames when the marker bit (bit
// value 1 of vector 3) is set one frame back and clear eight frames back. The
// block and the frame after it make one row. The margin here is i > 9
// (absolute) and i < RawEnd - 8; the conversion uses RawStart + 9, and for a
// first run loaded from a file the two agree.
inline bool Hx40BlockStarts(const RawArray& raw, int64_t i, int32_t rawEnd) {
    if (!(i > 9 && i < int64_t(rawEnd) - 8)) return false;
    const auto p = static_cast<int32_t>(i);
    return (raw(p - 1, 3) & 1) && !(raw(p - 8, 3) & 1);
}

// SV63: the sample period in hundredths from the first header byte; 0 or 21
// and above count as 1.
inline int Sv63Step(const RunRecord& r) {
    const int step = r.HeaderBytes[0];
    return (step == 0 || step >= 21) ? 1 : step;
}

// SV63: frames strictly inside RawStart + 1 and RawEnd - 3 give Sv63Step rows
// each; a set bit value 4 of vector 1 in the frame before says that three GPS
// frames follow the current one and are skipped.
inline bool Sv63InMargin(int64_t i, int32_t rawStart, int32_t rawEnd) {
    return i > int64_t(rawStart) + 1 && i < int64_t(rawEnd) - 3;
}
inline bool Sv63GpsFollows(const RawArray& raw, int64_t i) {
    return raw(static_cast<int32_t>(i - 1), 1) & 4;
}

}  // namespace tl
