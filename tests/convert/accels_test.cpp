// The run-wide correction of the accelerations: mounting offsets, vehicle
// geometry, auto-zero and the bias learnt against the GPS speed.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "convert/accel_channels.h"
#include "convert_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::Row;

class Accels : public test::EngineTest {
  protected:
    void Prepare(Vehicle vehicle, int rows) {
        UseProfile(Family::HX40, vehicle);
        test::EnableAllVariables();
        test::LoadPlaneRun(std::vector<test::Frame>(static_cast<size_t>(rows)));
        for (int32_t i = 1; i <= test::Run1().RunEnd; ++i) Set(slot::Time, i, (i - 1) / 100.0f);
    }
    static void Set(int slotNumber, int32_t row, float v) {
        RunData(row, ColumnOf(slotNumber)) = v;
    }
    static void Fill(float lat, float lon) {
        for (int32_t i = 1; i <= test::Run1().RunEnd; ++i) {
            Set(slot::AccelLat, i, lat);
            Set(slot::AccelLong, i, lon);
        }
    }
    static void Car(const char* key, float v) { SetConfig(Paths().CarCfgPath, key, v); }
};

TEST_F(Accels, GeometryConstantsAndReverse) {
    Prepare(Vehicle::Car, 50);
    const double g = 9.80665;
    struct {
        int reverse;
        float lat, lon;
    } cases[] = {{0, 0.95f * 0.5f, 0.975f * 0.2f - 0.475f * 0.1f * 0.2f},
                 {2, 1.05f * 0.5f, 1.025f * 0.2f - 0.525f * 0.3f * 0.2f},
                 {1, -1.05f * 0.5f, -(1.025f * 0.2f - 0.525f * 0.3f * 0.2f)}};
    for (const auto& c : cases) {
        Set(slot::AccelLat, 10, 0.5f);
        Set(slot::AccelLong, 10, 0.2f);
        CorrectAccels(10, 0, 0, c.reverse, 0, 0);
        EXPECT_NEAR(Row(slot::AccelLat, 10), c.lat, 1e-6) << c.reverse;
        EXPECT_NEAR(Row(slot::AccelLong, 10), c.lon, 1e-6) << c.reverse;
    }
    // A mounting offset of 10 degrees on the lateral axis.
    Set(slot::AccelLat, 10, 0.5f);
    Set(slot::AccelLong, 10, 0.0f);
    const double off = 10.0 / 360 * 2 * 3.141592654;
    CorrectAccels(10, off, 0, 0, 0, 0);
    EXPECT_NEAR(Row(slot::AccelLat, 10), 0.95 * (0.5 * g / std::cos(off) - g * std::sin(off)) / g,
                1e-6);
    EXPECT_EQ(Row(slot::AccelLong, 10), 0.0f);  // zero stays zero, no cross term
    // A kart reads the sensor as it stands.
    Prepare(Vehicle::Kart, 50);
    Set(slot::AccelLat, 10, 0.5f);
    Set(slot::AccelLong, 10, 0.2f);
    CorrectAccels(10, 0, 0, 2, 0, 0);
    EXPECT_FLOAT_EQ(Row(slot::AccelLat, 10), 0.5f);
    EXPECT_FLOAT_EQ(Row(slot::AccelLong, 10), 0.2f);
}

// The SV63 takes its vehicle's roll and tilt factors from the options under
// "Car", the run's car number and the key; they scale the two axes and
// nothing else does (no geometry constants, no cross term).
TEST_F(Accels, Sv63RollAndTiltFactorsOfTheRunsCar) {
    UseProfile(Family::SV63, Vehicle::Car);
    test::EnableAllVariables();
    test::LoadPlaneRun(std::vector<test::Frame>(60), {1, 0, 0, 0, 0, 0, 0, 0});
    Store().RunInfo[1].CarFile = "2";
    for (int32_t i = 1; i <= test::Run1().RunEnd; ++i) Set(slot::Time, i, (i - 1) / 100.0f);
    Fill(0.5f, -0.4f);
    Car("Car2RollFactor", 0.1f);
    Car("Car2TiltFactor", 0.25f);
    Car("Car1RollFactor", 0.7f);  // another car's factors play no part
    Car("Car1TiltFactor", 0.7f);
    Car("AutoZeroAccelerometers", 0);
    Car("LatAccelOffset", 0);
    Car("LongAccelOffset", 0);
    Car("ReverseAccels", 0);
    ProcessAccels(1);
    for (int32_t i : {1, 20, test::Run1().RunEnd}) {
        EXPECT_NEAR(Row(slot::AccelLat, i), 0.9 * 0.5, 1e-6) << i;
        EXPECT_NEAR(Row(slot::AccelLong, i), 0.75 * -0.4, 1e-6) << i;
    }
}

