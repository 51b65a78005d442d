// The bar chart, the measurements table and the performance table as a user
// opens them from the Results menu and the toolbar on the demo runs: what
// they show against the runs' own samples, their copies, the numbers charts
// take, a measurement added through its dialog, cells sent to a graph, a
// bar chart and the map, and the performance options kept between uses.
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTableWidget>
#include <QTest>
#include <QToolBar>
#include <algorithm>
#include <numeric>

#include "core/support.h"
#include "results/laps.h"
#include "results/measurement_table.h"
#include "results/performance.h"
#include "results/track_markers.h"
#include "shell/measurements_forms.h"
#include "shell/performance_form.h"
#include "shell_fixture.h"
#include "store/catalogue.h"
#include "views/qt/bar_chart_form.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/surface_box.h"
#include "views/track_map.h"
#include "views/view_forms.h"

namespace tl::test {
namespace {

class ResultsWindows : public ShellTest {
  protected:
    template <class Form>
    Form* Opened(const std::function<void()>& open) {
        const auto before = main->findChildren<Form*>();
        open();
        QApplication::processEvents();
        for (Form* form : main->findChildren<Form*>())
            if (!before.contains(form)) return form;
        return nullptr;
    }
    QString Speed() const {
        return QString::fromStdString(Catalogue().RunVars[slot::SpeedKph].Name);
    }
};

float At(int32_t row, int slotNumber) {
    return Store().RunData(row, ColumnOf(slotNumber));
}

TEST_F(ResultsWindows, BarChartCountsTheRunsSpeedsAndCopiesThem) {
    Start("<hx40><car>");
    LoadDemo(true);
    auto* chart = Opened<views::BarChartForm>([this] { Entry("mnuGraphHistogram")->trigger(); });
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chart->objectName(), QStringLiteral("frmHistoGraph"));
    EXPECT_EQ(chart->windowTitle(), QStringLiteral("Bar Chart 1"));
    auto* tabs = Child<QTabBar>(chart, "ChartTab");
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("Bar Chart"));

    // "Setup": speed chosen from the list as it opens, twelve bars.
    tabs->setCurrentIndex(1);
    auto* var = Child<views::VariableCombo>(chart, "DisplayVar");
    ASSERT_NE(var, nullptr);
    var->showPopup();
    var->hidePopup();
    ASSERT_GE(var->findText(Speed()), 0);
    var->setCurrentIndex(var->findText(Speed()));
    auto* bins = Child<QLineEdit>(chart, "BinCount");
    bins->setText(QStringLiteral("12"));
    emit bins->textEdited(bins->text());
    // Axes 1 to 4 stay covered while there is one chart.
    EXPECT_FALSE(Child<QWidget>(chart, "AxisRun_1")->isVisibleTo(chart));
    EXPECT_TRUE(Child<QWidget>(chart, "HideMultipleAxis")->isVisibleTo(chart));
    tabs->setCurrentIndex(0);

    // Every sample of the run in its bin (an edge in the lower one), as a
    // share of all of them.
    const BarChart& c = chart->Chart();
    ASSERT_EQ(c.Bins, 12);
    const RunRecord& run = Store().RunInfo[1];
    float lo = 1e20f, hi = -1e20f;
    for (int32_t r = 0; r <= Store().RunData.UpperRow(); ++r) {
        lo = std::min(lo, At(r, slot::SpeedKph));
        hi = std::max(hi, At(r, slot::SpeedKph));
    }
    EXPECT_EQ(c.DispMin, lo);
    EXPECT_EQ(c.DispMax, hi);
    std::vector<double> counts(13, 0.0);
    int total = 0;
    for (int32_t r = run.RunStart; r <= run.RunEnd; ++r) {
        const float v = At(r, slot::SpeedKph);
        for (int b = 1; b <= 12; ++b) {
            if (c.BinEdges[b] <= v && v <= c.BinEdges[b + 1]) {
                counts[b] += 1;
                ++total;
                break;
            }
        }
    }
    ASSERT_GT(total, 1000);
    for (int b = 1; b <= 12; ++b)
        EXPECT_NEAR(c.BinCounts[0][b], counts[b] / total * 100.0, 1e-3) << b;

