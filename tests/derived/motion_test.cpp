// The single stages at their edges: dead reckoning, raw GPS mode, GPS speed
// sections, distance units by mode, power limits and torque, gears.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/config_store.h"
#include "derived/pipeline.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::MakeRun;
using test::V;

class Stages : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::HX40, Vehicle::Car);
        test::EnableEveryVariable();
    }
    void Set(const std::string& key, float value) {
        SetConfig(Paths().TracelabCfgPath, key, value);
    }
    void SetCar(const std::string& key, float value) { SetConfig(Paths().CarCfgPath, key, value); }
};

TEST_F(Stages, CalcCourseStandsStillAndLimitsOnlyPositiveTurns) {
    float x = 1, y = 2, h = 0.5f;
    CalcCourse(5.0f, 0.0f, x, y, h, 1.0f);
    EXPECT_EQ(x, 1.0f);
    EXPECT_EQ(h, 0.5f);
    // 36 kph = 10 m/s: limit v^2 / 3 = 33.3 m/s^2, turn 33.3 / 10 / 100.
    h = 0;
    CalcCourse(10.0f, 36.0f, x, y, h, 1.0f);
    EXPECT_NEAR(h, 100.0f / 3.0f / 1000.0f, 1e-6);
    h = 0;
    CalcCourse(-10.0f, 36.0f, x, y, h, 1.0f);
    EXPECT_NEAR(h, -10.0f * 9.80665f / 1000.0f, 1e-6);
    x = 0, y = 0, h = 0;
    CalcCourse(0.0f, 36.0f, x, y, h, 2.0f);
    EXPECT_NEAR(y, 0.2f, 1e-6);
}

TEST_F(Stages, RawModeDrawsStraightLinesAndHoldsTheEnds) {
    Set("UseRawGPSData", 1);
    MakeRun(100);
    for (int32_t i = 1; i <= 100; ++i) V(i, slot::SpeedKph) = 50;
    V(21, slot::PositionX) = 10;
    V(21, slot::PositionY) = 5;
    V(41, slot::PositionX) = 30;
    V(41, slot::PositionY) = 25;
    TrackMapGps(1);
    EXPECT_EQ(V(1, slot::PositionX), 10.0f);  // start held at the first fix
    EXPECT_EQ(V(20, slot::PositionY), 5.0f);
    EXPECT_FLOAT_EQ(V(31, slot::PositionX), 20.0f);  // halfway on the line
    EXPECT_FLOAT_EQ(V(31, slot::PositionY), 15.0f);
    EXPECT_EQ(V(90, slot::PositionX), 30.0f);  // end held at the last fix
    EXPECT_EQ(V(100, slot::PositionY), 25.0f);
}

TEST_F(Stages, GpsSpeedFromOneFixAndClippedAtZero) {
    MakeRun(200);
    for (int32_t i = 1; i <= 200; ++i) {
        V(i, slot::SpeedKph) = -1;
        V(i, slot::AccelLong) = -0.3f;
    }
    V(1, slot::SpeedKph) = 10;  // a fix at the first row only
    CalcSpeedGPS(1);
    const float step = -0.3f * 9.80665f / 100.0f / 1000.0f * 3600.0f;
    EXPECT_FLOAT_EQ(V(1, slot::SpeedKph), 10.0f);
    EXPECT_NEAR(V(51, slot::SpeedKph), 10.0f + 50 * step, 1e-3);
    EXPECT_EQ(V(200, slot::SpeedKph), 0.0f);  // would be negative
    EXPECT_NEAR(V(51, slot::SpeedMph), (10.0f + 50 * step) * 0.621371192f, 1e-3);
}

TEST_F(Stages, GpsSpeedPullsTowardsLaterFixes) {
    MakeRun(3000);
    // True speed 100 kph, the accelerometer reads a bias of +0.05 g; fixes
    // every 10 rows.
    for (int32_t i = 1; i <= 3000; ++i) {
        V(i, slot::AccelLong) = 0.05f;
        V(i, slot::SpeedKph) = (i % 10 == 1) ? 100.0f : -1.0f;
    }
    CalcSpeedGPS(1);
    for (int32_t i = 100; i <= 2800; i += 37) EXPECT_NEAR(V(i, slot::SpeedKph), 100.0f, 0.5f) << i;
}

