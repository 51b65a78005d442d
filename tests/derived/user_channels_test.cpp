// User channels: constants, VAR_nn names, a channel reading a lower one,
// division by zero, a bad formula among good ones, and the file format.
#include <gtest/gtest.h>

#include "core/config_store.h"
#include "derived/pipeline.h"
#include "derived/user_channels.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::MakeRun;
using test::V;

class UserChannels : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::HX40, Vehicle::Car);
    }
    // Writes the channel file, enables every channel and builds a run.
    void Define(const std::vector<UserChannel>& channels, int32_t rows = 50) {
        ASSERT_TRUE(SaveUserChannels(Paths().UserVarsCfgPath, channels));
        for (const auto& c : channels)
            if (!c.name.empty()) SetConfig(Paths().TracelabCfgPath, "U:" + c.name, -1);
        test::EnableEveryVariable();
        MakeRun(rows);
        for (int32_t i = 1; i <= rows; ++i) {
            V(i, 7) = static_cast<float>(i);       // slot 7, written VAR_07
            V(i, 8) = static_cast<float>(i - 10);  // crosses 0 at row 10
        }
    }
};

TEST_F(UserChannels, VariablesConstantsAndLowerChannels) {
    SetConfig(Paths().CarCfgPath, "CarMass", 750);
    SetConfig(Paths().CarCfgPath, "Car Constant3", 2.5f);
    Define({{"Double", "VAR_07 * 2", -1},
            {"", "", 0},             // holds no slot
            {"Sum", "U_Double", 0},  // an unknown name: refused
            {"Plus", "VAR_100 + Mass + CAR_3 + _pi", 0},
            {"Ahead", "VAR_103 + 1", 0},
            {"Const", "42", 0}});
    Store().RunInfo[1].AmbientTemperature = 21.0f;
    ui.ClearRecords();
    CalculateUserChannels(1);
    const auto& v = Catalogue().RunVars;
    ASSERT_EQ(v[100].Name, "U:Double");
    ASSERT_EQ(v[102].Name, "U:Plus");
    for (int32_t i = 1; i <= 50; ++i) {
        EXPECT_FLOAT_EQ(V(i, 100), 2.0f * i);
        EXPECT_EQ(V(i, 101), 0.0f);
        EXPECT_NEAR(V(i, 102), 2.0f * i + 750 + 2.5 + 3.14159265, 1e-3);
        EXPECT_EQ(V(i, 103), 1.0f);  // slot 104 is not computed yet: reads 0
        EXPECT_EQ(V(i, 104), 42.0f);
    }
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "There is an error in the definition of user variable Sum"));
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 1);
}

TEST_F(UserChannels, DivisionByZeroIsHeldAtTheLimits) {
    Define({{"Inverse", "1 / VAR_08", 0}, {"Neg", "-1 / VAR_08", 0}, {"Nan", "0 / VAR_08", 0}});
    CalculateUserChannels(1);
    EXPECT_EQ(V(10, 100), 1.0e20f);
    EXPECT_EQ(V(10, 101), -1.0e20f);
    EXPECT_EQ(V(10, 102), 0.0f);
    EXPECT_FLOAT_EQ(V(12, 100), 0.5f);
}

TEST_F(UserChannels, CheckReportsSlotsAndConstants) {
    std::vector<int> slots;
    std::vector<bool> consts;
    ASSERT_TRUE(CheckInputsRequired("VAR_02 + VAR_21*Temp + sin(VAR_07) + CAR_10", slots, consts));
    EXPECT_EQ(slots, (std::vector<int>{2, 7, 21}));
    ASSERT_EQ(consts.size(), 16u);
    EXPECT_TRUE(consts[9]);
    EXPECT_TRUE(consts[13]);
    EXPECT_FALSE(consts[0]);
    EXPECT_EQ(UserVarName(7), "VAR_07");
    EXPECT_EQ(UserVarName(150), "VAR_150");
    EXPECT_FALSE(CheckInputsRequired("VAR_7 + 1", slots, consts));  // one digit: unknown
    EXPECT_FALSE(CheckInputsRequired("(VAR_02", slots, consts));
    EXPECT_FALSE(CheckInputsRequired("", slots, consts));
    EXPECT_FALSE(CheckInputsRequired(std::string(5000, '1'), slots, consts));
    EXPECT_FALSE(CheckInputsRequired(std::string(300, '(') + "1" + std::string(300, ')') + "+",
                                     slots, consts));
}

