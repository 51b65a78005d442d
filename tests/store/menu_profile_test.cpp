// The main window's rules without a window: the menus of each build, the
// numbering of new graphs, the window list mark, the tool windows' keys, the
// run manager's texts and the ambient conditions.
#include <gtest/gtest.h>

#include <map>

#include "core/config_store.h"
#include "raw_runs.h"
#include "road/run_road.h"
#include "store/menu_profile.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

struct MenuState {
    bool visible = true;
    std::string caption;
};

// Applies the changes to a menu where everything is visible.
std::map<std::string, MenuState> Apply(Family f, Vehicle v) {
    std::map<std::string, MenuState> menus;
    for (const MenuChange& c : BuildMenuChanges(f, v)) {
        MenuState& m = menus[c.control];
        if (c.visible) m.visible = *c.visible;
        if (c.caption) m.caption = *c.caption;
    }
    return menus;
}

TEST(BuildMenusTest, FamiliesHideTheirMissingMenus) {
    for (Family f : {Family::MQ7, Family::SW63}) {
        auto m = Apply(f, Vehicle::Car);
        EXPECT_FALSE(m["mnuLogger"].visible);
        EXPECT_FALSE(m["mnuSv63Runs"].visible);
        EXPECT_FALSE(m["mnuBar12"].visible);
        EXPECT_TRUE(m["mnuLoadOptions"].visible);
    }
    auto hx = Apply(Family::HX40, Vehicle::Car);
    EXPECT_TRUE(hx["mnuLogger"].visible);
    EXPECT_FALSE(hx["mnuSv63Runs"].visible);
    EXPECT_FALSE(hx["mnuBar12"].visible);

    // The meter keeps only the edit entry under its vehicle menu.
    auto sv = Apply(Family::SV63, Vehicle::Kart);
    EXPECT_TRUE(sv["mnuLogger"].visible);
    EXPECT_EQ(sv["mnuLogger"].caption, "Meter");
    EXPECT_EQ(sv["mnuLoggerSetupLogger"].caption, "Set-Up Meter");
    EXPECT_FALSE(sv["mnuLoadOptions"].visible);
    EXPECT_FALSE(sv["mnuSaveOptions"].visible);
    EXPECT_FALSE(sv["mnuBar6"].visible);
    EXPECT_TRUE(sv["mnuEditOptions"].visible);
    EXPECT_TRUE(sv["mnuSv63Runs"].visible);
}

TEST(BuildMenusTest, VehicleNamesTheOptionsMenuAndBoatShowsReferenceLap) {
    const std::pair<Vehicle, std::string> vehicles[] = {{Vehicle::Car, "Car"},
                                                        {Vehicle::Kart, "Kart"},
                                                        {Vehicle::Bike, "Bike"},
                                                        {Vehicle::Boat, "Boat"}};
    for (const auto& [v, word] : vehicles) {
        auto m = Apply(Family::HX40, v);
        EXPECT_EQ(m["mnuCarOptions"].caption, "&" + word);
        EXPECT_EQ(m["mnuLoadOptions"].caption, "&Load " + word + " Options");
        EXPECT_EQ(m["mnuSaveOptions"].caption, "&Save " + word + " Options");
        EXPECT_EQ(m["mnuEditOptions"].caption, "&Edit " + word + " Options");
        EXPECT_EQ(m.count("mnuRefOptions") == 1, v == Vehicle::Boat) << word;
    }
}

TEST(FormNumberTest, ClosedNumbersAreUsedAgainLowestFirst) {
    std::vector<bool> used;
    EXPECT_EQ(TakeFormNumber(used), 1);
    EXPECT_EQ(TakeFormNumber(used), 2);
    EXPECT_EQ(TakeFormNumber(used), 3);
    ReleaseFormNumber(used, 2);
    EXPECT_EQ(TakeFormNumber(used), 2);
    EXPECT_EQ(TakeFormNumber(used), 4);
    ReleaseFormNumber(used, 3);
    ReleaseFormNumber(used, 1);
    EXPECT_EQ(TakeFormNumber(used), 1);
    EXPECT_EQ(TakeFormNumber(used), 3);
    ReleaseFormNumber(used, 99);  // out of range: nothing happens
    EXPECT_EQ(TakeFormNumber(used), 5);
}

TEST(WindowListTest, ActiveMarkMovesToTheActiveChild) {
    const std::vector<std::string> first =
        MarkActiveWindow({"Graph 1", "Graph 2", "Run Manager"}, 1);
    EXPECT_EQ(first, (std::vector<std::string>{"Graph 1", "Graph 2 (active)", "Run Manager"}));
    const std::vector<std::string> second = MarkActiveWindow(first, 2);
    EXPECT_EQ(second, (std::vector<std::string>{"Graph 1", "Graph 2", "Run Manager (active)"}));
    EXPECT_EQ(MarkActiveWindow(second, -1)[2], "Run Manager");
}

class ShellRulesTest : public EngineTest {};

