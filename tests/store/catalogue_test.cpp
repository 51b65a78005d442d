// The variable catalogue of each family and vehicle, the user's selection and
// the profile's adjustments of the stored options.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "road/active_variables.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

class CatalogueTest : public EngineTest {
  protected:
    // A fresh options file: no key exists, so nothing is selected.
    void FreshProfile(Family f, Vehicle v) {
        Profile().SetFamily(f);
        Profile().SetVehicle(v);
        FormFamilyPaths();
        WriteAll(Paths().TracelabCfgPath, "");
        std::filesystem::remove(Paths().UserVarsCfgPath);
        ClearCurrentRun(true);
    }
    std::set<int> Enabled() const {
        std::set<int> out;
        for (int s = 1; s <= kNoDataSlot; ++s)
            if (Catalogue().RunVars[s].Enabled) out.insert(s);
        return out;
    }
    std::set<int> Available() const {
        std::set<int> out;
        for (int s = 1; s <= kNoDataSlot; ++s)
            if (Catalogue().RunVars[s].Available) out.insert(s);
        return out;
    }
    // Selects every variable the build offers, as SetConfig(..., -1) does.
    void SelectAll() {
        for (int s = 1; s < kNoDataSlot; ++s)
            if (Catalogue().RunVars[s].Available)
                SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
        SetAvailableVars();
    }
};

struct FreshCase {
    Family family;
    Vehicle vehicle;
    std::set<int> enabled;
};

TEST_F(CatalogueTest, FreshFileEnablesOnlyAlwaysOnSlotsOnEveryBuild) {
    const std::vector<FreshCase> cases = {
        // 10 and 42 come on where they are available when SetAlwaysOnVars runs.
        {Family::HX40, Vehicle::Car, {1, 2, 4, 8, 10, 11, 42}},
        {Family::HX40, Vehicle::Kart, {1, 2, 4, 8, 10, 11, 42}},
        {Family::HX40, Vehicle::Bike, {1, 2, 4, 8, 10, 11, 42}},
        {Family::HX40, Vehicle::Boat, {1, 2, 4, 8, 11}},
        {Family::MQ7, Vehicle::Car, {1, 2, 4, 8, 10, 11, 42}},
        {Family::MQ7, Vehicle::Boat, {1, 2, 4, 8, 11}},
        {Family::SW63, Vehicle::Car, {1, 2, 4, 8, 11, 42}},
        {Family::SW63, Vehicle::Kart, {1, 2, 4, 8, 11, 42}},
        {Family::SV63, Vehicle::Car, {1, 2, 4, 8, 11}},
        {Family::SV63, Vehicle::Bike, {1, 2, 4, 8, 11}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(FamilyWord(c.family)) + " vehicle " +
                     std::to_string(static_cast<int>(c.vehicle)));
        FreshProfile(c.family, c.vehicle);
        EXPECT_EQ(Enabled(), c.enabled);
        EXPECT_EQ(Catalogue().NumVars, static_cast<int32_t>(c.enabled.size()) + 1);
        // Enabled slots take columns 0, 1, ... in slot order; the others share
        // the last column, that of slot 201.
        int32_t next = 0;
        for (int s = 1; s <= kNoDataSlot; ++s) {
            const RunVar& v = Catalogue().RunVars[s];
            EXPECT_EQ(v.Column, v.Enabled ? next++ : Catalogue().NumVars - 1) << s;
        }
        EXPECT_EQ(Catalogue().RunVars[kNoDataSlot].Name, "*No Data*");
        EXPECT_FALSE(Catalogue().RunVars[kNoDataSlot].Available);
    }
}

TEST_F(CatalogueTest, AvailabilityFollowsFamilyAndVehicleTables) {
    // Wheel speed (9, 10) is never available at the end of a rebuild.
    FreshProfile(Family::HX40, Vehicle::Car);
    EXPECT_EQ(Available(),
              (std::set<int>{1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 13, 14, 15, 16, 17,
                             18, 19, 21, 22, 23, 24, 25, 27, 37, 42, 45, 47, 48, 49}));

    FreshProfile(Family::MQ7, Vehicle::Car);
    std::set<int> mq7 = {1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 13, 14, 15, 16,
                         17, 18, 19, 21, 22, 23, 24, 29, 30, 31, 32, 33, 34, 35,
                         36, 38, 39, 40, 41, 42, 43, 44, 46, 47, 48, 49, 51};
    EXPECT_EQ(Available(), mq7);

    FreshProfile(Family::SV63, Vehicle::Car);
    EXPECT_EQ(Available(),
              (std::set<int>{1, 2, 3, 4, 5, 7, 8, 11, 12, 13, 14, 15, 16, 21, 22, 47, 48, 49}));

    FreshProfile(Family::SW63, Vehicle::Bike);
    EXPECT_EQ(Available(), (std::set<int>{1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 13, 14, 19,
                                          21, 22, 23, 24, 42, 43, 44, 47, 48, 49, 50, 51}));

    // Kart: slot 8 is back (always-on) but not slot 7; boat loses the beacon.
    FreshProfile(Family::HX40, Vehicle::Kart);
    auto kart = Available();
    EXPECT_TRUE(kart.count(8));
    EXPECT_FALSE(kart.count(7));
    for (int s : {15, 16, 17, 18, 19, 45, 50}) EXPECT_FALSE(kart.count(s)) << s;
    EXPECT_TRUE(Catalogue().RunVars[8].Enabled);

    FreshProfile(Family::MQ7, Vehicle::Boat);
    for (int s : {9, 10, 15, 16, 17, 18, 19, 42, 50}) EXPECT_FALSE(Available().count(s)) << s;
}