    // Ctrl+C on the picture: the bins as the chart's copy text.
    QApplication::clipboard()->clear();
    QTest::keyClick(chart->Box(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), c.ClipboardText());
    EXPECT_NE(QApplication::clipboard()->text().count(QStringLiteral("\r\n")), 0);

    // The toolbar's key opens chart 2; after chart 1 closes, the next new
    // chart is 1 again.
    QAction* key = main->Toolbar()->findChild<QAction*>(QStringLiteral("HT"));
    ASSERT_NE(key, nullptr);
    EXPECT_TRUE(key->isEnabled());
    auto* second = Opened<views::BarChartForm>([key] { key->trigger(); });
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->windowTitle(), QStringLiteral("Bar Chart 2"));
    chart->parentWidget()->close();
    Settle();
    auto* third = Opened<views::BarChartForm>([this] { Entry("mnuGraphHistogram")->trigger(); });
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(third->Number(), 1);
    EXPECT_EQ(BarChartForms().Count(), 2);
}

class MeasurementsWindow : public ResultsWindows {
  protected:
    void SetUp() override {
        ResultsWindows::SetUp();
        Start("<mq7> <kart>");
        LoadDemo(true, "demo_mq7_kart.run");
        AutoAddLapMarkerCmd(1, "20");
        laps = LapsOfRun(1);
        ASSERT_GE(laps.laps.size(), 2u);
        marker = Markers().Entries[static_cast<size_t>(CheckForLapMarker())].Name;
        ASSERT_FALSE(marker.empty());
    }
    // The grid rows of the laps, in order.
    std::vector<int> LapRows() const {
        std::vector<int> rows;
        const TableGrid& g = table->Table().Grid();
        for (int r = 1; r < g.rows; ++r)
            if (g.Text(r, 0).rfind("Lap ", 0) == 0) rows.push_back(r);
        return rows;
    }
    RunLaps laps;
    std::string marker;
    shell::MeasurementsForm* table = nullptr;
};

