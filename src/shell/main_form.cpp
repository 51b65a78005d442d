#include "shell/main_form.h"

#include <QApplication>

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <algorithm>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/ui_services.h"
#include "files/raw_run_files.h"
#include "platform/qt/window_placement.h"
#include "road/run_road.h"
#include "shell/app_icons.h"
#include "shell/help_window.h"
#include "shell/run_manager.h"
#include "store/menu_profile.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/tool_forms.h"
#include "views/qt/track_map_form.h"
#include "views/qt/view_links.h"

namespace tl::shell {

namespace {

// Design note: two groups of keys in TracelabCfgPath are this program's own
// additions to the documented set. MainFormLeft, MainFormTop, MainFormWidth
// and MainFormHeight keep the frame's place between starts, beside the tool
// windows' places and under keys of the same pattern; RecentRunFile1 to
// RecentRunFile4 hold the recent-files list (store/menu_profile.h). They are
// eight lines at most, each updated in place once written. The file is read
// into a table of kConfigTableRows lines, and a longer file breaks every
// later write of it, so the additions are first written only while the file
// keeps kSpareConfigRows lines free after them: in normal use the documented
// keys always have the room they need, and a file already near its limit
// simply goes without a remembered frame place or recent list.
constexpr const char* kMainPrefix = "MainForm";
constexpr int kSpareConfigRows = 40;

// Whether the keys may be written: those already present cost nothing, the
// missing ones must leave kSpareConfigRows lines free.
bool RoomForOwnKeys(const std::vector<std::string>& keys) {
    const std::string& file = Paths().TracelabCfgPath;
    if (!FileReadable(file)) return false;
    const auto records = ReadConfigRecords(file);
    int missing = 0;
    for (const std::string& key : keys) {
        const bool present = std::any_of(records.begin(), records.end(),
                                         [&key](const auto& r) { return r.first == key; });
        if (!present) ++missing;
    }
    return static_cast<int>(records.size()) + missing <= kConfigTableRows - kSpareConfigRows;
}

std::vector<std::string> KeysOfBox(const std::string& prefix) {
    return {prefix + "Left", prefix + "Top", prefix + "Width", prefix + "Height"};
}

std::vector<std::string> RecentFileKeys() {
    std::vector<std::string> keys;
    for (int i = 1; i <= kRecentFileCount; ++i) keys.push_back("RecentRunFile" + std::to_string(i));
    return keys;
}

// The form behind each tool window's keys.
const char* ToolFormName(const ToolWindowKeys& keys) {
    const std::string prefix = keys.prefix;
    if (prefix == "MiniMap") return "frmMiniMap";
    if (prefix == "ValueTable") return "frmValueTable";
    return "FrmLapAndSectorTimes";
}

// Stands in for the file dialogs during one load, noting what the user
// chose; everything else goes to the dialogs in force.
class NotingFileDialogs final : public FileDialogs {
  public:
    explicit NotingFileDialogs(FileDialogs* inner) : inner_(inner) {}
    std::vector<std::string> OpenFiles(const FileDialogRequest& request) override {
        lastChosen = inner_->OpenFiles(request);
        return lastChosen;
    }
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override {
        return inner_->SaveFile(request);
    }
    // The dialog comes back after every refusal, so the last answer is the
    // one that loaded, if any did.
    std::vector<std::string> lastChosen;

  private:
    FileDialogs* inner_;
};

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

    // The program's icon on every window, the run manager's and the dialogs'
    // included.
    QApplication::setWindowIcon(AppIcon());
    setWindowIcon(AppIcon());
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("StatusRuns"));
    status_->setContentsMargins(0, 0, 12, 0);
    statusBar()->setObjectName(QStringLiteral("StatusBar"));
    statusBar()->addPermanentWidget(status_);
    RefreshStatus();

    // Without a stored place the frame opens maximised (ShowAtStart); this
    // size serves when it is restored from maximised.
    resize(1240, 780);
    RestoreWindowState();

