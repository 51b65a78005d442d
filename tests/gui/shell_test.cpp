// The main window, the run manager and the option dialogs driven as a user
// would: through the menus, by the controls' names, with a demo run of the
// simulated vehicle loaded through the file dialog.
#include <QAction>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QToolBar>

#include <deque>
#include <fstream>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "gui_fixture.h"
#include "road/startup.h"
#include "shell/main_form.h"
#include "shell/qt_startup_ui.h"
#include "shell/run_manager.h"
#include "shell_fixture.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

TEST_F(ShellTest, MenuTreeToolbarAndTitleOfAnHx40Car) {
    Start("<hx40> <car>");
    EXPECT_TRUE(main->windowTitle().startsWith(QStringLiteral("VQ Tracelab - ")));
    const std::pair<const char*, const char*> entries[] = {
        {"mnuFileSaveRun", "&Save Run Data"},
        {"mnuFileLoadRun", "&Load Run Data"},
        {"MnuExportRaw", "Export Raw Data"},
        {"PrintSetup", "Print Setu&p"},
        {"PrintGraph", "&Print..."},
        {"PrintAll", "Print &All..."},
        {"SetDirs", "Set &Default Paths"},
        {"mnuFileExit", "E&xit"},
        {"mnuEditOptions", "&Edit Car Options"},
        {"mnuLoadOptions", "&Load Car Options"},
        {"mnuConnectLogger", "&Set Serial Port"},
        {"mnuLoggerSetupLogger", "Logger &Configuration"},
        {"RunManager", "Run &Manager"},
        {"mnuVariables", "Select &Variables"},
        {"MnuUserChannels", "&User Defined Variables"},
        {"mnuVarOptions", "Tracelab &Options"},
        {"ClearAll", "&Clear All Tracelab"},
        {"mnuGraphXYplot", "&Graph"},
        {"mnuGraphHistogram", "&Bar Chart"},
        {"Table", "&Track Measurements"},
        {"mnuWindowTileVertical", "Tile &Vertical"},
        {"MnuLapSectorTimes", "Show Lap/Sector Times"},
        {"mnuHelpSearchForHelpOn", "Help &Index"},
        {"mnuHelpAbout", "&About Us"}};
    for (const auto& [name, caption] : entries) {
        QAction* entry = Entry(name);
        ASSERT_NE(entry, nullptr) << name;
        EXPECT_EQ(entry->text(), QString::fromUtf8(caption)) << name;
    }
    EXPECT_EQ(main->Menu(QStringLiteral("mnuCarOptions"))->title(), QStringLiteral("&Car"));
    EXPECT_FALSE(Entry("mnuSv63Runs")->isVisible());
    EXPECT_TRUE(Entry("mnuLogger")->isVisible());
    // The windows of later parts stand greyed.
    EXPECT_FALSE(Entry("mnuAddUserGraph")->isEnabled());
    EXPECT_TRUE(Entry("mnuGraphXYplot")->isEnabled());
    EXPECT_TRUE(Entry("mnuGraphHistogram")->isEnabled());
    EXPECT_FALSE(Entry("PrintGraph")->isEnabled());
    EXPECT_TRUE(Entry("MnuExportRaw")->isEnabled());
    EXPECT_TRUE(Entry("RunManager")->isEnabled());
    for (const char* key : {"open", "save", "RM", "XY", "HT", "map", "table", "print", "help"})
        EXPECT_NE(main->Toolbar()->findChild<QAction*>(QString::fromUtf8(key)), nullptr) << key;
    // The run manager from the toolbar key, marked active in the window list.
    main->Toolbar()->findChild<QAction*>(QStringLiteral("RM"))->trigger();
    ASSERT_NE(main->RunManager(), nullptr);
    EXPECT_EQ(Child<QLabel>(main->RunManager(), "RunName")->text(),
              QStringLiteral("There are no runs loaded"));
    EXPECT_EQ(Child<QPushButton>(main->RunManager(), "DeleteRunBtn"), nullptr);
    main->RefreshWindowMenu();
    bool marked = false;
    for (QAction* a : main->Menu(QStringLiteral("mnuWindow"))->actions())
        if (a->text().endsWith(QStringLiteral("Run Manager (active)"))) marked = true;
    EXPECT_TRUE(marked);
}

