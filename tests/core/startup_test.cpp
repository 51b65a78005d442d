#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/system_info.h"
#include "road/startup.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace fs = std::filesystem;

namespace tl {
namespace {

using Kind = ScriptedEvent::Kind;
using test::ReadAll;
using test::WriteAll;

class Startup : public test::EngineTest {
  protected:
    StartupOptions Options(const std::string& commandLine) {
        StartupOptions o;
        o.appDir = TRACELAB_BIN_DIR;
        o.configDir = root.path().string();
        o.commandLine = commandLine;
        return o;
    }
};

// A start-up UI that records what Main showed.
class RecordingUi : public StartupUi {
  public:
    std::vector<std::string> shown;
    bool greet = true;
    bool ShowBanner(const std::string& label) override {
        shown.push_back("banner " + label);
        return true;
    }
    void HideBanner() override { shown.push_back("hide banner"); }
    void ShowMainForm() override { shown.push_back("main"); }
    bool ShowFirstRunForm() override {
        shown.push_back("first run");
        return greet;
    }
    bool MainFormLoaded() const override { return true; }
};

TEST_F(Startup, SystemFilesPresentPass) {
    EXPECT_TRUE(CheckSystemFileAvailability());
    EXPECT_EQ(ui.Count(Kind::PlainMessage), 0);
}

TEST_F(Startup, AMissingSystemFileIsCreatedButStopsTheStart) {
    fs::remove(Paths().GraphDefsCfgPath);
    EXPECT_FALSE(CheckSystemFileAvailability());
    EXPECT_TRUE(fs::exists(Paths().GraphDefsCfgPath));
    const auto texts = ui.Texts(Kind::PlainMessage);
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0],
              "A crutial system file could not be found (HX40_GraphDefs), it has now been created "
              "but you will have to re-start");
    EXPECT_EQ(texts[1],
              "A crutial system file cannot be accessed (HX40_GraphDefs),  a reboot or "
              "re-installation may be required");
    // The next start finds it.
    ui.ClearRecords();
    EXPECT_TRUE(CheckSystemFileAvailability());
}

TEST_F(Startup, EachUnwritableFileHasItsMessage) {
    struct Case {
        std::string path;
        std::string message;
    };
    const std::vector<Case> cases = {
        {Paths().TracelabCfgPath,
         "A crutial system file cannot be accessed (HX40_Tracelab),  a reboot or re-installation "
         "may be required"},
        {Paths().CarCfgPath,
         "A crutial system file cannot be accessed (HX40_Tracelab),  a reboot or re-installation "
         "may be required"},
        {Paths().UserVarsCfgPath,
         "A crutial system file cannot be accessed (HX40_UserVars), a reboot or re-installation "
         "may be required"},
    };
    for (const Case& c : cases) {
        ui.ClearRecords();
        ::chmod(c.path.c_str(), 0444);
        EXPECT_FALSE(CheckSystemFileAvailability()) << c.path;
        EXPECT_EQ(ui.Texts(Kind::PlainMessage), std::vector<std::string>{c.message});
        ::chmod(c.path.c_str(), 0644);
    }
}

TEST_F(Startup, AMissingHelpFileNamesTheSettingsFile) {
    Paths().HelpPath = root.file("no-help.html");
    EXPECT_FALSE(CheckSystemFileAvailability());
    EXPECT_EQ(ui.Texts(Kind::PlainMessage),
              std::vector<std::string>{"The system help file cannot be accessed (HX40_Tracelab), a "
                                       "reboot or re-installation may be required"});
}

TEST_F(Startup, MainRunsInItsOrderAndGreetsAFirstStart) {
    WriteAll(root.file("BuildOptions.cfg"), "0,3,0,0");
    fs::remove(root.file("Configuration/HX40_FirstRun.txt"));
    RecordingUi startUi;
    ASSERT_TRUE(Main(Options("<debug>"), startUi));
    ASSERT_EQ(startUi.shown.size(), 4u);
    EXPECT_EQ(startUi.shown[0], "banner BuildCode:" + BuildIdString());
    EXPECT_EQ(startUi.shown[1], "hide banner");
    EXPECT_EQ(startUi.shown[2], "main");
    EXPECT_EQ(startUi.shown[3], "first run");
    EXPECT_EQ(Profile().family(), Family::HX40);
    EXPECT_EQ(Profile().vehicle(), Vehicle::Kart);
    EXPECT_EQ(ReadAll(Paths().FirstRunPath), "Tracelab has been run\r\n");
    EXPECT_EQ(GetConfigString(Paths().TracelabCfgPath, "RunPath"), root.path().string());
    EXPECT_EQ(GetConfigString(Paths().TracelabCfgPath, "CarPath"), root.path().string());
    // The banner was held for 1.5 s of the (scripted) clock.
    EXPECT_GE(ui.doEventsCalls, 150);
    EXPECT_TRUE(ui.Saw(Kind::Message,
                       "Debugging to file has been enabled, this will generate a .log file in the "
                       "Tracelab program directory of program activity, it will also cause the "
                       "program to run more slowly - please be patient!"));
    // The empty store and the catalogue are built.
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_GT(Catalogue().NumVars, 1);

    const std::string log = ReadAll(Paths().LogPath);
    EXPECT_EQ(
        log.rfind("**** System Started ****\r\nprogram started from menu, <debug>\r\n\r\n", 0), 0u);
    for (const char* line :
         {"check the external serial file\r\n", "check the availability of the file system\r\n",
          "show the start banner\r\n", "hide the start banner\r\n", "load the main form\r\n",
          "main form now loaded\r\n", "Show the first time screen if required\r\n",
          "End Of main module.\r\n"})
        EXPECT_NE(log.find(line), std::string::npos) << line;
    EXPECT_LT(log.find("show the start banner"), log.find("load the main form"));

    // A second start does not greet again.
    startUi.shown.clear();
    ASSERT_TRUE(Main(Options(""), startUi));
    EXPECT_EQ(startUi.shown.size(), 3u);
    // The log begins afresh with each start (debug is off now: nothing written).
    EXPECT_FALSE(fs::exists(Paths().LogPath));
}

TEST_F(Startup, MainStopsWhenASystemFileIsMissing) {
    fs::remove(root.file("Configuration/MQ7_UserVars.cfg"));
    RecordingUi startUi;
    EXPECT_FALSE(Main(Options("<mq7>"), startUi));
    EXPECT_TRUE(startUi.shown.empty());
}

TEST_F(Startup, InterpSkipsTheBannerPause) {
    RecordingUi startUi;
    startUi.greet = false;
    ASSERT_TRUE(Main(Options("<interp>"), startUi));
    EXPECT_LT(ui.doEventsCalls, 20);
}

TEST(SystemInfo, MemInfoAndKilobytes) {
    const MemoryFigures f = ParseMemInfo(
        "MemTotal:       16000000 kB\nMemFree:         1000000 kB\nMemAvailable:    8000000 kB\n"
        "SwapTotal:       2000000 kB\nSwapFree:        1500000 kB\n");
    EXPECT_DOUBLE_EQ(f.totalPhysical, 16000000.0 * 1024);
    EXPECT_DOUBLE_EQ(f.availablePhysical, 8000000.0 * 1024);
    EXPECT_DOUBLE_EQ(f.totalVirtual, 18000000.0 * 1024);
    EXPECT_DOUBLE_EQ(f.availableVirtual, 9500000.0 * 1024);
    EXPECT_EQ(FormatKilobytes(16000000.0 * 1024), "16,000,000K");
    EXPECT_EQ(FormatKilobytes(999.0 * 1024), "999K");
}

}  // namespace
}  // namespace tl
