// frmMain: the parent window of the whole application, a multi-document
// frame. Views open as sub-windows of its QMdiArea ("MDIClient"); the menu bar
// and the toolbar (Toolbar1) are built by main_menus.cpp, one QAction per menu
// entry, named as the entry's control (mnuFileLoadRun, RunManager, ...).
//
// Closing runs the original's MDIForm_QueryUnload: the save question when
// raw data are loaded, the tool windows' state into TracelabCfgPath, then
// ClearCurrentRun(True) and the other forms unloaded.
#pragma once

#include <QMainWindow>
#include <QMap>
#include <QPointer>

#include "shell/lap_forms.h"
#include "shell/measurements_forms.h"
#include "shell/performance_form.h"
#include "shell/run_manager.h"
#include "views/qt/bar_chart_form.h"
#include "views/qt/tool_forms.h"
#include "views/qt/track_map_form.h"

class QMdiArea;
class QToolBar;
class QMenu;
class QAction;

namespace tl::shell {

class MainForm : public QMainWindow {
    Q_OBJECT
  public:
    explicit MainForm(QWidget* parent = nullptr);
    ~MainForm() override;
    QMdiArea* MdiArea() const { return mdi_; }
    QToolBar* Toolbar() const { return toolbar_; }
    // "VQ Tracelab - " + BuildIdString.
    static QString Caption();

    // The menu entry (QAction) or menu (QMenu's action) of a control name.
    QAction* Entry(const QString& controlName) const;
    QMenu* Menu(const QString& controlName) const;

    // EnableBuildMenus: the menus adapted to the family and vehicle.
    void EnableBuildMenus();
    // mnuWindow's click: toggles ticked, the window list with " (active)".
    void RefreshWindowMenu();
    // The recent-files list under mnuFile.
    void RefreshRecentFiles();
    // Loads .run files as the load command does (drag and drop, recent list).
    void LoadRunFiles(const QStringList& paths);
    // mnuFileLoadRun: LoadDataFromFile("") with its dialog; the file that
    // loaded joins the recent-files list.
    void LoadRunThroughDialog();

    // MDIForm_Load's step 2, once the frame is shown: each tool window whose
    // Show key is exactly 1 opens, in its stored place.
    void ShowToolWindowsAtStart();
    // MnuLapSectorTimes: opens FrmLapAndSectorTimes or closes it.
    void ToggleLapSectorTimes();
    // The lap and sector time table (created on first use) in its stored
    // place, shown.
    LapSectorTimesForm* ShowLapSectorTimes();
    LapSectorTimesForm* LapSectorTimes() const { return lapTimes_.data(); }

    // mnuGraphXYplot (toolbar "XY"): a new graph window with the lowest free
    // number, a child of the frame sized to fit it, on its "Graph" tab.
    views::GraphXYForm* NewGraph();
    // mnuGraphHistogram (toolbar "HT"): a new bar chart with the lowest free
    // number of BarChartForms, on its "Bar Chart" tab.
    views::BarChartForm* NewBarChart();
    // Table (toolbar "table"): frmTrackMeasurements opened or raised
    // (MeasTableOpen while it is up).
    MeasurementsForm* ShowMeasurements();
    MeasurementsForm* Measurements() const { return measurements_.data(); }
    bool MeasTableOpen() const { return !measurements_.isNull(); }
    // mnuPerfTable: frmPerformanceTable opened or raised (PerfTableOpen).
    PerformanceForm* ShowPerformance();
    PerformanceForm* Performance() const { return performance_.data(); }
    bool PerfTableOpen() const { return !performance_.isNull(); }

    // mnuTrackMap (toolbar "map"): the single track map window, opened or
    // raised.
    views::TrackMapForm* ShowTrackMap();
    views::TrackMapForm* TrackMap() const { return trackMap_.data(); }
    // mnuShowMiniMap and mnuShowValueTable: each tool window opened in its
    // stored place, or closed when it is up.
    void ToggleMiniMap();
    void ToggleValueTable();
    views::MiniMapForm* ShowMiniMap();
    views::ValueTableForm* ShowValueTable();

    // The run manager (created on first use), shown.
    RunManagerForm* ShowRunManager();
    RunManagerForm* RunManager() const { return runManager_.data(); }

    // mnuFileExit: the save question, then the frame unloads without asking
    // again.
    void ExitProgram();
    // mnuHelpContents / mnuHelpSearchForHelpOn; a failure is reported in a
    // plain message box with an error number.
    void OpenHelp(bool index);
    // Window > Cascade: the open windows one behind the other, each keeping
    // its size as far as the frame allows (never below its own minimum), so
    // no window's buttons go behind scroll bars.
    void CascadeWindows();
    // The first show: in the stored place, or maximised when none is stored.
    void ShowAtStart();
    // The status bar's account of what is loaded: the number of runs, the
    // family and the vehicle.
    Q_INVOKABLE void RefreshStatus();
    QString StatusText() const;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void BuildMenus();
    void BuildToolbar();
    void RouteCommands();
    QAction* AddEntry(QMenu* menu, const char* control, const char* caption);
    QMenu* AddMenu(const char* control, const char* caption);
    // Step 1 of the close: false when the user cancelled.
    bool AskToSave();
    void StoreWindowState();
    void RestoreWindowState();
    void RememberRunFile(const std::string& path);

    QMdiArea* mdi_;
    QToolBar* toolbar_;
    QMenu* recentMenu_ = nullptr;
    QMap<QString, QAction*> entries_;
    QMap<QString, QMenu*> menus_;
    QList<QAction*> windowListActions_;
    QPointer<RunManagerForm> runManager_;
    QPointer<LapSectorTimesForm> lapTimes_;
    QPointer<views::TrackMapForm> trackMap_;
    QPointer<MeasurementsForm> measurements_;
    QPointer<PerformanceForm> performance_;
    QPointer<views::MiniMapForm> miniMap_;
    QPointer<views::ValueTableForm> valueTable_;
    class QLabel* status_ = nullptr;
    bool storedPlace_ = false;  // RestoreWindowState found a place
    bool exiting_ = false;      // mnuFileExit asked already
    bool closed_ = false;
};

}  // namespace tl::shell