TEST_F(ShellTest, MeterKartMenus) {
    Start("<sv63> <kart>");
    EXPECT_EQ(main->Menu(QStringLiteral("mnuLogger"))->title(), QStringLiteral("Meter"));
    EXPECT_EQ(Entry("mnuLoggerSetupLogger")->text(), QStringLiteral("Set-Up Meter"));
    EXPECT_FALSE(Entry("mnuLoadOptions")->isVisible());
    EXPECT_FALSE(Entry("mnuSaveOptions")->isVisible());
    EXPECT_TRUE(Entry("mnuEditOptions")->isVisible());
    EXPECT_EQ(Entry("mnuEditOptions")->text(), QStringLiteral("&Edit Kart Options"));
    EXPECT_TRUE(Entry("mnuSv63Runs")->isVisible());
}

TEST_F(ShellTest, LoadDemoRunTrimAndDeleteInTheRunManager) {
    Start("<hx40> <car>");
    LoadDemo(true);
    const int32_t fullLength = Store().RunInfo[1].RunLength;
    ASSERT_GT(fullLength, 3000);
    shell::RunManagerForm* manager = Manager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(Child<QLabel>(manager, "RunName")->text(), QStringLiteral("demo_hx40_road"));
    EXPECT_EQ(Child<QLabel>(manager, "CarFileLabel")->text(), QStringLiteral("default options"));
    EXPECT_EQ(Child<QPushButton>(manager, "ExportRun")->toolTip(),
              QStringLiteral("Export the run data to a .CSV file for loading into Excel"));

    // Cancel in the trim form: the run stays, no question comes.
    const int questionsBefore = static_cast<int>(user.questions.size());
    user.forms[QStringLiteral("frmTrimRun")] = [](QWidget* form) {
        EXPECT_EQ(form->windowTitle(), QStringLiteral("Trim Run Number: 1"));
        Click(form, "CancelBtn");
    };
    Click(manager, "TrimRun");
    EXPECT_EQ(Store().RunInfo[1].RunLength, fullLength);
    EXPECT_EQ(user.questions.size(), questionsBefore);

    // An end before the start is refused and the form stays for new times.
    user.forms[QStringLiteral("frmTrimRun")] = [this](QWidget* form) {
        Child<QLineEdit>(form, "StartTime")->setText(QStringLiteral("20"));
        Child<QLineEdit>(form, "EndTime")->setText(QStringLiteral("10"));
        Click(form, "OkBtn");
        EXPECT_TRUE(form->isVisible());
        Child<QLineEdit>(form, "StartTime")->setText(QStringLiteral("5"));
        Child<QLineEdit>(form, "EndTime")->setText(QStringLiteral("25"));
        user.answers.push_back(QMessageBox::Yes);  // process now
        Click(form, "OkBtn");
    };
    Click(manager, "TrimRun");
    EXPECT_TRUE(user.messages.contains(QStringLiteral("The end time must be after start time")));
    EXPECT_NEAR(Store().RunInfo[1].RunLength, 2000, 5);
    EXPECT_TRUE(manager->isVisible());

    // Delete: No keeps the run, Yes removes it and leaves the form open.
    user.answers.push_back(QMessageBox::No);
    Click(manager, "DeleteRunBtn");
    EXPECT_EQ(Store().RunCount, 1);
    user.answers.push_back(QMessageBox::Yes);
    Click(manager, "DeleteRunBtn");
    EXPECT_TRUE(
        user.questions.contains(QStringLiteral("Are you sure you wish to delete this run")));
    EXPECT_EQ(Store().RunCount, 0);
    GuiTest::Settle();
    EXPECT_EQ(Child<QLabel>(manager, "RunName")->text(),
              QStringLiteral("There are no runs loaded"));
    EXPECT_TRUE(manager->isVisible());
}

TEST_F(ShellTest, RunNameDetailsAndAmbientConditions) {
    Start("<hx40> <car>");
    LoadDemo(false);
    shell::RunManagerForm* manager = Manager();
    user.forms[QStringLiteral("InputBox")] = [](QWidget* form) {
        auto* edit = form->findChild<QLineEdit*>();
        ASSERT_NE(edit, nullptr);
        edit->setText(QStringLiteral("Morning session"));
        static_cast<QDialog*>(form)->accept();
    };
    Click(manager, "ChangeRunName");
    EXPECT_EQ(Store().RunInfo[1].Name, "Morning session");
    GuiTest::Settle();
    EXPECT_EQ(Child<QLabel>(manager, "RunName")->text(), QStringLiteral("Morning session"));

    user.forms[QStringLiteral("frmRunDetails")] = [](QWidget* form) {
        Child<QPlainTextEdit>(form, "UserRunDetailsBox")->setPlainText(QStringLiteral("dry track"));
        Click(form, "Okay");
    };
    Click(manager, "ReadRunDetails");
    EXPECT_EQ(Store().RunInfo[1].UserDetails, "dry track");

    user.forms[QStringLiteral("frmSetAmbientConditions")] = [](QWidget* form) {
        Child<QLineEdit>(form, "AmbientPressTxt")->setText(QStringLiteral("79.9"));
        Click(form, "OkBtn");
        EXPECT_TRUE(form->isVisible());
        Child<QLineEdit>(form, "AmbientPressTxt")->setText(QStringLiteral("95"));
        Child<QLineEdit>(form, "AmbientRhTxt")->setText(QStringLiteral("120"));
        Child<QLineEdit>(form, "AmbientTempTxt")->setText(QStringLiteral("18,5"));
        Click(form, "OkBtn");
    };
    Click(manager, "SetAmbient");
    EXPECT_TRUE(user.messages.contains(
        QStringLiteral("The specified ambient pressure is outside the allowable range")));
    EXPECT_EQ(Store().RunInfo[1].AmbientPressure, 95.0f);
    EXPECT_EQ(Store().RunInfo[1].AmbientHumidity, 120.0f);
    EXPECT_EQ(Store().RunInfo[1].AmbientTemperature, 18.5f);
}

