// The laps and sectors windows on the simulated kart run (three timed laps of
// a 1.03 km circuit): the automatic lap marker and sectors placed from
// FrmLapsSectors, the lap and sector time table filled and compared with the
// simulation's lap times, the table's cell selection, a sector defined by
// hand, and the times window placed where it was left.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

#include <cmath>
#include <fstream>
#include <regex>

#include "core/config_store.h"
#include "platform/qt/window_placement.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "shell/lap_forms.h"
#include "shell_fixture.h"
#include "store/catalogue.h"

namespace tl::test {
namespace {

// The simulation's lap times of a demo run (line crossings of its laps.csv).
std::vector<double> TrueLapTimes(const std::string& run) {
    std::ifstream in(kSamples + "/" + run + ".laps.csv");
    std::vector<double> times;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("line,", 0) != 0) continue;
        const double t = std::stod(line.substr(line.rfind(',') + 1));
        if (t > 0) times.push_back(t);
    }
    return times;
}

class LapsFormsTest : public ShellTest {
  protected:
    void StartKart() {
        Start("<mq7> <kart>");
        // No marker of its own on loading: the form places them.
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceLaps", 0);
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
        LoadDemo(true, "demo_mq7_kart.run");
    }
    static QString Text(QTableWidget* grid, int row, int col) {
        QTableWidgetItem* item = grid->item(row, col);
        return item == nullptr ? QString() : item->text();
    }
};

