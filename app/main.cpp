// tracelab: the windowed program.
//
// The original received its command line as one string and looked for the
// tokens (<hx40>, <debug>, <f:path>, ...) anywhere in it. Here the arguments
// are joined back into that one string, after the program's own options are
// taken out:
//   --config-dir DIR     the configuration root (BuildOptions.cfg,
//                        Configuration/, the log) in place of the default;
//   --quit-after-start   end as soon as start-up is over (smoke tests); also
//                        when TRACELAB_QUIT_AFTER_START is set. Modal forms
//                        shown during the start (the first-run form, messages)
//                        are closed as if the user had pressed their default
//                        button, and their text is echoed on stderr;
//   --screenshot PATH    as --quit-after-start, saving a picture of the main
//                        window (and the forms over it) to PATH first, and of
//                        the start banner and each modal form closed on the
//                        way to PATH with "-<form name>" before its extension;
//   --run-manager        opens the run manager once the start is over (for
//                        pictures of a loaded run);
//   --lap-times          opens the lap and sector time table once the start
//                        is over; run 1 is processed if it was not, and when
//                        it has no lap marker yet, the automatic lap marker
//                        and sectors are placed on it as the buttons of "Laps
//                        and Sectors" place them;
//   --graph VAR[,VAR]    opens a graph once the start is over with these Y
//                        variables (up to five, each its own slot and
//                        colour) against time; run 1 is processed if it
//                        was not;
//   --graph-x MIN,MAX    with --graph, the typed range of the X axis;
//   --lap-overlay        as --lap-times, then selects the first two laps of
//                        run 1 in the table and presses its Graph button
//                        (frmSectorGraphSelector takes its remembered
//                        choice, speed over distance at first);
//   --load PATH          loads one more run file once the start is over (as
//                        the recent-files list does);
//   --map                opens the track map once the start is over (runs
//                        processed as for --graph), the whole track shown;
//   --map-colour VAR     with --map, the variable the paths are coloured by;
//   --runs N             with --map, the number of runs displayed;
//   --dash V1,V2,V3,V4   with --map, the dashboards' four variables, and a
//                        dashboard shown for each panel;
//   --value-table        opens the variable values table;
//   --play-to SECONDS    with --map, every panel jumps to this run time, as
//                        the common row's jump button does (a moment of
//                        playback stood still: dots, needles, cursors);
//   --bar-chart VAR      opens a bar chart of VAR once the start is over
//                        (runs processed as for --graph); with more than one
//                        run loaded, one chart per run (up to five) side by
//                        side;
//   --measurements       opens the measurements table (runs processed and
//                        lap-marked as for --lap-times) with a few
//                        measurements over the whole lap and the first
//                        sector: the highest and lowest speed, the spread of
//                        the lateral acceleration;
//   --measurements-graph COL  as --measurements, then selects the first two
//                        cells of column COL and presses its Graph button;
//   --performance        opens the performance table on its time grid (runs
//                        processed as for --graph);
//   --tab N              the page (from 0) the window of --bar-chart or
//                        --performance is shown on;
//   --port DEVICE        stores DEVICE (a serial device or the pseudo-terminal
//                        of tracelab-logger-emu) as the logger's port, as a
//                        path typed into "Set Serial Port" is stored;
//   --menu CONTROL       once the rest is done, runs the menu entry of that
//                        control name (mnuConnectLogger, mnuLoggerDownload,
//                        ...), as a click on it does; may be repeated. With
//                        --screenshot a modal form it brings up is pictured
//                        once it has stood a second and a half (long enough
//                        for a form that talks to the logger as it opens).
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPainter>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "link/serial_link.h"
#include "platform/qt/qt_platform.h"
#include "platform/qt/qt_serial_port.h"
#include "results/laps.h"
#include "results/measurements_form.h"
#include "results/track_markers.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "road/startup.h"
#include "shell/main_form.h"
#include "shell/qt_startup_ui.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/playback.h"
#include "views/qt/bar_chart_form.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/view_links.h"