TEST_F(ShellTest, OptionChangeCancelAndReprocess) {
    Start("<hx40> <car>");
    LoadDemo(false);
    const std::string& file = Paths().TracelabCfgPath;
    SetConfig(file, "HPCorrection", 0);
    user.forms[QStringLiteral("frmTracelabOptions")] = [](QWidget* form) {
        EXPECT_TRUE(Child<QRadioButton>(form, "HPCorrectionSTP")->isChecked());
        Child<QRadioButton>(form, "HPCorrectionDIN")->setChecked(true);
        Click(form, "Cancel");
    };
    Entry("mnuVarOptions")->trigger();
    EXPECT_EQ(GetConfig(file, "HPCorrection"), 0.0f);  // Cancel stored nothing

    user.forms[QStringLiteral("frmTracelabOptions")] = [](QWidget* form) {
        Child<QRadioButton>(form, "HPCorrectionDIN")->setChecked(true);
        auto* grid = Child<QTableWidget>(form, "MsGridFilterOptions");
        ASSERT_GT(grid->rowCount(), 0);
        grid->item(0, 1)->setText(QStringLiteral("0,5"));
        Click(form, "Okay");
    };
    Entry("mnuVarOptions")->trigger();
    EXPECT_EQ(GetConfig(file, "HPCorrection"), 3.0f);
    EXPECT_TRUE(user.messages.contains(QStringLiteral(
        "You will have to re-process the runs to make use of any changes you made")));
    const std::string firstVar = Catalogue().RunVars[1].Name;
    EXPECT_FLOAT_EQ(GetConfig(file, "TimeFilt_" + firstVar), 0.5f);

    // Car options: a number box takes its text through GetVal.
    user.forms[QStringLiteral("frmCarOptions")] = [](QWidget* form) {
        Child<QLineEdit>(form, "CarMass")->setText(QStringLiteral("1250kg"));
        Click(form, "Okay");
    };
    Entry("mnuEditOptions")->trigger();
    EXPECT_EQ(GetConfig(Paths().CarCfgPath, "CarMass"), 1250.0f);

    // Reprocess the run with the new options from the run manager.
    const int32_t row = Store().RunInfo[1].RunStart + 1000;
    EXPECT_EQ(RunData(row, ColumnOf(slot::Time)), 0.0f);  // loaded, not processed
    Click(Manager(), "ReProcessRun");
    EXPECT_NEAR(RunData(row, ColumnOf(slot::Time)), 10.0f, 0.02f);
}

TEST_F(ShellTest, VariableSelectionChangesNumVars) {
    Start("<hx40> <car>");
    LoadDemo(true);
    const int32_t before = Catalogue().NumVars;
    int unticked = 0;
    user.forms[QStringLiteral("frmSetActiveVariables")] = [&](QWidget* form) {
        auto* list = Child<QListWidget>(form, "VarListBox");
        ASSERT_GT(list->count(), 3);
        Click(form, "SetAllVars");
        for (int i = 0; i < 3; ++i) {
            list->item(i)->setCheckState(Qt::Unchecked);
            ++unticked;
        }
        user.answers.push_back(QMessageBox::Ok);
        Click(form, "Okay");
    };
    Entry("mnuVariables")->trigger();
    EXPECT_EQ(unticked, 3);
    const int32_t after = Catalogue().NumVars;
    EXPECT_NE(after, before);
    EXPECT_GT(Store().RunInfo[1].RunLength, 3000);  // the run was processed again

    // Clearing all and cancelling changes nothing.
    user.forms[QStringLiteral("frmSetActiveVariables")] = [](QWidget* form) {
        Click(form, "ReSetAllVars");
        Click(form, "Cancel");
    };
    Entry("mnuVariables")->trigger();
    EXPECT_EQ(Catalogue().NumVars, after);
}

