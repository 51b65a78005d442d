#include <gtest/gtest.h>

#include "core/build_profile.h"
#include "core/errors.h"
#include "core/ui_services.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using Kind = ScriptedEvent::Kind;
using test::ReadAll;

class UiServices : public test::EngineTest {};

TEST_F(UiServices, AMessageHidesTheWaitFormFirstAndIsLogged) {
    Profile().DebugFlag = true;
    ShowPleaseWait("Loading Raw Data File From Disk");
    EXPECT_TRUE(ui.IsWaitShown());
    Message("Something to say");
    EXPECT_FALSE(ui.IsWaitShown());
    ASSERT_GE(ui.events.size(), 3u);
    const auto n = ui.events.size();
    EXPECT_EQ(ui.events[n - 2].kind, Kind::WaitHidden);
    EXPECT_EQ(ui.events[n - 1].kind, Kind::Message);
    EXPECT_EQ(ui.events[n - 1].title, "Error Report");
    const std::string log = ReadAll(Paths().LogPath);
    EXPECT_NE(log.find("Waittext: Loading Raw Data File From Disk\r\n"), std::string::npos);
    EXPECT_NE(log.find("User Message : Something to say\r\n"), std::string::npos);
}

TEST_F(UiServices, NoLogWithoutDebugOrUnderInterp) {
    Message("quiet");
    EXPECT_EQ(ReadAll(Paths().LogPath), "");
    Profile().DebugFlag = true;
    Profile().InterpFlag = true;
    Message("still quiet");
    EXPECT_EQ(ReadAll(Paths().LogPath), "");
}

TEST_F(UiServices, ProgressLinesCarryTheTimeSinceTheFormOpened) {
    EXPECT_EQ(FormatProgressLine(0.0, "Begin Processing....."), "  0.0s  :  Begin Processing.....");
    EXPECT_EQ(FormatProgressLine(12.34, "x"), " 12.3s  :  x");
    EXPECT_EQ(FormatProgressLine(123456.0, "x"), "123456.0s  :  x");
    ui.secondsSinceMidnight = 1000.0;
    ShowNonModal();
    ui.secondsSinceMidnight = 1002.56;
    DispProg("");
    DispProg("Reset data vectors");
    HideNonModal();
    ASSERT_EQ(ui.progressLines.size(), 1u);
    EXPECT_EQ(ui.progressLines[0], "  2.6s  :  Reset data vectors");
    EXPECT_FALSE(ui.progressShown);
}

TEST_F(UiServices, PauseLetsEventsRunAndEndsAtMidnight) {
    ui.secondsSinceMidnight = 1000.0;
    ui.secondsPerEvent = 0.01;
    Pause(1.5);
    EXPECT_NEAR(ui.doEventsCalls, 150, 2);
    ui.doEventsCalls = 0;
    ui.secondsSinceMidnight = 86399.5;
    Pause(1.5);
    EXPECT_EQ(ui.doEventsCalls, 0);
}

TEST_F(UiServices, TheThreeErrorModes) {
    auto failing = [] { throw RuntimeError(kErrOverflow, "Overflow"); };
    EXPECT_FALSE(Procedure("CalcSomething", failing));
    EXPECT_EQ(ui.Count(Kind::Message), 0);
    EXPECT_EQ(ProcedureValue("CalcValue", 7, []() -> int { throw std::bad_alloc(); }), 7);

    Profile().DebugFlag = true;
    EXPECT_FALSE(Procedure("CalcSomething", failing));
    EXPECT_TRUE(
        ui.Saw(Kind::Message, "Error, an error was encountered in CalcSomething- check log"));
    const std::string log = ReadAll(Paths().LogPath);
    EXPECT_NE(
        log.find("Error in CalcSomething\r\nError Description: Overflow\r\nError Number: 6\r\n"),
        std::string::npos);

    Profile().InterpFlag = true;
    EXPECT_THROW(Procedure("CalcSomething", failing), RuntimeError);
    EXPECT_TRUE(Procedure("Fine", [] {}));
}

}  // namespace
}  // namespace tl
