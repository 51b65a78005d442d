// The external serial library: the example module loaded through the C
// interface, its variables in the catalogue, and a build with no library.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/external_serial.h"
#include "derived_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

std::string ExampleLibrary() {
    return (std::filesystem::path(TRACELAB_BIN_DIR) / ".." / "lib" /
            "libExternalSerialConversion.so")
        .string();
}

class ExternalSerial : public test::EngineTest {
  protected:
    void TearDown() override {
        SetExternalSerialLibraryPath("");
        EngineTest::TearDown();
    }
};

TEST_F(ExternalSerial, ExampleLibraryPassesAndNamesSlots) {
    if (!std::filesystem::exists(ExampleLibrary())) GTEST_SKIP() << "example not built";
    SetExternalSerialLibraryPath(ExampleLibrary());
    ASSERT_TRUE(ExternalSerialLibraryPresent());
    ASSERT_TRUE(TestExternalSerialCode());
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    EXPECT_EQ(ExternalSerialVariableCount(), 2);
    EXPECT_EQ(ExternalSerialVariableName(1), "Mean Byte [-]");
    EXPECT_EQ(ExternalSerialVariableName(2), "");
    const auto values = ExternalSerialConvert({10, 20, 30});
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0], 3.0);
    EXPECT_EQ(values[1], 20.0);

    UseProfile(Family::MQ7, Vehicle::Car);
    SetAvailableVars();
    EXPECT_EQ(Catalogue().RunVars[52].Name, "S:Block Length [-]");
    EXPECT_EQ(Catalogue().RunVars[53].Name, "S:Mean Byte [-]");
    EXPECT_TRUE(Catalogue().RunVars[54].Name.empty() || Catalogue().RunVars[54].Name[0] != 'S');
}

TEST_F(ExternalSerial, NoLibraryMeansNoSerialVariables) {
    SetExternalSerialLibraryPath(root.file("libExternalSerialConversion.so"));
    EXPECT_FALSE(ExternalSerialLibraryPresent());
    EXPECT_EQ(ExternalSerialVariableCount(), 0);
    EXPECT_TRUE(ExternalSerialConvert({1, 2}).empty());
    // A file that is no library: the communication message, no variables.
    test::WriteAll(root.file("libExternalSerialConversion.so"), "not an ELF file");
    EXPECT_FALSE(TestExternalSerialCode());
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message,
                       "An error occoured whilst communicating with "
                       "\"ExternalSerialConversion.dll\"  "));
    EXPECT_EQ(ExternalSerialVariableCount(), 0);
    UseProfile(Family::MQ7, Vehicle::Car);
    SetAvailableVars();
    EXPECT_NE(Catalogue().RunVars[52].Name.rfind("S:", 0), 0u);
}

std::string ScriptedLibrary() {
    return (std::filesystem::path(TRACELAB_BIN_DIR) / ".." / "lib" / "libScriptedSerial.so")
        .string();
}

// A library's answers at the start: up to 48 variables with names unique and
// not empty pass; 49, a repeated name or an empty one is refused with its
// message and no "S:" variable is offered.
TEST_F(ExternalSerial, CountAndNamesAreCheckedAtTheStart) {
    if (!std::filesystem::exists(ScriptedLibrary())) GTEST_SKIP() << "test library not built";
    SetExternalSerialLibraryPath(ScriptedLibrary());
    const std::string count =
        " \"ExternalSerialConversion.dll\" is reporting an illegal number "
        "of variables";
    const std::string names =
        " \"ExternalSerialConversion.dll\" is reporting an illegal "
        "variable name(s)";
    struct Case {
        const char* count;
        const char* names;  // nullptr: V1, V2, ...
        bool passes;
        std::string message;
    };
    const Case cases[] = {{"48", nullptr, true, ""},
                          {"49", nullptr, false, count},
                          {"-1", nullptr, false, count},
                          {"0", nullptr, true, ""},
                          {"3", "Boost|Lambda|Boost", false, names},
                          {"3", "Boost||Lambda", false, names},
                          {"2", "Boost|Lambda", true, ""}};
    for (const Case& c : cases) {
        setenv("TL_ES_COUNT", c.count, 1);
        if (c.names)
            setenv("TL_ES_NAMES", c.names, 1);
        else
            unsetenv("TL_ES_NAMES");
        ui.ClearRecords();
        SetExternalSerialLibraryPath(ScriptedLibrary());  // unloads the last one
        EXPECT_EQ(TestExternalSerialCode(), c.passes) << c.count;
        if (c.passes) {
            EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0) << c.count;
            EXPECT_EQ(ExternalSerialVariableCount(), std::atoi(c.count));
        } else {
            EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, c.message)) << c.count;
            EXPECT_EQ(ExternalSerialVariableCount(), 0);
        }
    }
    // 48 variables name slots 52 to 99, the last slot a serial channel may hold.
    setenv("TL_ES_COUNT", "48", 1);
    unsetenv("TL_ES_NAMES");
    SetExternalSerialLibraryPath(ScriptedLibrary());
    ASSERT_TRUE(TestExternalSerialCode());
    UseProfile(Family::MQ7, Vehicle::Car);
    SetAvailableVars();
    EXPECT_EQ(Catalogue().RunVars[52].Name, "S:V1");
    EXPECT_EQ(Catalogue().RunVars[99].Name, "S:V48");
    unsetenv("TL_ES_COUNT");
}

}  // namespace
}  // namespace tl
