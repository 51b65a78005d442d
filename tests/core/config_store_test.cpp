#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::ReadAll;
using test::WriteAll;
using Kind = ScriptedEvent::Kind;

class ConfigStore : public test::EngineTest {
  protected:
    std::string cfg() { return Paths().TracelabCfgPath; }
    std::string car() { return Paths().CarCfgPath; }
};

TEST_F(ConfigStore, GetConfigReadsKeysExactly) {
    WriteAll(cfg(),
             "\"RunPath\",\"/runs\"\r\n\"MappingMode\",\"2\"\r\n\"Speed [kph]\",\"-1\"\r\n"
             "\"Odd\",\"12,5\"\r\n");
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "MappingMode"), 2);
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "Speed [kph]"), -1);
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "mappingmode"), 0);  // case counts
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "Missing"), 0);      // silent
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "Odd"), 125);        // the comma is dropped
    EXPECT_EQ(GetConfigString(cfg(), "RunPath"), "/runs");
    EXPECT_EQ(GetConfigString(cfg(), "Missing"), "");
    EXPECT_EQ(ui.Count(Kind::Message), 0);
}

// A configuration file kept elsewhere behind a link, private to its owner:
// saving an option replaces the linked file's content and keeps the link and
// the permissions; a save that cannot be made leaves the old file whole.
TEST_F(ConfigStore, WritesKeepLinksAndPermissions) {
    namespace fs = std::filesystem;
    const std::string real = root.file("private.cfg");
    WriteAll(real, "\"RunPath\",\"/runs\"\r\n");
    ::chmod(real.c_str(), 0600);
    fs::remove(cfg());
    fs::create_symlink(real, cfg());
    SetConfig(cfg(), "MappingMode", 2);
    EXPECT_TRUE(fs::is_symlink(cfg()));
    EXPECT_EQ(GetConfigString(real, "MappingMode"), "2");
    EXPECT_EQ(GetConfigString(real, "RunPath"), "/runs");
    struct stat st {};
    ASSERT_EQ(::stat(real.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    // The folder of the file has gone: nothing can be written, nothing is
    // left half done.
    EXPECT_FALSE(WriteFileAtomically(root.file("gone/x.cfg"), "x"));
    const std::string before = ReadAll(real);
    fs::remove(cfg());
    fs::create_directory(cfg());  // a folder where the file should be
    EXPECT_FALSE(WriteFileAtomically(cfg(), "replaced"));
    EXPECT_EQ(ReadAll(real), before);
    for (const auto& e : fs::directory_iterator(root.path()))
        EXPECT_EQ(e.path().filename().string().find(".saving-"), std::string::npos);
}

TEST_F(ConfigStore, IntegerOptionsTruncateAndStopAtTheRange) {
    WriteAll(cfg(),
             "\"Pulses\",\"2.9\"\r\n\"Back\",\"-3.7\"\r\n"
             "\"Huge\",\"900000000000000000000000\"\r\n"
             "\"Low\",\"-900000000000000000000000\"\r\n\"Edge\",\"2147483520\"\r\n");
    EXPECT_EQ(GetConfigInt(cfg(), "Pulses"), 2);
    EXPECT_EQ(GetConfigInt(cfg(), "Back"), -3);
    EXPECT_EQ(GetConfigInt(cfg(), "Huge"), std::numeric_limits<int>::max());
    EXPECT_EQ(GetConfigInt(cfg(), "Low"), std::numeric_limits<int>::min());
    EXPECT_EQ(GetConfigInt(cfg(), "Edge"), 2147483520);  // the largest float below 2^31
    EXPECT_EQ(GetConfigInt(cfg(), "Missing"), 0);
}

TEST_F(ConfigStore, ASnapshotAnswersAsGetConfigDid) {
    WriteAll(cfg(), "\"Rate\",\"50\"\r\n\"Odd\",\"12,5\"\r\n\"Rate\",\"7\"\r\n");
    const ConfigSnapshot snap(cfg());
    for (const char* key : {"Rate", "Odd", "rate", "Missing"})
        EXPECT_EQ(snap.Get(key), GetConfig(cfg(), key)) << key;
    SetConfig(cfg(), "Rate", 9);  // later writes are not seen
    EXPECT_EQ(snap.Get("Rate"), 50);
    // An absent file goes to GetConfig: its message, and a new empty file.
    const std::string gone = root.file("Configuration/Gone.cfg");
    const ConfigSnapshot none(gone);
    EXPECT_EQ(none.Get("Any"), 0);
    EXPECT_EQ(ui.Count(Kind::Message), 1);
    EXPECT_TRUE(std::filesystem::exists(gone));
}

TEST_F(ConfigStore, AMissingFileIsReportedAndCreatedEmpty) {
    const std::string path = root.file("Configuration/Gone.cfg");
    EXPECT_FLOAT_EQ(GetConfig(path, "Any"), 0);
    EXPECT_TRUE(ui.Saw(Kind::Message, "A system file cannot be found\r\n" + path));
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(ReadAll(path), "");

    const std::string other = root.file("Configuration/Gone2.cfg");
    EXPECT_EQ(GetConfigString(other, "Any"), "");
    EXPECT_TRUE(ui.Saw(Kind::Message, "A system file cannot be found" + other));
}

TEST_F(ConfigStore, SetConfigMovesTheKeyToTheEndAndSetConfigStringKeepsItsPlace) {
    WriteAll(cfg(), "\"A\",\"1\"\r\n\"B\",\"2\"\r\n\"C\",\"3\"\r\n");
    SetConfig(cfg(), "A", 0.5f);
    EXPECT_EQ(ReadAll(cfg()), "\"B\",\"2\"\r\n\"C\",\"3\"\r\n\"A\",\"0.5\"\r\n");
    SetConfig(cfg(), "D", -1.0f);
    EXPECT_EQ(ReadAll(cfg()), "\"B\",\"2\"\r\n\"C\",\"3\"\r\n\"A\",\"0.5\"\r\n\"D\",\"-1\"\r\n");
    SetConfigString(cfg(), "B", "/home/driver/runs");
    EXPECT_EQ(ReadAll(cfg()),
              "\"B\",\"/home/driver/runs\"\r\n\"C\",\"3\"\r\n\"A\",\"0.5\"\r\n\"D\",\"-1\"\r\n");
    SetConfigString(cfg(), "E", "x");
    EXPECT_EQ(ReadAll(cfg()).substr(ReadAll(cfg()).size() - 9), "\"E\",\"x\"\r\n");
    // The scratch file does not outlive the write.
    EXPECT_FALSE(std::filesystem::exists(Paths().TempDatPath));
}

TEST_F(ConfigStore, NumbersAreWrittenWithAPointAndNoExponent) {
    EXPECT_EQ(ConfigNumberText(-1.0f), "-1");
    EXPECT_EQ(ConfigNumberText(0.1f), "0.1");
    EXPECT_EQ(ConfigNumberText(12.5f), "12.5");
    EXPECT_EQ(ConfigNumberText(1e-6f), "0.000001");
    for (float v : {3.14159f, -2.5e-4f, 98765.4f, 1e9f}) {
        WriteAll(cfg(), "");
        SetConfig(cfg(), "K", v);
        EXPECT_FLOAT_EQ(GetConfig(cfg(), "K"), v);
    }
}

TEST_F(ConfigStore, WritesNeedAWritableSettingsFile) {
    WriteAll(cfg(), "\"A\",\"1\"\r\n");
    WriteAll(car(), "\"CarMass\",\"900\"\r\n");
    ::chmod(cfg().c_str(), 0444);
    SetConfig(cfg(), "A", 2);
    SetConfig(car(), "CarMass", 1000);
    SetConfigString(car(), "WheelSpeedFormula", "x");
    EXPECT_EQ(ReadAll(cfg()), "\"A\",\"1\"\r\n");
    EXPECT_EQ(ReadAll(car()), "\"CarMass\",\"900\"\r\n");
    ::chmod(cfg().c_str(), 0644);
    SetConfig(car(), "CarMass", 1000);
    EXPECT_FLOAT_EQ(GetConfig(car(), "CarMass"), 1000);
}

TEST_F(ConfigStore, AFileOfMoreThan501LinesRaisesAnErrorAndStaysAsItWas) {
    std::string big;
    for (int i = 0; i < 502; ++i)
        big += "\"K" + std::to_string(i) + "\",\"" + std::to_string(i) + "\"\r\n";
    WriteAll(cfg(), big);
    SetConfig(cfg(), "New", 1);  // silent mode: the error vanishes
    EXPECT_EQ(ReadAll(cfg()), big);
    EXPECT_EQ(ui.Count(Kind::Message), 0);

    Profile().DebugFlag = true;
    SetConfig(cfg(), "New", 1);
    EXPECT_EQ(ReadAll(cfg()), big);
    EXPECT_TRUE(ui.Saw(Kind::Message, "Error, an error was encountered in SetConfig- check log"));
    const std::string log = ReadAll(Paths().LogPath);
    EXPECT_NE(log.find("==============ERROR REPORT====================\r\nError in SetConfig\r\n"),
              std::string::npos);
    EXPECT_NE(log.find("Error Number: 9\r\n"), std::string::npos);

    Profile().DebugFlag = false;
    Profile().InterpFlag = true;
    EXPECT_THROW(SetConfig(cfg(), "New", 1), RuntimeError);
    Profile().InterpFlag = false;

    // 501 lines are still fine.
    std::string fits;
    for (int i = 0; i < 501; ++i) fits += "\"K" + std::to_string(i) + "\",\"1\"\r\n";
    WriteAll(cfg(), fits);
    SetConfig(cfg(), "K0", 5);
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "K0"), 5);
}