namespace {

struct ProgramOptions {
    std::string configDir;
    std::string commandLine;
    std::string screenshotPath;
    bool quitAfterStart = false;
    bool runManager = false;
    bool lapTimes = false;
    bool lapOverlay = false;
    QStringList graphVars;
    QStringList graphX;
    QStringList loads;
    bool map = false;
    QString mapColour;
    QString runs;
    QStringList dashVars;
    bool valueTable = false;
    QString playTo;
    QString barChart;
    bool measurements = false;
    int measurementsGraph = 0;
    bool performance = false;
    int tab = -1;
    QString port;
    QStringList menus;
};

ProgramOptions ParseArguments(const QStringList& arguments) {
    ProgramOptions options;
    QStringList rest;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& arg = arguments[i];
        if (arg == QLatin1String("--config-dir") && i + 1 < arguments.size()) {
            options.configDir = arguments[++i].toStdString();
        } else if (arg.startsWith(QLatin1String("--config-dir="))) {
            options.configDir = arg.mid(13).toStdString();
        } else if (arg == QLatin1String("--run-manager")) {
            options.runManager = true;
        } else if (arg == QLatin1String("--lap-times")) {
            options.lapTimes = true;
        } else if (arg == QLatin1String("--lap-overlay")) {
            options.lapTimes = true;
            options.lapOverlay = true;
        } else if (arg == QLatin1String("--graph") && i + 1 < arguments.size()) {
            options.graphVars = arguments[++i].split(QLatin1Char(','), Qt::SkipEmptyParts);
        } else if (arg == QLatin1String("--load") && i + 1 < arguments.size()) {
            options.loads << arguments[++i];
        } else if (arg == QLatin1String("--map")) {
            options.map = true;
        } else if (arg == QLatin1String("--map-colour") && i + 1 < arguments.size()) {
            options.mapColour = arguments[++i];
        } else if (arg == QLatin1String("--runs") && i + 1 < arguments.size()) {
            options.runs = arguments[++i];
        } else if (arg == QLatin1String("--dash") && i + 1 < arguments.size()) {
            options.dashVars = arguments[++i].split(QLatin1Char(','));
        } else if (arg == QLatin1String("--value-table")) {
            options.valueTable = true;
        } else if (arg == QLatin1String("--play-to") && i + 1 < arguments.size()) {
            options.playTo = arguments[++i];
        } else if (arg == QLatin1String("--graph-x") && i + 1 < arguments.size()) {
            options.graphX = arguments[++i].split(QLatin1Char(','));
        } else if (arg == QLatin1String("--bar-chart") && i + 1 < arguments.size()) {
            options.barChart = arguments[++i];
        } else if (arg == QLatin1String("--measurements")) {
            options.measurements = true;
        } else if (arg == QLatin1String("--measurements-graph") && i + 1 < arguments.size()) {
            options.measurements = true;
            options.measurementsGraph = arguments[++i].toInt();
        } else if (arg == QLatin1String("--performance")) {
            options.performance = true;
        } else if (arg == QLatin1String("--tab") && i + 1 < arguments.size()) {
            options.tab = arguments[++i].toInt();
        } else if (arg == QLatin1String("--port") && i + 1 < arguments.size()) {
            options.port = arguments[++i];
        } else if (arg == QLatin1String("--menu") && i + 1 < arguments.size()) {
            options.menus << arguments[++i];
        } else if (arg == QLatin1String("--quit-after-start")) {
            options.quitAfterStart = true;
        } else if (arg == QLatin1String("--screenshot") && i + 1 < arguments.size()) {
            options.screenshotPath = arguments[++i].toStdString();
            options.quitAfterStart = true;
        } else {
            rest << arg;
        }
    }
    options.commandLine = rest.join(QLatin1Char(' ')).toStdString();
    if (!qEnvironmentVariableIsEmpty("TRACELAB_QUIT_AFTER_START")) options.quitAfterStart = true;
    return options;
}