// The offsets the vehicle dialog offers from the first 100 rows of run 1:
// the angles whose sines are the mean readings, in degrees; a warning above
// 10 degrees forwards only; the three refusals.
TEST_F(Accels, AnglesFromTheFirstHundredRows) {
    Prepare(Vehicle::Car, 150);
    const double rad = 3.141592654 / 180.0;
    Fill(static_cast<float>(std::sin(3.0 * rad)), static_cast<float>(std::sin(-6.0 * rad)));
    Car("LatAccelOffset", 0);
    Car("LongAccelOffset", 0);
    float lat = 0, lon = 0;
    ui.ClearRecords();
    ASSERT_TRUE(CalculateAccelAngles(lat, lon));
    EXPECT_NEAR(lat, 3.0, 1e-3);
    EXPECT_NEAR(lon, -6.0, 1e-3);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    const std::string warning = "Warning! The device is mounted at an angle greater than 10\u00b0";
    // Forward past 10 degrees warns; sideways and backwards never do.
    Fill(static_cast<float>(std::sin(15.0 * rad)), static_cast<float>(std::sin(11.0 * rad)));
    ui.ClearRecords();
    CalculateAccelAngles(lat, lon);
    EXPECT_NEAR(lon, 11.0, 1e-3);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 1);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, warning));
    Fill(static_cast<float>(std::sin(15.0 * rad)), static_cast<float>(std::sin(-11.0 * rad)));
    ui.ClearRecords();
    CalculateAccelAngles(lat, lon);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    // A run of processed zeros, manual offsets in force, a run too short.
    Fill(0, 0);
    ui.ClearRecords();
    CalculateAccelAngles(lat, lon);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "To calculate offset, the first run must contain a valid processed data"));
    Car("LatAccelOffset", 1.5f);
    ui.ClearRecords();
    CalculateAccelAngles(lat, lon);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "To calculate offset, the first run must have been processed with no "
                       "manual offsets"));
    Car("LatAccelOffset", 0);
    Prepare(Vehicle::Car, 99);
    ui.ClearRecords();
    CalculateAccelAngles(lat, lon);
    EXPECT_TRUE(
        ui.Saw(ScriptedEvent::Kind::Message,
               "To calculate offset, the first run must contain at least 100 data samples"));
}

TEST_F(Accels, AutoZeroTakesTheFirstSecond) {
    Prepare(Vehicle::Kart, 300);
    Car("AutoZeroAccelerometers", 1);
    Car("LatAccelOffset", 30);  // ignored under auto-zero
    Fill(0.1f, -0.05f);
    ProcessAccels(1);
    // 101 rows under a divisor of 100: the angle is a touch too large.
    const double latAngle = std::asin(0.101), longAngle = std::asin(-0.0505);
    EXPECT_NEAR(Row(slot::AccelLat, 200), 0.1 / std::cos(latAngle) - std::sin(latAngle), 1e-5);
    EXPECT_NEAR(Row(slot::AccelLong, 1), -0.05 / std::cos(longAngle) - std::sin(longAngle), 1e-5);
    EXPECT_NE(
        test::Run1().Details.find(" Accelerometers were auto-zeroed at the beginning of the run."),
        std::string::npos);
    EXPECT_TRUE(ui.events.empty() ||
                ui.events.back().text.find("greater than 10") == std::string::npos);
    EXPECT_NEAR(Row(slot::AccelTotal, 200),
                std::hypot(Row(slot::AccelLat, 200), Row(slot::AccelLong, 200)), 1e-6);

    // Mounted at 20 degrees: a warning, and the run goes on.
    Prepare(Vehicle::Kart, 300);
    Car("AutoZeroAccelerometers", 1);
    Fill(0.34f, 0.0f);
    ProcessAccels(1);
    bool warned = false;
    for (const auto& e : ui.events)
        if (e.text.find("mounted at an angle greater than 10 degrees") != std::string::npos)
            warned = true;
    EXPECT_TRUE(warned);
    EXPECT_NEAR(Row(slot::AccelLat, 250), 0.0, 0.02);

    // Exactly 100 rows is too short: nothing is zeroed.
    Prepare(Vehicle::Kart, 100);
    ASSERT_EQ(test::Run1().RunEnd - test::Run1().RunStart + 1, 100);
    Car("AutoZeroAccelerometers", 1);
    Fill(0.1f, 0.0f);
    ProcessAccels(1);
    EXPECT_FLOAT_EQ(Row(slot::AccelLat, 50), 0.1f);
}

// A longitudinal channel reading 0.05 g while the GPS speed holds steady.
// The estimate sums the rows between two fixes, both ends included (11 rows
// under a divisor of 10 here), with the current bias taken off: it settles
// where b = 1.1 (0.05 - b), b = 0.055 / 2.1, leaving 0.05 - b.
TEST_F(Accels, BiasLearntAgainstSteadyGpsSpeed) {
    Prepare(Vehicle::Kart, 20000);
    Fill(0.0f, 0.05f);
    for (int32_t i = 1; i <= test::Run1().RunEnd; ++i)
        Set(slot::SpeedKph, i, i % 10 == 0 ? 80.0f : -1.0f);
    ProcessAccels(1);
    EXPECT_FLOAT_EQ(Row(slot::AccelLong, 1), 0.05f);  // the first row keeps its value
    const double settled = 0.05 - 0.055 / 2.1;
    EXPECT_NEAR(Row(slot::AccelLong, 20000), settled, 1e-5);
    EXPECT_NEAR(Row(slot::AccelLong, 2), settled, 1e-4);  // learnt in the first sweep

    // Hard braking per the GPS (beyond 0.25 g) teaches nothing.
    Prepare(Vehicle::Kart, 2000);
    Fill(0.0f, 0.05f);
    for (int32_t i = 1; i <= test::Run1().RunEnd; ++i)
        Set(slot::SpeedKph, i, i % 10 == 0 ? 200.0f - i * 0.1f : -1.0f);
    ProcessAccels(1);
    EXPECT_FLOAT_EQ(Row(slot::AccelLong, 1500), 0.05f);

    // With no speed at all, nothing changes either.
    Prepare(Vehicle::Kart, 2000);
    Fill(0.0f, 0.05f);
    ProcessAccels(1);
    EXPECT_FLOAT_EQ(Row(slot::AccelLong, 1500), 0.05f);
}

}  // namespace
}  // namespace tl
