#include <gtest/gtest.h>

#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::WriteAll;
using Kind = ScriptedEvent::Kind;

class BuildFlags : public test::EngineTest {
  protected:
    std::string Apply(const std::string& commandLine) {
        std::string file;
        EXPECT_TRUE(SetBuildFlags(commandLine, file));
        return file;
    }
};

TEST_F(BuildFlags, WithoutBuildOptionsTheProfileIsMQ7OnACar) {
    std::filesystem::remove(Paths().BuildOptionsPath);
    Apply("");
    EXPECT_EQ(Profile().family(), Family::MQ7);
    EXPECT_EQ(Profile().vehicle(), Vehicle::Car);
    EXPECT_FALSE(Profile().DebugFlag);
}

TEST_F(BuildFlags, BuildOptionsMapTheirFourNumbers) {
    struct Case {
        const char* file;
        Family family;
        Vehicle vehicle;
        bool debug;
    } cases[] = {
        {"0\r\n3\r\n1\r\n1\r\n", Family::HX40, Vehicle::Kart, true},
        {"2,1,0,0", Family::SV63, Vehicle::Bike, false},
        {"3,2,2,0", Family::SW63, Vehicle::Boat, false},
        {"7,9,-1,5", Family::MQ7, Vehicle::Car, false},
        {"1\n0\n", Family::MQ7, Vehicle::Car, false},
        {"", Family::MQ7, Vehicle::Car, false},
    };
    for (const Case& c : cases) {
        WriteAll(Paths().BuildOptionsPath, c.file);
        Apply("");
        EXPECT_EQ(Profile().family(), c.family) << c.file;
        EXPECT_EQ(Profile().vehicle(), c.vehicle) << c.file;
        EXPECT_EQ(Profile().DebugFlag, c.debug) << c.file;
        // The export stamp never turns on by itself.
        EXPECT_FALSE(Profile().TimeStampExport);
    }
}

TEST_F(BuildFlags, TokensWinOverTheFileInTheirOrderOfTest) {
    WriteAll(Paths().BuildOptionsPath, "2,1,0,0");
    Apply("<hx40><mq7>");
    EXPECT_EQ(Profile().family(), Family::HX40);
    Apply("x <SW63> <MQ7>");
    EXPECT_EQ(Profile().family(), Family::MQ7);
    Apply("<kart> <car>");
    EXPECT_EQ(Profile().vehicle(), Vehicle::Car);
    Apply("<BOAT>");
    EXPECT_EQ(Profile().vehicle(), Vehicle::Boat);
    EXPECT_EQ(Profile().family(), Family::SV63);
    Apply("<Debug>");
    EXPECT_TRUE(Profile().DebugFlag);
    EXPECT_FALSE(Profile().InterpFlag);
    Apply("<interp>");
    EXPECT_TRUE(Profile().InterpFlag);
    EXPECT_TRUE(Profile().FastStartFlag);
    Apply("");
    EXPECT_FALSE(Profile().InterpFlag);
    EXPECT_FALSE(Profile().FastStartFlag);
}

TEST_F(BuildFlags, TheAutoloadToken) {
    const std::string run = root.file("Monza Run.run");
    WriteAll(run, "x");
    EXPECT_EQ(Apply("<hx40> <F:" + run + ">"), run);
    EXPECT_EQ(ui.Count(Kind::Message), 0);

    EXPECT_EQ(Apply("<f:" + root.file("missing.run") + ">"), "");
    EXPECT_TRUE(ui.Saw(Kind::Message, "File specified at the command line cannot be found"));
    ui.ClearRecords();
    // No closing ">": the name has no length and is refused the same way.
    EXPECT_EQ(Apply("<f:" + run), "");
    EXPECT_TRUE(ui.Saw(Kind::Message, "File specified at the command line cannot be found"));
}

TEST_F(BuildFlags, BuildIdStringNamesVersionVehicleAndFamily) {
    Apply("<hx40><kart>");
    const VersionNumber v = ProgramVersion();
    const std::string version =
        std::to_string(v.major) + "." + std::to_string(v.minor) + "." + std::to_string(v.revision);
    EXPECT_EQ(BuildIdString(), version + "/Kart/HX40");
    Apply("<sw63><boat><debug>");
    EXPECT_EQ(BuildIdString(), version + "/Boat/SW63 <Debug Enabled> ");
    Profile().TimeStampExport = true;
    EXPECT_EQ(BuildIdString(), version + "/Boat/SW63 <Debug Enabled>  TStamp Enabled");
}

TEST_F(BuildFlags, FamilyPathsAndTheConfigurationRoot) {
    Apply("<sv63>");
    FormFamilyPaths();
    const std::filesystem::path dir = root.path() / "Configuration";
    EXPECT_EQ(Paths().CarCfgPath, (dir / "SV63_Car.cfg").string());
    EXPECT_EQ(Paths().TracelabCfgPath, (dir / "SV63_Tracelab.cfg").string());
    EXPECT_EQ(Paths().FirstRunPath, (dir / "SV63_FirstRun.txt").string());
    EXPECT_EQ(Paths().TempDatPath, (dir / "SV63_temp.dat").string());
    EXPECT_EQ(Paths().SummaryPerformanceCfgPath, (dir / "SV63_SummaryPerformance.cfg").string());

    EXPECT_EQ(ChooseConfigRoot("/opt/x/bin", root.path().string()), root.path().string());
    EXPECT_EQ(ChooseShareDir("/usr/bin"), "/usr/share/tracelab");

    // Seeding fills what is missing and keeps what the user changed.
    WriteAll(Paths().CarCfgPath, "\"CarMass\",\"777\"\r\n");
    std::filesystem::remove(Paths().TracelabCfgPath);
    EXPECT_EQ(SeedConfigRoot(TRACELAB_SHARE_DIR, root.path().string()), "");
    EXPECT_TRUE(std::filesystem::exists(Paths().TracelabCfgPath));
    EXPECT_FLOAT_EQ(GetConfig(Paths().CarCfgPath, "CarMass"), 777);
}

}  // namespace
}  // namespace tl
