// Runs of a session are processed one after another with the same working
// buffers: a vehicle lapping a circuit, logged twice in one session, must come
// out the same in both runs to the last bit, whichever run went before, and
// its map must follow the path the vehicle drove.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "core/config_store.h"
#include "derived/pipeline.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::V;

constexpr int32_t kRows = 9000;  // 90 s a run

struct Path {
    std::vector<float> x, y;
};

class RepeatedRuns : public test::EngineTest {
  protected:
    // Two runs of kRows rows; both get the same lap: a standstill of two
    // seconds, then laps of two 200 m straights joined by half circles of
    // 40 m radius, with a hairpin of 8 m radius once a lap (turns large
    // enough to need a fresh sine and cosine), fixes ten times a second
    // with a little noise and a gap of four seconds without fixes.
    Path MakeSession(int runs) {
        test::LayOutRuns(runs, kRows, "lap");
        const RunStore& s = Store();
        Path truth;
        const double straight = 200, radius = 40, hairpin = 8;
        const double lap = 2 * straight + 2 * M_PI * radius;
        std::mt19937 gen(3);
        std::normal_distribution<float> noise(0.0f, 0.3f);
        double dist = 0, v = 0, heading = 0, x = 0, y = 0;
        for (int32_t k = 0; k < kRows; ++k) {
            const double pos = std::fmod(dist, lap);
            const bool bend = pos >= straight && !(pos >= straight + M_PI * radius &&
                                                   pos < 2 * straight + M_PI * radius);
            const bool tight = bend && pos > straight + 10 && pos < straight + 10 + hairpin;
            const double target = k < 200 ? 0.0 : (bend ? 50 / 3.6 : 35.0);
            const double a = std::clamp((target - v) * 0.5, -8.0, 4.0);
            const double r = tight ? hairpin : radius;
            const double lat = bend ? v * v / r : 0.0;
            const bool fix = k % 10 == 0 && !(k > 4000 && k < 4400);
            const float nx = noise(gen), ny = noise(gen);
            for (int n = 1; n <= runs; ++n) {
                const int32_t i = s.RunInfo[n].RunStart + k;
                V(i, slot::Time) = k / 100.0f;
                V(i, slot::AccelLong) = static_cast<float>(a / 9.80665);
                V(i, slot::AccelLat) = static_cast<float>(lat / 9.80665);
                V(i, slot::WheelSpeedKph) = static_cast<float>(v * 3.6);
                V(i, slot::EngineSpeed) = static_cast<float>(v * 3.6 * 60);
                V(i, slot::SpeedKph) = fix ? static_cast<float>(v * 3.6) : -1.0f;
                V(i, slot::PositionX) = fix && k > 0 ? static_cast<float>(x) + nx : 0.0f;
                V(i, slot::PositionY) = fix && k > 0 ? static_cast<float>(y) + ny : 0.0f;
            }
            truth.x.push_back(static_cast<float>(x));
            truth.y.push_back(static_cast<float>(y));
            heading += (bend ? v / r : 0.0) * 0.01;
            x += v * 0.01 * std::sin(heading);
            y += v * 0.01 * std::cos(heading);
            dist += v * 0.01;
            v = std::max(0.0, v + a * 0.01);
        }
        return truth;
    }
    // The run's rows of the channels the stages with working buffers write.
    static std::vector<float> Outputs(int run) {
        std::vector<float> out;
        const RunRecord& r = Store().RunInfo[run];
        for (int slotNumber : {slot::SpeedKph, slot::PositionX, slot::PositionY, 13, 47, 48})
            for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) out.push_back(V(i, slotNumber));
        return out;
    }
    static bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * 4) == 0;
    }
};

TEST_F(RepeatedRuns, BothRunsComeOutAlikeInEitherOrderAndFollowThePath) {
    UseProfile(Family::MQ7, Vehicle::Car);
    test::EnableEveryVariable();
    SetConfig(Paths().TracelabCfgPath, "DistanceMode", 2);
    // A long run first leaves the buffers larger than a short one needs.
    const Path truth = MakeSession(2);
    std::vector<std::vector<float>> converted;
    for (int32_t c = 0; c < Store().RunData.Columns(); ++c) {
        auto col = Store().RunData.Column(c);
        converted.emplace_back(col.begin(), col.end());
    }
    ProcessDerivedVariables(2);
    ProcessDerivedVariables(1);
    const std::vector<float> second = Outputs(2), first = Outputs(1);
    EXPECT_TRUE(SameBits(first, second));

    // Run 1 again from its converted columns, now after itself.
    for (int32_t c = 0; c < Store().RunData.Columns(); ++c) {
        auto col = Store().RunData.Column(c);
        std::copy(converted[c].begin(), converted[c].end(), col.begin());
    }
    ProcessDerivedVariables(1);
    EXPECT_TRUE(SameBits(Outputs(1), first));

    // The map against the driven path, away from the dead-reckoned ends.
    double sumSq = 0;
    int n = 0;
    for (int32_t k = 300; k < kRows - 300; ++k) {
        const float dx = V(1 + k, slot::PositionX) - truth.x[k];
        const float dy = V(1 + k, slot::PositionY) - truth.y[k];
        sumSq += dx * dx + dy * dy;
        ++n;
    }
    EXPECT_LT(std::sqrt(sumSq / n), 2.0);
}

}  // namespace
}  // namespace tl
