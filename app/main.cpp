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
//                        choice, speed over distance at first).
#include <QApplication>
#include <QDir>
#include <QFileInfo>
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
#include "platform/qt/qt_platform.h"
#include "results/laps.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "road/startup.h"
#include "shell/main_form.h"
#include "shell/qt_startup_ui.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/qt/graph_xy_form.h"

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
        } else if (arg == QLatin1String("--graph-x") && i + 1 < arguments.size()) {
            options.graphX = arguments[++i].split(QLatin1Char(','));
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
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr) return;
    if (modal != pending.data()) {
        pending = modal;
        return;
    }
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
    if ((program.lapTimes || !program.graphVars.isEmpty()) && store.RunCount > 0 &&
        tl::RunData(store.RunInfo[1].RunEnd, tl::ColumnOf(tl::slot::Time)) == 0.0f) {
        // A run loaded but not processed (the start's question answered No)
        // has no times yet: it is processed first.
        tl::ConvertRawToRunData(1);
        tl::CheckInternalDataStillValid();
    }
    if (program.lapTimes) {
        if (store.RunCount > 0 && tl::CheckForLapMarker() == -1) {
            const std::string& cfg = tl::Paths().TracelabCfgPath;
            const std::string length = tl::ConfigNumberText(tl::GetConfig(cfg, "MarkerLengthTxt"));
            tl::AutoAddLapMarkerCmd(1, length);
            tl::AutoAddSectorsCmd(
                1, tl::ConfigNumberText(tl::GetConfig(cfg, "NumOfAutoSectorsTxt")), length);
        }
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
