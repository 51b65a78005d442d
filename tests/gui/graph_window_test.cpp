// The XY graph window as a user works it: opened from the Results menu on the
// demo road run, a Y variable chosen on "Setup", a window dragged with the
// zoom button and undone, the points copied with Ctrl+C; graph numbers used
// again after a close; and the lap table's Graph button laying two laps of
// the kart run over each other.
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <cmath>
#include <fstream>

#include "core/support.h"
#include "results/laps.h"
#include "shell/lap_forms.h"
#include "shell_fixture.h"
#include "store/catalogue.h"
#include "views/qt/graph_xy_form.h"
#include "views/view_forms.h"

namespace tl::test {
namespace {

class GraphWindow : public ShellTest {
  protected:
    views::GraphXYForm* NewGraph() {
        const auto before = main->findChildren<views::GraphXYForm*>();
        Entry("mnuGraphXYplot")->trigger();
        QApplication::processEvents();
        for (views::GraphXYForm* form : main->findChildren<views::GraphXYForm*>()) {
            if (!before.contains(form)) return form;
        }
        return nullptr;
    }
    static QStringList Captions(QMdiArea* mdi) {
        QStringList captions;
        for (QMdiSubWindow* sub : mdi->subWindowList()) captions << sub->windowTitle();
        captions.sort();
        return captions;
    }
};

TEST_F(GraphWindow, ZoomWindowGoBackAndCopyOnTheDemoRun) {
    Start("<hx40><car>");
    LoadDemo(true);
    EXPECT_TRUE(main->Toolbar()->findChild<QAction*>(QStringLiteral("XY"))->isEnabled());
    views::GraphXYForm* form = NewGraph();
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->objectName(), QStringLiteral("frmGraphXY"));
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Graph 1"));
    auto* tabs = Child<QTabBar>(form, "GraphTab");
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->currentIndex(), 0);
    // The window fits the frame it opened in.
    QMdiSubWindow* sub = main->MdiArea()->activeSubWindow();
    ASSERT_NE(sub, nullptr);
    EXPECT_LE(sub->width(), main->MdiArea()->viewport()->width());
    EXPECT_LE(sub->height(), main->MdiArea()->viewport()->height());

    // "Setup": the list of Y variables fills as it opens; choosing one
    // activates the slot.
    tabs->setCurrentIndex(1);
    auto* selY = Child<views::VariableCombo>(form, "SelYAxis_0");
    ASSERT_NE(selY, nullptr);
    EXPECT_EQ(selY->count(), 1);
    EXPECT_EQ(selY->currentText(), QStringLiteral("Select Variable"));
    selY->showPopup();
    selY->hidePopup();
    const QString speed = QString::fromStdString(Catalogue().RunVars[slot::SpeedKph].Name);
    ASSERT_GT(selY->count(), 10);
    ASSERT_GE(selY->findText(speed), 0);
    selY->setCurrentIndex(selY->findText(speed));
    EXPECT_TRUE(Child<QCheckBox>(form, "ActivateYAxis_0")->isChecked());
    GraphModel& g = form->Model();
    EXPECT_EQ(g.settings.Slots[0].SelYAxis, speed.toStdString());
    // With one X axis the X fields of the other slots follow slot 0.
    EXPECT_FALSE(Child<QWidget>(form, "MinXAxis_1")->isEnabled());
    EXPECT_TRUE(Child<QWidget>(form, "MinXAxis_0")->isEnabled());

    tabs->setCurrentIndex(0);
    ASSERT_EQ(g.axis[0].YTitle, speed.toStdString());
    const GraphAxis whole = g.axis[0];
    ASSERT_GT(whole.YMax, 100.0f);  // the demo car goes faster than 100 kph