// In unattended runs, answers whatever modal form is up with its default
// button (or closes it), echoing its caption and text on stderr. A form is
// answered on the poll after the one that first saw it, from inside its own
// event loop, as a click would be.
// PATH with "-<form name>" before its extension.
QString FormPicturePath(const std::string& screenshotPath, const QString& formName) {
    const QFileInfo info(QString::fromStdString(screenshotPath));
    return info.dir().filePath(info.completeBaseName() + QLatin1Char('-') + formName +
                               QLatin1Char('.') + info.suffix());
}

void AnswerModalForms(const std::string& screenshotPath) {
    static QPointer<QWidget> pending;
    static bool bannerTaken = false;
    if (!screenshotPath.empty() && !bannerTaken) {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top->objectName() == QLatin1String("frmStartBanner") && top->isVisible()) {
                top->grab().save(FormPicturePath(screenshotPath, top->objectName()));
                bannerTaken = true;
            }
        }
    }
    static QElapsedTimer standing;
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr) return;
    if (modal != pending.data()) {
        pending = modal;
        standing.start();
        return;
    }
    if (standing.elapsed() < 1500) return;
    pending.clear();
    if (!screenshotPath.empty()) {
        modal->grab().save(FormPicturePath(screenshotPath, modal->objectName()));
    }
    auto* box = qobject_cast<QMessageBox*>(modal);
    QString text;
    if (box != nullptr) {
        text = box->text();
    } else if (auto* edit = modal->findChild<QPlainTextEdit*>(QStringLiteral("MsgText"))) {
        text = edit->toPlainText();
    }
    std::fprintf(stderr, "tracelab: closing %s \"%s\": %s\n", qPrintable(modal->objectName()),
                 qPrintable(modal->windowTitle()), qPrintable(text));
    if (box != nullptr && box->defaultButton() != nullptr) {
        box->defaultButton()->click();
    } else if (auto* dialog = qobject_cast<QDialog*>(modal)) {
        dialog->accept();
    } else {
        modal->close();
    }
}

// The main window with the program's other visible windows painted over it
// where they lie, as the screen shows them.
bool SaveScreenshot(QWidget* mainWindow, const QString& path) {
    QPixmap picture = mainWindow->grab();
    QPainter painter(&picture);
    const QPoint origin = mainWindow->mapToGlobal(QPoint(0, 0));
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top == mainWindow || !top->isVisible()) continue;
        painter.drawPixmap(top->mapToGlobal(QPoint(0, 0)) - origin, top->grab());
    }
    painter.end();
    return picture.save(path);
}

}  // namespace

