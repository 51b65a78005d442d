// The two filters at their edges (window phase, run ends, rate limits) and
// the pipeline's fixed order of stages.
#include <gtest/gtest.h>

#include <vector>

#include "derived/pipeline.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::MakeRun;
using test::V;

class Filters : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::HX40, Vehicle::Car);
        test::EnableEveryVariable();
    }
    static constexpr int kSlot = 6;  // engine speed
    int32_t Column() const { return ColumnOf(kSlot); }
    void Ramp(int32_t n) {
        for (int32_t i = 1; i <= n; ++i) V(i, kSlot) = static_cast<float>(i * i % 97);
    }
};

TEST_F(Filters, MovingAverageWindowIsOneRowLateAndEndsAreKept) {
    MakeRun(200);
    Ramp(200);
    std::vector<float> before(201);
    for (int32_t i = 1; i <= 200; ++i) before[i] = V(i, kSlot);
    LinearFilterVar(1, Column(), 0.05f);  // n = 5: before 2, after 3
    for (int32_t i = 1; i <= 200; ++i) {
        if (i <= 1 + 2 || i >= 200 - 3) {
            EXPECT_EQ(V(i, kSlot), before[i]) << i;  // ends unfiltered
        } else {
            double sum = 0;
            for (int32_t k = i - 1; k <= i + 3; ++k) sum += before[k];
            EXPECT_FLOAT_EQ(V(i, kSlot), static_cast<float>(sum / 5)) << i;
        }
    }
}

TEST_F(Filters, MovingAverageOfTwoIsTheNextTwoRows) {
    MakeRun(100);
    Ramp(100);
    std::vector<float> b(101);
    for (int32_t i = 1; i <= 100; ++i) b[i] = V(i, kSlot);
    LinearFilterVar(1, Column(), 0.02f);  // n = 2: before 0, after 2
    EXPECT_EQ(V(1, kSlot), b[1]);
    for (int32_t i = 2; i <= 100 - 3; ++i) EXPECT_FLOAT_EQ(V(i, kSlot), (b[i + 1] + b[i + 2]) / 2);
    for (int32_t i = 98; i <= 100; ++i) EXPECT_EQ(V(i, kSlot), b[i]);
}

TEST_F(Filters, MovingAverageTooShortOrTooLongDoesNothing) {
    MakeRun(100);
    Ramp(100);
    std::vector<float> b(101);
    for (int32_t i = 1; i <= 100; ++i) b[i] = V(i, kSlot);
    LinearFilterVar(1, Column(), 0.005f);  // n rounds to 0 (half to even)
    for (int32_t i = 1; i <= 100; ++i) EXPECT_EQ(V(i, kSlot), b[i]);
    MakeRun(100);
    Ramp(100);
    LinearFilterVar(1, Column(), 0.91f);  // n = 91 > RunLength - 10
    for (int32_t i = 1; i <= 100; ++i) EXPECT_EQ(V(i, kSlot), b[i]);
    LinearFilterVar(1, Column(), 0.90f);  // n = 90 = RunLength - 10: filtered
    bool changed = false;
    for (int32_t i = 1; i <= 100; ++i) changed |= V(i, kSlot) != b[i];
    EXPECT_TRUE(changed);
}

TEST_F(Filters, RocFilterRebuildsFromTheRowBeforeTheJump) {
    MakeRun(300);
    for (int32_t i = 1; i <= 300; ++i) V(i, kSlot) = i <= 149 ? 10.0f : 12.0f;
    V(150, kSlot) = 500.0f;  // a spike; rate 300/s allows 3 per row
    V(151, kSlot) = 500.0f;
    V(5, kSlot) = 900.0f;  // within the first 20 rows: taken as it is
    EXPECT_EQ(IntelligentRocFilter(1, Column(), 300.0f, 0.0f, 1000.0f), 1);
    EXPECT_EQ(V(5, kSlot), 900.0f);
    // j = 149 (the last good row), k = 152: slope (12 - 10) / 3 laid from the
    // row before j, so the line overshoots the old V(152).
    EXPECT_EQ(V(148, kSlot), 10.0f);
    EXPECT_FLOAT_EQ(V(149, kSlot), 10.0f + 2.0f / 3);
    EXPECT_FLOAT_EQ(V(150, kSlot), 10.0f + 4.0f / 3);
    EXPECT_FLOAT_EQ(V(151, kSlot), 12.0f);
    EXPECT_FLOAT_EQ(V(152, kSlot), 12.0f + 2.0f / 3);
    EXPECT_EQ(V(153, kSlot), 12.0f);
}