TEST_F(LapsFormsTest, AutoMarkersFillTheLapAndSectorTable) {
    StartKart();
    ASSERT_EQ(CheckForLapMarker(), -1);
    user.forms[QStringLiteral("FrmLapsSectors")] = [](QWidget* form) {
        EXPECT_EQ(Child<QComboBox>(form, "RunToDisplay")->currentText(),
                  QStringLiteral("demo_mq7_kart"));
        EXPECT_EQ(Child<QComboBox>(form, "LapMarkerCmbo")->count(), 0);
        Child<QLineEdit>(form, "MarkerLengthTxt")->setText(QStringLiteral("500"));
        Click(form, "AutoAddLapMarkerCmd");
        EXPECT_EQ(Child<QLineEdit>(form, "MarkerLengthTxt")->text(), QStringLiteral("200"));
        auto* lap = Child<QComboBox>(form, "LapMarkerCmbo");
        ASSERT_EQ(lap->count(), 1);
        ASSERT_GT(CheckForLapMarker(), 0);
        const QString lapName = QString::fromStdString(Markers().Entries[CheckForLapMarker()].Name);
        EXPECT_TRUE(lapName.startsWith(QStringLiteral("Lap Marker")));
        EXPECT_TRUE(lapName.endsWith(QLatin1Char('#')));
        EXPECT_EQ(lap->currentText() + QLatin1Char('#'), lapName);  // shown without "#"

        Child<QLineEdit>(form, "NumOfAutoSectorsTxt")->setText(QStringLiteral("3"));
        Child<QLineEdit>(form, "MarkerLengthTxt")->setText(QStringLiteral("20"));
        Click(form, "AutoAddSectorsCmd");
        auto* grid = Child<QTableWidget>(form, "SectorDefinitionGrid");
        ASSERT_EQ(grid->rowCount(), 11);  // rows 90 to 100
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(Text(grid, i, 0), QStringLiteral("Sector %1").arg(i + 1));
        EXPECT_EQ(Text(grid, 0, 1), lapName);
        EXPECT_EQ(Text(grid, 0, 2), QStringLiteral("M1"));
        EXPECT_EQ(Text(grid, 2, 2), lapName);
        EXPECT_TRUE(Text(grid, 3, 0).isEmpty());
        Child<QCheckBox>(form, "AutoPlaceSectors")->setChecked(true);
        Child<QLineEdit>(form, "NumOfAutoSectorsTxt")->setText(QStringLiteral("12"));
        Click(form, "OkayBtn");
    };
    Entry("mnuLapsAndSectors")->trigger();
    ASSERT_GT(CheckForLapMarker(), 0);
    // The options are stored as the form limits them.
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "NumOfAutoSectorsTxt"), 10.0f);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors"), 1.0f);
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "MarkerLengthTxt"), 20.0f);

    Entry("MnuLapSectorTimes")->trigger();
    shell::LapSectorTimesForm* times = main->LapSectorTimes();
    ASSERT_NE(times, nullptr);
    ASSERT_TRUE(times->isVisible());
    EXPECT_TRUE(Entry("MnuLapSectorTimes")->isChecked());
    auto* grid = Child<QTableWidget>(times, "LapAndSectorsGrid");
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(Text(grid, 0, 1), QStringLiteral("Sector 1"));
    EXPECT_EQ(Text(grid, 0, 3), QStringLiteral("Sector 3"));
    EXPECT_TRUE(grid->isColumnHidden(4));
    EXPECT_EQ(Text(grid, 1, 0), QStringLiteral("Run \"demo_mq7_kart\""));

    // Each lap between two crossings of the marker is one whole lap of the
    // circuit: its time lies within the simulation's lap times (give or take
    // the change of pace between the line and the marker), the fastest is
    // marked, and its sectors add up to it.
    const std::vector<double> truth = TrueLapTimes("demo_mq7_kart");
    ASSERT_EQ(truth.size(), 3u);
    const double slowest = *std::max_element(truth.begin(), truth.end());
    const double quickest = *std::min_element(truth.begin(), truth.end());
    const std::regex lapText(R"(Lap (\d+), (\d+\.\d\d)s( \(f\))?)");
    int laps = 0, fastestMarks = 0;
    for (int r = 2; r < grid->rowCount(); ++r) {
        const std::string text = Text(grid, r, 0).toStdString();
        std::smatch m;
        if (!std::regex_match(text, m, lapText)) continue;
        ++laps;
        EXPECT_EQ(std::stoi(m[1]), laps);
        const double lapTime = std::stod(m[2]);
        EXPECT_GT(lapTime, quickest - 1.0) << text;
        EXPECT_LT(lapTime, slowest + 1.0) << text;
        if (m[3].matched) ++fastestMarks;
        double sectors = 0;
        for (int c = 1; c <= 3; ++c) sectors += Text(grid, r, c).toDouble();
        EXPECT_NEAR(sectors, lapTime, 0.05) << text;
    }
    EXPECT_GE(laps, 2);
    EXPECT_EQ(fastestMarks, 1);

    // HighLightCells: five at most, red with white text; a selected cell is
    // released and the later ones move up.
    std::vector<std::pair<int, int>> cells;
    for (int r = 2; r < grid->rowCount(); ++r)
        for (int c = 1; c <= 3; ++c)
            if (!Text(grid, r, c).isEmpty()) cells.emplace_back(r, c);
    ASSERT_GE(cells.size(), 6u);
    for (int i = 0; i < 6; ++i) times->ClickCell(cells[i].first, cells[i].second);
    ASSERT_EQ(times->Table().Selected().size(), 5u);
    EXPECT_FALSE(times->Table().IsSelected(cells[5].first, cells[5].second));
    QTableWidgetItem* first = grid->item(cells[0].first, cells[0].second);
    EXPECT_EQ(first->background().color(), QColor(255, 0, 0));
    EXPECT_EQ(first->foreground().color(), QColor(Qt::white));
    times->ClickCell(cells[1].first, cells[1].second);
    ASSERT_EQ(times->Table().Selected().size(), 4u);
    EXPECT_EQ(times->Table().Selected()[1].row, cells[2].first);
    EXPECT_EQ(times->Table().Selected()[1].col, cells[2].second);
    EXPECT_NE(grid->item(cells[1].first, cells[1].second)->background().color(), QColor(255, 0, 0));
    times->ClickCell(1, 0);  // a run's heading is not taken
    EXPECT_EQ(times->Table().Selected().size(), 4u);
    auto* graph = Child<QPushButton>(times, "CmdGenerateGraph");
    ASSERT_NE(graph, nullptr);
    EXPECT_TRUE(graph->isEnabled());  // cells are selected
    EXPECT_FALSE(graph->toolTip().isEmpty());

    // Clearing the sectors empties the table's sector columns at once.
    user.forms[QStringLiteral("FrmLapsSectors")] = [](QWidget* form) {
        Click(form, "ClearAllSectorsBtn");
        EXPECT_TRUE(Text(Child<QTableWidget>(form, "SectorDefinitionGrid"), 0, 0).isEmpty());
        Click(form, "OkayBtn");
    };
    Entry("mnuLapsAndSectors")->trigger();
    EXPECT_TRUE(grid->isColumnHidden(1));
    EXPECT_TRUE(times->Table().Selected().empty());

    // The toggle closes it again.
    Entry("MnuLapSectorTimes")->trigger();
    GuiTest::Settle();
    EXPECT_EQ(main->LapSectorTimes(), nullptr);
}