    // ZoomBtn 1 arms the zoom window; a drag over the middle of the box
    // zooms into it.
    auto* zoomWindow = Child<QToolButton>(form, "ZoomBtn_1");
    EXPECT_EQ(zoomWindow->toolTip(), QStringLiteral("Zoom In On A Dragged Window"));
    zoomWindow->click();
    views::GraphBox* box = form->Box();
    EXPECT_EQ(box->cursor().shape(), Qt::CrossCursor);
    const QPoint from(box->width() * 3 / 10, box->height() * 3 / 10);
    const QPoint to(box->width() * 6 / 10, box->height() * 6 / 10);
    QTest::mousePress(box, Qt::LeftButton, {}, from);
    QTest::mouseMove(box, (from + to) / 2);
    QTest::mouseRelease(box, Qt::LeftButton, {}, to);
    EXPECT_EQ(box->cursor().shape(), Qt::ArrowCursor);
    EXPECT_FALSE(g.ZoomWindowActive);
    EXPECT_LT(g.axis[0].XMax - g.axis[0].XMin, (whole.XMax - whole.XMin) * 0.5f);
    EXPECT_LT(g.axis[0].YMax - g.axis[0].YMin, (whole.YMax - whole.YMin) * 0.5f);
    EXPECT_GT(g.axis[0].XMin, whole.XMin);
    EXPECT_LT(g.axis[0].YMax, whole.YMax);
    // The typed limits show on "Setup" with their boxes ticked.
    EXPECT_TRUE(Child<QCheckBox>(form, "AutoMinX_0")->isChecked());
    EXPECT_FALSE(Child<QLineEdit>(form, "MinXAxis_0")->text().isEmpty());

    // ZoomBtn 0 goes back to the whole run.
    Child<QToolButton>(form, "ZoomBtn_0")->click();
    auto near = [](float a, float b) {
        return std::abs(a - b) <= 1e-4f * std::max(1.0f, std::abs(b));
    };
    EXPECT_TRUE(near(g.axis[0].XMin, whole.XMin)) << g.axis[0].XMin << " " << whole.XMin;
    EXPECT_TRUE(near(g.axis[0].XMax, whole.XMax)) << g.axis[0].XMax << " " << whole.XMax;
    EXPECT_TRUE(near(g.axis[0].YMin, whole.YMin)) << g.axis[0].YMin << " " << whole.YMin;
    EXPECT_TRUE(near(g.axis[0].YMax, whole.YMax)) << g.axis[0].YMax << " " << whole.YMax;

    // Ctrl+C in the box copies the points under a row of titles.
    QApplication::clipboard()->clear();
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->width() / 2, box->height() / 2));
    QTest::keyClick(box, Qt::Key_C, Qt::ControlModifier);
    const QString copied = QApplication::clipboard()->text();
    EXPECT_EQ(copied.toStdString(), g.ClipboardText());
    const QString titles =
        QString::fromStdString(g.axis[0].XTitle + "\t" + g.axis[0].YTitle + "\t");
    EXPECT_TRUE(copied.startsWith(titles)) << copied.left(80).toStdString();
    EXPECT_GT(copied.count(QStringLiteral("\r\n")), 1000);
}

TEST_F(GraphWindow, NumbersOfClosedGraphsAreUsedAgainAndClearAllClosesThem) {
    Start("<hx40><car>");
    LoadDemo(true);
    views::GraphXYForm* graphs[3];
    for (auto*& g : graphs) {
        g = NewGraph();
        ASSERT_NE(g, nullptr);
    }
    EXPECT_EQ(Captions(main->MdiArea()),
              (QStringList{QStringLiteral("Graph 1"), QStringLiteral("Graph 2"),
                           QStringLiteral("Graph 3")}));
    graphs[1]->parentWidget()->close();
    Settle();
    EXPECT_EQ(main->MdiArea()->subWindowList().size(), 2);
    views::GraphXYForm* again = NewGraph();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->windowTitle(), QStringLiteral("Graph 2"));
    EXPECT_EQ(again->Number(), 2);

    // "Clear All Tracelab" closes every graph; the next is graph 1.
    Entry("ClearAll")->trigger();
    Settle();
    EXPECT_TRUE(main->MdiArea()->subWindowList().isEmpty());
    EXPECT_EQ(XYGraphForms().Count(), 1);
    LoadDemo(true);
    views::GraphXYForm* first = NewGraph();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Graph 1"));
}

