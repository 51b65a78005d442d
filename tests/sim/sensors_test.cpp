#include <gtest/gtest.h>

#include <cmath>

#include "sim/encoders.h"
#include "sim/sensors.h"

namespace tl::sim {
namespace {

TEST(SimSensors, MountingAngleShowsGravityAndScalesTheMotion) {
    SensorOptions o;
    o.accelNoise = 0.0;
    o.accelBiasLong = 0.0;
    o.accelBiasLat = 0.02;
    o.mountPitchDeg = 5.0;
    o.mountRollDeg = -3.0;
    AccelSensor s(o, 1);
    TruthRow still;
    const AccelReading r0 = s.Read(still);
    EXPECT_NEAR(r0.longG, std::sin(5.0 * M_PI / 180.0), 1e-12);
    EXPECT_NEAR(r0.latG, std::sin(-3.0 * M_PI / 180.0) + 0.02, 1e-12);
    TruthRow braking;
    braking.accelLong = -kGravity;
    const AccelReading r1 = s.Read(braking);
    EXPECT_NEAR(r1.longG, -std::cos(5.0 * M_PI / 180.0) + std::sin(5.0 * M_PI / 180.0), 1e-12);
    // Noise has the stated spread.
    o.accelNoise = 0.01;
    AccelSensor noisy(o, 2);
    double sum = 0.0, sq = 0.0;
    const int n = 20000;
    for (int i = 0; i < n; ++i) {
        const double d = noisy.Read(still).longG - r0.longG;
        sum += d;
        sq += d * d;
    }
    EXPECT_NEAR(sum / n, 0.0, 0.0005);
    EXPECT_NEAR(std::sqrt(sq / n), 0.01, 0.0005);
}

TEST(SimSensors, PulseInputCountsPulsesAndPlacesTheLastOne) {
    PulseInput in(0.0);
    // 150 Hz: 1.5 pulses a frame, alternating 1 and 2.
    int total = 0;
    for (int f = 0; f < 1000; ++f) {
        const FramePulses p = in.Step(150.0);
        ASSERT_GE(p.count, 1);
        ASSERT_LE(p.count, 2);
        total += p.count;
    }
    EXPECT_EQ(total, 1500);
    PulseInput half(0.5);
    const FramePulses p = half.Step(100.0);  // one pulse, half way through the frame
    EXPECT_EQ(p.count, 1);
    EXPECT_NEAR(p.lastFraction, 0.5, 1e-12);
    const FramePulses none = PulseInput(0.1).Step(0.0);
    EXPECT_EQ(none.count, 0);
}

TEST(SimSensors, SatelliteCharactersAndSentenceShape) {
    EXPECT_EQ(SatChar(4), '4');
    EXPECT_EQ(SatChar(10), ':');
    EXPECT_EQ(SatChar(16), '@');
    GpsFix f;
    f.lat = 52.5;
    f.lon = 0.25;  // east of Greenwich
    f.speed = 10.0;
    f.sats = 11;
    f.utc = 23 * 3600 + 59 * 60 + 59.7;
    const std::string s = Hx40Sentence(f);
    ASSERT_EQ(s.size(), 56u);
    EXPECT_EQ(s.substr(0, 34), ",235959,;,5230.0000,N,00015.0000,E");
    // Minutes that round up to 60 carry into the degrees.
    f.lat = -(10.0 + 59.99999999 / 60.0);
    EXPECT_NE(Hx40Sentence(f).find(",1100.0000,S,"), std::string::npos);
}

}  // namespace
}  // namespace tl::sim
