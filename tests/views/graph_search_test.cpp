// The click's fast nearest-point search against its plain definition
// (NearestRow): the same row for every click, on points shaped like laps
// (X running up and back, repeated values, ties), with gap rows, NaN values
// and clicks outside the ranges, and rebuilt when the points change.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "views/graph_model.h"
#include "views/graph_paint.h"
#include "views/graph_search.h"

namespace tl {
namespace {

// Five slots of laps: X a lap distance that runs 0 .. 3 km and starts again
// (the crossing search meets many candidates), Y a speed; every so often a
// gap row, a NaN, a stretch of equal points.
GraphModel Laps(int32_t count, uint32_t seed) {
    GraphModel g;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
    for (int s = 0; s < kGraphSlots; ++s) {
        g.settings.Slots[s].ActivateYAxis = 1;
        GraphPoints& p = g.data[s];
        p.X.assign(static_cast<size_t>(count) + 1, 0.0f);
        p.Y.assign(p.X.size(), 0.0f);
        p.Row.assign(p.X.size(), 0.0f);
        for (int32_t i = 1; i <= count; ++i) {
            const float d = std::fmod(i * 0.37f + s * 100.0f, 3000.0f);
            p.X[i] = d / 1000.0f;
            p.Y[i] = 120.0f + 60.0f * std::sin(d / 150.0f) + noise(rng);
            p.Row[i] = static_cast<float>(i);
            if (i % 997 == 0) p.X[i] = p.Y[i] = kGraphGap;
            if (i % 1543 == 0) p.Y[i] = std::numeric_limits<float>::quiet_NaN();
            if (i % 2311 == 0) p.X[i] = std::numeric_limits<float>::quiet_NaN();
            if (i % 5000 < 40 && i > 40) {
                p.X[i] = p.X[i - 1];
                p.Y[i] = p.Y[i - 1];
            }
        }
        GraphAxis& a = g.axis[s];
        a.PointCount = count - s * 7;  // the last points of the array unused
        a.XMin = 0.0f;
        a.XMax = 3.0f;
        a.YMin = 40.0f;
        a.YMax = 200.0f;
    }
    g.DataGeneration = 1;
    return g;
}

TEST(GraphSearch, FindsTheRowsOfThePlainSearch) {
    GraphModel g = Laps(40000, 7);
    GraphPointIndex index;
    index.Update(g);
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> x(-0.3, 3.3), y(20.0, 220.0);
    std::uniform_int_distribution<int32_t> pick(1, 39000);
    int checked = 0;
    for (int k = 0; k < 400; ++k) {
        for (int s = 0; s < kGraphSlots; ++s) {
            // Random clicks, and clicks on the points themselves (equal
            // values, ties between repeated points).
            double wx = x(rng), wy = y(rng);
            if (k % 3 == 0) {
                const int32_t i = pick(rng);
                wx = g.data[s].X[i];
                wy = g.data[s].Y[i];
            }
            for (bool multi : {false, true}) {
                ASSERT_EQ(index.NearestRow(g, s, wx, wy, multi), NearestRow(g, s, wx, wy, multi))
                    << "slot " << s << " at " << wx << ", " << wy << (multi ? " plane" : "");
                ++checked;
            }
        }
    }
    EXPECT_EQ(checked, 4000);
    // Beyond every X the crossing search ends on the last point.
    EXPECT_EQ(index.NearestRow(g, 0, 5.0, 100.0, false), g.axis[0].PointCount);
}

TEST(GraphSearch, FollowsNewPointsAndRefusesShortSlots) {
    GraphModel g = Laps(3000, 3);
    GraphPointIndex index;
    index.Update(g);
    const int32_t before = index.NearestRow(g, 1, 1.5, 100.0, true);
    EXPECT_EQ(before, NearestRow(g, 1, 1.5, 100.0, true));
    // New points (a LoadDataArray): the point nearest the click moves.
    g.data[1].X[2000] = 1.5f;
    g.data[1].Y[2000] = 100.0f;
    ++g.DataGeneration;
    index.Update(g);
    EXPECT_EQ(index.NearestRow(g, 1, 1.5, 100.0, true), 2000);
    // A slot of two points takes no part.
    g.axis[2].PointCount = 2;
    index.Update(g);
    EXPECT_EQ(index.NearestRow(g, 2, 1.0, 100.0, false), -1);
    EXPECT_EQ(NearestRow(g, 2, 1.0, 100.0, false), -1);
}

}  // namespace
}  // namespace tl