// The distance [m] the simulated kart covers in each lap (between its line
// crossings).
std::vector<double> TrueKartLapLengths() {
    std::ifstream in(kSamples + "/demo_mq7_kart.laps.csv");
    std::vector<double> at, lengths;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("line,", 0) != 0) continue;
        // event,beacon,time_s,row,lap,distance_m,lap_time_s
        const size_t end = line.rfind(',');
        const size_t start = line.rfind(',', end - 1) + 1;
        at.push_back(std::stod(line.substr(start, end - start)));
        if (at.size() > 1) lengths.push_back(at.back() - at[at.size() - 2]);
    }
    return lengths;
}

TEST_F(GraphWindow, LapTableGraphButtonOverlaysTwoLaps) {
    Start("<mq7> <kart>");
    LoadDemo(true, "demo_mq7_kart.run");
    AutoAddLapMarkerCmd(1, "20");
    const RunLaps laps = LapsOfRun(1);
    ASSERT_GE(laps.laps.size(), 2u);
    shell::LapSectorTimesForm* table = main->ShowLapSectorTimes();
    auto* button = Child<QPushButton>(table, "CmdGenerateGraph");
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isEnabled());
    // Lap 2 first, then lap 1: the slots follow the order of the clicks.
    const TableGrid& grid = table->Table().Grid();
    std::vector<int> lapRows;
    for (int r = 1; r < grid.rows; ++r)
        if (grid.Text(r, 0).rfind("Lap ", 0) == 0) lapRows.push_back(r);
    ASSERT_GE(lapRows.size(), 2u);
    table->ClickCell(lapRows[1], 0);
    table->ClickCell(lapRows[0], 0);
    EXPECT_TRUE(button->isEnabled());

    user.forms[QStringLiteral("frmSectorGraphSelector")] = [](QWidget* form) {
        EXPECT_EQ(form->windowTitle(), QStringLiteral("Graph Type"));
        Child<QRadioButton>(form, "OptionGraphType_0")->setChecked(true);
        Click(form, "OkayBtn");
    };
    button->click();
    QApplication::processEvents();
    ASSERT_TRUE(user.watcher.Saw(QStringLiteral("frmSectorGraphSelector")));
    const auto graphs = main->findChildren<views::GraphXYForm*>();
    ASSERT_EQ(graphs.size(), 1);
    GraphModel& g = graphs[0]->Model();
    EXPECT_EQ(g.ActiveSlotCount(), 2);
    EXPECT_EQ(g.settings.MultipleXAxis, 1);
    const std::vector<double> truth = TrueKartLapLengths();
    ASSERT_GE(truth.size(), 2u);
    const float* time = Store().RunData.Column(ColumnOf(slot::Time)).data();
    for (int k = 0; k < 2; ++k) {
        const LapInfo& lap = laps.laps[1 - k];
        const GraphSlotSettings& s = g.settings.Slots[k];
        EXPECT_EQ(s.SelYAxis, Catalogue().RunVars[slot::SpeedKph].Name);
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMin)), time[lap.startRow]) << k;
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMax)), time[lap.endRow]) << k;
        EXPECT_NEAR(GetVal(s.LimitVarMax) - GetVal(s.LimitVarMin), lap.time, 0.006) << k;
        // The automatic marker lies elsewhere than the timing line, but a lap
        // is a lap: its X axis spans the simulated circuit's length.
        EXPECT_EQ(g.axis[k].XMin, static_cast<float>(GetVal(s.MinXAxis)));
        EXPECT_EQ(g.axis[k].XMax, static_cast<float>(GetVal(s.MaxXAxis)));
        EXPECT_NEAR((g.axis[k].XMax - g.axis[k].XMin) * 1000.0, truth[1], truth[1] * 0.02) << k;
        EXPECT_GT(g.axis[k].PointCount, 100);
    }
}

}  // namespace
}  // namespace tl::test