// The section walk of CalcSpeedGPS written out plainly, row by row, with its
// own searches: the stage answers the searches from a table and must walk
// the same sections.
std::vector<float> GpsSpeedByTheWalk(std::vector<float> spd, const std::vector<float>& acc,
                                     int lookAhead) {
    const int32_t start = 1, end = static_cast<int32_t>(spd.size()) - 1;
    auto step = [&](int32_t i) { return acc[i] * 9.80665f / 100.0f / 1000.0f * 3600.0f; };
    int32_t p = start;
    while (p < end) {
        int32_t q = p + 1;
        while (spd[q] == -1.0f && q < end) ++q;
        int32_t f = q;
        if (q < end) {
            for (int n = 0; n < lookAhead; ++n) {
                if (f < end) ++f;
                while (spd[f] == -1.0f && f < end) ++f;
            }
            if (f == end)
                while (spd[f] == -1.0f && f > start) --f;
        }
        if (q == end) {
            if (spd[p] == -1.0f) spd[p] = 0.0f;
            for (int32_t i = p; i < end; ++i) spd[i + 1] = spd[i] + step(i);
            p = end;
        } else if (p == start) {
            for (int32_t i = q; i > p; --i) spd[i - 1] = spd[i] - step(i);
            p = q;
        } else {
            float t = spd[p];
            for (int32_t i = p; i <= f; ++i) t += step(i);
            float c = f > p ? (t - spd[f]) / static_cast<float>(f - p) : 0.0f;
            c = std::max(std::min(c, 10.0f), -10.0f);
            bool negative = false;
            for (int32_t i = p; i < q; ++i) {
                spd[i + 1] = spd[i] + step(i) - c;
                negative = negative || spd[i + 1] < 0.0f;
            }
            if (negative)
                for (int32_t i = p; i < q; ++i) spd[i + 1] = std::max(spd[i] + step(i), 0.0f);
            p = q;
        }
    }
    for (float& v : spd) v = std::max(v, 0.0f);
    return spd;
}

TEST_F(Stages, GpsSpeedWalksIrregularFixesAsDocumented) {
    // Fixes at uneven gaps (runs of consecutive fixes, long dropouts), a
    // braking stretch that dips below zero, and fewer fixes than the look-
    // ahead at the end: the last sections back-track to the last fix.
    const int32_t n = 3000;
    MakeRun(n);
    std::vector<float> spd(n + 1, -1.0f), acc(n + 1, 0.0f);
    uint32_t seed = 12345;
    auto next = [&] { return (seed = seed * 1103515245u + 12345u) >> 16; };
    for (int32_t i = 5; i < n - 60;) {
        spd[i] = 20.0f + static_cast<float>(next() % 6000) / 100.0f;
        i += next() % 5 == 0 ? 1 : 1 + static_cast<int32_t>(next() % 60);
    }
    spd[n - 40] = 35.0f;  // the last fix, 40 rows before the end
    for (int32_t i = 1; i <= n; ++i)
        acc[i] = (i > 1200 && i < 1300 ? -1.5f : 0.2f) + static_cast<float>(next() % 100) / 500.0f;
    for (int32_t i = 1; i <= n; ++i) {
        V(i, slot::SpeedKph) = spd[i];
        V(i, slot::AccelLong) = acc[i];
    }
    const std::vector<float> expected = GpsSpeedByTheWalk(spd, acc, 8);  // HX40 looks 8 ahead
    CalcSpeedGPS(1);
    for (int32_t i = 1; i <= n; ++i) {
        ASSERT_EQ(V(i, slot::SpeedKph), expected[i]) << "row " << i;
        ASSERT_EQ(V(i, slot::SpeedMph), expected[i] * 0.621371192f) << "row " << i;
    }
}