// --map and its companions: the map laid out beside what else is open, the
// panels, the colour, the dashboards and the jump applied as the user would
// set them on "Options" and the panels.
void OpenMap(const ProgramOptions& program, tl::shell::MainForm* main) {
    const QList<QMdiSubWindow*> before = main->MdiArea()->subWindowList();
    tl::views::TrackMapForm* form = main->ShowTrackMap();
    tl::TrackMap& map = form->Map();
    tl::Playback& playback = form->Player();
    if (!program.mapColour.isEmpty()) map.settings.MapColorVar = program.mapColour.toStdString();
    if (!program.runs.isEmpty()) {
        playback.RunsDisplayed = program.runs.toStdString();
        playback.RunsDisplayed_Change();
        // Panel i shows run i + 1 where there is one.
        for (int i = 0; i < playback.RunsInUse(); ++i) {
            playback.Panel(i).RunToDisplay = std::to_string(std::min(i + 1, tl::Store().RunCount));
            playback.RunToDisplay_Change(i);
        }
    }
    // The map on the left; a graph opened before it takes the right.
    const QSize room = main->MdiArea()->viewport()->size();
    QWidget* mapWindow = form->parentWidget();
    const bool beside = !before.isEmpty();
    mapWindow->setGeometry(0, 0, beside ? room.width() * 11 / 20 : std::min(room.width(), 1000),
                           room.height());
    // With the value table, the graph leaves it the right-hand edge.
    const int tableWidth = program.valueTable ? 290 : 0;
    for (QMdiSubWindow* sub : before) {
        sub->setGeometry(mapWindow->width(), 0, room.width() - mapWindow->width() - tableWidth,
                         program.dashVars.isEmpty() ? room.height() : room.height() * 11 / 20);
    }
    QApplication::processEvents();
    form->PanelsToMap();
    map.ShowWholeTrack_Click();
    form->PanelsFromMap();
    form->RedrawMap();
    if (!program.dashVars.isEmpty()) {
        for (int k = 0; k < program.dashVars.size() && k < 4; ++k)
            playback.DashVar[size_t(k)] = program.dashVars[k].trimmed().toStdString();
        playback.ShowDash_Click();
        // The dashboards under the graph, side by side.
        int x = mapWindow->width();
        for (QMdiSubWindow* sub : main->MdiArea()->subWindowList()) {
            if (sub->widget() == nullptr ||
                sub->widget()->objectName() != QLatin1String("frmVirtualDash"))
                continue;
            const int w = (room.width() - mapWindow->width()) / std::max(1, playback.RunsInUse());
            const int top = room.height() * 11 / 20;
            sub->setGeometry(x, top, w, room.height() - top);
            x += w;
        }
    }
    if (!program.playTo.isEmpty()) {
        const int all = playback.RunsInUse();
        playback.CommonJumpToTime = program.playTo.toStdString();
        for (int i = 0; i < all; ++i) playback.Panel(i).JumpToTime = program.playTo.toStdString();
        form->PanelsToMap();
        playback.JumpButton_Click(all);
    }
    form->RefreshControls();
    if (program.valueTable) {
        tl::views::ValueTableForm* table = main->ShowValueTable();
        // The table at the frame's right-hand edge beside the graph, with
        // each panel's row.
        const QPoint corner = main->MdiArea()->viewport()->mapToGlobal(QPoint(0, 0));
        const int height = program.dashVars.isEmpty() ? room.height() : room.height() * 11 / 20;
        table->resize(tableWidth, height);
        table->move(corner + QPoint(room.width() - tableWidth, 0));
        table->raise();
        for (int i = 0; i < playback.RunsInUse(); ++i)
            tl::views::Hub().MoveValueTable(playback.PanelRow(i), i, playback.RunsInUse());
    }
    tl::views::Hub().RefreshViews();
}

// --bar-chart: the variable on axis 0, or one axis per loaded run.
void OpenBarChart(const ProgramOptions& program, tl::shell::MainForm* main) {
    tl::views::BarChartForm* form = main->NewBarChart();
    tl::BarChart& chart = form->Chart();
    chart.settings.DisplayVar = program.barChart.toStdString();
    const int runs = std::min<int>(tl::Store().RunCount, tl::kBarChartAxes);
    if (runs > 1) {
        chart.settings.MultiBar = 1;
        for (int k = 0; k < runs; ++k) {
            chart.settings.Axes[size_t(k)].AxisEnabled = 1;
            chart.settings.Axes[size_t(k)].AxisRun = std::to_string(k + 1);
            chart.AxisRun_Change(k);
        }
    }
    form->ChartTab_Click(0);
    if (program.tab > 0) form->ChartTab_Click(program.tab);
}