TEST_F(MeasurementsWindow, AddedMeasurementShowsEachLapsValueAndGoesToAGraph) {
    table = Opened<shell::MeasurementsForm>([this] { Entry("Table")->trigger(); });
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(main->Measurements(), table);
    EXPECT_TRUE(main->MeasTableOpen());
    auto* grid = Child<QTableWidget>(table, "BPGrid");
    ASSERT_NE(grid, nullptr);

    // "Add" on column 1: the dialog hides "Until" for "Value of" and writes
    // the highest speed over a whole lap (the lap marker to itself).
    const QString speed = Speed();
    const QString name = QString::fromStdString(marker);
    user.forms[QStringLiteral("frmAddMeasurement")] = [speed, name](QWidget* form) {
        EXPECT_EQ(form->windowTitle(), QStringLiteral("Add Measurement"));
        auto* mode = Child<QComboBox>(form, "MeasMode");
        mode->setCurrentText(QStringLiteral("Value of"));
        EXPECT_FALSE(Child<QWidget>(form, "EndNode")->isVisibleTo(form));
        mode->setCurrentText(QStringLiteral("Maximum of"));
        EXPECT_TRUE(Child<QWidget>(form, "EndNode")->isVisibleTo(form));
        Child<QComboBox>(form, "MeasVar")->setCurrentText(speed);
        Child<QComboBox>(form, "StartNode")->setCurrentText(name);
        Child<QComboBox>(form, "EndNode")->setCurrentText(name);
        Click(form, "OkayBtn");
    };
    table->ClickCell(0, 1);
    Click(table, "AddMeasurementBtn");
    QApplication::processEvents();
    ASSERT_TRUE(user.watcher.Saw(QStringLiteral("frmAddMeasurement")));
    EXPECT_EQ(Measurements().Rows[1].Mode, "Maximum of");
    ASSERT_NE(grid->item(0, 1), nullptr);
    EXPECT_EQ(grid->item(0, 1)->text(), QStringLiteral("Maximum of ") + speed +
                                            QStringLiteral(" from ") + name +
                                            QStringLiteral(" to ") + name);
    // Each lap's cell is the highest speed between its two crossings.
    const std::vector<int> rows = LapRows();
    ASSERT_GE(rows.size(), 2u);
    for (size_t k = 0; k < 2; ++k) {
        const LapInfo& lap = laps.laps[k];
        float top = -1e20f;
        for (int32_t r = lap.startRow; r <= lap.endRow; ++r)
            top = std::max(top, At(r, slot::SpeedKph));
        ASSERT_NE(grid->item(rows[k], 1), nullptr) << k;
        EXPECT_EQ(grid->item(rows[k], 1)->text().toStdString(), FormToSD(top, 4)) << k;
    }

    // Two cells selected (drawn in the selection colour) go to a new graph
    // whose slots cover the two laps.
    table->ClickCell(rows[0], 1);
    table->ClickCell(rows[1], 1);
    EXPECT_EQ(grid->item(rows[0], 1)->background().color(), QColor(255, 0, 0));
    auto* graph = Opened<views::GraphXYForm>([this] { Click(table, "GenerateGraph"); });
    ASSERT_NE(graph, nullptr);
    const GraphModel& g = graph->Model();
    EXPECT_EQ(g.ActiveSlotCount(), 2);
    for (int k = 0; k < 2; ++k) {
        const GraphSlotSettings& s = g.settings.Slots[k];
        EXPECT_EQ(s.SelYAxis, speed.toStdString());
        EXPECT_EQ(s.AxisRun, "1");
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMin)), At(laps.laps[k].startRow, slot::Time));
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMax)), At(laps.laps[k].endRow, slot::Time));
        EXPECT_GT(g.axis[k].PointCount, 100) << k;
    }

    // Ctrl+C on the grid: the table's copy text.
    QApplication::clipboard()->clear();
    QTest::keyClick(grid, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), table->Table().CopyText());
}

TEST_F(MeasurementsWindow, SpreadGoesToABarChartAndCellsToTheMap) {
    ASSERT_TRUE(WriteMeasurementRow(1, "Std Dev of", Catalogue().RunVars[slot::AccelLat].Name,
                                    marker, marker));
    table = main->ShowMeasurements();
    const std::vector<int> rows = LapRows();
    ASSERT_GE(rows.size(), 2u);
    table->ClickCell(rows[0], 1);
    table->ClickCell(rows[1], 1);
    auto* chart = Opened<views::BarChartForm>([this] { Click(table, "GenerateGraph"); });
    ASSERT_NE(chart, nullptr);
    BarChart& c = chart->Chart();
    EXPECT_EQ(c.settings.MultiBar, 1);
    EXPECT_EQ(c.settings.Constrain, 1);
    EXPECT_EQ(c.settings.DisplayVar, Catalogue().RunVars[slot::AccelLat].Name);
    // Counted, each axis holds the samples strictly inside its lap's times.
    c.settings.PercentFreq = 0;
    chart->Regenerate();
    for (int k = 0; k < 2; ++k) {
        EXPECT_EQ(c.settings.Axes[k].AxisEnabled, 1);
        const double counted =
            std::accumulate(c.BinCounts[k].begin() + 1, c.BinCounts[k].end(), 0.0);
        EXPECT_EQ(counted, laps.laps[k].endRow - laps.laps[k].startRow - 1) << k;
    }

    // "Highlight" with the map open: the two laps are its wide stretches.
    main->ShowTrackMap();
    Click(table, "HighLightOnMap");
    const auto& sections = HighlightSections();
    for (int k = 0; k < 2; ++k) {
        EXPECT_TRUE(sections[k].active) << k;
        EXPECT_EQ(sections[k].run, 1);
        EXPECT_EQ(sections[k].firstRow, laps.laps[k].startRow);
        EXPECT_EQ(sections[k].lastRow, laps.laps[k].endRow);
    }
    EXPECT_FALSE(sections[2].active);

    // Two columns at once are refused with the message.
    ASSERT_TRUE(WriteMeasurementRow(2, "Maximum of", Speed().toStdString(), marker, marker));
    Click(table, "ReprocessStats");
    table->ClickCell(rows[0], 2);
    EXPECT_EQ(Opened<views::GraphXYForm>([this] { Click(table, "GenerateGraph"); }), nullptr);
    EXPECT_TRUE(user.watcher.Saw(QStringLiteral("frmVQMsgBox")));
}

