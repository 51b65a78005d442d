// The nearest-point search of a click on an XY graph, fast on slots of every
// row of an hour-long run.
//
// The search is that of NearestRow (graph_paint.h), which stays the plain
// definition: with the crossing search the first row from 1 up whose X and
// the next row's X lie either side of the click's X (or equal it), else the
// last point; with the plane search the point nearest in the plane, each axis
// weighted by its range squared, the lowest row on a tie.
//
// The index keeps, per block of 256 points, the smallest and largest X and Y
// (NaN left out). The crossing search skips a block whose X bounds leave the
// click's X outside: a run of points that has values on both sides of it
// holds two neighbours either side of it, so no crossing is skipped, and a
// block that brackets the value but holds no crossing (a NaN between) is
// walked and left. The plane search walks the blocks in row order and skips a
// block whose bounding box lies farther than the best distance found; the box
// distance is worked with the same roundings as a point's, so it never
// exceeds the distance of a point inside. Both give exactly NearestRow's row.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "views/graph_model.h"

namespace tl {

class GraphPointIndex {
  public:
    static constexpr int32_t kBlock = 256;

    // Builds the blocks again when the model's points changed since the last
    // build (DataGeneration, or a slot's point count).
    void Update(const GraphModel& g);
    // NearestRow of the slot, from the blocks. -1 below 3 points.
    int32_t NearestRow(const GraphModel& g, int slot, double wx, double wy, bool multi) const;

  private:
    struct Bounds {
        float xmin, xmax, ymin, ymax;
    };
    void Build(const GraphModel& g, int slot);
    int32_t Crossing(const GraphModel& g, int slot, double wx) const;
    int32_t Nearest(const GraphModel& g, int slot, double wx, double wy) const;

    bool built_ = false;
    uint64_t generation_ = 0;
    std::array<int32_t, kGraphSlots> count_{};
    // Crossing blocks: for rows i of block b (1 + b x 256 ... b x 256 + 256,
    // at most count - 1), the X of rows i and i + 1.
    std::array<std::vector<Bounds>, kGraphSlots> pairs_;
    // Plane blocks: points 1 + b x 256 ... b x 256 + 256, at most count.
    std::array<std::vector<Bounds>, kGraphSlots> points_;
};

}  // namespace tl