// --measurements: three rows over the whole lap and one over the first
// sector, written as frmAddMeasurement writes them.
void OpenMeasurements(const ProgramOptions& program, tl::shell::MainForm* main) {
    std::vector<std::string> markers;
    for (int i = 1; i <= tl::kLastMarkerEntry; ++i) {
        if (!tl::Markers().Entries[size_t(i)].Name.empty())
            markers.push_back(tl::Markers().Entries[size_t(i)].Name);
    }
    if (!markers.empty()) {
        const auto& vars = tl::Catalogue().RunVars;
        const std::string& lap = markers.front();
        const std::string& sector = markers.size() > 1 ? markers[1] : lap;
        tl::WriteMeasurementRow(1, "Maximum of", vars[tl::slot::SpeedKph].Name, lap, lap);
        tl::WriteMeasurementRow(2, "Minimum of", vars[tl::slot::SpeedKph].Name, lap, lap);
        tl::WriteMeasurementRow(3, "Std Dev of", vars[tl::slot::AccelLat].Name, lap, lap);
        tl::WriteMeasurementRow(4, "Average of", vars[tl::slot::SpeedKph].Name, lap, sector);
        tl::WriteMeasurementRow(5, "Value of", vars[tl::slot::SpeedKph].Name, sector, "");
    }
    tl::shell::MeasurementsForm* table = main->ShowMeasurements();
    if (program.measurementsGraph <= 0) return;
    const tl::TableGrid& grid = table->Table().Grid();
    for (int row = 1, taken = 0; row < grid.rows && taken < 2; ++row) {
        if (program.measurementsGraph >= grid.cols ||
            grid.Text(row, program.measurementsGraph).empty())
            continue;
        table->ClickCell(row, program.measurementsGraph);
        ++taken;
    }
    // The table along the top, the graph under it.
    QWidget* tableWindow = table->parentWidget();
    const QSize room = main->MdiArea()->viewport()->size();
    tableWindow->setGeometry(0, 0, room.width(), room.height() * 2 / 5);
    if (QWidget* graph = table->GenerateGraph()) {
        graph->parentWidget()->setGeometry(0, room.height() * 2 / 5, room.width(),
                                           room.height() - room.height() * 2 / 5);
    }
}

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tracelab"));
    const ProgramOptions program = ParseArguments(QApplication::arguments());

    tl::StartupOptions options;
    options.appDir = QDir(QApplication::applicationDirPath()).absolutePath().toStdString();
    options.configDir = program.configDir;
    options.commandLine = program.commandLine;

    const std::string installError = tl::PrepareInstallation(options);
    if (!installError.empty()) {
        if (program.quitAfterStart) {
            std::fprintf(stderr, "tracelab: %s\n", installError.c_str());
        } else {
            QMessageBox::critical(nullptr, QStringLiteral("Tracelab"),
                                  QString::fromStdString(installError));
        }
        return 1;
    }

    tl::qt::QtPlatform& platform = tl::qt::InstallQtPlatform();
    tl::qt::InstallQtSerialPort();
    tl::shell::QtStartupUi ui(platform);

    QTimer answerer;
    if (program.quitAfterStart) {
        QObject::connect(&answerer, &QTimer::timeout,
                         [&program] { AnswerModalForms(program.screenshotPath); });
        answerer.start(50);
    }

    if (!tl::Main(options, ui)) return 0;
    if (!ui.MainFormLoaded()) return 0;
    if (program.runManager) ui.MainWindow()->ShowRunManager();
    tl::RunStore& store = tl::Store();
    if (!program.loads.isEmpty()) ui.MainWindow()->LoadRunFiles(program.loads);
    if (program.lapTimes || !program.graphVars.isEmpty() || program.map ||
        !program.barChart.isEmpty() || program.measurements || program.performance) {
        // A run loaded but not processed (the question answered No) has no
        // times yet: each such run is processed first.
        bool processed = false;
        for (int32_t run = 1; run <= store.RunCount; ++run) {
            const tl::RunRecord& r = store.RunInfo[run];
            if (r.RunEnd > r.RunStart &&
                tl::RunData(r.RunEnd, tl::ColumnOf(tl::slot::Time)) == 0.0f) {
                tl::ConvertRawToRunData(run);
                processed = true;
            }
        }
        if (processed) tl::CheckInternalDataStillValid();
    }
    if (program.lapTimes || program.measurements) {
        if (store.RunCount > 0 && tl::CheckForLapMarker() == -1) {
            const std::string& cfg = tl::Paths().TracelabCfgPath;
            const std::string length = tl::ConfigNumberText(tl::GetConfig(cfg, "MarkerLengthTxt"));
            tl::AutoAddLapMarkerCmd(1, length);
            tl::AutoAddSectorsCmd(
                1, tl::ConfigNumberText(tl::GetConfig(cfg, "NumOfAutoSectorsTxt")), length);
        }
    }
    if (program.lapTimes) {
        tl::shell::LapSectorTimesForm* table = ui.MainWindow()->ShowLapSectorTimes();
        if (program.lapOverlay) {
            const tl::TableGrid& grid = table->Table().Grid();
            for (int row = 1, taken = 0; row < grid.rows && taken < 2; ++row) {
                if (grid.Text(row, 0).rfind("Lap ", 0) != 0) continue;
                table->ClickCell(row, 0);
                ++taken;
            }
            // The graph beside the table rather than under it.
            if (tl::views::GraphXYForm* graph = table->GenerateGraph()) {
                QWidget* frame = ui.MainWindow();
                table->resize(std::min(table->width(), 360), 220);
                table->move(frame->mapToGlobal(
                    QPoint(frame->width() - table->width() - 8, frame->height() / 3)));
                graph->parentWidget()->resize(frame->width() - table->width() - 24,
                                              graph->parentWidget()->height());
            }
        }
    }
    if (!program.graphVars.isEmpty() && ui.MainFormLoaded()) {
        tl::views::GraphXYForm* graph = ui.MainWindow()->NewGraph();
        tl::GraphModel& model = graph->Model();
        for (int k = 0; k < program.graphVars.size() && k < tl::kGraphSlots; ++k) {
            model.settings.Slots[k].SelYAxis = program.graphVars[k].trimmed().toStdString();
            model.SelYAxis_Click(k);
        }
        if (program.graphX.size() == 2) {
            tl::GraphSlotSettings& slot = model.settings.Slots[0];
            slot.MinXAxis = program.graphX[0].trimmed().toStdString();
            slot.MaxXAxis = program.graphX[1].trimmed().toStdString();
            slot.AutoMinX = 1;
            slot.AutoMaxX = 1;
        }
        graph->Regenerate();
    }
    if (program.valueTable) ui.MainWindow()->ShowValueTable();
    if (program.map) OpenMap(program, ui.MainWindow());
    if (!program.barChart.isEmpty()) OpenBarChart(program, ui.MainWindow());
    if (program.measurements) OpenMeasurements(program, ui.MainWindow());
    if (program.performance) {
        tl::shell::PerformanceForm* form = ui.MainWindow()->ShowPerformance();
        form->SSTab_Click(program.tab >= 0 ? program.tab : tl::shell::PerformanceForm::TimesPage);
    }

    if (!program.port.isEmpty()) tl::SelectCommPort(0, program.port.toStdString());
    for (const QString& control : program.menus) {
        if (QAction* entry = ui.MainWindow()->Entry(control);
            entry != nullptr && entry->isEnabled())
            entry->trigger();
        else
            std::fprintf(stderr, "tracelab: no menu entry %s to run\n", qPrintable(control));
    }

    if (program.quitAfterStart) {
        QTimer::singleShot(0, &app, [&] {
            if (!program.screenshotPath.empty() && ui.MainFormLoaded()) {
                const QString path = QString::fromStdString(program.screenshotPath);
                if (!SaveScreenshot(ui.MainWindow(), path)) {
                    std::fprintf(stderr, "tracelab: cannot save %s\n", qPrintable(path));
                    QApplication::exit(1);
                    return;
                }
            }
            QApplication::quit();
        });
    }
    return app.exec();
}
