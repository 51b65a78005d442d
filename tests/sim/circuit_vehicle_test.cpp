#include <gtest/gtest.h>

#include <cmath>

#include "sim/circuit.h"
#include "sim/vehicle.h"

namespace tl::sim {
namespace {

TEST(SimCircuit, BuiltinsCloseOnThemselvesWithTheirStatedLengths) {
    struct Expect {
        const char* name;
        double minLength, maxLength;
        int corners;
    };
    for (const Expect& e : {Expect{"kart", 900, 1200, 7}, Expect{"road", 4000, 5000, 12},
                            Expect{"oval", 1800, 2500, 2}}) {
        Circuit c;
        std::string error;
        ASSERT_TRUE(BuiltinCircuit(e.name, c, error)) << error;
        EXPECT_GE(c.length, e.minLength) << e.name;
        EXPECT_LE(c.length, e.maxLength) << e.name;
        int corners = 0;
        double sum = 0.0, turn = 0.0;
        for (const Segment& s : c.segments) {
            sum += s.length;
            if (s.radius != 0.0) {
                ++corners;
                turn += s.length / s.radius;
            }
            EXPECT_GT(s.length, 5.0) << e.name;
        }
        EXPECT_EQ(corners, e.corners) << e.name;
        EXPECT_NEAR(sum, c.length, 1e-9);
        EXPECT_NEAR(std::fabs(turn), 2.0 * M_PI, 1e-9);
        // Sum of the chords equals the length (to the chord error) and the
        // lap ends on the line, with the heading it started with.
        double chords = 0.0, worstGap = 0.0;
        for (size_t i = 1; i < c.points.size(); ++i) {
            const double d =
                std::hypot(c.points[i].x - c.points[i - 1].x, c.points[i].y - c.points[i - 1].y);
            chords += d;
            worstGap = std::max(worstGap, d);
        }
        EXPECT_NEAR(chords, c.length, 1e-3 * c.length) << e.name;
        EXPECT_LE(worstGap, c.step + 1e-6);
        const CircuitPoint before = c.At(c.length - 0.01), after = c.At(0.01);
        EXPECT_LT(std::hypot(before.x - after.x, before.y - after.y), 0.03) << e.name;
        EXPECT_NEAR(std::cos(before.heading), std::cos(after.heading), 1e-3);
        EXPECT_NEAR(std::sin(before.heading), std::sin(after.heading), 1e-3);
    }
}

TEST(SimCircuit, AnchorsExerciseAllSignsAndProjectionInverts) {
    Circuit road, oval;
    std::string error;
    ASSERT_TRUE(BuiltinCircuit("road", road, error));
    ASSERT_TRUE(BuiltinCircuit("oval", oval, error));
    EXPECT_LT(road.originLat, 0.0);
    EXPECT_LT(road.originLon, 0.0);
    EXPECT_GT(oval.originLon, 0.0);
    for (const CircuitPoint& p : road.points) {
        double lat, lon, x, y;
        PlaneToLatLon(p.x, p.y, road.originLat, road.originLon, lat, lon);
        LatLonToPlane(lat, lon, road.originLat, road.originLon, x, y);
        ASSERT_NEAR(x, p.x, 1e-6);
        ASSERT_NEAR(y, p.y, 1e-6);
    }
    EXPECT_FALSE(BuiltinCircuit("nowhere", road, error));
    EXPECT_NE(error.find("nowhere"), std::string::npos);
}

TEST(SimCircuit, ClosureRefusesShapesThatDoNotTurnOnce) {
    Circuit c;
    std::string error;
    EXPECT_FALSE(
        BuildCircuit("half", 0, 0, 0, {{100, 0}, {M_PI * 20, 20}, {100, 0}}, 0.25, c, error));
    EXPECT_FALSE(error.empty());
    // A square with one side too short still closes by stretching the straights.
    ASSERT_TRUE(BuildCircuit("square", 10, 10, 0,
                             {{100, 0},
                              {M_PI * 5, 10},
                              {100, 0},
                              {M_PI * 5, 10},
                              {80, 0},
                              {M_PI * 5, 10},
                              {100, 0},
                              {M_PI * 5, 10}},
                             0.25, c, error))
        << error;
    EXPECT_LT(
        std::hypot(c.points.back().x - c.points.front().x, c.points.back().y - c.points.front().y),
        1e-9);
}

class SimVehicle : public ::testing::TestWithParam<const char*> {};

TEST_P(SimVehicle, RespectsGripPowerAndTopSpeedFromAStandingStart) {
    const std::string kind = GetParam();
    Circuit c;
    std::string error;
    ASSERT_TRUE(BuiltinCircuit(kind == std::string("kart") ? "kart" : "road", c, error));
    VehicleParams v;
    ASSERT_TRUE(VehicleFor(kind, v));
    DriveOptions o;
    o.laps = 3;
    o.seed = 5;
    o.pitStopLap = 1;
    Trajectory t;
    ASSERT_TRUE(Simulate(c, v, o, t, error)) << error;
    const double maxFactor = *std::max_element(t.lapGrip.begin(), t.lapGrip.end());
    EXPECT_EQ(t.rows.front().speed, 0.0);
    EXPECT_EQ(t.rows.back().speed, 0.0);
    double top = 0.0;
    for (size_t k = 0; k < t.rows.size(); ++k) {
        const TruthRow& r = t.rows[k];
        ASSERT_LE(std::fabs(r.accelLat), v.latGrip * maxFactor * 1.0001) << kind << " row " << k;
        ASSERT_LE(r.accelLong, v.accelMax + 1e-9);
        ASSERT_GE(r.accelLong, -v.brakeMax - 1e-9);
        ASSERT_LE(r.speed, v.topSpeed + 1e-9);
        top = std::max(top, r.speed);
        if (k > 0) {
            ASSERT_GE(r.distance, t.rows[k - 1].distance);
            // Speed is the derivative of distance.
            ASSERT_NEAR(r.distance - t.rows[k - 1].distance,
                        0.005 * (r.speed + t.rows[k - 1].speed), 0.02);
        }
        if (r.gear > 0 && r.rpm > v.idleRpm + 1.0) {
            ASSERT_NEAR(
                r.rpm,
                r.speed / v.tyreCircumference * 60.0 * v.gearRatios[r.gear - 1] * v.finalDrive,
                1e-6);
        }
    }
    EXPECT_GT(top, 0.5 * v.topSpeed);
    // Standing start: still for the first three seconds.
    EXPECT_EQ(t.rows[299].speed, 0.0);
    EXPECT_GT(t.rows[400].speed, 0.0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SimVehicle, ::testing::Values("car", "kart", "bike", "boat"));

TEST(SimVehicleLaps, CrossingsMatchDistanceAndLapsDiffer) {
    Circuit c;
    std::string error;
    ASSERT_TRUE(BuiltinCircuit("oval", c, error));
    VehicleParams v;
    ASSERT_TRUE(VehicleFor("car", v));
    DriveOptions o;
    o.laps = 4;
    o.seed = 9;
    o.extraBeacons = 2;
    Trajectory t;
    ASSERT_TRUE(Simulate(c, v, o, t, error));
    std::vector<double> lineTimes;
    int beacons = 0;
    for (const Crossing& x : t.crossings) {
        const double s = std::fmod(t.startDistance + x.distance, c.length);
        const double target = t.beaconS[x.beacon];
        EXPECT_LT(std::min(std::fabs(s - target), c.length - std::fabs(s - target)), 1e-6);
        ASSERT_LT(x.row, static_cast<int>(t.rows.size()));
        EXPECT_TRUE(t.rows[x.row].beacon);
        EXPECT_GE(x.row * 0.01, x.time - 1e-9);
        EXPECT_LT(x.row * 0.01 - x.time, 0.01);
        if (x.beacon == 0) {
            lineTimes.push_back(x.time);
            EXPECT_EQ(t.rows[x.row].lap, static_cast<int>(lineTimes.size()));
        } else {
            ++beacons;
        }
    }
    ASSERT_EQ(lineTimes.size(), 5u);  // out lap ends, then four laps
    EXPECT_EQ(beacons, 2 * 4);        // none on the out lap or after the flag
    std::vector<double> laps;
    for (size_t i = 1; i < lineTimes.size(); ++i) laps.push_back(lineTimes[i] - lineTimes[i - 1]);
    const auto [lo, hi] = std::minmax_element(laps.begin(), laps.end());
    EXPECT_GT(*hi - *lo, 0.01);  // laps differ a little
    EXPECT_LT(*hi - *lo, 0.1 * *lo);
}

TEST(SimVehicleLaps, SameSeedSameRunAndPitStopCostsTime) {
    Circuit c;
    std::string error;
    ASSERT_TRUE(BuiltinCircuit("kart", c, error));
    VehicleParams v;
    ASSERT_TRUE(VehicleFor("kart", v));
    DriveOptions o;
    o.laps = 2;
    o.seed = 3;
    Trajectory a, b, pit;
    ASSERT_TRUE(Simulate(c, v, o, a, error));
    ASSERT_TRUE(Simulate(c, v, o, b, error));
    ASSERT_EQ(a.rows.size(), b.rows.size());
    for (size_t k = 0; k < a.rows.size(); k += 97) ASSERT_EQ(a.rows[k].x, b.rows[k].x);
    o.pitStopLap = 1;
    ASSERT_TRUE(Simulate(c, v, o, pit, error));
    EXPECT_GT(pit.rows.size(), a.rows.size() + 100 * o.pitStopSeconds);
    // The car stands still in the pits for the stop.
    int still = 0;
    for (size_t k = 1000; k < pit.rows.size() - 300; ++k) still += pit.rows[k].speed == 0.0;
    EXPECT_GE(still, 100 * o.pitStopSeconds - 1);
}

}  // namespace
}  // namespace tl::sim
