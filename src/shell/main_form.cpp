#include "shell/main_form.h"

#include <QApplication>

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QToolBar>
#include <QUrl>
#include <algorithm>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/ui_services.h"
#include "files/raw_run_files.h"
#include "shell/run_manager.h"
#include "store/menu_profile.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::shell {

namespace {

// The frame's own place is kept beside the tool windows' places, under keys
// of the same pattern.
constexpr const char* kMainPrefix = "MainForm";

}  // namespace

MainForm::MainForm(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmMain"));
    LogDebug("the main form has been loaded");
    setWindowTitle(Caption());
    // The process ends when the last form unloads; frmMain is the last one.
    setAttribute(Qt::WA_DeleteOnClose);
    setAcceptDrops(true);

    mdi_ = new QMdiArea(this);
    mdi_->setObjectName(QStringLiteral("MDIClient"));
    mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdi_->setBackground(QBrush(QColor(0x80, 0x80, 0x80)));
    setCentralWidget(mdi_);

    menuBar()->setObjectName(QStringLiteral("MainMenu"));
    toolbar_ = addToolBar(QStringLiteral("Toolbar1"));
    toolbar_->setObjectName(QStringLiteral("Toolbar1"));
    toolbar_->setMovable(false);

    BuildMenus();
    BuildToolbar();
    RouteCommands();
    EnableBuildMenus();
    RefreshRecentFiles();

    resize(1240, 780);
    RestoreWindowState();
}

MainForm::~MainForm() = default;

QString MainForm::Caption() {
    // The original's caption: "VQ Tracelab - " followed by the build id.
    return QStringLiteral("VQ Tracelab - ") + QString::fromStdString(BuildIdString());
}

QAction* MainForm::Entry(const QString& controlName) const {
    return entries_.value(controlName, nullptr);
}

QMenu* MainForm::Menu(const QString& controlName) const {
    return menus_.value(controlName, nullptr);
}

RunManagerForm* MainForm::ShowRunManager() {
    if (runManager_.isNull()) {
        runManager_ = new RunManagerForm(this);
        QMdiSubWindow* sub = mdi_->addSubWindow(runManager_);
        sub->setObjectName(QStringLiteral("frmRunManagerWindow"));
        sub->setAttribute(Qt::WA_DeleteOnClose);
    }
    runManager_->ResetControls();
    // Wide enough for a whole row of buttons where the frame allows.
    if (auto* sub = qobject_cast<QMdiSubWindow*>(runManager_->parentWidget())) {
        const int wanted = runManager_->RowsWidth() + 60;
        sub->resize(std::min(std::max(wanted, 600), mdi_->viewport()->width()), 280);
    }
    runManager_->ShowManager();
    return runManager_;
}

void MainForm::LoadRunFiles(const QStringList& paths) {
    for (const QString& path : paths) {
        const std::string file = path.toStdString();
        const int32_t before = Store().RunCount;
        LoadDataFromFile(file);
        if (Store().RunCount != before) AddRecentRunFile(file);
    }
    CheckInternalDataStillValid();
    RefreshRecentFiles();
    if (!runManager_.isNull()) runManager_->ResetControls();
}

void MainForm::OpenHelp(bool index) {
    const std::string& path = index ? Paths().HelpIndexPath : Paths().HelpPath;
    // The original called the help viewer (HtmlHelpA) with the contents or
    // the index command; the shipped help is HTML, opened by the desktop.
    LogDebug("open the help: " + path);
    int error = 0;
    if (!FileReadable(path)) {
        error = 2;  // file not found
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(path)))) {
        error = 1;
    }
    if (error != 0) {
        PlainMessage("Error " + std::to_string(error) + " opening the help file " + path, "Help");
    }
}

bool MainForm::AskToSave() {
    if (!RawDataLoaded()) return true;
    QMessageBox box(QMessageBox::Question, QStringLiteral("Question"),
                    QStringLiteral("Do you want to save the run analysis before quitting?"),
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("QuestionBox"));
    box.setDefaultButton(QMessageBox::Yes);
    const int answer = box.exec();
    if (answer == QMessageBox::Cancel) return false;
    if (answer == QMessageBox::Yes) SaveDataToFile(-1);
    return true;
}

void MainForm::ExitProgram() {
    if (!AskToSave()) return;
    exiting_ = true;
    close();
}

void MainForm::closeEvent(QCloseEvent* event) {
    if (closed_) {
        event->accept();
        return;
    }
    // Reason 0, a close by the user, is the window manager's close button;
    // mnuFileExit has asked already, and the program's own unloads do not ask.
    if (event->spontaneous() && !exiting_ && !AskToSave()) {
        event->ignore();
        return;
    }
    closed_ = true;
    StoreWindowState();
    LogDebug("End Of main form... clear the run data");
    // A bare frame with no configuration (tests of the forms) has no run data.
    if (FileReadable(Paths().TracelabCfgPath)) {
        ClearCurrentRun(true);
        CheckInternalDataStillValid();
    }
    LogDebug("End Of main form... unload all the child forms");
    mdi_->closeAllSubWindows();
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top != this && top->isVisible() && !top->isModal()) top->close();
    }
    LogDebug("End Of main form... now quiting!");
    event->accept();
}

void MainForm::StoreWindowState() {
    if (!FileReadable(Paths().TracelabCfgPath)) return;
    // The mini map, the value table and the lap times are not built yet: each
    // counts as closed, so its Show key goes to 0 as the original stored it.
    for (const ToolWindowKeys& keys : kToolWindows) {
        QWidget* form = nullptr;
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top->objectName() == QLatin1String(keys.prefix)) form = top;
        }
        const bool open = form != nullptr && form->isVisible();
        WindowBox box;
        if (open) box = {form->x(), form->y(), form->width(), form->height()};
        StoreToolWindowState(keys, open, box);
    }
    if (!isMaximized() && !isMinimized()) {
        const ToolWindowKeys mainKeys{"", kMainPrefix};
        const std::string& file = Paths().TracelabCfgPath;
        const std::string prefix = mainKeys.prefix;
        SetConfig(file, prefix + "Left", static_cast<float>(x()));
        SetConfig(file, prefix + "Top", static_cast<float>(y()));
        SetConfig(file, prefix + "Width", static_cast<float>(width()));
        SetConfig(file, prefix + "Height", static_cast<float>(height()));
    }
}

void MainForm::RestoreWindowState() {
    // A frame made before any configuration exists (tests of the bare forms)
    // keeps its default place.
    if (!FileReadable(Paths().TracelabCfgPath)) return;
    const ToolWindowKeys mainKeys{"", kMainPrefix};
    if (const std::optional<WindowBox> box = StoredToolWindowBox(mainKeys)) {
        if (box->width >= 320 && box->height >= 240) {
            resize(box->width, box->height);
            move(box->left, box->top);
        }
    }
}

void MainForm::dragEnterEvent(QDragEnterEvent* event) {
    if (!event->mimeData()->hasUrls()) return;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile() &&
            url.toLocalFile().endsWith(QLatin1String(".run"), Qt::CaseInsensitive)) {
            event->acceptProposedAction();
            return;
        }
    }
}

void MainForm::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile() &&
            url.toLocalFile().endsWith(QLatin1String(".run"), Qt::CaseInsensitive))
            paths << url.toLocalFile();
    }
    if (paths.isEmpty()) return;
    event->acceptProposedAction();
    LoadRunFiles(paths);
}

}  // namespace tl::shell
