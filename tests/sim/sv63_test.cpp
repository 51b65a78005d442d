#include <gtest/gtest.h>

#include <cmath>

#include "sim/run_file.h"
#include "sim_readers.h"

namespace tl::sim {
namespace {

int32_t Compose(int b3, int b2, int b1, int b0) {
    return static_cast<int32_t>((static_cast<uint32_t>(b3) << 24) | (b2 << 16) | (b1 << 8) | b0);
}

class SimSV63 : public ::testing::TestWithParam<int> {};

TEST_P(SimSV63, RowsCountAndPositionsDecodeToTheSimulationToOneTenMillionthDegree) {
    const int period = GetParam();
    SimConfig c = test::QuietConfig(Family::SV63, "road", 1, 31);
    c.encode.sv63Period = period;
    SimOutput out;
    std::string error;
    ASSERT_TRUE(RunSimulation(c, out, error)) << error;
    test::Planes p;
    ASSERT_TRUE(test::ReadPlanes(RunFileBytes(out.raw), p));
    EXPECT_EQ(p.type, 202);
    EXPECT_EQ(p.header[1], period);
    EXPECT_EQ(test::CountRowsSV63(p), out.raw.rows);
    EXPECT_EQ(out.raw.rows % period, 0);
    EXPECT_GT(out.raw.rows, static_cast<int>(out.trajectory.rows.size()) - period);

    // Walk the frames as a reader does, decoding each block.
    int row = 0, blocks = 0;
    const int rawEnd = p.n - 1;
    for (int i = 2; i < rawEnd - 3; ++i) {
        if (p.At(i - 1, 1) & 4) {
            auto nib = [&](int f) { return (p.At(f, 1) & 15) * 16 + (p.At(f, 2) & 15); };
            const double lat =
                Compose(p.At(i, 5), p.At(i, 4), p.At(i + 1, 5), p.At(i + 1, 4)) * 1e-7;
            const double lon =
                Compose(nib(i + 1), p.At(i + 2, 5), p.At(i + 2, 4), nib(i + 2)) * 1e-7;
            const double kph = nib(i) * 0.8 * 1.609344;
            const TruthRow& t = out.trajectory.rows[row];
            ASSERT_NEAR(lat, t.lat, 0.5e-7 + 1e-12) << "row " << row;
            ASSERT_NEAR(lon, t.lon, 0.5e-7 + 1e-12) << "row " << row;
            ASSERT_NEAR(kph, t.speed * 3.6, 0.4 * 1.609344 + 1e-9);
            EXPECT_TRUE(p.At(i - 1, 2) & 4);  // the time pulse stands beside the flag
            ++blocks;
            i += 3;
        }
        const TruthRow& t = out.trajectory.rows[row];
        const int v8 = p.At(i, 8);
        double lat = (p.At(i, 5) + ((v8 & 64) ? 256 : 0)) / 256.0;
        if (!(v8 & 128)) lat = -lat;
        ASSERT_NEAR(lat, t.accelLat / kGravity, 0.5 / 256 + 1e-9);
        row += period;
    }
    EXPECT_EQ(row, out.raw.rows);
    EXPECT_EQ(blocks, static_cast<int>(out.raw.fixes.size()));
    EXPECT_GT(blocks, 100);
}

INSTANTIATE_TEST_SUITE_P(Periods, SimSV63, ::testing::Values(1, 4));

TEST(SimSV63Bytes, NegativeCoordinatesAndFastSpeedsSaturate) {
    // The top bit of the top byte carries the sign.
    const AccelBytes a = EncodeFrameAccel(-1.5, 0.25);
    EXPECT_EQ(a.v4, 128);
    EXPECT_EQ(a.v8 & (16 | 32), 16 | 32);
    EXPECT_EQ(a.v5, 64);
    EXPECT_EQ(a.v8 & (64 | 128), 128);
    const AccelBytes big = EncodeFrameAccel(3.0, -3.0);
    EXPECT_EQ(big.v4, 255);
    EXPECT_EQ(big.v8 & 16, 16);
    EXPECT_EQ(big.v8 & 128, 0);
}

}  // namespace
}  // namespace tl::sim