TEST_F(Stages, DistanceFeetDependOnTheMode) {
    MakeRun(101);
    for (int32_t i = 1; i <= 101; ++i) {
        V(i, slot::WheelSpeedKph) = 36;
        V(i, slot::SpeedKph) = 36;
    }
    Set("DistanceMode", 0);
    CalcDistances(1);
    EXPECT_NEAR(V(101, 13), 10.0f, 1e-3);
    EXPECT_NEAR(V(101, 14), 10.0f / 1000 * 3048.0f, 1e-2);
    Set("DistanceMode", 1);
    CalcDistances(1);
    EXPECT_NEAR(V(101, slot::DistanceKm), 0.01f, 1e-6);
    EXPECT_NEAR(V(101, 14), 10.0f / 1000 * 3280.839895f, 1e-2);
    EXPECT_NEAR(V(101, 12), 0.01f * 0.621371192f, 1e-6);
}

TEST_F(Stages, DistanceFromPositionsMeasuresBetweenPointsFiveMetresApart) {
    MakeRun(10);
    const float xs[] = {0, 0, 1, 0, 1, 0, 6, 6, 6, 6};  // jitter, then 6 m away
    for (int32_t i = 1; i <= 10; ++i) V(i, slot::PositionX) = xs[i - 1];
    Set("DistanceMode", 2);
    CalcDistances(1);
    EXPECT_FLOAT_EQ(V(6, 13), 4.0f);  // the jitter shows while within 5 m
    EXPECT_FLOAT_EQ(V(7, 13), 6.0f);  // then the chord from the anchor
    EXPECT_FLOAT_EQ(V(10, 13), 6.0f);
}

TEST_F(Stages, PowerLimitsAndTorqueThreshold) {
    MakeRun(10);
    SetCar("RollingVal", 0.0f);
    SetCar("CdaVal", 7.1f);
    SetCar("CarMass", 1000);
    for (int32_t i = 1; i <= 10; ++i) V(i, 16) = -5;
    CalcPower(1);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "The specified aerodynamic drag is outside the allowable range"));
    EXPECT_EQ(V(5, 16), -5.0f);  // left as it was
    SetCar("CdaVal", 7.0f);
    Set("PowerSpeedSource", 1);
    Set("HPCorrection", 2);
    Set("PowerUnit", 1);
    Store().RunInfo[1].AmbientTemperature = 25.0f;
    Store().RunInfo[1].AmbientPressure = 99.0f;
    V(5, slot::SpeedKph) = 36;
    V(5, slot::AccelLong) = 0.1f;
    V(5, slot::EngineSpeed) = 30.0f * 60.0f / (2.0f * 3.141592654f);  // w = 30 rad/s
    V(6, slot::SpeedKph) = 36;
    V(6, slot::AccelLong) = -2.0f;  // braking
    V(7, slot::SpeedKph) = 36;
    V(7, slot::AccelLong) = 0.1f;
    V(7, slot::EngineSpeed) = 3000;
    ui.ClearRecords();
    CalcPower(1);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    // ECE at its own standard and no humidity: correction 1.
    const float rho = 99000.0f / (287.05f * 298.15f);
    const float p = 1000.0f * 10.0f * 0.1f * 9.80665f + 1000.0f * rho * 0.5f * 7.0f;
    EXPECT_NEAR(V(5, 16), p / 1000.0f, 0.01f);
    EXPECT_NEAR(V(5, 15), p / 735.499f, 0.01f);
    EXPECT_EQ(V(5, 18), 0.0f);  // w exactly 30: no torque
    EXPECT_EQ(V(6, 16), 0.0f);  // never negative
    const float w = 3000.0f / 60.0f * 2.0f * 3.141592654f;
    EXPECT_NEAR(V(7, 18), p / w, 0.01f);
}

