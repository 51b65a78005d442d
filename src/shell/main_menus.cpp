// frmMain's menu tree, toolbar and command routing, and EnableBuildMenus.
// Commands whose windows are not part of this program yet (bar charts,
// tables, the logger link, printing, sessions' views)
// stand in the menus greyed, so the tree reads as the user knows it.
#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QKeySequence>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>
#include <QToolBar>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/ui_services.h"
#include "files/car_files.h"
#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "road/run_road.h"
#include "shell/app_icons.h"
#include "shell/lap_forms.h"
#include "shell/logger_forms.h"
#include "shell/main_form.h"
#include "shell/option_dialogs.h"
#include "shell/run_manager.h"
#include "shell/user_channels_form.h"
#include "shell/variables_form.h"
#include "store/menu_profile.h"
#include "store/run_procedures.h"

namespace tl::shell {

QMenu* MainForm::AddMenu(const char* control, const char* caption) {
    QMenu* menu = menuBar()->addMenu(QString::fromUtf8(caption));
    menu->setObjectName(QString::fromUtf8(control));
    menu->menuAction()->setObjectName(QString::fromUtf8(control));
    menus_.insert(menu->objectName(), menu);
    entries_.insert(menu->objectName(), menu->menuAction());
    return menu;
}

QAction* MainForm::AddEntry(QMenu* menu, const char* control, const char* caption) {
    QAction* action = menu->addAction(QString::fromUtf8(caption));
    action->setObjectName(QString::fromUtf8(control));
    entries_.insert(action->objectName(), action);
    return action;
}

namespace {

QAction* Separator(QMenu* menu, const char* control) {
    QAction* bar = menu->addSeparator();
    bar->setObjectName(QString::fromUtf8(control));
    return bar;
}

}  // namespace

void MainForm::BuildMenus() {
    QMenu* file = AddMenu("mnuFile", "&File");
    AddEntry(file, "mnuFileSaveRun", "&Save Run Data");
    AddEntry(file, "mnuFileLoadRun", "&Load Run Data");
    recentMenu_ = file->addMenu(QStringLiteral("&Recent Run Files"));
    recentMenu_->setObjectName(QStringLiteral("mnuRecentFiles"));
    Separator(file, "mnuBar1");
    AddEntry(file, "MnuExportRaw", "Export Raw Data");
    Separator(file, "mnuBar2");
    AddEntry(file, "PrintSetup", "Print Setu&p");
    AddEntry(file, "PrintGraph", "&Print...");
    AddEntry(file, "PrintAll", "Print &All...");
    Separator(file, "mnuBar3");
    AddEntry(file, "SetDirs", "Set &Default Paths");
    Separator(file, "mnuBar4");
    AddEntry(file, "mnuFileExit", "E&xit");

    QMenu* car = AddMenu("mnuCarOptions", "&Car");
    AddEntry(car, "mnuEditOptions", "&Edit Car Options");
    Separator(car, "mnuBar6");
    AddEntry(car, "mnuSaveOptions", "&Save Car Options");
    AddEntry(car, "mnuLoadOptions", "&Load Car Options");

    QMenu* logger = AddMenu("mnuLogger", "&Logger");
    AddEntry(logger, "mnuConnectLogger", "&Set Serial Port");
    AddEntry(logger, "mnuLoggerDownload", "Down&load Data");
    AddEntry(logger, "mnuLoggerEraseData", "&Erase Data");
    AddEntry(logger, "mnuLoggerSetupLogger", "Logger &Configuration");

    QMenu* data = AddMenu("mnuData", "&Data");
    AddEntry(data, "RunManager", "Run &Manager");
    AddEntry(data, "mnuVariables", "Select &Variables");
    AddEntry(data, "MnuUserChannels", "&User Defined Variables");
    AddEntry(data, "mnuRefOptions", "&Reference Lap Options");
    AddEntry(data, "mnuLapsAndSectors", "Laps and &Sectors");
    AddEntry(data, "mnuVarOptions", "Tracelab &Options");
    Separator(data, "mnuBar8");
    AddEntry(data, "ClearAll", "&Clear All Tracelab");

    QMenu* results = AddMenu("mnuResults", "&Results");
    AddEntry(results, "mnuSv63Runs", "Summary Runs");
    Separator(results, "mnuBar12");
    AddEntry(results, "mnuTrackMap", "Track &Map");
    AddEntry(results, "Table", "&Track Measurements");
    AddEntry(results, "mnuGraphXYplot", "&Graph");
    AddEntry(results, "mnuGraphHistogram", "&Bar Chart");
    AddEntry(results, "mnuPerfTable", "&Performance Calculations");
    Separator(results, "mnuBar13");
    AddEntry(results, "mnuAddUserGraph", "Define User Graph");
    AddEntry(results, "mnuRemoveUserGraph", "Remove User Graph");

    QMenu* window = AddMenu("mnuWindow", "&Window");
    AddEntry(window, "mnuWindowCascade", "&Cascade");
    AddEntry(window, "mnuWindowTileHorizontal", "Tile &Horizontal");
    AddEntry(window, "mnuWindowTileVertical", "Tile &Vertical");
    AddEntry(window, "mnuWindowArrangeIcons", "&Arrange Icons");
    Separator(window, "mnuBar14");
    for (const char* toggle : {"mnuShowMiniMap", "mnuShowValueTable", "MnuLapSectorTimes"}) {
        static const QMap<QString, const char*> captions{
            {QStringLiteral("mnuShowMiniMap"), "Show Mini Map"},
            {QStringLiteral("mnuShowValueTable"), "Show Values Table"},
            {QStringLiteral("MnuLapSectorTimes"), "Show Lap/Sector Times"}};
        AddEntry(window, toggle, captions.value(QString::fromUtf8(toggle)))->setCheckable(true);
    }
    Separator(window, "mnuBar15");
    connect(window, &QMenu::aboutToShow, this, &MainForm::RefreshWindowMenu);

    QMenu* help = AddMenu("mnuHelp", "&Help");
    AddEntry(help, "mnuHelpContents", "Help &Contents");
    AddEntry(help, "mnuHelpSearchForHelpOn", "Help &Index");
    AddEntry(help, "mnuHelpAbout", "&About Us");

    // The desktop's usual keys, where the menus' own letters leave room.
    Entry(QStringLiteral("mnuFileLoadRun"))->setShortcut(QKeySequence::Open);
    Entry(QStringLiteral("mnuFileSaveRun"))->setShortcut(QKeySequence::Save);
    Entry(QStringLiteral("PrintGraph"))->setShortcut(QKeySequence::Print);
    Entry(QStringLiteral("mnuFileExit"))->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    Entry(QStringLiteral("mnuHelpContents"))->setShortcut(QKeySequence::HelpContents);
    for (QAction* entry : entries_) entry->setShortcutContext(Qt::ApplicationShortcut);
}

void MainForm::BuildToolbar() {
    struct Button {
        const char* key;
        const char* entry;
        const char* icon;
        const char* tip;
    };
    const Button buttons[] = {
        {"open", "mnuFileLoadRun", "open", "Load Run Data"},
        {"save", "mnuFileSaveRun", "save", "Save Run Data"},
        {"RM", "RunManager", "runmanager", "Run Manager"},
        {"XY", "mnuGraphXYplot", "graph", "Graph"},
        {"HT", "mnuGraphHistogram", "barchart", "Bar Chart"},
        {"map", "mnuTrackMap", "trackmap", "Track Map"},
        {"table", "Table", "table", "Track Measurements"},
        {"print", "PrintGraph", "print", "Print"},
        {"help", "mnuHelpContents", "help", "Help Contents"},
    };
    toolbar_->setIconSize(QSize(22, 22));
    for (const Button& b : buttons) {
        QAction* entry = Entry(QString::fromUtf8(b.entry));
        QAction* button =
            toolbar_->addAction(ToolIcon(QString::fromUtf8(b.icon)), QString::fromUtf8(b.tip));
        button->setEnabled(entry->isEnabled());
        button->setObjectName(QString::fromUtf8(b.key));
        button->setToolTip(QString::fromUtf8(b.tip));
        // Each key runs its menu command, and is greyed with it.
        connect(button, &QAction::triggered, entry, &QAction::trigger);
        connect(entry, &QAction::changed, button, [button, entry] {
            button->setEnabled(entry->isEnabled());
            button->setVisible(entry->isVisible());
        });
        if (QString::fromUtf8(b.key) == QLatin1String("save") ||
            QString::fromUtf8(b.key) == QLatin1String("RM") ||
            QString::fromUtf8(b.key) == QLatin1String("table"))
            toolbar_->addSeparator();
    }
}

void MainForm::RouteCommands() {
    auto on = [this](const char* control, auto&& command) {
        connect(Entry(QString::fromUtf8(control)), &QAction::triggered, this,
                std::forward<decltype(command)>(command));
    };
    on("mnuFileSaveRun", [] { SaveDataToFile(-1); });
    on("mnuFileLoadRun", [this] { LoadRunThroughDialog(); });
    on("SetDirs", [this] {
        DefaultDirectoriesForm form(this);
        form.exec();
    });
    on("MnuExportRaw", [] { ExportRawDataToFile(); });
    on("mnuFileExit", [this] { ExitProgram(); });
    on("mnuEditOptions", [this] {
        CarOptionsForm form(this);
        form.exec();
    });
    on("mnuSaveOptions", [] { SaveCarFile(); });
    on("mnuLoadOptions", [] { LoadCarFile(); });
    on("RunManager", [this] { ShowRunManager(); });
    on("mnuGraphXYplot", [this] { NewGraph(); });
    on("mnuTrackMap", [this] { ShowTrackMap(); });
    on("mnuGraphHistogram", [this] { NewBarChart(); });
    on("Table", [this] { ShowMeasurements(); });
    on("mnuPerfTable", [this] { ShowPerformance(); });
    on("mnuShowMiniMap", [this] { ToggleMiniMap(); });
    on("mnuShowValueTable", [this] { ToggleValueTable(); });
    on("mnuVariables", [this] {
        ActiveVariablesForm form(this);
        form.exec();
        if (!runManager_.isNull()) runManager_->ResetControls();
    });
    on("MnuUserChannels", [this] {
        UserChannelsForm form(this);
        form.exec();
        if (!runManager_.isNull()) runManager_->ResetControls();
    });
    on("mnuRefOptions", [this] {
        RefLapOptionsForm form(this);
        form.exec();
    });
    on("mnuLapsAndSectors", [this] {
        LapsSectorsForm form(this);
        form.exec();
    });
    on("MnuLapSectorTimes", [this] { ToggleLapSectorTimes(); });
    on("mnuVarOptions", [this] {
        TracelabOptionsForm form(this);
        form.exec();
    });
    on("ClearAll", [this] {
        if (!YesNoBox("Continue?",
                      "This will clear all raw and processed run data, do you wish to continue?"))
            return;
        ClearCurrentRun(true);
        CheckInternalDataStillValid();
        if (!runManager_.isNull()) runManager_->ResetControls();
    });
    on("mnuWindowCascade", [this] { CascadeWindows(); });
    on("mnuWindowTileHorizontal", [this] {
        // Tiled one under the other, each the full width.
        const QList<QMdiSubWindow*> subs = mdi_->subWindowList();
        if (subs.isEmpty()) return;
        const int h = mdi_->viewport()->height() / static_cast<int>(subs.size());
        for (int i = 0; i < subs.size(); ++i) {
            subs[i]->showNormal();
            subs[i]->setGeometry(0, i * h, mdi_->viewport()->width(), h);
        }
    });
    on("mnuWindowTileVertical", [this] {
        const QList<QMdiSubWindow*> subs = mdi_->subWindowList();
        if (subs.isEmpty()) return;
        const int w = mdi_->viewport()->width() / static_cast<int>(subs.size());
        for (int i = 0; i < subs.size(); ++i) {
            subs[i]->showNormal();
            subs[i]->setGeometry(i * w, 0, w, mdi_->viewport()->height());
        }
    });
    on("mnuWindowArrangeIcons", [this] {
        // Minimised children are lined up along the bottom of the frame.
        int x = 0;
        for (QMdiSubWindow* sub : mdi_->subWindowList()) {
            if (!sub->isMinimized()) continue;
            sub->move(x, mdi_->viewport()->height() - sub->height());
            x += sub->width();
        }
    });
    on("mnuHelpContents", [this] { OpenHelp(false); });
    on("mnuHelpSearchForHelpOn", [this] { OpenHelp(true); });
    on("mnuHelpAbout", [this] { ShowAboutBanner(this); });
    on("mnuConnectLogger", [this] { ShowCommSetup(this); });
    on("mnuLoggerDownload", [this] {
        ShowDownloadControl(this);
        if (!runManager_.isNull()) runManager_->ResetControls();
        RefreshStatus();
    });
    on("mnuLoggerEraseData", [this] { ShowConfirmErase(this); });
    on("mnuLoggerSetupLogger", [this] {
        // The meter's set-up (frmSV63Config) is not built yet.
        if (!Profile().HardwareSV63) ShowSetUpLogger(this);
    });

    // Not in this program yet: the windows of later parts.
    for (const char* later : {"PrintSetup", "PrintGraph", "PrintAll", "mnuSv63Runs",
                              "mnuAddUserGraph", "mnuRemoveUserGraph"}) {
        Entry(QString::fromUtf8(later))->setEnabled(false);
    }
    // The meter's set-up form (frmSV63Config) is not built yet.
    if (Profile().HardwareSV63) Entry(QStringLiteral("mnuLoggerSetupLogger"))->setEnabled(false);
    // The meter's own options form (frmLocalSV63CarOptions) is not built yet.
    if (Profile().HardwareSV63) Entry(QStringLiteral("mnuEditOptions"))->setEnabled(false);
}

void MainForm::EnableBuildMenus() {
    const BuildProfile& p = Profile();
    for (const MenuChange& change : BuildMenuChanges(p.family(), p.vehicle())) {
        QAction* entry = Entry(QString::fromStdString(change.control));
        if (entry == nullptr) continue;
        if (change.visible) entry->setVisible(*change.visible);
        if (change.caption) {
            entry->setText(QString::fromStdString(*change.caption));
            if (QMenu* menu = Menu(QString::fromStdString(change.control)))
                menu->setTitle(QString::fromStdString(*change.caption));
        }
    }
}

void MainForm::RefreshWindowMenu() {
    QMenu* window = Menu(QStringLiteral("mnuWindow"));
    // Each toggle is ticked when its form is loaded.
    const std::pair<const char*, const char*> toggles[] = {
        {"mnuShowMiniMap", "frmMiniMap"},
        {"mnuShowValueTable", "frmValueTable"},
        {"MnuLapSectorTimes", "FrmLapAndSectorTimes"}};
    for (const auto& [entry, form] : toggles) {
        bool loaded = false;
        for (QWidget* top : QApplication::allWidgets()) {
            if (top->objectName() == QLatin1String(form)) loaded = true;
        }
        Entry(QString::fromUtf8(entry))->setChecked(loaded);
    }
    for (QAction* old : windowListActions_) {
        window->removeAction(old);
        old->deleteLater();
    }
    windowListActions_.clear();
    const QList<QMdiSubWindow*> subs = mdi_->subWindowList();
    std::vector<std::string> captions;
    int active = -1;
    for (int i = 0; i < subs.size(); ++i) {
        captions.push_back(subs[i]->windowTitle().toStdString());
        if (subs[i] == mdi_->activeSubWindow()) active = i;
    }
    const std::vector<std::string> marked = MarkActiveWindow(captions, active);
    for (int i = 0; i < subs.size(); ++i) {
        QAction* item = window->addAction(QString::number(i + 1) + QLatin1Char(' ') +
                                          QString::fromStdString(marked[i]));
        item->setObjectName(QStringLiteral("mnuWindowChild"));
        QMdiSubWindow* sub = subs[i];
        connect(item, &QAction::triggered, mdi_, [this, sub] { mdi_->setActiveSubWindow(sub); });
        windowListActions_ << item;
    }
}

void MainForm::RefreshRecentFiles() {
    recentMenu_->clear();
    std::vector<std::string> files;
    if (FileReadable(Paths().TracelabCfgPath)) files = RecentRunFiles();
    for (size_t i = 0; i < files.size(); ++i) {
        const QString path = QString::fromStdString(files[i]);
        QAction* item = recentMenu_->addAction(
            QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(path).fileName()));
        item->setObjectName(QStringLiteral("mnuRecentFile%1").arg(i + 1));
        item->setToolTip(path);
        connect(item, &QAction::triggered, this, [this, path] { LoadRunFiles({path}); });
    }
    recentMenu_->setEnabled(!files.empty());
}

}  // namespace tl::shell
