// The ideal lap of a run: the best time of each sector, added up.
//
// The rule:
// - The sectors are the sector rows (90 to 100) in use, in row order. They
//   must tile the lap: the first starts at the lap marker, each one starts
//   where the one before it ends, and the last ends at the lap marker. Sectors
//   that leave a gap, overlap or stop short would not add up to a lap, so a
//   run whose sectors don't tile has no ideal lap.
// - A sector's best time is the least of its times over the run's complete
//   laps, paired as the lap and sector time table pairs them. A lap in which
//   a sector has no time (a marker missed on that lap) simply gives that
//   sector nothing; its other sectors still count.
// - A sector with no time in any lap leaves the run without an ideal lap.
// - The gap is the fastest lap's time less the ideal lap. When the fastest
//   lap has all its sector times it is 0 or more (to the rounding of the
//   single-precision times); a fastest lap that missed a marker can leave
//   the ideal lap slower than it, a negative gap.
#pragma once

#include <cstdint>
#include <vector>

namespace tl {

struct IdealLap {
    bool valid = false;
    double time = 0;           // the sum of the best sector times, s
    double gapToFastest = 0;   // fastest lap less the ideal lap, s
    std::vector<int> rows;     // the sector rows of MeasurementRows, in order
    std::vector<double> best;  // the best time of each, s
    std::vector<int> bestLap;  // the lap number that gave it
};

// Whether the sector rows in use tile the lap (see above); the rows, in order,
// when they do.
bool SectorsTileLap(std::vector<int>& rows);

IdealLap IdealLapOfRun(int32_t run);

}  // namespace tl
