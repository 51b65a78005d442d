// The ignition pulses per revolution of the vehicle options divide the HX40
// engine speed as a number, fractions included: a single with a wasted spark
// gives a pulse every second turn (0.5).
#include <gtest/gtest.h>

#include <string>

#include "core/config_store.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

class EnginePulses : public test::EngineTest {};

TEST_F(EnginePulses, Hx40EngineSpeedDividesByFractionalPulses) {
    test::EnableEveryVariable();
    const std::string demo = std::string(TRACELAB_SOURCE_DIR) + "/samples/demo_hx40_road";
    ui.yesNoAnswers.push_back(false);  // load without processing
    LoadDataFromFile(demo + ".run");
    ASSERT_EQ(Store().RunCount, 1);
    const int32_t column = FindVarIndex("Engine Speed [rpm]");
    auto rpmAt1000 = [&](const std::string& pulses) {
        CopyFileReplacing(demo + ".car", Paths().CarCfgPath);
        SetConfigString(Paths().CarCfgPath, "IgntionPulsesRev", pulses);
        ConvertRawToRunData(1, false);
        return Store().RunData(1000, column);
    };
    const float one = rpmAt1000("1");
    ASSERT_GT(one, 1000.0f);
    EXPECT_FLOAT_EQ(rpmAt1000("0.5"), one * 2.0f);
    EXPECT_FLOAT_EQ(rpmAt1000("1.5"), one / 1.5f);
    EXPECT_FLOAT_EQ(rpmAt1000("2"), one / 2.0f);
    // 0 and below count as 1.
    EXPECT_FLOAT_EQ(rpmAt1000("0"), one);
    EXPECT_FLOAT_EQ(rpmAt1000("-3"), one);
}

}  // namespace
}  // namespace tl
