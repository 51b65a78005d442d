// The GPS track map on a drive round a circle, with the fits' paths taken
// from the series of the window and, with a biased accelerometer, run row by
// row.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "derived/pipeline.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::MakeRun;
using test::V;

class TrackMap : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::HX40, Vehicle::Car);
        test::EnableEveryVariable();
    }
};

TEST_F(TrackMap, FollowsACircleWithOrWithoutAccelerometerBias) {
    // 60 m radius at 50 kph, clockwise from the origin heading east, fixes
    // ten times a second. A lateral bias of 0.2 g takes the fits' offsets
    // beyond what the series of the path covers over a window, so the paths
    // are then run row by row; the fits must take the bias out.
    const int32_t n = 6000;
    const double r = 60, v = 50 / 3.6, g = 9.80665;
    std::vector<float> x[2], y[2];
    for (int b = 0; b < 2; ++b) {
        MakeRun(n);
        for (int32_t i = 1; i <= n; ++i) {
            const double a = (i - 1) * 0.01 * v / r;
            const bool fix = i > 1 && (i - 1) % 10 == 0;
            V(i, slot::PositionX) = fix ? static_cast<float>(r * std::sin(a)) : 0.0f;
            V(i, slot::PositionY) = fix ? static_cast<float>(r * std::cos(a) - r) : 0.0f;
            V(i, slot::SpeedKph) = 50.0f;
            V(i, slot::AccelLat) = static_cast<float>(v * v / r / g) + (b == 1 ? 0.2f : 0.0f);
        }
        TrackMapGps(1);
        double worst = 0;
        for (int32_t i = 1; i <= n; ++i) {
            x[b].push_back(V(i, slot::PositionX));
            y[b].push_back(V(i, slot::PositionY));
            const double off = std::hypot(V(i, slot::PositionX), V(i, slot::PositionY) + r) - r;
            worst = std::max(worst, std::fabs(off));
        }
        // The map runs on from the corrected path rather than snapping to
        // each fix, and a fit stops within a degree and half a metre: it
        // settles 1.7 m inside the circle. Uncorrected, the bias alone would
        // put it metres off within a window.
        EXPECT_LT(worst, 2.0) << "bias " << (b == 1 ? 0.2 : 0.0);
    }
    double apart = 0;
    for (size_t k = 0; k < x[0].size(); ++k)
        apart =
            std::max(apart, static_cast<double>(std::hypot(x[0][k] - x[1][k], y[0][k] - y[1][k])));
    EXPECT_LT(apart, 1.0);  // 0.54 m, within what a fit's end test lets pass
}

// Before the first fix the map is walked backwards from it, row by row, with
// the heading pointing back along the chord to the second fix and the lateral
// acceleration negated, while the car is still cornering. The rows are those
// of dead reckoning from the first fix, computed here step by step from the
// definition (single precision as the map keeps it).
TEST_F(TrackMap, RowsBeforeTheFirstFixAreWalkedBackFromIt) {
    const int32_t n = 2000, first = 61, second = 161;
    const double r = 50, v = 36 / 3.6, g = 9.80665;
    MakeRun(n);
    for (int32_t i = 1; i <= n; ++i) {
        const double a = (i - 1) * 0.01 * v / r;
        const bool fix = i == first || i == second || (i > second && (i - 1) % 100 == 0);
        V(i, slot::PositionX) = fix ? static_cast<float>(r * std::sin(a)) : 0.0f;
        V(i, slot::PositionY) = fix ? static_cast<float>(r * std::cos(a) - r) : 0.0f;
        V(i, slot::SpeedKph) = 36.0f;
        V(i, slot::AccelLat) = static_cast<float>(v * v / r / g);  // 0.204 g to the right
    }
    const float fx = V(first, slot::PositionX), fy = V(first, slot::PositionY);
    const float sx = V(second, slot::PositionX), sy = V(second, slot::PositionY);
    TrackMapGps(1);
    // Back from the first fix: heading from the second fix to the first.
    float heading = Atan2(fx - sx, fy - sy);
    float x = fx, y = fy;
    for (int32_t i = first - 1; i >= 1; --i) {
        const float speed = 36.0f / 3600.0f * 1000.0f;
        float acc = -static_cast<float>(v * v / r / g) * 9.80665f;
        const float limit = speed * speed / 3.0f;
        if (acc > limit) acc = limit;
        heading = heading + acc / speed / 100.0f;
        const float step = speed * 1.0f / 100.0f;
        x = x + step * std::sin(heading);
        y = y + step * std::cos(heading);
        EXPECT_NEAR(V(i, slot::PositionX), x, 1e-3) << "row " << i;
        EXPECT_NEAR(V(i, slot::PositionY), y, 1e-3) << "row " << i;
    }
    // Walking back on the chord's heading while turning keeps the start of the
    // run within a metre of where the car really was.
    EXPECT_NEAR(V(1, slot::PositionX), 0.0, 1.0);
    EXPECT_NEAR(V(1, slot::PositionY), 0.0, 1.0);
}