    // Dashboards made by playback open in the frame, at their own size.
    views::Hub().placeWindow = [this](QWidget* form) {
        QMdiSubWindow* sub = mdi_->addSubWindow(form);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->setWindowIcon(windowIcon());
        sub->resize(sub->sizeHint().expandedTo(form->sizeHint() + QSize(12, 34)));
        form->show();
    };
}

void MainForm::ShowAtStart() {
    if (storedPlace_) {
        show();
        return;
    }
    // Maximised; the normal place under it is the screen's free area, so that
    // the frame fills the screen also where no window manager maximises.
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        setGeometry(screen->availableGeometry());
    showMaximized();
}

QString MainForm::StatusText() const {
    const BuildProfile& p = Profile();
    const int32_t runs = Store().RunCount;
    QString text = runs == 0   ? QStringLiteral("No runs loaded")
                   : runs == 1 ? QStringLiteral("1 run loaded")
                               : QStringLiteral("%1 runs loaded").arg(runs);
    static const char* const families[] = {"", "HX40", "MQ7", "SV63", "SW63"};
    static const char* const vehicles[] = {"Car", "Kart", "Bike", "Boat"};
    const int f = static_cast<int>(p.family()), v = static_cast<int>(p.vehicle());
    if (f > 0 && f < 5) {
        text += QStringLiteral("  |  ") + QString::fromUtf8(families[f]);
        if (v >= 0 && v < 4) text += QStringLiteral("  |  ") + QString::fromUtf8(vehicles[v]);
    }
    return text;
}

void MainForm::RefreshStatus() {
    if (status_ != nullptr) status_->setText(StatusText());
}

void MainForm::CascadeWindows() {
    const QList<QMdiSubWindow*> subs = mdi_->subWindowList(QMdiArea::StackingOrder);
    const QSize area = mdi_->viewport()->size();
    const int step = std::max(24, fontMetrics().height() + 8);
    int offset = 0;
    for (QMdiSubWindow* sub : subs) {
        if (sub->isHidden()) continue;
        if (sub->isMinimized() || sub->isMaximized()) sub->showNormal();
        if (offset + 200 > area.width() || offset + 150 > area.height()) offset = 0;
        QSize size = sub->size().expandedTo(sub->minimumSizeHint());
        size = size.boundedTo(QSize(area.width() - offset, area.height() - offset))
                   .expandedTo(sub->minimumSizeHint());
        sub->setGeometry(offset, offset, size.width(), size.height());
        sub->raise();
        offset += step;
    }
    if (!subs.isEmpty()) mdi_->setActiveSubWindow(subs.last());
}

MainForm::~MainForm() {
    views::Hub().placeWindow = nullptr;
}

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
        if (Store().RunCount != before) RememberRunFile(file);
    }
    CheckInternalDataStillValid();
    RefreshRecentFiles();
    if (!runManager_.isNull()) runManager_->ResetControls();
}

void MainForm::LoadRunThroughDialog() {
    const int32_t runsBefore = Store().RunCount;
    const int32_t rawBefore = Store().RawData.UpperIndex();
    const Platform saved = CurrentPlatform();
    NotingFileDialogs noting(saved.files);
    {
        // The dialogs in force come back however the load ends.
        struct Restore {
            const Platform& platform;
            ~Restore() { SetPlatform(platform); }
        } restore{saved};
        Platform during = saved;
        during.files = &noting;
        SetPlatform(during);
        LoadDataFromFile("");
    }
    // A session may replace the runs by as many: the raw data tell the change.
    if (Store().RunCount != runsBefore || Store().RawData.UpperIndex() != rawBefore) {
        for (const std::string& path : noting.lastChosen) RememberRunFile(path);
    }
    CheckInternalDataStillValid();
    RefreshRecentFiles();
    if (!runManager_.isNull()) runManager_->ResetControls();
}

void MainForm::RememberRunFile(const std::string& path) {
    if (RoomForOwnKeys(RecentFileKeys())) AddRecentRunFile(path);
}