TEST_F(CatalogueTest, GpsSpeedNamesOnlyWhereWheelSpeedWasAvailable) {
    // Slot 10 is available on HX40 and MQ7 until the wheel-speed removal at
    // the end of the rebuild, which comes after the naming step.
    FreshProfile(Family::HX40, Vehicle::Car);
    EXPECT_EQ(Catalogue().RunVars[7].Name, "GPS Speed [mph]");
    EXPECT_EQ(Catalogue().RunVars[8].Name, "GPS Speed [kph]");
    EXPECT_FALSE(Catalogue().RunVars[10].Available);
    EXPECT_TRUE(Catalogue().RunVars[10].Enabled);  // still computed

    FreshProfile(Family::HX40, Vehicle::Boat);
    EXPECT_EQ(Catalogue().RunVars[8].Name, "Speed [kph]");
    FreshProfile(Family::SV63, Vehicle::Car);
    EXPECT_EQ(Catalogue().RunVars[7].Name, "Speed [mph]");
    FreshProfile(Family::SW63, Vehicle::Car);
    EXPECT_EQ(Catalogue().RunVars[8].Name, "Speed [kph]");
}

TEST_F(CatalogueTest, SelectionIsMinusOneExactlyAndDependantsFollow) {
    FreshProfile(Family::HX40, Vehicle::Car);
    const std::string& cfg = Paths().TracelabCfgPath;
    SetConfig(cfg, "Gear [-]", -1);
    SetConfig(cfg, "Engine Speed [rpm]", 0);
    SetConfig(cfg, "Power [hp]", 1);  // 1 is not -1: not selected
    SetConfig(cfg, "Position Y [m]", -1);
    SetConfig(cfg, "Cycle Lean Angle [Deg]", -1);  // removed on a car
    SetConfig(cfg, "Speed [mph]", -1);             // plain key of "GPS Speed [mph]"
    SetAvailableVars();
    auto on = Enabled();
    EXPECT_TRUE(on.count(19));
    EXPECT_TRUE(on.count(6)) << "Gear enables Engine Speed";
    EXPECT_FALSE(on.count(15));
    EXPECT_TRUE(on.count(21) && on.count(22));
    EXPECT_FALSE(on.count(50));
    EXPECT_TRUE(on.count(7));
    EXPECT_EQ(Catalogue().NumVars, 7 + 5 + 1);

    // FindVar / FindVarIndex: unknown names read the shared column.
    EXPECT_EQ(FindVar("Gear [-]"), 19);
    EXPECT_EQ(FindVar("No such [x]"), kNoDataSlot);
    EXPECT_EQ(FindVar(""), kNoDataSlot);
    EXPECT_EQ(FindVarIndex("Power [hp]"), Catalogue().NumVars - 1);
    EXPECT_EQ(FindVarIndex("Gear [-]"), Catalogue().RunVars[19].Column);
}

TEST_F(CatalogueTest, SelectAllOnEachFamilyGivesOneColumnPerEnabledSlot) {
    for (Family f : {Family::HX40, Family::MQ7, Family::SV63, Family::SW63}) {
        FreshProfile(f, Vehicle::Car);
        SelectAll();
        std::set<int> columns;
        for (int s : Enabled()) columns.insert(Catalogue().RunVars[s].Column);
        EXPECT_EQ(static_cast<int32_t>(columns.size()), Catalogue().NumVars - 1);
        EXPECT_EQ(*columns.rbegin(), Catalogue().NumVars - 2);
    }
}

TEST_F(CatalogueTest, UserChannelsTakeSlotsFrom100AndAreCutAt199) {
    FreshProfile(Family::HX40, Vehicle::Car);
    std::string text = "\"Brake Bias\",\"VAR_02*2\",-1\r\n\"\",\"\",0\r\n";
    for (int i = 0; i < 120; ++i)
        text += "\"Ch" + std::to_string(i) + "\",\"VAR_01+" + std::to_string(i) + "\",0\r\n";
    WriteAll(Paths().UserVarsCfgPath, text);
    SetConfig(Paths().TracelabCfgPath, "U:Brake Bias", -1);
    SetAvailableVars();
    const auto& v = Catalogue().RunVars;
    EXPECT_EQ(v[100].Name, "U:Brake Bias");
    EXPECT_TRUE(v[100].Enabled);
    EXPECT_EQ(v[101].Name, "U:Ch0");  // a record without a name takes no slot
    EXPECT_EQ(v[199].Name, "U:Ch98");
    EXPECT_TRUE(v[199].Available);
    EXPECT_TRUE(v[200].Name.empty());
    EXPECT_FALSE(v[200].Available);
}

