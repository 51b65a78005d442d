// The load and save rules of the option dialogs.
#include <gtest/gtest.h>

#include "core/config_store.h"
#include "derived/reference_lap.h"
#include "raw_runs.h"
#include "road/options_model.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

class OptionsModelTest : public EngineTest {};

TEST_F(OptionsModelTest, StoredChoicesOutsideTheListSelectTheDefault) {
    EXPECT_EQ(HPCorrectionShown(0), 4);
    EXPECT_EQ(HPCorrectionShown(2), 2);
    EXPECT_EQ(HPCorrectionShown(4), 4);
    EXPECT_EQ(HPCorrectionShown(7), 4);
    EXPECT_EQ(MappingModeShown(2), 2);
    EXPECT_EQ(MappingModeShown(-1), 0);
    EXPECT_EQ(MappingModeShown(3), 0);
}

TEST_F(OptionsModelTest, FilterRowsFollowEnabledVariablesAndStoreAsGetValReads) {
    UseProfile(Family::HX40, Vehicle::Car);
    ClearCurrentRun(true);
    std::vector<FilterRow> rows = LoadFilterRows();
    ASSERT_FALSE(rows.empty());
    int enabled = 0;
    for (int n = 1; n < kNoDataSlot; ++n)
        if (Catalogue().RunVars[n].Enabled && !Catalogue().RunVars[n].Name.empty()) ++enabled;
    EXPECT_EQ(static_cast<int>(rows.size()), enabled);
    const std::string name = rows[0].name;
    rows[0].timeFilt = "0,25";
    rows[0].rateFilt = "abc";
    rows[0].minPos = "-3";
    rows[0].maxPos = "12x";
    rows.push_back({"No Such Variable", "1", "1", "1", "1"});
    SaveFilterRows(rows);
    const std::string& file = Paths().TracelabCfgPath;
    EXPECT_FLOAT_EQ(GetConfig(file, "TimeFilt_" + name), 0.25f);
    EXPECT_EQ(GetConfig(file, "RateFilt_" + name), 0.0f);
    EXPECT_EQ(GetConfig(file, "MinPos_" + name), -3.0f);
    EXPECT_EQ(GetConfig(file, "MaxPos_" + name), 12.0f);
    EXPECT_EQ(GetConfigString(file, "TimeFilt_No Such Variable"), "");
    EXPECT_EQ(LoadFilterRows()[0].timeFilt, "0.25");
}

TEST_F(OptionsModelTest, RefLapOptionsAskOnlyWithRunsLoaded) {
    UseProfile(Family::HX40, Vehicle::Boat);
    ClearCurrentRun(true);
    RefLap().RefRun = 0;
    RefLap().NumOfBeacons = 1;
    // Nothing differs: no question, the form unloads.
    EXPECT_TRUE(RefLapOptionsOkay(0, "1"));
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::YesNo), 0);
    // No runs: stored without asking; the whole part of the number counts.
    EXPECT_TRUE(RefLapOptionsOkay(0, "3.7"));
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::YesNo), 0);
    EXPECT_EQ(RefLap().NumOfBeacons, 3);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "NumOfBeacons"), 3.0f);

    AddPlaneRun("one", MakeHx40Run(3));
    AddPlaneRun("two", MakeHx40Run(3));
    ui.yesNoAnswers = {false};
    EXPECT_FALSE(RefLapOptionsOkay(2, "3"));
    EXPECT_TRUE(
        ui.Saw(ScriptedEvent::Kind::YesNo,
               "This will require that all the runs are\r\nreprocessed. Do you wish to continue?"));
    EXPECT_EQ(RefLap().RefRun, 0);
}

TEST_F(OptionsModelTest, GraphXAxisAnswers) {
    UseProfile(Family::HX40, Vehicle::Car);
    ClearCurrentRun(true);
    const auto& vars = Catalogue().RunVars;
    EXPECT_EQ(GraphXAxisAnswer("XAxisDistKm", ""), vars[11].Name);
    EXPECT_EQ(GraphXAxisAnswer("XAxisDistFt", ""), vars[14].Name);
    EXPECT_EQ(GraphXAxisAnswer("XAxisOther", "Select Variable"), vars[1].Name);
    EXPECT_EQ(GraphXAxisAnswer("XAxisOther", vars[8].Name), vars[8].Name);
    EXPECT_EQ(GraphXAxisAnswer("", ""), vars[1].Name);
}

}  // namespace
}  // namespace tl::test