TEST_F(ShellTest, CloseAsksToSaveOnlyWithDataAndCancelKeepsTheWindow) {
    Start("<hx40> <car>");
    LoadDemo(false);
    QPointer<shell::MainForm> frame(main);
    user.answers.push_back(QMessageBox::Cancel);
    main->ExitProgram();
    EXPECT_TRUE(user.questions.contains(
        QStringLiteral("Do you want to save the run analysis before quitting?")));
    EXPECT_TRUE(main->isVisible());
    EXPECT_EQ(Store().RunCount, 1);

    SetConfig(Paths().TracelabCfgPath, "ShowMiniMaps", 1);
    // A fresh frame opens maximised; a frame in its normal state leaves its
    // place behind for the next start.
    main->showNormal();
    user.answers.push_back(QMessageBox::No);
    main->ExitProgram();
    GuiTest::Settle();
    EXPECT_TRUE(frame.isNull());
    EXPECT_EQ(Store().RunCount, 0);
    // The mini map was not open: its key goes back to 0.
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "ShowMiniMaps"), 0.0f);
    EXPECT_GT(GetConfig(Paths().TracelabCfgPath, "MainFormWidth"), 0.0f);
}

TEST_F(ShellTest, CloseWithoutDataAsksNothing) {
    Start("<hx40> <car>");
    QPointer<shell::MainForm> frame(main);
    main->ExitProgram();
    GuiTest::Settle();
    EXPECT_TRUE(frame.isNull());
    EXPECT_TRUE(user.questions.isEmpty());
}

TEST_F(ShellTest, DefaultPathsAndRecentFiles) {
    Start("<hx40> <car>");
    user.forms[QStringLiteral("frmSetDefaultDirectories")] = [this](QWidget* form) {
        Child<QLineEdit>(form, "RunPath")->setText(QString::fromStdString(root.path().string()));
        Click(form, "OK");
    };
    Entry("SetDirs")->trigger();
    EXPECT_EQ(GetConfigString(Paths().TracelabCfgPath, "RunPath"), root.path().string());

    user.answers.push_back(QMessageBox::No);
    main->LoadRunFiles({QString::fromStdString(kSamples + "/demo_hx40_road.run")});
    ASSERT_EQ(Store().RunCount, 1);
    QMenu* recent = main->findChild<QMenu*>(QStringLiteral("mnuRecentFiles"));
    ASSERT_NE(recent, nullptr);
    ASSERT_EQ(recent->actions().size(), 1);
    EXPECT_TRUE(recent->actions()[0]->text().endsWith(QStringLiteral("demo_hx40_road.run")));
}

TEST_F(ShellTest, DialogLoadsJoinTheRecentListAndOwnKeysLeaveTheFileRoom) {
    Start("<hx40> <car>");
    LoadDemo(false);  // through mnuFileLoadRun's dialog
    QMenu* recent = main->findChild<QMenu*>(QStringLiteral("mnuRecentFiles"));
    ASSERT_NE(recent, nullptr);
    ASSERT_EQ(recent->actions().size(), 1);
    EXPECT_EQ(
        recent->actions()[0]->toolTip(),
        QFileInfo(QString::fromStdString(kSamples + "/demo_hx40_road.run")).absoluteFilePath());
    // A cancelled dialog adds nothing.
    Entry("mnuFileLoadRun")->trigger();
    EXPECT_EQ(recent->actions().size(), 1);

    // A file near its line limit: the frame's place is not added to it.
    const std::string& file = Paths().TracelabCfgPath;
    {
        std::ofstream out(file, std::ios::binary | std::ios::app);
        for (int i = static_cast<int>(ReadConfigRecords(file).size()); i < 470; ++i)
            out << "\"Filler" << i << "\",\"0\"\r\n";
    }
    ASSERT_EQ(ReadConfigRecords(file).size(), 470u);
    user.answers.push_back(QMessageBox::No);
    main->ExitProgram();
    GuiTest::Settle();
    const auto records = ReadConfigRecords(file);
    EXPECT_LE(records.size(), 501u);
    for (const auto& [key, value] : records) EXPECT_NE(key, "MainFormWidth");
    EXPECT_EQ(GetConfigString(file, "RecentRunFile1"),
              QFileInfo(QString::fromStdString(kSamples + "/demo_hx40_road.run"))
                  .absoluteFilePath()
                  .toStdString());
}

}  // namespace
}  // namespace tl::test