TEST_F(Stages, GearsPickTheNearestRatioAndShowMeasuredRatioWithoutTable) {
    MakeRun(10);
    SetCar("DrivenRollingCircVal", 2.0f);
    SetCar("FinalDriveRat", 4.0f);
    SetCar("GearRatioVal1", 3.0f);
    SetCar("GearRatioVal2", 2.0f);
    SetCar("GearRatioVal3", 0.0f);  // a gap: takes part as ratio 0
    SetCar("GearRatioVal4", 1.0f);
    // 72 kph = 20 m/s = 600 wheel rpm.
    auto row = [&](int32_t i, float rpm) {
        V(i, slot::WheelSpeedKph) = 72;
        V(i, slot::EngineSpeed) = rpm;
    };
    row(1, 600 * 12);                  // ratio 12: gear 1
    row(2, 600 * 10);                  // 10: between 12 and 8, the lower gear wins the tie
    row(3, 600 * 4.1f);                // gear 4
    row(4, 600 * 0.5f);                // near 0: the gap, gear 3
    V(5, slot::WheelSpeedKph) = 0.1f;  // at or below 0.1: 0
    V(5, slot::EngineSpeed) = 5000;
    CalcGearRatios(1);
    EXPECT_EQ(V(1, 19), 1.0f);
    EXPECT_EQ(V(2, 19), 1.0f);
    EXPECT_EQ(V(3, 19), 4.0f);
    EXPECT_EQ(V(4, 19), 3.0f);
    EXPECT_EQ(V(5, 19), 0.0f);
    for (int g = 1; g <= 7; ++g) SetCar("GearRatioVal" + std::to_string(g), 0.0f);
    CalcGearRatios(1);
    EXPECT_NEAR(V(3, 19), 4.1f / 4.0f, 1e-4);
    EXPECT_EQ(V(5, 19), 0.0f);
}

TEST_F(Stages, HeadingRisesPastOneTurnOnACircle) {
    UseProfile(Family::HX40, Vehicle::Bike);  // lean angle is a bike's
    test::EnableEveryVariable();
    ASSERT_TRUE(Catalogue().RunVars[50].Enabled);
    const int32_t n = 4000;
    MakeRun(n);
    // 20 m radius at 36 kph: a turn every 12.6 s, clockwise.
    for (int32_t i = 1; i <= n; ++i) {
        const double a = (i - 1) * 0.01 * 10.0 / 20.0;
        V(i, slot::PositionX) = static_cast<float>(20 * std::sin(a));
        V(i, slot::PositionY) = static_cast<float>(20 * std::cos(a));
        V(i, slot::SpeedKph) = 36;
    }
    CalculateHeadingVariables(1);
    EXPECT_GT(V(n - 200, 47), 720.0f);
    EXPECT_NEAR(V(2000, 48), 0.5 / 3.141592654 * 180, 0.5);  // deg per second
    EXPECT_NEAR(V(2000, 49), 20.0f, 0.5f);                   // radius
    EXPECT_NEAR(std::fabs(V(2000, 50)), std::atan(10.0 * 0.5 / 9.80665) * 180 / 3.141592654, 0.5);
}

TEST_F(Stages, RadiusWithoutALeanSlot) {
    ASSERT_FALSE(Catalogue().RunVars[50].Enabled);  // a car has no lean angle
    const int32_t n = 2000;
    MakeRun(n);
    // 50 m radius at 72 kph, anticlockwise: 0.4 rad/s.
    for (int32_t i = 1; i <= n; ++i) {
        const double a = (i - 1) * 0.01 * 20.0 / 50.0;
        V(i, slot::PositionX) = static_cast<float>(-50 * std::sin(a));
        V(i, slot::PositionY) = static_cast<float>(50 * std::cos(a));
        V(i, slot::SpeedKph) = 72;
    }
    CalculateHeadingVariables(1);
    EXPECT_LT(V(n - 200, 47), -360.0f);  // past a whole turn, downwards
    EXPECT_NEAR(V(1000, 48), -0.4 / 3.141592654 * 180, 0.5);
    EXPECT_NEAR(V(1000, 49), 50.0f, 1.0f);
}

}  // namespace
}  // namespace tl
