// frmTrackMap ("Track Map"), the single track map window: the TrackTab strip
// with the map page (the tool buttons, the colour strip ColorScale with
// ScaleMin and ScaleMax, the scale bar MapScale with ScaleLabel, the Map box
// with HScroll and VScroll, and the playback panels below) and "Options"
// (OptionsScreenFrame, every setting of the map and the dashboards'
// variables).
//
// The playback panels are control arrays named "<control>_<index>": per
// panel i RunNumberLabel_i, RunToDisplay_i, RunUpDown_i, AniRunNameTxt_i,
// PlayTime_i, RewindToMarker_i, RewindButton_i, StopButton_i,
// SlowPlayButton_i, PlayButton_i, FForwardButton_i, ForwardToMarker_i,
// JumpToTime_i, JumpTimeAdj_i, JumpButton_i; with more than one run the
// common row has the index RunsInUse and acts on all panels. Playback runs
// from one single-shot timer that calls Playback::Step when the step's
// notBefore has come; nothing waits in a loop.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/qt/view_window.h"
#include "views/playback.h"
#include "views/track_map.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QScrollBar;
class QStackedWidget;
class QTabBar;
class QTimer;
class QToolButton;
class QVBoxLayout;

namespace tl::views {

class SurfaceBox;
class VariableCombo;

class TrackMapForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    // Form_Load: TrackMapOpen, the map over the Map box, one panel.
    explicit TrackMapForm(QWidget* parent = nullptr);
    ~TrackMapForm() override;

    TrackMap& Map() { return *map_; }
    Playback& Player() { return *playback_; }
    SurfaceBox* MapBox() const { return mapBox_; }
    QTimer* StepTimer() const { return timer_; }
    bool OptionsUp() const;

    // ReDraw and the animation put back, shown.
    void Regenerate() override;
    // TrackTab_Click: 0 the map, 1 "Options".
    void TrackTab_Click(int tab);
    // One step of playback at the clock's present reading; the timer is set
    // again for the next while a panel plays.
    void PlayStep();

    // What the PlaybackViews of the hub ask of the form.
    void ShowPlayTime(int panel, const std::string& text);
    void RedrawMap();
    void PanelsChanged();
    void PlaybackStarted();
    // The map's panels (RunToDisplay, names, AutoPan, RunsDisplayed) from
    // the playback's, and back after a redraw re-bound them by name.
    void PanelsToMap();
    void PanelsFromMap();
    // Every text of the panels and the options from the engine's state.
    void RefreshControls();
    // After anything the map did: pointer, scroll bars, strips, shown.
    void AfterMapCall();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct PanelRow {
        QWidget* frame = nullptr;
        QLineEdit* runToDisplay = nullptr;
        QLineEdit* runName = nullptr;
        QLineEdit* playTime = nullptr;
        QLineEdit* jumpToTime = nullptr;
    };
    QWidget* BuildMapPage();
    QWidget* BuildOptionsPage();
    QWidget* BuildPanelRow(int index, bool common);
    void RebuildPanels();
    void SetScrollBars();
    void DrawStrips();
    void ScheduleStep(double notBefore);
    // A button of a panel row: the playback's handler, then the views shown.
    void PanelAction(const std::function<void()>& action);

    SurfaceBox* mapBox_ = nullptr;
    SurfaceBox* colorScale_ = nullptr;
    SurfaceBox* mapScale_ = nullptr;
    QLabel* scaleMin_ = nullptr;
    QLabel* scaleMax_ = nullptr;
    QLabel* scaleLabel_ = nullptr;
    QScrollBar* hScroll_ = nullptr;
    QScrollBar* vScroll_ = nullptr;
    QTabBar* tabs_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QWidget* panelsFrame_ = nullptr;
    QVBoxLayout* panelsLayout_ = nullptr;
    std::vector<PanelRow> rows_;
    std::vector<QToolButton*> modeButtons_;
    // Options
    VariableCombo* varToAdd_ = nullptr;
    QCheckBox* showVariable_ = nullptr;
    QLineEdit* numOfTicks_ = nullptr;
    VariableCombo* mapColorVar_ = nullptr;
    QCheckBox* showGVectors_ = nullptr;
    QCheckBox* reverseGVectors_ = nullptr;
    QCheckBox* showReferenceLap_ = nullptr;
    QCheckBox* autoPan_ = nullptr;
    QLineEdit* runsDisplayed_ = nullptr;
    std::vector<VariableCombo*> dashVar_;

    std::unique_ptr<TrackMap> map_;
    std::unique_ptr<Playback> playback_;
    QTimer* timer_ = nullptr;
    bool filling_ = false;
    bool scrolling_ = false;
};

}  // namespace tl::views
