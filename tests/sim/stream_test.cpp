#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "sim/run_file.h"
#include "sim_readers.h"

namespace tl::sim {
namespace {

int32_t S32(const std::vector<uint8_t>& p, size_t at) {
    return static_cast<int32_t>(test::BE(p, at, 4));
}

double SignMagnitude(const std::vector<uint8_t>& p, size_t at) {
    const double v = (p[at] & 127) + p[at + 1] / 256.0;
    return (p[at] & 128) ? v : -v;
}

SimOutput Simulated(const SimConfig& c) {
    SimOutput out;
    std::string error;
    EXPECT_TRUE(RunSimulation(c, out, error)) << error;
    return out;
}

TEST(SimStream, EveryRecordChecksumsAndTimeRecordsCountTheRows) {
    for (Family family : {Family::MQ7, Family::SW63}) {
        const SimOutput out = Simulated(test::QuietConfig(family, "kart", 2, 21));
        const std::vector<uint8_t> file = RunFileBytes(out.raw);
        ASSERT_EQ(test::I32(file, 0), 7576);
        ASSERT_EQ(test::I32(file, 4), family == Family::MQ7 ? 200 : 201);
        const std::vector<uint8_t> stream(file.begin() + 8, file.end());
        const test::StreamWalk w = test::WalkStream(stream);
        EXPECT_EQ(w.badBytes, 0);
        EXPECT_EQ(w.rows, static_cast<int>(out.trajectory.rows.size()));
        EXPECT_EQ(out.raw.expectedRows, w.rows);
        std::map<int, int> perId;
        long expectTime = 1;
        for (const test::Record& r : w.records) {
            ++perId[r.id];
            if (r.id == 9) {
                EXPECT_EQ(test::BE(r.payload, 0, 3), static_cast<uint32_t>(expectTime++));
            }
        }
        EXPECT_EQ(perId[6], 1);
        EXPECT_EQ(perId[9], w.rows);
        EXPECT_EQ(perId[8], w.rows);
        EXPECT_EQ(perId[12], w.rows);
        EXPECT_EQ(perId[10], static_cast<int>(out.raw.fixes.size()));
        EXPECT_EQ(perId[11], perId[10]);
        EXPECT_EQ(perId[7], perId[10]);
        const bool mq7 = family == Family::MQ7;
        EXPECT_EQ(perId[18], mq7 ? w.rows : 0);
        EXPECT_EQ(perId[14], mq7 ? w.rows : 0);
        EXPECT_EQ(perId[27], mq7 ? w.rows : 0);
        EXPECT_EQ(perId[25], mq7 ? w.rows : 0);
        EXPECT_EQ(perId[20], (w.rows + 9) / 10);
        // Logger info: serial and firmware.
        for (const test::Record& r : w.records) {
            if (r.id != 6) continue;
            EXPECT_EQ(test::BE(r.payload, 0, 2), 4711u);
            EXPECT_EQ(r.payload[2], 2);
            EXPECT_EQ(r.payload[3], 7);
        }
    }
}

TEST(SimStream, ChannelsDecodeToTheTruthOfTheirTick) {
    const SimOutput out = Simulated(test::QuietConfig(Family::MQ7, "road", 1, 22));
    const std::vector<uint8_t>& stream = out.raw.bytes;
    const test::StreamWalk w = test::WalkStream(stream);
    const VehicleParams& v = out.vehicle;
    int row = -1, mark = -1, lastPulse = 0, fixes = 0;
    for (const test::Record& r : w.records) {
        if (r.id == 9) {
            ++row;
            continue;
        }
        ASSERT_GE(row, 0);
        const TruthRow& t = out.trajectory.rows[row];
        switch (r.id) {
            case 8:
                ASSERT_NEAR(SignMagnitude(r.payload, 0), t.accelLat / kGravity, 0.5 / 256 + 1e-9);
                ASSERT_NEAR(SignMagnitude(r.payload, 2), t.accelLong / kGravity, 0.5 / 256 + 1e-9);
                break;
            case 12:
                ASSERT_EQ(r.payload[0] == 1, t.beacon);
                break;
            case 13:
                if (r.payload[0] == 1 && lastPulse == 0) mark = row;
                lastPulse = r.payload[0];
                break;
            case 18: {
                const uint32_t period = test::BE(r.payload, 0, 3);
                const double rpm = period ? 6.0e6 / period * 60.0 / v.ignitionPulsesRev : 0.0;
                ASSERT_NEAR(rpm, t.rpm, t.rpm * 1e-3 + 1.0);
                break;
            }
            case 14: {
                const uint32_t period = test::BE(r.payload, 0, 3);
                const double hz = t.speed / v.tyreCircumference * v.wheelPulsesRev;
                if (period == 0) {
                    ASSERT_LT(hz, 6.0e6 / 16777215.0);  // slower than the timer reaches: standing
                } else {
                    ASSERT_NEAR(6.0e6 / period, hz, hz * 1e-3);
                }
                break;
            }
            case 10: {
                // Late: 1 to 39 ticks after the pulse, describing the pulse's tick.
                ASSERT_GE(mark, 2);
                ASSERT_GE(row - mark, 1);
                ASSERT_LE(row - mark, 39);
                const TruthRow& at = out.trajectory.rows[mark];
                ASSERT_NEAR(S32(r.payload, 0) * 1e-7, at.lon, 0.51e-7);
                ASSERT_NEAR(S32(r.payload, 4) * 1e-7, at.lat, 0.51e-7);
                ASSERT_LT(test::BE(r.payload, 8, 4), 15000u);  // accuracy below 150 m
                ++fixes;
                break;
            }
            case 11:
                ASSERT_NEAR(test::BE(r.payload, 0, 4) / 100.0, out.trajectory.rows[mark].speed,
                            0.0051);
                ASSERT_LT(test::BE(r.payload, 4, 4), 180u);  // speed accuracy below 1.8 m/s
                break;
            default:
                break;
        }
    }
    EXPECT_GT(fixes, 1000);
    // South and west: both coordinates negative.
    EXPECT_LT(out.raw.fixes.front().lat, 0.0);
    EXPECT_LT(out.raw.fixes.front().lon, 0.0);
}

TEST(SimStream, SmallTimeJumpsAreRepairedLargeOnesLoseRows) {
    SimConfig c = test::QuietConfig(Family::MQ7, "kart", 1, 23);
    c.encode.faults.timeJumps = 3;
    c.encode.faults.jumpTicks = 9;
    SimOutput small = Simulated(c);
    test::StreamWalk w = test::WalkStream(small.raw.bytes);
    EXPECT_EQ(w.badBytes, 0);
    EXPECT_EQ(small.raw.timeJumps, 3);
    EXPECT_EQ(w.rows, static_cast<int>(small.trajectory.rows.size()));
    int jumps = 0;
    long last = -1;
    for (const test::Record& r : w.records) {
        if (r.id != 9) continue;
        const long t = test::BE(r.payload, 0, 3);
        if (last >= 0 && t != last + 1) {
            EXPECT_EQ(t - last, 9);
            ++jumps;
        }
        last = t;
    }
    EXPECT_EQ(jumps, 3);

    c.encode.faults.jumpTicks = 12;
    SimOutput large = Simulated(c);
    w = test::WalkStream(large.raw.bytes);
    EXPECT_EQ(w.rows, static_cast<int>(large.trajectory.rows.size()) - 3 * 11);
    EXPECT_EQ(large.raw.expectedRows, w.rows);
}

}  // namespace
}  // namespace tl::sim