TEST_F(ResultsWindows, PerformanceTableShowsTheEnginesGridsAndKeepsItsOptions) {
    Start("<hx40><car>");
    LoadDemo(true);
    auto* form = Opened<shell::PerformanceForm>([this] { Entry("mnuPerfTable")->trigger(); });
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(main->PerfTableOpen());
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Calculated Performance Table"));
    EXPECT_TRUE(Child<QRadioButton>(form, "KphOption")->isChecked());
    const QString end = Child<QLineEdit>(form, "EndTimeTxt")->text();
    ASSERT_GT(end.toDouble(), 60.0);

    Child<QTabBar>(form, "SSTab")->setCurrentIndex(shell::PerformanceForm::TimesPage);
    const PerformanceTables truth =
        CalculatePerformance(1, "0", end.toStdString(), form->TypedOptions());
    ASSERT_TRUE(truth.ok);
    auto* accel = Child<QTableWidget>(form, "AccelGrid");
    ASSERT_EQ(accel->rowCount(), truth.accel.rows);
    ASSERT_GT(accel->rowCount(), 11);
    // 0 to 100 kph: row 11, column 1, a time and not "na".
    EXPECT_EQ(accel->item(11, 1)->text().toStdString(), truth.accel.Text(11, 1));
    EXPECT_GT(GetVal(truth.accel.Text(11, 1)), 3.0);
    EXPECT_EQ(accel->item(11, 0)->text(), QStringLiteral("100 kph"));
    EXPECT_EQ(accel->item(11, 1)->foreground().color(), QColor(0, 0, 255));
    auto* distance = Child<QTableWidget>(form, "DistanceGrid");
    EXPECT_EQ(distance->item(11, 1)->text().toStdString(), truth.distance.Text(11, 1));
    EXPECT_EQ(Child<QPlainTextEdit>(form, "UserSummary")->toPlainText(),
              QString::fromStdString(truth.summary).remove(QLatin1Char('\r')));

    Click(form, "CopyToExcelBtn");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), PerformanceGridText(truth.accel));
    form->SSTab_Click(shell::PerformanceForm::DistancesPage);
    Click(form, "CopyToExcelBtn");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), PerformanceGridText(truth.distance));

    // Refused times leave the grids as they were, with the message.
    form->SSTab_Click(shell::PerformanceForm::TestPage);
    Child<QLineEdit>(form, "StartTimeTxt")->setText(QStringLiteral("50"));
    Child<QLineEdit>(form, "EndTimeTxt")->setText(QStringLiteral("10"));
    form->SSTab_Click(shell::PerformanceForm::TimesPage);
    EXPECT_TRUE(user.watcher.Saw(QStringLiteral("frmVQMsgBox")));
    EXPECT_EQ(accel->item(11, 1)->text().toStdString(), truth.accel.Text(11, 1));

    // mph and assembled timings are there again the next time.
    Child<QRadioButton>(form, "MphOption")->setChecked(true);
    Child<QRadioButton>(form, "AssembledDataOption")->setChecked(true);
    form->parentWidget()->close();
    Settle();
    EXPECT_FALSE(main->PerfTableOpen());
    shell::PerformanceForm* again = main->ShowPerformance();
    EXPECT_TRUE(Child<QRadioButton>(again, "MphOption")->isChecked());
    EXPECT_TRUE(Child<QRadioButton>(again, "AssembledDataOption")->isChecked());
}

}  // namespace
}  // namespace tl::test