void MainForm::OpenHelp(bool index) {
    const std::string& path = index ? Paths().HelpIndexPath : Paths().HelpPath;
    // The original called the help viewer (HtmlHelpA) with the contents or
    // the index command; the shipped help is HTML, shown in the program's own
    // help window, which needs no browser on the desktop.
    LogDebug("open the help: " + path);
    if (!FileReadable(path)) {
        PlainMessage("Error 2 opening the help file " + path, "Help");
        return;
    }
    ShowHelpPage(QString::fromStdString(path), this);
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
    // Each tool window that is up stores 1 and its place, a closed one 0.
    for (const ToolWindowKeys& keys : kToolWindows) {
        QWidget* form = nullptr;
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top->objectName() == QLatin1String(ToolFormName(keys))) form = top;
        }
        const bool open = form != nullptr && form->isVisible();
        WindowBox box;
        if (open) box = {form->x(), form->y(), form->width(), form->height()};
        StoreToolWindowState(keys, open, box);
    }
    if (!isMaximized() && !isMinimized() && RoomForOwnKeys(KeysOfBox(kMainPrefix))) {
        const std::string& file = Paths().TracelabCfgPath;
        const std::string prefix = kMainPrefix;
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
            qt::PlaceWindowAt(this, QRect(box->left, box->top, box->width, box->height));
            storedPlace_ = true;
        }
    }
}

void MainForm::ShowToolWindowsAtStart() {
    if (!FileReadable(Paths().TracelabCfgPath)) return;
    if (ToolWindowShownAtStart(kToolWindows[0])) ShowMiniMap();
    if (ToolWindowShownAtStart(kToolWindows[1])) ShowValueTable();
    if (ToolWindowShownAtStart(kToolWindows[2])) ShowLapSectorTimes();
}

LapSectorTimesForm* MainForm::ShowLapSectorTimes() {
    if (lapTimes_.isNull()) {
        lapTimes_ = new LapSectorTimesForm(this);
        lapTimes_->resize(560, 300);
        if (const std::optional<WindowBox> box = StoredToolWindowBox(kToolWindows[2])) {
            qt::PlaceWindowAt(lapTimes_, QRect(box->left, box->top, box->width, box->height));
        } else {
            qt::CentreWidgetOn(lapTimes_, this);
        }
    }
    lapTimes_->Update_Table();
    lapTimes_->show();
    lapTimes_->raise();
    Entry(QStringLiteral("MnuLapSectorTimes"))->setChecked(true);
    return lapTimes_;
}

views::GraphXYForm* MainForm::NewGraph() {
    auto* graph = new views::GraphXYForm;
    QMdiSubWindow* sub = mdi_->addSubWindow(graph);
    sub->setWindowIcon(windowIcon());
    // A comfortable size for a plot, never more than the frame's client area.
    const QSize room = mdi_->viewport()->size();
    sub->resize(std::max(std::min(room.width() - 16, 1100), 320),
                std::max(std::min(room.height() - 16, 680), 240));
    graph->show();
    mdi_->setActiveSubWindow(sub);
    return graph;
}

views::BarChartForm* MainForm::NewBarChart() {
    auto* chart = new views::BarChartForm;
    QMdiSubWindow* sub = mdi_->addSubWindow(chart);
    sub->setWindowIcon(windowIcon());
    const QSize room = mdi_->viewport()->size();
    sub->resize(std::max(std::min(room.width() - 16, 1000), 320),
                std::max(std::min(room.height() - 16, 640), 240));
    chart->show();
    mdi_->setActiveSubWindow(sub);
    return chart;
}

namespace {

// A single view window as a child of the frame, closed for good with its
// sub-window, at a size that fits the frame.
QMdiSubWindow* AddSingleView(QMdiArea* mdi, QWidget* form, const QIcon& icon, QSize wanted) {
    QMdiSubWindow* sub = mdi->addSubWindow(form);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowIcon(icon);
    const QSize room = mdi->viewport()->size();
    sub->resize(std::max(std::min(room.width() - 16, wanted.width()), 320),
                std::max(std::min(room.height() - 16, wanted.height()), 240));
    form->show();
    return sub;
}

}  // namespace