TEST_F(LapsFormsTest, SectorDefinedByHandAndLapMarkerChosenInTheList) {
    StartKart();
    user.forms[QStringLiteral("FrmLapsSectors")] = [this](QWidget* form) {
        Click(form, "AutoAddLapMarkerCmd");
        ASSERT_GT(CheckForLapMarker(), 0);
        const QString autoLap =
            QString::fromStdString(WithoutHash(Markers().Entries[CheckForLapMarker()].Name));
        Child<QLineEdit>(form, "NumOfAutoSectorsTxt")->setText(QStringLiteral("2"));
        Click(form, "AutoAddSectorsCmd");  // M1, two sectors
        auto* grid = Child<QTableWidget>(form, "SectorDefinitionGrid");
        EXPECT_EQ(Text(grid, 1, 0), QStringLiteral("Sector 2"));
        // The whole lap as a third sector, on the first free line.
        grid->setCurrentCell(2, 0);
        user.forms[QStringLiteral("frmAddSector")] = [](QWidget* add) {
            EXPECT_EQ(add->windowTitle(), QStringLiteral("Add a sector definition"));
            auto* ok = Child<QPushButton>(add, "OkBtn");
            EXPECT_FALSE(ok->isEnabled());
            Child<QLineEdit>(add, "SectorNameText")->setText(QStringLiteral("Whole"));
            auto* start = Child<QComboBox>(add, "StartMarkerCmbo");
            auto* end = Child<QComboBox>(add, "EndMarkerCmbo");
            start->setCurrentIndex(start->findText(QStringLiteral("M1")));
            end->setCurrentIndex(end->findText(QStringLiteral("M1")));
            ASSERT_TRUE(ok->isEnabled());
            Click(add, "OkBtn");
        };
        Click(form, "AddSectorBtn");
        EXPECT_EQ(Text(grid, 2, 0), QStringLiteral("Whole"));
        // M1 becomes the lap marker: "#" moves in the names and the rows.
        auto* lap = Child<QComboBox>(form, "LapMarkerCmbo");
        lap->setCurrentIndex(lap->findText(QStringLiteral("M1")));
        EXPECT_EQ(Text(grid, 2, 1), QStringLiteral("M1#"));
        EXPECT_EQ(Text(grid, 0, 1), autoLap);
        Click(form, "OkayBtn");
    };
    Entry("mnuLapsAndSectors")->trigger();
    const int lap = CheckForLapMarker();
    ASSERT_GT(lap, 0);
    EXPECT_EQ(Markers().Entries[lap].Name, "M1#");
    const MeasurementRow& whole = Measurements().Rows[92];
    EXPECT_EQ(whole.Mode, "Whole");
    EXPECT_EQ(whole.StartMarker, "M1#");
    EXPECT_EQ(whole.VarName, Catalogue().RunVars[slot::Time].Name);

    // The table's "Whole" column holds each lap's time.
    shell::LapSectorTimesForm* times = main->ShowLapSectorTimes();
    auto* grid = Child<QTableWidget>(times, "LapAndSectorsGrid");
    int compared = 0;
    for (int r = 2; r < grid->rowCount(); ++r) {
        const QString lapText = Text(grid, r, 0);
        if (!lapText.startsWith(QStringLiteral("Lap ")) || Text(grid, r, 3).isEmpty()) continue;
        const double lapTime = lapText.section(QStringLiteral(", "), 1)
                                   .remove(QLatin1Char('s'))
                                   .section(QLatin1Char(' '), 0, 0)
                                   .toDouble();
        EXPECT_NEAR(Text(grid, r, 3).toDouble(), lapTime, 0.011) << lapText.toStdString();
        ++compared;
    }
    EXPECT_GE(compared, 2);
}