TEST_F(ConfigStore, AQuoteInsideAValueBreaksThatLineOnly) {
    WriteAll(cfg(), "\"A\",\"1\"\r\n");
    SetConfigString(cfg(), "Name", "Big \"Al\" Smith");
    EXPECT_EQ(GetConfigString(cfg(), "Name"), "Big ");
    EXPECT_FLOAT_EQ(GetConfig(cfg(), "A"), 1);
}

TEST_F(ConfigStore, RemoveUserVarsDropsTheULines) {
    WriteAll(cfg(), "\"A\",\"1\"\r\n\"U:Slip\",\"-1\"\r\n\"B\",\"2\"\r\n\"U:Ratio\",\"0\"\r\n");
    RemoveUserVarsFromConfig();
    EXPECT_EQ(ReadAll(cfg()), "\"A\",\"1\"\r\n\"B\",\"2\"\r\n");
}

TEST_F(ConfigStore, FileTests) {
    std::string quoted = "\"" + cfg() + "\"  ";
    EXPECT_TRUE(FileExists(quoted));
    EXPECT_EQ(quoted, cfg());  // quotes became blanks, then trimmed
    std::string withNul = cfg() + std::string(1, '\0') + "junk";
    EXPECT_TRUE(FileExists(withNul));
    EXPECT_EQ(withNul, cfg());
    EXPECT_FALSE(FileExists(std::string()));
    EXPECT_FALSE(FileExists(root.file("none")));

    EXPECT_FALSE(FileReadable(root.file("none")));
    EXPECT_FALSE(FileReadable(root.path().string()));  // a folder is not a file
    const std::string fresh = root.file("fresh.txt");
    EXPECT_TRUE(FileWriteable(fresh));
    EXPECT_TRUE(std::filesystem::exists(fresh));  // created by the test
    ::chmod(fresh.c_str(), 0444);
    EXPECT_FALSE(FileWriteable(fresh));  // read-only, even for root
    EXPECT_TRUE(FileReadable(fresh));

    EXPECT_EQ(ExtractFileName("C:\\runs\\monza.2.run"), "monza");
    EXPECT_EQ(ExtractFileName("/home/d/a.b.run"), "a");
    EXPECT_EQ(ExtractFileName("  silverstone  "), "silverstone");
    EXPECT_EQ(ExtractFileName(""), "No Name");
}

}  // namespace
}  // namespace tl
