#include "views/graph_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tl {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();

int32_t CountOf(const GraphModel& g, int slot) {
    const GraphPoints& pts = g.data[static_cast<size_t>(slot)];
    return std::min<int32_t>(g.axis[static_cast<size_t>(slot)].PointCount,
                             static_cast<int32_t>(pts.X.size()) - 1);
}

// The distance of a value from an interval, 0 inside; a NaN-free interval
// whose ends are rounded the way a point's difference is.
double Outside(double v, float lo, float hi) {
    if (v < lo) return static_cast<double>(lo) - v;
    if (v > hi) return v - static_cast<double>(hi);
    return 0.0;
}

}  // namespace

void GraphPointIndex::Update(const GraphModel& g) {
    bool same = built_ && generation_ == g.DataGeneration;
    for (int s = 0; s < kGraphSlots && same; ++s)
        same = count_[static_cast<size_t>(s)] == CountOf(g, s);
    if (same) return;
    for (int s = 0; s < kGraphSlots; ++s) Build(g, s);
    generation_ = g.DataGeneration;
    built_ = true;
}

void GraphPointIndex::Build(const GraphModel& g, int slot) {
    const size_t k = static_cast<size_t>(slot);
    const int32_t count = CountOf(g, slot);
    count_[k] = count;
    pairs_[k].clear();
    points_[k].clear();
    if (count < 3) return;
    const float* x = g.data[k].X.data();
    const float* y = g.data[k].Y.data();
    auto bounds = [&](int32_t from, int32_t to, bool withY) {
        Bounds b{kInf, -kInf, kInf, -kInf};
        for (int32_t i = from; i <= to; ++i) {
            // NaN fails both tests and is left out.
            if (x[i] < b.xmin) b.xmin = x[i];
            if (x[i] > b.xmax) b.xmax = x[i];
            if (withY) {
                if (y[i] < b.ymin) b.ymin = y[i];
                if (y[i] > b.ymax) b.ymax = y[i];
            }
        }
        return b;
    };
    const int32_t blocks = (count - 1 + kBlock - 1) / kBlock;
    pairs_[k].reserve(static_cast<size_t>(blocks));
    points_[k].reserve(static_cast<size_t>(blocks) + 1);
    for (int32_t from = 1; from <= count - 1; from += kBlock) {
        const int32_t last = std::min(from + kBlock - 1, count - 1);
        pairs_[k].push_back(bounds(from, last + 1, false));
    }
    for (int32_t from = 1; from <= count; from += kBlock)
        points_[k].push_back(bounds(from, std::min(from + kBlock - 1, count), true));
}

int32_t GraphPointIndex::Crossing(const GraphModel& g, int slot, double wx) const {
    const size_t k = static_cast<size_t>(slot);
    const int32_t count = count_[k];
    const float* x = g.data[k].X.data();
    const std::vector<Bounds>& blocks = pairs_[k];
    for (size_t b = 0; b < blocks.size(); ++b) {
        if (!(blocks[b].xmin <= wx && wx <= blocks[b].xmax)) continue;
        const int32_t from = 1 + static_cast<int32_t>(b) * kBlock;
        const int32_t last = std::min(from + kBlock - 1, count - 1);
        for (int32_t i = from; i <= last; ++i) {
            const double x0 = x[i], x1 = x[i + 1];
            if ((x0 <= wx && wx <= x1) || (x1 <= wx && wx <= x0)) return i;
        }
    }
    return count;
}

int32_t GraphPointIndex::Nearest(const GraphModel& g, int slot, double wx, double wy) const {
    const size_t k = static_cast<size_t>(slot);
    const GraphAxis& a = g.axis[k];
    const int32_t count = count_[k];
    const float* x = g.data[k].X.data();
    const float* y = g.data[k].Y.data();
    const double sx = std::max(double(a.XMax - a.XMin) * (a.XMax - a.XMin), 0.001);
    const double sy = std::max(double(a.YMax - a.YMin) * (a.YMax - a.YMin), 0.001);
    double best = 1e20;
    int32_t row = count;
    const std::vector<Bounds>& blocks = points_[k];
    for (size_t b = 0; b < blocks.size(); ++b) {
        const double dx = Outside(wx, blocks[b].xmin, blocks[b].xmax);
        const double dy = Outside(wy, blocks[b].ymin, blocks[b].ymax);
        // No point inside can come nearer than the box; a tie goes to the
        // earlier row, which is already held.
        if (dx * dx / sx + dy * dy / sy >= best) continue;
        const int32_t from = 1 + static_cast<int32_t>(b) * kBlock;
        const int32_t last = std::min(from + kBlock - 1, count);
        for (int32_t i = from; i <= last; ++i) {
            const double ex = x[i] - wx, ey = y[i] - wy;
            const double d = ex * ex / sx + ey * ey / sy;
            if (d < best) {
                best = d;
                row = i;
            }
        }
    }
    return row;
}

int32_t GraphPointIndex::NearestRow(const GraphModel& g, int slot, double wx, double wy,
                                    bool multi) const {
    if (count_[static_cast<size_t>(slot)] < 3) return -1;
    return multi ? Nearest(g, slot, wx, wy) : Crossing(g, slot, wx);
}

}  // namespace tl