TEST_F(ShellRulesTest, ToolWindowOpensOnlyOnExactlyOne) {
    const std::string& file = Paths().TracelabCfgPath;
    SetConfig(file, "ShowMiniMaps", -1);
    EXPECT_FALSE(ToolWindowShownAtStart(kToolWindows[0]));
    SetConfig(file, "ShowMiniMaps", 1);
    EXPECT_TRUE(ToolWindowShownAtStart(kToolWindows[0]));

    StoreToolWindowState(kToolWindows[1], true, {10, 20, 300, 200});
    EXPECT_EQ(GetConfig(file, "ShowValueTable"), 1.0f);
    EXPECT_EQ(GetConfig(file, "ValueTableLeft"), 10.0f);
    EXPECT_EQ(GetConfig(file, "ValueTableHeight"), 200.0f);
    const auto box = StoredToolWindowBox(kToolWindows[1]);
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(box->top, 20);
    EXPECT_EQ(box->width, 300);
    StoreToolWindowState(kToolWindows[1], false, {});
    EXPECT_EQ(GetConfig(file, "ShowValueTable"), 0.0f);
    EXPECT_FALSE(StoredToolWindowBox(kToolWindows[2]).has_value());
}

TEST_F(ShellRulesTest, SaveQuestionOnlyWithMoreThanTenRawEntries) {
    UseProfile(Family::HX40, Vehicle::Car);
    ClearCurrentRun(true);
    EXPECT_FALSE(RawDataLoaded());
    Store().RawData.Resize(10);
    EXPECT_FALSE(RawDataLoaded());
    Store().RawData.Resize(11);
    EXPECT_TRUE(RawDataLoaded());
}

TEST_F(ShellRulesTest, CarFileLabelShowsTheFileOrTheMetersVehicleName) {
    UseProfile(Family::HX40, Vehicle::Car);
    ClearCurrentRun(true);
    AddPlaneRun("first", MakeHx40Run(3));
    EXPECT_EQ(CarFileLabelText(1), "default options");
    Store().RunInfo[1].CarFile = "C:\\cars\\red.car";
    EXPECT_EQ(CarFileLabelText(1), "red.car");
    Store().RunInfo[1].CarFile = "/home/me/cars/blue.car";
    EXPECT_EQ(CarFileLabelText(1), "blue.car");
    EXPECT_EQ(CarFileLabelText(2), "");

    UseProfile(Family::SV63, Vehicle::Car);
    ClearCurrentRun(true);
    AddPlaneRun("meter", MakeSv63Run(400, 1));
    SetConfigString(Paths().CarCfgPath, "Car0Name", "Club car");
    SetConfigString(Paths().CarCfgPath, "Car2Name", "Race car");
    EXPECT_EQ(CarFileLabelText(1), "Club car");
    Store().RunInfo[1].CarFile = "2";
    EXPECT_EQ(CarFileLabelText(1), "Race car");
}

TEST_F(ShellRulesTest, AmbientConditionsRangesAndDefaults) {
    UseProfile(Family::HX40, Vehicle::Car);
    ClearCurrentRun(true);
    AddPlaneRun("first", MakeHx40Run(3));
    RunRecord& r = Store().RunInfo[1];
    r.AmbientTemperature = 0;
    r.AmbientPressure = 0;
    r.AmbientHumidity = -5;
    const AmbientTexts shown = AmbientShownFor(1);
    EXPECT_EQ(shown.temperature, "30");
    EXPECT_EQ(shown.pressure, "101");
    EXPECT_EQ(shown.humidity, "0");

    EXPECT_EQ(SetAmbientConditions(1, {"20", "50", "79.9"}),
              "The specified ambient pressure is outside the allowable range");
    EXPECT_EQ(SetAmbientConditions(1, {"51", "50", "100"}),
              "The specified ambient temperature is outside the allowable range");
    EXPECT_EQ(SetAmbientConditions(1, {"20", "151", "100"}),
              "The specified ambient relative humidity is outside the allowable range");
    EXPECT_EQ(r.AmbientTemperature, 30.0f);  // refusals store nothing

    EXPECT_EQ(SetAmbientConditions(1, {"-30", "120", "80"}), "");
    EXPECT_EQ(r.AmbientTemperature, -30.0f);
    EXPECT_EQ(r.AmbientHumidity, 120.0f);
    EXPECT_EQ(r.AmbientPressure, 80.0f);
    // A decimal comma reads as GetVal reads it; text that is no number reads 0.
    EXPECT_EQ(SetAmbientConditions(1, {"12,5", "0", "120"}), "");
    EXPECT_EQ(r.AmbientTemperature, 12.5f);
    EXPECT_EQ(SetAmbientConditions(1, {"warm", "0", "100"}), "");
    EXPECT_EQ(r.AmbientTemperature, 0.0f);
}

TEST_F(ShellRulesTest, RecentFilesNewestFirstWithoutDuplicates) {
    for (const char* path : {"/a.run", "/b.run", "/c.run", "/a.run", "/d.run", "/e.run"})
        AddRecentRunFile(path);
    EXPECT_EQ(RecentRunFiles(), (std::vector<std::string>{"/e.run", "/d.run", "/a.run", "/c.run"}));
}

}  // namespace
}  // namespace tl::test
