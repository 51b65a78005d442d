// The external serial library: the example module loaded through the C
// interface, its variables in the catalogue, and a build with no library.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tl