// Below 30 kph anywhere in a window the map is not fitted: the rows between
// two fixes lie on the straight line between them. At 30 kph the path is
// fitted and follows the curve. Fixes a second apart on a 20 m circle, where
// the chord of a second passes 0.4 m inside the arc at its middle.
TEST_F(TrackMap, ThirtyKphDecidesBetweenFitAndStraightLines) {
    for (const float kph : {29.99f, 30.0f}) {
        const int32_t n = 3000;
        const double r = 20, v = kph / 3.6, g = 9.80665;
        MakeRun(n);
        for (int32_t i = 1; i <= n; ++i) {
            const double a = (i - 1) * 0.01 * v / r;
            const bool fix = i > 1 && (i - 1) % 100 == 0;
            V(i, slot::PositionX) = fix ? static_cast<float>(r * std::sin(a)) : 0.0f;
            V(i, slot::PositionY) = fix ? static_cast<float>(r * std::cos(a) - r) : 0.0f;
            V(i, slot::SpeedKph) = kph;
            V(i, slot::AccelLat) = static_cast<float>(v * v / r / g);
        }
        TrackMapGps(1);
        // Between the fixes of rows 1501 and 1601: the row in the middle.
        const float x0 = V(1501, slot::PositionX), y0 = V(1501, slot::PositionY);
        const float x1 = V(1601, slot::PositionX), y1 = V(1601, slot::PositionY);
        const double fromCentre =
            std::hypot(V(1551, slot::PositionX), V(1551, slot::PositionY) + r);
        if (kph < 30.0f) {
            EXPECT_NEAR(V(1551, slot::PositionX), x0 + (x1 - x0) * 0.5f, 1e-4);
            EXPECT_NEAR(V(1551, slot::PositionY), y0 + (y1 - y0) * 0.5f, 1e-4);
            EXPECT_LT(fromCentre, r - 0.3);  // on the chord, inside the circle
        } else {
            EXPECT_NEAR(fromCentre, r, 0.15);  // on the arc
        }
    }
}

// A drive east along y = 0 with `kph` in the speed slot and `bias` g of
// lateral acceleration; the fixes, every 10 rows from row 10, move `scale`
// times as far as the speed says. Slot 45 reads 8 satellites throughout.
void StraightRun(int32_t n, float kph, double scale, float bias) {
    MakeRun(n);
    for (int32_t i = 1; i <= n; ++i) {
        const bool fix = i % 10 == 0;
        V(i, slot::PositionX) = fix ? static_cast<float>((i - 1) * kph / 360.0 * scale) : 0.0f;
        V(i, slot::PositionY) = 0.0f;
        V(i, slot::SpeedKph) = kph;
        V(i, slot::AccelLat) = bias;
        V(i, 45) = 8.0f;
    }
}

// A fix 200 m off the road fails the fit of the window that ends on it. When
// the accelerometers are trusted and the window starts more than 500 rows
// into the run, the GPS data from 74 rows before the window's start to 150
// past its next fix are removed (the satellite count too) and mapped again.
TEST_F(TrackMap, TrustedAccelerometersRemoveADoubtfulStretch) {
    struct Case {
        int32_t glitch;
        int trust;
        bool removed;
    } cases[] = {{810, 1, true}, {800, 1, false}, {810, 0, false}};
    for (const Case& c : cases) {
        SetConfig(Paths().TracelabCfgPath, "TrustAccels", c.trust);
        StraightRun(2000, 50.0f, 1.0, 0.0f);
        V(c.glitch, slot::PositionY) = 200.0f;
        TrackMapGps(1);
        // HX40 windows are 300 rows: the window ending at the glitch starts
        // 300 rows before it, and its next fix is 10 rows on.
        const int32_t s = c.glitch - 300;
        int32_t zeros = 0, first = 0, last = 0;
        for (int32_t i = 1; i <= 2000; ++i)
            if (V(i, 45) == 0.0f) {
                ++zeros;
                if (!first) first = i;
                last = i;
            }
        if (c.removed) {
            EXPECT_EQ(first, s - 74);
            EXPECT_EQ(last, s + 10 + 150);
            EXPECT_EQ(zeros, last - first + 1);
        } else {
            EXPECT_EQ(zeros, 0) << c.glitch << " " << c.trust;
        }
        // Either way the map stays on the road.
        double worst = 0;
        for (int32_t i = 1; i <= 2000; ++i)
            worst = std::max(worst, std::fabs(double(V(i, slot::PositionY))));
        EXPECT_LT(worst, 1.0) << c.glitch << " " << c.trust;
    }
}

// A fit is accepted with a lateral offset of up to 0.5 g and a distance
// multiplier of 0.25 to 4; beyond, the section is a straight line between
// its fixes, which keep their positions exactly. On a straight road the fit
// stops after one round (its heading is right, and from then on the distance
// test sees the change of bearing): the multiplier moves by 0.35 of the
// error, 1 + 0.35 (k - 1) for fixes k times as far apart as the speed says,
// so k = 9.4 gives 3.94 and k = 9.8 gives 4.08.
TEST_F(TrackMap, FitsBeyondTheLimitsFallBackToStraightLines) {
    struct Case {
        double scale;
        float bias;
        bool accepted;
    } cases[] = {{9.4, 0, true},    {9.8, 0, false},   {1, 0.45f, true},
                 {1, 0.55f, false}, {1, -0.45f, true}, {1, -0.55f, false}};
    for (const Case& c : cases) {
        StraightRun(2000, 50.0f, c.scale, c.bias);
        std::vector<float> fixX(2001);
        for (int32_t i = 1; i <= 2000; ++i) fixX[i] = V(i, slot::PositionX);
        TrackMapGps(1);
        // Fix rows 1000 to 1500: a fitted path moves them, a straight line
        // does not.
        int moved = 0;
        double worstY = 0;
        for (int32_t i = 1000; i <= 1500; ++i) {
            if (i % 10 == 0 && V(i, slot::PositionX) != fixX[i]) ++moved;
            worstY = std::max(worstY, std::fabs(double(V(i, slot::PositionY))));
        }
        if (c.accepted) {
            EXPECT_GT(moved, 40) << c.scale << " " << c.bias;
        } else {
            EXPECT_EQ(moved, 0) << c.scale << " " << c.bias;
            EXPECT_EQ(worstY, 0.0) << c.scale << " " << c.bias;
        }
    }
}

}  // namespace
}  // namespace tl
