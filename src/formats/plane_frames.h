// The frame rules of the plane families (HX40, SV63): which frames make a
// row. The run store counts rows with them (AllocateRunArray), the trim maps
// rows back to raw indices, the raw export marks GPS blocks, and the
// conversions fill rows by the same rules; the counts must agree.
//
// This file knows bytes only: a plane is the run's whole vector from raw
// index 0, as the run store keeps it.
#pragma once

#include <cstdint>
#include <span>

namespace tl {

// HX40: frame i starts a GPS block of seven frames when the marker bit (bit
// value 1 of vector 3) is set one frame back and clear eight frames back. The
// block and the frame after it make one row. The margin here is i > 9
// (absolute) and i < RawEnd - 8; the conversion uses RawStart + 9, and for a
// first run loaded from a file the two agree.
inline bool Hx40BlockStarts(std::span<const uint8_t> plane3, int64_t i, int32_t rawEnd) {
    if (!(i > 9 && i < int64_t(rawEnd) - 8)) return false;
    return (plane3[size_t(i - 1)] & 1) && !(plane3[size_t(i - 8)] & 1);
}

// SV63: the sample period in hundredths from the first header byte; 0 or 21
// and above count as 1.
inline int Sv63Step(uint8_t firstHeaderByte) {
    return (firstHeaderByte == 0 || firstHeaderByte >= 21) ? 1 : firstHeaderByte;
}

// SV63: frames strictly inside RawStart + 1 and RawEnd - 3 give Sv63Step rows
// each; a set bit value 4 of vector 1 in the frame before says that three GPS
// frames follow the current one and are skipped.
inline bool Sv63InMargin(int64_t i, int32_t rawStart, int32_t rawEnd) {
    return i > int64_t(rawStart) + 1 && i < int64_t(rawEnd) - 3;
}
inline bool Sv63GpsFollows(std::span<const uint8_t> plane1, int64_t i) {
    return plane1[size_t(i - 1)] & 4;
}

// The row counter after walking raw indices rawStart to rawEnd of a run whose
// first row is runStart: its last row (RunEnd). The caller keeps rawEnd
// inside the planes.
inline int64_t WalkHx40Rows(std::span<const uint8_t> plane3, int32_t rawStart, int32_t rawEnd,
                            int64_t runStart) {
    int64_t counter = runStart;
    for (int64_t i = rawStart; i <= rawEnd; ++i) {
        counter += 1;
        if (Hx40BlockStarts(plane3, i, rawEnd)) i += 7;
    }
    return counter - 1;
}
inline int64_t WalkSv63Rows(std::span<const uint8_t> plane1, int step, int32_t rawStart,
                            int32_t rawEnd, int64_t runStart) {
    int64_t counter = runStart;
    for (int64_t i = rawStart; i <= rawEnd; ++i) {
        if (Sv63InMargin(i, rawStart, rawEnd)) {
            counter += step;
            if (Sv63GpsFollows(plane1, i)) i += 3;
        }
    }
    return counter - 1;
}

}  // namespace tl