TEST_F(Filters, RocFilterLeavesShortRunsAndUnsetLimitsAlone) {
    MakeRun(100);
    for (int32_t i = 1; i <= 100; ++i) V(i, kSlot) = (i % 2) ? 0.0f : 1000.0f;
    EXPECT_EQ(IntelligentRocFilter(1, Column(), 1.0f, 0.0f, 10.0f), 0);
    EXPECT_EQ(V(50, kSlot), 1000.0f);

    MakeRun(400);
    for (int32_t i = 1; i <= 400; ++i) V(i, kSlot) = (i % 2) ? 0.0f : 1000.0f;
    const std::string name = Catalogue().RunVars[kSlot].Name;
    SetConfig(Paths().TracelabCfgPath, "RateFilt_" + name, 10.0f);
    SetConfig(Paths().TracelabCfgPath, "MinPos_" + name, 5.0f);
    SetConfig(Paths().TracelabCfgPath, "MaxPos_" + name, 5.0f);  // max = min: off
    SmartFilterVariables(1);
    EXPECT_EQ(V(201, kSlot), 0.0f);
    SetConfig(Paths().TracelabCfgPath, "MaxPos_" + name, 2000.0f);
    SmartFilterVariables(1);
    // The walk starts at row 21 (below the minimum), settles on row 22, and
    // nothing after row 23 is acceptable: rows 23 to 399 lie on the line from
    // row 22 with the slope of rows 23 to 399 (both 0), i.e. 1000.
    EXPECT_EQ(V(20, kSlot), 1000.0f);
    EXPECT_EQ(V(21, kSlot), 0.0f);
    for (int32_t i = 23; i <= 399; ++i) ASSERT_EQ(V(i, kSlot), 1000.0f) << i;
    EXPECT_EQ(V(400, kSlot), 1000.0f);
}

TEST_F(Filters, RocFilterOutOfLimitsToTheEndIsStillRebuilt) {
    MakeRun(200);
    for (int32_t i = 1; i <= 200; ++i) V(i, kSlot) = i <= 120 ? 10.0f : 5000.0f;
    IntelligentRocFilter(1, Column(), 1000.0f, 0.0f, 100.0f);
    // Nothing acceptable after row 120: k stops at RunEnd - 1 = 199 and rows
    // 120 to 199 are rebuilt on the line from row 119; the last row is kept.
    const float slope = (5000.0f - 10.0f) / 79.0f;
    for (int32_t i = 120; i <= 199; ++i)
        EXPECT_NEAR(V(i, kSlot), 10.0f + (i - 119) * slope, 0.01f) << i;
    EXPECT_EQ(V(200, kSlot), 5000.0f);
}

TEST_F(Filters, PipelineRunsItsStagesInOrderAndSetsAmbientDefaults) {
    MakeRun(500);
    RunRecord& r = Store().RunInfo[1];
    r.AmbientTemperature = 0.0f;
    r.AmbientPressure = 0.0f;
    const std::string name = Catalogue().RunVars[kSlot].Name;
    SetConfig(Paths().TracelabCfgPath, "TimeFilt_" + name, 0.1f);
    V(300, slot::Scratch) = 7.0f;
    ui.ClearRecords();
    ProcessDerivedVariables(1);
    EXPECT_EQ(r.AmbientTemperature, 30.0f);
    EXPECT_EQ(r.AmbientPressure, 101.0f);
    EXPECT_EQ(V(300, slot::Scratch), 0.0f);
    const std::vector<std::string> expected = {"Process the accelerometer data",
                                               "Filter variables (min/max/ROC)",
                                               "Process GPS speeds",
                                               "Map Track From GPS Data",
                                               "Calculate Wheel Speeds",
                                               "Calculate distances",
                                               "Calculate power and torque",
                                               "Calculate gear ratios",
                                               "Calculate headings",
                                               "Calculate user channels",
                                               "Linear filter variables (time)",
                                               "Linear Filter: " + name,
                                               "Clear the no data vector"};
    std::vector<std::string> seen;
    for (const auto& line : ui.progressLines)
        for (const auto& e : expected)
            if (line.size() >= e.size() && line.compare(line.size() - e.size(), e.size(), e) == 0 &&
                (seen.empty() || seen.back() != e))
                seen.push_back(e);
    EXPECT_EQ(seen, expected);
}

}  // namespace
}  // namespace tl