TEST_F(LapsFormsTest, TimesWindowOpensAtStartWhereItWasLeft) {
    const QList<QRect> screen{QRect(0, 0, 800, 600)};
    // Reachable places stay; a place off every screen comes back whole.
    EXPECT_EQ(qt::KeepOnScreens(QRect(100, 80, 420, 240), screen), QRect(100, 80, 420, 240));
    EXPECT_EQ(qt::KeepOnScreens(QRect(700, 500, 420, 240), screen), QRect(700, 500, 420, 240));
    EXPECT_EQ(qt::KeepOnScreens(QRect(-5000, 3000, 420, 240), screen), QRect(0, 360, 420, 240));
    EXPECT_EQ(qt::KeepOnScreens(QRect(100, -30, 420, 240), screen), QRect(100, 0, 420, 240));
    EXPECT_EQ(qt::KeepOnScreens(QRect(2000, 10, 3000, 2000), screen), QRect(0, 0, 800, 600));
    // On a second screen to the right a place there is kept.
    EXPECT_EQ(qt::KeepOnScreens(QRect(900, 100, 300, 200), {screen[0], QRect(800, 0, 800, 600)}),
              QRect(900, 100, 300, 200));

    // A stored place: the window opens with the frame, in that place.
    StartupOptions options;
    options.appDir = TRACELAB_BIN_DIR;
    options.configDir = root.path().string();
    options.commandLine = "<mq7> <kart>";
    ASSERT_EQ(PrepareInstallation(options), "");
    const std::string cfg = root.path().string() + "/Configuration/MQ7_Tracelab.cfg";
    ASSERT_TRUE(FileReadable(cfg));
    {
        // Written as a previous session left them (the program is not started).
        std::ifstream in(cfg, std::ios::binary);
        std::string kept;
        for (std::string line; std::getline(in, line);)
            if (line.find("LapSectorTimes") == std::string::npos) kept += line + "\n";
        in.close();
        std::ofstream out(cfg, std::ios::binary | std::ios::trunc);
        out << kept
            << "\"ShowLapSectorTimes\",\"1\"\r\n\"LapSectorTimesLeft\",\"60\"\r\n"
               "\"LapSectorTimesTop\",\"70\"\r\n\"LapSectorTimesWidth\",\"430\"\r\n"
               "\"LapSectorTimesHeight\",\"210\"\r\n";
    }
    Start("<mq7> <kart>");
    shell::LapSectorTimesForm* times = main->LapSectorTimes();
    ASSERT_NE(times, nullptr);
    EXPECT_TRUE(times->isVisible());
    EXPECT_EQ(times->pos(), QPoint(60, 70));
    EXPECT_EQ(times->size(), QSize(430, 210));

    // A place left on a screen that is gone: the window comes back onto one.
    Entry("MnuLapSectorTimes")->trigger();
    GuiTest::Settle();
    ASSERT_EQ(main->LapSectorTimes(), nullptr);
    SetConfig(cfg, "LapSectorTimesLeft", -5000);
    SetConfig(cfg, "LapSectorTimesTop", 4000);
    Entry("MnuLapSectorTimes")->trigger();
    times = main->LapSectorTimes();
    ASSERT_NE(times, nullptr);
    ASSERT_FALSE(qt::ScreenAreas().isEmpty());
    EXPECT_TRUE(qt::ScreenAreas().front().contains(QRect(times->pos(), times->size())));

    // Moved, then the program closes: the new place and the Show key are kept.
    times->move(120, 90);
    main->ExitProgram();
    GuiTest::Settle();
    EXPECT_EQ(GetConfig(cfg, "ShowLapSectorTimes"), 1.0f);
    EXPECT_EQ(GetConfig(cfg, "LapSectorTimesLeft"), 120.0f);
    EXPECT_EQ(GetConfig(cfg, "LapSectorTimesTop"), 90.0f);
    EXPECT_EQ(GetConfig(cfg, "LapSectorTimesWidth"), 430.0f);
}

}  // namespace
}  // namespace tl::test