TEST_F(CatalogueTest, BadHardwareFlagsRefuseTheBuild) {
    Profile().HardwareMQ7 = true;  // HX40 is set as well
    ClearCurrentRun(true);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "The hardware has been incorrectly specified, cannot continue"));
}

TEST_F(CatalogueTest, ActiveVariablesListLeavesAlwaysOnOutAndStoresPlainKeys) {
    FreshProfile(Family::HX40, Vehicle::Car);
    ActiveVariablesList list;
    list.Activate();
    std::set<int> listed;
    for (const auto& e : list.entries) listed.insert(e.slot);
    for (int s : {1, 2, 4, 8, 11, 9, 10}) EXPECT_FALSE(listed.count(s)) << s;
    EXPECT_TRUE(listed.count(7));
    EXPECT_TRUE(listed.count(19));
    // 42 is available and made enabled by SetAlwaysOnVars, but not "always
    // on" (it depends on availability), so the user sees it, checked.
    ASSERT_TRUE(listed.count(42));
    for (const auto& e : list.entries)
        if (e.slot == 42) {
            EXPECT_TRUE(e.checked);
        }

    for (auto& e : list.entries) e.checked = (e.slot == 19 || e.slot == 7);
    EXPECT_TRUE(list.Okay());  // no runs: no question
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::OkCancel), 0);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "Speed [mph]"), -1.0f);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "GPS Speed [mph]"), 0.0f);
    EXPECT_TRUE(Catalogue().RunVars[7].Enabled);
    EXPECT_TRUE(Catalogue().RunVars[6].Enabled);
    // Engine Speed was enabled by Gear: the list still shows it unchecked
    // until it is refreshed.
    bool engineChecked = true;
    for (const auto& e : list.entries)
        if (e.slot == 6) engineChecked = e.checked;
    EXPECT_FALSE(engineChecked);
    list.Refresh();
    for (const auto& e : list.entries)
        if (e.slot == 6) {
            EXPECT_TRUE(e.checked);
        }
}

TEST_F(CatalogueTest, ActiveVariablesOkayAsksWhenRunsAreLoaded) {
    Store().RunCount = 1;
    ActiveVariablesList list;
    list.Activate();
    list.SetAll();
    ui.okCancelAnswers.push_back(false);
    EXPECT_FALSE(list.Okay());
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::OkCancel,
                       "To change the variables available, all the runs will need reprocessing, "
                       "do you wish to continue?"));
    EXPECT_NE(GetConfig(Paths().TracelabCfgPath, "Gear [-]"), -1.0f);
    Store().RunCount = 0;
}

TEST_F(CatalogueTest, ProfileOptionsEndWithWheelSpeedRemoval) {
    const std::string tl = "MappingMode";
    for (Vehicle v : {Vehicle::Car, Vehicle::Kart, Vehicle::Bike, Vehicle::Boat}) {
        FreshProfile(Family::HX40, v);
        SetConfig(Paths().TracelabCfgPath, "DistanceMode", 0);
        SetConfig(Paths().CarCfgPath, "UseWheelForRpm", 1);
        ApplyProfileToOptions();
        EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, tl), 0.0f);
        EXPECT_GT(GetConfig(Paths().TracelabCfgPath, "DistanceMode"), 0.0f);
        EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "PowerSpeedSource"), 1.0f);
        EXPECT_EQ(GetConfig(Paths().CarCfgPath, "UseWheelForRpm"), v == Vehicle::Kart ? 0.f : 1.f);
        if (v == Vehicle::Bike || v == Vehicle::Boat) {
            EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "UseRawGPSData"), 1.0f);
        }
    }
    FreshProfile(Family::SV63, Vehicle::Car);
    SetConfig(Paths().TracelabCfgPath, "TrustAccels", 1);
    SetConfig(Paths().TracelabCfgPath, "UseRawGPSData", 1);
    ApplyProfileToOptions();
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "TrustAccels"), 0.0f);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "UseRawGPSData"), 0.0f);

    FreshProfile(Family::MQ7, Vehicle::Car);
    SetConfig(Paths().CarCfgPath, "UseWheelForRpm", 1);
    ApplyProfileToOptions();
    EXPECT_EQ(GetConfig(Paths().CarCfgPath, "UseWheelForRpm"), 0.0f);
}

}  // namespace
}  // namespace tl::test