// A channel is an expression of its own row: an assignment, which would let
// a formula count from row to row, is refused with the definition message and
// its channel holds 0; comparisons stay.
TEST_F(UserChannels, AssignmentsAreRefusedComparisonsKept) {
    Define({{"Count", "Humid = Humid + 1", 0},
            {"Add", "VAR_07 += 1", 0},
            {"Pair", "(VAR_07 = 3) * 0 + VAR_07", 0},
            {"Compare", "(VAR_07 == 3) + (VAR_07 <= 2) + (VAR_07 >= 49) + (VAR_07 != 1)", 0}});
    ui.ClearRecords();
    CalculateUserChannels(1);
    for (int32_t i = 1; i <= 50; ++i) {
        EXPECT_EQ(V(i, 100), 0.0f) << i;
        EXPECT_EQ(V(i, 101), 0.0f) << i;
        EXPECT_EQ(V(i, 102), 0.0f) << i;
        EXPECT_EQ(V(i, 7), static_cast<float>(i));  // nothing wrote the input
        const float expected = (i == 3) + (i <= 2) + (i >= 49) + (i != 1);
        EXPECT_EQ(V(i, 103), expected) << i;
    }
    for (const char* name : {"Count", "Add", "Pair"})
        EXPECT_TRUE(
            ui.Saw(ScriptedEvent::Kind::Message,
                   std::string("There is an error in the definition of user variable ") + name));
    std::vector<int> slots;
    std::vector<bool> consts;
    EXPECT_FALSE(CheckInputsRequired("Mass = 3", slots, consts));
    EXPECT_TRUE(CheckInputsRequired("Mass == 3", slots, consts));
}

TEST_F(UserChannels, FileRoundTripAndHostileText) {
    const std::vector<UserChannel> in = {{"A \"quoted\" name", "VAR_02\r\n*2", -1}, {"", "", 0}};
    ASSERT_TRUE(SaveUserChannels(Paths().UserVarsCfgPath, in));
    EXPECT_EQ(test::ReadAll(Paths().UserVarsCfgPath),
              "\"A quoted name\",\"VAR_02*2\",-1\r\n\"\",\"\",0\r\n");
    const auto out = ReadUserChannels(Paths().UserVarsCfgPath);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].name, "A quoted name");
    EXPECT_EQ(out[0].formula, "VAR_02*2");
    EXPECT_EQ(out[0].flag, -1);
    EXPECT_TRUE(ReadUserChannels(root.file("missing.cfg")).empty());
}

TEST_F(UserChannels, BadWheelSpeedFormulaGivesZeroSpeed) {
    test::EnableEveryVariable();
    MakeRun(30);
    for (int32_t i = 1; i <= 30; ++i) V(i, slot::WheelSpeedKph) = 50.0f;
    SetConfigString(Paths().CarCfgPath, "WheelSpeedFormula", "VAR_06 * ");
    CalculateFormulaWheelSpeed(1);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "There is an error in the definition of user defined wheel speed "));
    ASSERT_TRUE(Catalogue().RunVars[slot::WheelSpeedKph].Enabled);
    EXPECT_EQ(V(15, slot::WheelSpeedKph), 0.0f);
    SetConfigString(Paths().CarCfgPath, "WheelSpeedFormula", "VAR_01 * 100");
    CalculateFormulaWheelSpeed(1);
    EXPECT_FLOAT_EQ(V(15, slot::WheelSpeedKph), 14.0f);
}

}  // namespace
}  // namespace tl