MeasurementsForm* MainForm::ShowMeasurements() {
    if (measurements_.isNull()) {
        measurements_ = new MeasurementsForm(this);
        AddSingleView(mdi_, measurements_, windowIcon(), QSize(900, 420));
    } else {
        measurements_->Update();
    }
    if (auto* sub = qobject_cast<QMdiSubWindow*>(measurements_->parentWidget())) {
        sub->showNormal();
        mdi_->setActiveSubWindow(sub);
    }
    return measurements_;
}

PerformanceForm* MainForm::ShowPerformance() {
    if (performance_.isNull()) {
        performance_ = new PerformanceForm;
        AddSingleView(mdi_, performance_, windowIcon(), QSize(760, 560));
    }
    if (auto* sub = qobject_cast<QMdiSubWindow*>(performance_->parentWidget())) {
        sub->showNormal();
        mdi_->setActiveSubWindow(sub);
    }
    return performance_;
}

views::TrackMapForm* MainForm::ShowTrackMap() {
    if (trackMap_.isNull()) {
        trackMap_ = new views::TrackMapForm;
        QMdiSubWindow* sub = mdi_->addSubWindow(trackMap_);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->setWindowIcon(windowIcon());
        const QSize room = mdi_->viewport()->size();
        sub->resize(std::max(std::min(room.width() - 16, 900), 400),
                    std::max(std::min(room.height() - 16, 680), 320));
        trackMap_->show();
    }
    if (auto* sub = qobject_cast<QMdiSubWindow*>(trackMap_->parentWidget())) {
        sub->showNormal();
        mdi_->setActiveSubWindow(sub);
    }
    return trackMap_;
}

namespace {

// A tool window in its stored place, or beside the frame's right edge.
void PlaceToolWindow(QWidget* form, const ToolWindowKeys& keys, QWidget* frame) {
    if (const std::optional<WindowBox> box = StoredToolWindowBox(keys)) {
        qt::PlaceWindowAt(form, QRect(box->left, box->top, box->width, box->height));
    } else {
        qt::CentreWidgetOn(form, frame);
    }
}

}  // namespace

views::MiniMapForm* MainForm::ShowMiniMap() {
    if (miniMap_.isNull()) {
        miniMap_ = new views::MiniMapForm(this);
        views::Hub().miniMap = miniMap_.data();
        PlaceToolWindow(miniMap_, kToolWindows[0], this);
    }
    miniMap_->show();
    miniMap_->raise();
    Entry(QStringLiteral("mnuShowMiniMap"))->setChecked(true);
    return miniMap_;
}

views::ValueTableForm* MainForm::ShowValueTable() {
    if (valueTable_.isNull()) {
        valueTable_ = new views::ValueTableForm(this);
        views::Hub().valueTable = valueTable_.data();
        PlaceToolWindow(valueTable_, kToolWindows[1], this);
    }
    valueTable_->show();
    valueTable_->raise();
    Entry(QStringLiteral("mnuShowValueTable"))->setChecked(true);
    return valueTable_;
}

void MainForm::ToggleMiniMap() {
    if (!miniMap_.isNull() && miniMap_->isVisible()) {
        miniMap_->close();
        Entry(QStringLiteral("mnuShowMiniMap"))->setChecked(false);
        return;
    }
    ShowMiniMap();
}

void MainForm::ToggleValueTable() {
    if (!valueTable_.isNull() && valueTable_->isVisible()) {
        valueTable_->close();
        Entry(QStringLiteral("mnuShowValueTable"))->setChecked(false);
        return;
    }
    ShowValueTable();
}

void MainForm::ToggleLapSectorTimes() {
    if (!lapTimes_.isNull() && lapTimes_->isVisible()) {
        lapTimes_->close();
        Entry(QStringLiteral("MnuLapSectorTimes"))->setChecked(false);
        return;
    }
    ShowLapSectorTimes();
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
