// The program as a new user meets it: every form fits a small laptop screen
// with its texts whole, help opens inside the program, About stays out of
// the way of messages, Cascade keeps windows usable, the toolbar has its own
// icons with a visible disabled look, the status bar says what is loaded,
// and the usual keys work.
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTextBrowser>
#include <QToolBar>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "shell/help_window.h"
#include "shell/lap_forms.h"
#include "shell/measurements_forms.h"
#include "shell/option_dialogs.h"
#include "shell/performance_form.h"
#include "shell/run_manager.h"
#include "shell/start_forms.h"
#include "shell/user_channels_form.h"
#include "shell/variables_form.h"
#include "shell_fixture.h"
#include "views/qt/bar_chart_form.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/tool_forms.h"
#include "views/qt/track_map_form.h"

namespace tl::test {
namespace {

class WindowChecks : public ShellTest {};

// The room a form has on a 1366 x 768 screen at 100 % once a title bar and
// a panel are taken off (a 2880 x 1800 screen at 200 % gives 1440 x 900 of
// the same units, more in both directions).
constexpr int kScreenWidth = 1366;
constexpr int kScreenHeight = 768 - 80;

// Texts of check boxes, radio buttons, push buttons and single-line labels
// that are narrower than they need: cut on the screen.
std::vector<std::string> CutTexts(QWidget* form) {
    std::vector<std::string> cut;
    auto check = [&](QWidget* w, const QString& text) {
        if (!w->isVisibleTo(form) || text.isEmpty()) return;
        if (w->width() < w->sizeHint().width()) cut.push_back(text.toStdString());
    };
    for (auto* b : form->findChildren<QAbstractButton*>()) check(b, b->text());
    for (auto* l : form->findChildren<QLabel*>())
        if (!l->wordWrap()) check(l, l->text());
    for (auto* t : form->findChildren<QTableWidget*>()) {
        QHeaderView* h = t->horizontalHeader();
        for (int c = 0; c < t->columnCount(); ++c) {
            const auto* item = t->horizontalHeaderItem(c);
            if (item == nullptr || t->isColumnHidden(c)) continue;
            int need = 0;
            for (const QString& line : item->text().split(QLatin1Char('\n')))
                need = std::max(need, h->fontMetrics().horizontalAdvance(line) + 8);
            if (h->sectionSize(c) < need) cut.push_back(item->text().toStdString());
        }
    }
    return cut;
}

void ExpectFits(QWidget* form, const char* name) {
    form->show();
    form->adjustSize();
    QApplication::processEvents();
    const QSize size = form->frameGeometry().size();
    EXPECT_LE(size.width(), kScreenWidth) << name;
    EXPECT_LE(size.height(), kScreenHeight) << name;
    EXPECT_LE(form->minimumSizeHint().width(), kScreenWidth) << name;
    EXPECT_LE(form->minimumSizeHint().height(), kScreenHeight) << name;
    EXPECT_EQ(CutTexts(form), std::vector<std::string>()) << name;
    // TRACELAB_SHOT_DIR=DIR keeps a picture of each form for a look by eye.
    if (const char* dir = std::getenv("TRACELAB_SHOT_DIR")) {
        QString file = QString::fromUtf8(name).replace(QLatin1Char(' '), QLatin1Char('_'));
        form->grab().save(QString::fromUtf8(dir) + QStringLiteral("/form_") + file +
                          QStringLiteral(".png"));
    }
    form->close();
}

TEST_F(WindowChecks, EveryFormFitsTheScreenWithItsTextsWhole) {
    Start("<hx40><car>");
    LoadDemo(true);
    {
        shell::TracelabOptionsForm form(main);
        ExpectFits(&form, "Tracelab Options");
    }
    {
        shell::CarOptionsForm form(main);
        ExpectFits(&form, "Vehicle Options");
    }
    {
        shell::ActiveVariablesForm form(main);
        ExpectFits(&form, "Select Variables");
    }
    {
        shell::UserChannelsForm form(main);
        ExpectFits(&form, "User Channels");
    }
    {
        shell::RefLapOptionsForm form(main);
        ExpectFits(&form, "Reference Lap Options");
    }
    {
        shell::LapsSectorsForm form(main);
        ExpectFits(&form, "Laps and Sectors");
    }
    {
        shell::DefaultDirectoriesForm form(main);
        ExpectFits(&form, "Default Paths");
    }
    {
        shell::FirstRunForm form(main);
        ExpectFits(&form, "First Run");
    }
    ExpectFits(main->ShowRunManager(), "Run Manager");
    ExpectFits(main->ShowLapSectorTimes(), "Lap and Sector Times");
    {
        shell::SectorGraphSelectorForm form(main);
        ExpectFits(&form, "Graph Type");
    }
    {
        // The graph window on each of its tabs, the conditions shown.
        views::GraphXYForm form;
        form.Model().settings.LimitVariables = 1;
        form.Model().settings.MultipleXAxis = 1;
        const char* tabs[] = {"Graph", "Graph Setup", "Graph Options"};
        for (int tab = 0; tab < 3; ++tab) {
            form.GraphTab_Click(tab);
            ExpectFits(&form, tabs[tab]);
        }
    }
    {
        // The track map with its most panels (ten runs and the common row),
        // on both tabs; each closes itself away.
        for (int tab = 0; tab < 2; ++tab) {
            auto* form = new views::TrackMapForm;
            form->Player().RunsDisplayed = "10";
            form->Player().RunsDisplayed_Change();
            EXPECT_EQ(form->Player().RunsInUse(), 10);
            form->TrackTab_Click(tab);
            ExpectFits(form, tab == 0 ? "Track Map" : "Track Map Options");
        }
    }
    ExpectFits(new views::DashboardForm(0), "Virtual Dashboard");
    ExpectFits(new views::MiniMapForm(main), "Mini Track Map");
    ExpectFits(new views::ValueTableForm(main), "Variable Values Table");
    {
        views::AddTrackMarkerForm form(main);
        ExpectFits(&form, "New Marker");
    }
    {
        // The bar chart on each tab, the five axes shown.
        views::BarChartForm form;
        form.Chart().settings.MultiBar = 1;
        const char* tabs[] = {"Bar Chart", "Bar Chart Setup", "Bar Chart Options"};
        for (int tab = 0; tab < 3; ++tab) {
            form.ChartTab_Click(tab);
            ExpectFits(&form, tabs[tab]);
        }
    }
    {
        shell::MeasurementsForm form(main);
        ExpectFits(&form, "Track Measurements");
        shell::AddMeasurementForm dialog(1, main);
        ExpectFits(&dialog, "Add Measurement");
    }
    {
        shell::PerformanceForm form;
        for (int page = 0; page < 4; ++page) {
            form.SSTab_Click(page);
            ExpectFits(&form, "Calculated Performance Table");
        }
    }
}

TEST_F(WindowChecks, HelpOpensInsideTheProgram) {
    Start("<hx40><car>");
    Entry("mnuHelpContents")->trigger();
    QApplication::processEvents();
    auto* help = qobject_cast<shell::HelpWindow*>(FindTopLevel(QStringLiteral("HelpWindow")));
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->Browser()->source().toLocalFile().toStdString(), Paths().HelpPath);
    EXPECT_FALSE(help->Browser()->toPlainText().isEmpty());
    EXPECT_TRUE(user.messages.isEmpty());
    Entry("mnuHelpSearchForHelpOn")->trigger();
    QApplication::processEvents();
    EXPECT_EQ(help->Browser()->source().toLocalFile().toStdString(), Paths().HelpIndexPath);
    help->close();
    // Quick Start on the welcome form opens the contents page.
    shell::FirstRunForm first(main);
    first.show();
    Click(&first, "QuickStart");
    QApplication::processEvents();
    help = qobject_cast<shell::HelpWindow*>(FindTopLevel(QStringLiteral("HelpWindow")));
    ASSERT_NE(help, nullptr);
    EXPECT_EQ(help->Browser()->source().toLocalFile().toStdString(), Paths().HelpPath);
    help->close();
}

TEST_F(WindowChecks, AboutIsAnOrdinaryModalDialog) {
    Start("<hx40><car>");
    Entry("mnuHelpAbout")->trigger();
    QApplication::processEvents();
    QWidget* about = FindTopLevel(QStringLiteral("frmStartBanner"));
    ASSERT_NE(about, nullptr);
    EXPECT_FALSE(about->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_EQ(about->windowModality(), Qt::ApplicationModal);
    EXPECT_FALSE(about->windowIcon().isNull());
    Click(about, "CloseBtn");
    Settle();
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmStartBanner")), nullptr);
}

TEST_F(WindowChecks, CascadeKeepsTheRunManagerWhole) {
    Start("<hx40><car>");
    LoadDemo(false);
    shell::RunManagerForm* manager = main->ShowRunManager();
    main->ShowLapSectorTimes();
    auto* sub = qobject_cast<QMdiSubWindow*>(manager->parentWidget());
    ASSERT_NE(sub, nullptr);
    const QSize before = sub->size();
    for (int i = 0; i < 3; ++i) Entry("mnuWindowCascade")->trigger();
    QApplication::processEvents();
    // Each window keeps its size where the frame has room for it, and never
    // goes below what its contents need.
    const QSize area = main->MdiArea()->viewport()->size();
    EXPECT_GE(sub->width(), std::min(before.width(), area.width() - sub->x()));
    EXPECT_GE(sub->height(), std::min(before.height(), area.height() - sub->y()));
    EXPECT_GE(sub->width(), sub->minimumSizeHint().width());
    EXPECT_GE(sub->height(), sub->minimumSizeHint().height());
    EXPECT_LT(sub->x(), 200);
}

TEST_F(WindowChecks, ToolbarIconsAreTheProgramsOwnWithAVisibleDisabledLook) {
    Start("<hx40><car>");
    QToolBar* bar = main->Toolbar();
    int checked = 0;
    for (QAction* action : bar->actions()) {
        if (action->isSeparator()) continue;
        const QIcon icon = action->icon();
        ASSERT_FALSE(icon.isNull()) << action->objectName().toStdString();
        const QImage normal = icon.pixmap(22, QIcon::Normal).toImage();
        const QImage disabled = icon.pixmap(22, QIcon::Disabled).toImage();
        EXPECT_NE(normal, disabled) << action->objectName().toStdString();
        // Not one of the style's file dialog pictures.
        EXPECT_NE(normal,
                  main->style()->standardIcon(QStyle::SP_DriveNetIcon).pixmap(22).toImage());
        ++checked;
    }
    EXPECT_EQ(checked, 9);
    // A key greyed with its entry; the program's icon on its windows.
    EXPECT_FALSE(main->findChild<QAction*>(QStringLiteral("print"))->isEnabled());
    EXPECT_FALSE(QApplication::windowIcon().isNull());
    EXPECT_EQ(main->ShowRunManager()->parentWidget()->windowIcon().cacheKey(),
              QApplication::windowIcon().cacheKey());
}

TEST_F(WindowChecks, StatusBarShortcutsAndFirstShow) {
    Start("<mq7><kart>");
    auto* status = main->findChild<QLabel*>(QStringLiteral("StatusRuns"));
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->text(), QStringLiteral("No runs loaded  |  MQ7  |  Kart"));
    user.files.push_back(QString::fromStdString(kSamples + "/demo_mq7_kart.run"));
    user.answers.push_back(QMessageBox::No);
    Entry("mnuFileLoadRun")->trigger();
    Settle();
    EXPECT_EQ(status->text(), QStringLiteral("1 run loaded  |  MQ7  |  Kart"));
    EXPECT_EQ(Entry("mnuFileLoadRun")->shortcut(), QKeySequence(QKeySequence::Open));
    EXPECT_EQ(Entry("mnuFileSaveRun")->shortcut(), QKeySequence(QKeySequence::Save));
    EXPECT_EQ(Entry("mnuFileExit")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(Entry("mnuHelpContents")->shortcut(), QKeySequence(QKeySequence::HelpContents));
    // With no stored place the frame comes up maximised.
    EXPECT_TRUE(main->windowState() & Qt::WindowMaximized);
}

}  // namespace
}  // namespace tl::test
