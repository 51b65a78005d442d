// The conversion driver's swap of the vehicle options file, and the order in
// which ReprocessAllRuns converts the runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "raw_runs.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

const char* const kUserOptions = "\"WheelPulsesRev\",\"4\"\r\n\"CarMass\",\"1150\"\r\n";
const char* const kRunOptions = "\"WheelPulsesRev\",\"2\"\r\n\"CarMass\",\"640\"\r\n";

class ConvertDriverTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        WriteAll(Paths().CarCfgPath, kUserOptions);
        std::filesystem::remove(Paths().TempDatPath);
        // The runs here are too short for the automatic lap marker, whose
        // message is not what these tests count.
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceLaps", 0);
    }
    bool SawLine(const std::string& text) const {
        const auto lines = ui.Texts(ScriptedEvent::Kind::ProgressLine);
        return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) {
            return l.size() >= text.size() &&
                   l.compare(l.size() - text.size(), text.size(), text) == 0;
        });
    }
};

TEST_F(ConvertDriverTest, EmptyCarFileLeavesTheOptionsFilesAlone) {
    AddPlaneRun("a", MakeHx40Run(3));
    ConvertRawToRunData(1);
    EXPECT_EQ(ReadAll(Paths().CarCfgPath), kUserOptions);
    EXPECT_FALSE(std::filesystem::exists(Paths().TempDatPath));
    EXPECT_TRUE(SawLine("Default Vehicle Options Used"));
    EXPECT_TRUE(SawLine("Begin Processing....."));
    EXPECT_EQ(ui.Texts(ScriptedEvent::Kind::ProgressCaption),
              std::vector<std::string>{"Processing: a"});
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    // The family converter ran behind the driver: the time column counts the
    // run's rows in hundredths.
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_FLOAT_EQ(Store().RunData(r.RunStart + 5, ColumnOf(slot::Time)), 0.05f);
}

TEST_F(ConvertDriverTest, RunCarFileStandsInAndIsSwappedBack) {
    AddPlaneRun("a", MakeHx40Run(3));
    const std::string car = root.file("kart.car");
    WriteAll(car, kRunOptions);
    Store().RunInfo[1].CarFile = car;
    ConvertRawToRunData(1);
    EXPECT_TRUE(SawLine("Specified Car File Used"));
    EXPECT_EQ(ReadAll(Paths().CarCfgPath), kUserOptions);
    EXPECT_EQ(ReadAll(Paths().TempDatPath), kUserOptions);  // the scratch file stays
    EXPECT_EQ(Store().RunInfo[1].CarFile, car);
    // The converter empties Details first: step 3's words do not survive.
    EXPECT_EQ(Store().RunInfo[1].Details.find("Car file :"), std::string::npos);
}

TEST_F(ConvertDriverTest, VanishedCarFileIsReportedOnceAndForgotten) {
    AddPlaneRun("a", MakeHx40Run(3));
    Store().RunInfo[1].CarFile = root.file("gone.car");
    ConvertRawToRunData(1);
    EXPECT_EQ(ui.Texts(ScriptedEvent::Kind::Message),
              std::vector<std::string>{"The desired car option file cannot be accessed, the "
                                       "default options will be used instead"});
    EXPECT_TRUE(SawLine("Default Vehicle Options Used"));
    EXPECT_TRUE(Store().RunInfo[1].CarFile.empty());
    EXPECT_EQ(ReadAll(Paths().CarCfgPath), kUserOptions);
    EXPECT_FALSE(std::filesystem::exists(Paths().TempDatPath));
    ui.ClearRecords();
    ConvertRawToRunData(1);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
}

TEST_F(ConvertDriverTest, Sv63NeverSwaps) {
    UseProfile(Family::SV63, Vehicle::Car);
    WriteAll(Paths().CarCfgPath, kUserOptions);
    std::filesystem::remove(Paths().TempDatPath);
    AddPlaneRun("m", MakeSv63Run(300, 1));
    const std::string car = root.file("meter.car");
    WriteAll(car, kRunOptions);
    Store().RunInfo[1].CarFile = car;
    ConvertRawToRunData(1);
    EXPECT_EQ(ReadAll(Paths().CarCfgPath), kUserOptions);
    EXPECT_FALSE(std::filesystem::exists(Paths().TempDatPath));
    EXPECT_FALSE(SawLine("Specified Car File Used"));
    EXPECT_FALSE(SawLine("Default Vehicle Options Used"));
    EXPECT_EQ(Store().RunInfo[1].CarFile, car);
}

TEST_F(ConvertDriverTest, ReprocessConvertsTheActiveRunFirstAndKeepsRawStretches) {
    AddPlaneRun("one", MakeHx40Run(4));
    AddPlaneRun("two", MakeHx40Run(6, 20));
    AddPlaneRun("three", MakeHx40Run(5, 70));
    const auto before = Store().RunInfo;
    Store().CurrentRun = 2;
    ui.ClearRecords();
    ReprocessAllRuns();
    EXPECT_EQ(
        ui.Texts(ScriptedEvent::Kind::ProgressCaption),
        (std::vector<std::string>{"Processing: two", "Processing: one", "Processing: three"}));
    const RunStore& s = Store();
    EXPECT_EQ(s.RunCount, 3);
    EXPECT_EQ(s.CurrentRun, 2);
    for (int n = 1; n <= 3; ++n) {
        EXPECT_EQ(s.RunInfo[n].RawStart, before[n].RawStart);
        EXPECT_EQ(s.RunInfo[n].RawEnd, before[n].RawEnd);
        EXPECT_EQ(s.RunInfo[n].RunStart, before[n].RunStart);
        EXPECT_EQ(s.RunInfo[n].RunLength, before[n].RunLength);
    }
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::WaitShown, "Check Internal Data"));
}

TEST_F(ConvertDriverTest, ReprocessFollowsANewSelection) {
    AddPlaneRun("one", MakeHx40Run(4));
    const int32_t before = Catalogue().NumVars;
    SetConfig(Paths().TracelabCfgPath, "Gear [-]", -1);
    ReprocessAllRuns();
    EXPECT_GT(Catalogue().NumVars, before);
    EXPECT_EQ(Store().RunData.Columns(), Catalogue().NumVars);
    EXPECT_EQ(Store().RunData.UpperRow(), Store().RunInfo[1].RunEnd);
}

}  // namespace
}  // namespace tl::test
