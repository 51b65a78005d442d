// The track map window as a user works it: on the demo kart run a marker
// dragged across the simulation's timing line with AddNewNode becomes the
// lap marker (the laps are the simulated ones) and DeleteNode takes it away
// again; and playback of two runs moving the map's dots, a graph's cursors,
// the dashboards' needles and the value table's columns together, step by
// step under a scripted clock.
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QTabBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <cmath>
#include <fstream>
#include <sstream>

#include "core/support.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "shell/lap_forms.h"
#include "shell_fixture.h"
#include "store/catalogue.h"
#include "views/dashboard.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/surface_box.h"
#include "views/qt/tool_forms.h"
#include "views/qt/track_map_form.h"

namespace tl::test {
namespace {

// Presses, drags and releases the left button on a widget, in pixels.
void Drag(QWidget* w, QPointF from, QPointF to) {
    auto send = [w](QEvent::Type type, QPointF at, Qt::MouseButton b, Qt::MouseButtons held) {
        QMouseEvent e(type, at, w->mapToGlobal(at), b, held, Qt::NoModifier);
        QApplication::sendEvent(w, &e);
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    for (int k = 1; k <= 4; ++k)
        send(QEvent::MouseMove, from + (to - from) * (k / 4.0), Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

struct TruthRow {
    double x = 0, y = 0;
};
// The simulation's positions by row (time_s x 100).
std::vector<TruthRow> KartTruth() {
    std::ifstream in(kSamples + "/demo_mq7_kart.truth.csv");
    std::vector<TruthRow> rows;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::stringstream s(line);
        std::string cell;
        double v[5] = {};
        for (double& x : v) {
            std::getline(s, cell, ',');
            x = std::stod(cell);
        }
        rows.push_back({v[3], v[4]});
    }
    return rows;
}

// The timing line's crossings: row and lap time.
std::vector<std::pair<int, double>> KartLines() {
    std::ifstream in(kSamples + "/demo_mq7_kart.laps.csv");
    std::vector<std::pair<int, double>> lines;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("line,", 0) != 0) continue;
        std::stringstream s(line);
        std::string cell[7];
        for (std::string& c : cell) std::getline(s, c, ',');
        lines.emplace_back(std::stoi(cell[3]), std::stod(cell[6]));
    }
    return lines;
}

int LapRowsOfTable(shell::LapSectorTimesForm* table) {
    const TableGrid& grid = table->Table().Grid();
    int laps = 0;
    for (int r = 1; r < grid.rows; ++r)
        if (grid.Text(r, 0).rfind("Lap ", 0) == 0) ++laps;
    return laps;
}

class TrackMapWindow : public ShellTest {
  protected:
    views::TrackMapForm* OpenMap() {
        Entry("mnuTrackMap")->trigger();
        QApplication::processEvents();
        views::TrackMapForm* form = main->TrackMap();
        if (form != nullptr) form->parentWidget()->resize(900, 700);
        QApplication::processEvents();
        return form;
    }
};

TEST_F(TrackMapWindow, MarkerDraggedAcrossTheTimingLineGivesTheSimulatedLaps) {
    Start("<mq7> <kart>");
    LoadDemo(true, "demo_mq7_kart.run");
    EXPECT_TRUE(Entry("mnuTrackMap")->isEnabled());
    // Without the automatic lap marker the table has no laps.
    if (CheckForLapMarker() > 0) DeleteTrackMarker(CheckForLapMarker());
    ASSERT_EQ(CheckForLapMarker(), -1);
    shell::LapSectorTimesForm* table = main->ShowLapSectorTimes();
    EXPECT_EQ(LapRowsOfTable(table), 0);

    views::TrackMapForm* form = OpenMap();
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Track Map"));
    EXPECT_EQ(main->ShowTrackMap(), form);  // single instance: raised, not a second
    Entry("mnuTrackMap")->trigger();
    EXPECT_EQ(main->findChildren<views::TrackMapForm*>().size(), 1);
    TrackMap& map = form->Map();

    // A line of 12 m square to the path across the simulation's timing line.
    const std::vector<TruthRow> truth = KartTruth();
    const auto lines = KartLines();
    ASSERT_GE(lines.size(), 3u);
    const int at = lines[1].first;
    const TruthRow p = truth[size_t(at)], q = truth[size_t(at + 10)];
    const double len = std::hypot(q.x - p.x, q.y - p.y);
    ASSERT_GT(len, 0.1);
    const double nx = -(q.y - p.y) / len, ny = (q.x - p.x) / len;
    auto screen = [&map](double x, double y) {
        return QPointF(map.XPos2Screen(x, y) / views::kTwipsPerPixel,
                       map.YPos2Screen(x, y) / views::kTwipsPerPixel);
    };
    const QPointF a = screen(p.x + 6 * nx, p.y + 6 * ny), b = screen(p.x - 6 * nx, p.y - 6 * ny);
    ASSERT_GT(QLineF(a, b).length(), 6.0);

    bool named = false;
    user.forms[QStringLiteral("frmAddTrackMarker")] = [&named](QWidget* dialog) {
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Enter details forthe new marker"));
        // No lap marker yet: the box starts ticked.
        EXPECT_TRUE(Child<QCheckBox>(dialog, "UseAsLapCheck")->isChecked());
        Child<QLineEdit>(dialog, "MarkerNameText")->setText(QStringLiteral("Timing Line"));
        named = true;
        Click(dialog, "OKButton");
    };
    Click(form, "AddNewNode");
    EXPECT_TRUE(map.view.AddMarkerMode);
    Drag(form->MapBox(), a, b);
    ASSERT_TRUE(named);
    const int index = CheckForLapMarker();
    ASSERT_GT(index, 0);
    EXPECT_EQ(WithoutHash(Markers().Entries[size_t(index)].Name), "Timing Line");

    // The laps are the simulation's, to the hundredth of a second; the first
    // is left out, its start being the kart crawling over the line from the
    // standing start.
    const RunLaps laps = LapsOfRun(1);
    ASSERT_EQ(laps.laps.size(), lines.size() - 1);
    for (size_t k = 1; k < laps.laps.size(); ++k)
        EXPECT_NEAR(laps.laps[k].time, lines[k + 1].second, 0.021) << k;
    EXPECT_EQ(LapRowsOfTable(table), int(laps.laps.size()));

    // DeleteNode, a click on one end, Yes: the table is as it was.
    Click(form, "DeleteNode");
    EXPECT_TRUE(map.view.DeleteMarkerMode);
    const TrackMarker& m = Markers().Entries[size_t(index)];
    const QPointF end = screen(m.X1, m.Y1);
    user.answers.push_back(QMessageBox::Yes);
    QTest::mouseClick(form->MapBox(), Qt::LeftButton, Qt::NoModifier, end.toPoint());
    QApplication::processEvents();
    EXPECT_TRUE(
        user.questions.contains(QStringLiteral("Do you want to delete the track marker ?")));
    EXPECT_EQ(CheckForLapMarker(), -1);
    EXPECT_FALSE(map.view.DeleteMarkerMode);
    EXPECT_TRUE(LapsOfRun(1).laps.empty());
    EXPECT_EQ(LapRowsOfTable(table), 0);
}

struct ScriptedClock final : Clock {
    double now = 100;
    double SecondsSinceMidnight() override { return now; }
    void DoEvents() override {}
};

// The graph's picture with the cursors of every panel drawn once more (XOR:
// the cursors standing at those rows go away).
QImage WithoutCursors(views::GraphXYForm* graph, Playback& play) {
    for (int i = 0; i < play.RunsInUse(); ++i)
        graph->Cursors().UpDateGraphAni(play.PanelRow(i), play.RunOf(i), i, 2);
    QImage image = graph->Box()->Surface().Image().copy();
    for (int i = 0; i < play.RunsInUse(); ++i)
        graph->Cursors().UpDateGraphAni(play.PanelRow(i), play.RunOf(i), i, 2);
    return image;
}

TEST_F(TrackMapWindow, PlaybackOfTwoRunsMovesEveryView) {
    Start("<mq7> <kart>");
    LoadDemo(true, "demo_mq7_kart.run");
    user.files.push_back(QString::fromStdString(kSamples + "/demo_mq7_kart.run"));
    user.answers.push_back(QMessageBox::Yes);
    Entry("mnuFileLoadRun")->trigger();
    ASSERT_EQ(Store().RunCount, 2);
    ScriptedClock clock;
    Platform withClock = CurrentPlatform();
    withClock.clock = &clock;
    SetPlatform(withClock);

    views::TrackMapForm* form = OpenMap();
    ASSERT_NE(form, nullptr);
    Playback& play = form->Player();
    // "Options": two runs, the dashboards' variables, the dashboards shown.
    auto* tabs = Child<QTabBar>(form, "TrackTab");
    tabs->setCurrentIndex(1);
    EXPECT_TRUE(form->OptionsUp());
    auto* runs = Child<QLineEdit>(form, "RunsDisplayed");
    runs->setText(QStringLiteral("2"));
    emit runs->editingFinished();
    EXPECT_EQ(play.RunsInUse(), 2);
    EXPECT_FALSE(Child<QCheckBox>(form, "AutoPan")->isEnabled());
    const QString speed = QString::fromStdString(Catalogue().RunVars[slot::SpeedKph].Name);
    auto* dial = Child<views::VariableCombo>(form, "DashVar_0");
    dial->Refill();
    dial->setCurrentIndex(dial->findText(speed));
    Click(form, "ShowDash");
    tabs->setCurrentIndex(0);
    EXPECT_FALSE(form->OptionsUp());
    ASSERT_NE(Child<QLineEdit>(form, "RunToDisplay_1"), nullptr);
    ASSERT_NE(Child<QToolButton>(form, "PlayButton_2"), nullptr);  // the common row
    auto* run2 = Child<QLineEdit>(form, "RunToDisplay_1");
    run2->setText(QStringLiteral("2"));
    emit run2->editingFinished();
    EXPECT_EQ(play.RunOf(1), 2);
    ASSERT_TRUE(DashForms().InUse(0));
    ASSERT_TRUE(DashForms().InUse(1));
    EXPECT_EQ(views::DashboardFormOf(1)->windowTitle(),
              QStringLiteral("Virtual Dashboard: demo_mq7_kart"));

    // A graph of speed, the value table.
    Entry("mnuGraphXYplot")->trigger();
    views::GraphXYForm* graph = views::OpenGraphForms().at(0);
    graph->Model().settings.Slots[0].SelYAxis = speed.toStdString();
    graph->Model().SelYAxis_Click(0);
    graph->Regenerate();
    Entry("mnuShowValueTable")->trigger();
    views::ValueTableForm* table = main->findChild<views::ValueTableForm*>();
    ASSERT_NE(table, nullptr);
    EXPECT_TRUE(Entry("mnuShowValueTable")->isChecked());
    QApplication::processEvents();

    // Panel 1 starts 10 s on; then the common row plays both.
    auto* jump = Child<QLineEdit>(form, "JumpToTime_1");
    jump->setText(QStringLiteral("10"));
    emit jump->editingFinished();
    Click(form, "JumpButton_1");
    EXPECT_EQ(play.Panel(1).CurrentIndex, 1000);
    const QImage clean = WithoutCursors(graph, play);
    Click(form, "PlayButton_2");
    ASSERT_TRUE(play.AnyPlaying());
    EXPECT_TRUE(form->StepTimer()->isActive());
    form->StepTimer()->stop();

    int speedRow = 0;
    for (int32_t r = 1; r < table->Table().Rows(); ++r)
        if (table->Table().SlotOfRow(r) == slot::SpeedKph) speedRow = r;
    ASSERT_GT(speedRow, 0);
    const int32_t speedCol = ColumnOf(slot::SpeedKph);
    for (int k = 1; k <= 6; ++k) {
        clock.now += 0.37;
        form->PlayStep();
        const double t = 0.37 * k;
        EXPECT_NEAR(play.Panel(0).CurrentIndex, t * 100, 1.01) << k;
        EXPECT_NEAR(play.Panel(1).CurrentIndex, 1000 + t * 100, 1.01) << k;
        EXPECT_EQ(Child<QLineEdit>(form, "PlayTime_0")->text().toStdString(),
                  play.Panel(0).PlayTime);
        for (int i = 0; i < 2; ++i) {
            const int32_t row = play.PanelRow(i);
            // The map's dot stands at the row's position.
            TrackMap& map = form->Map();
            const float x = RunData(row, ColumnOf(slot::PositionX));
            const float y = RunData(row, ColumnOf(slot::PositionY));
            EXPECT_NEAR(map.view.LastMarkX[size_t(i)], map.XPos2Screen(x, y), 1.0) << k;
            EXPECT_NEAR(map.view.LastMarkY[size_t(i)], map.YPos2Screen(x, y), 1.0) << k;
            // The needles, the value table's column.
            EXPECT_EQ(DashForms().At(i)->DashRow, row) << k;
            EXPECT_EQ(table->Table().At(speedRow, i + 1).text, FormToSD(RunData(row, speedCol), 4))
                << k;
            EXPECT_EQ(table->Grid()->item(speedRow, i + 1)->text().toStdString(),
                      table->Table().At(speedRow, i + 1).text);
        }
        EXPECT_EQ(form->Map().view.MapDrawnFlag, -1);
        // The graph holds its paint and the cursors at the present rows.
        EXPECT_TRUE(WithoutCursors(graph, play) == clean) << k;
    }
    // A press on the map stops both.
    QTest::mouseClick(form->MapBox(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
    EXPECT_FALSE(play.AnyPlaying());
    SetPlatform(platform.AsPlatform());
}

}  // namespace
}  // namespace tl::test
