// Car options files: saving and loading are copies of the working file, with
// their dialogs and messages.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/config_store.h"
#include "files/car_files.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

class CarFilesTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        SetConfigString(Paths().TracelabCfgPath, "CarPath", dir.path().string());
        SetConfig(Paths().CarCfgPath, "CarMass", 612.5f);
    }
    TempDir dir;
};

TEST_F(CarFilesTest, SaveCopiesTheWorkingFileAndAsksBeforeOverwriting) {
    const std::string target = dir.file("red.car");
    ui.saveAnswers = {target};
    SaveCarFile();
    EXPECT_EQ(ReadAll(target), ReadAll(Paths().CarCfgPath));
    ASSERT_FALSE(ui.events.empty());
    EXPECT_EQ(ui.events.front().title, "Save Car Details To Disk");

    // Existing file: No returns to the dialog (cancelled next), Yes replaces.
    SetConfig(Paths().CarCfgPath, "CarMass", 700);
    ui.saveAnswers = {target};
    ui.yesNoAnswers = {false};
    SaveCarFile();
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::YesNo,
                       "The specified file will be over written, are you sure?"));
    EXPECT_EQ(GetConfig(target, "CarMass"), 612.5f);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::SaveDialog), 3);
    ui.saveAnswers = {target};
    ui.yesNoAnswers = {true};
    SaveCarFile();
    EXPECT_EQ(GetConfig(target, "CarMass"), 700.0f);
}

TEST_F(CarFilesTest, SaveToALockedPlaceSaysSoAndAsksAgain) {
    const std::string locked = dir.file("locked.car");
    WriteAll(locked, "\"CarMass\",\"1\"\r\n");
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
    ui.saveAnswers = {locked};
    ui.yesNoAnswers = {true};
    SaveCarFile();
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "File has been locked by another program or is otherwise inaccessible"));
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::SaveDialog), 2);
    std::filesystem::permissions(locked, std::filesystem::perms::owner_all);
    EXPECT_EQ(GetConfig(locked, "CarMass"), 1.0f);
}

TEST_F(CarFilesTest, LoadReplacesTheWorkingFileAndRefusesMissingNames) {
    const std::string source = dir.file("kart.car");
    WriteAll(source, "\"CarMass\",\"150\"\r\n\"Car Constant1\",\"2\"\r\n");
    ui.openAnswers = {{dir.file("missing.car")}, {source}};
    EXPECT_TRUE(LoadCarFile());
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, "File cannot be found"));
    EXPECT_EQ(GetConfig(Paths().CarCfgPath, "CarMass"), 150.0f);
    // Keys another family's file lacks read 0.
    EXPECT_EQ(GetConfig(Paths().CarCfgPath, "FinalDriveRat"), 0.0f);
    // Cancel leaves the working file alone.
    const std::string before = ReadAll(Paths().CarCfgPath);
    EXPECT_FALSE(LoadCarFile());
    EXPECT_EQ(ReadAll(Paths().CarCfgPath), before);
}

TEST_F(CarFilesTest, RunCarFileChoiceComesBackUntilTheFileExists) {
    const std::string source = dir.file("bike.car");
    WriteAll(source, "");
    ui.openAnswers = {{dir.file("nope.car")}, {source}};
    EXPECT_EQ(ChooseRunCarFile(), source);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, "The specified file cannot be found"));
    EXPECT_EQ(ChooseRunCarFile(), "");
}

}  // namespace
}  // namespace tl::test
