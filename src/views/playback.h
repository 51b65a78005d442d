// Synchronised playback: the track map form's control panels, one per
// displayed run, that play runs in real time, and the one round that brings
// every view to the playback positions (UpdateRunAnimation).
//
// All time is run time in seconds from the start of the run; a row is
// 0.01 s, so a position t stands for row Int(t x 100) from the run's
// RunStart.
//
// The loop (SyncedPlay) is cut for an event-driven window: Start() at the
// first press of a starting button, then Step(now) from a single-shot timer
// for as long as it says a panel plays, each time no sooner than the
// notBefore it returned (0.02 s after the end of the step's drawing, so at
// most 50 steps a second). The window never busy-waits; the buttons pressed
// between steps only change the panels' arrays, and the next step takes them
// up. SyncedPlay(clock) is the same loop over a Clock for tests and the
// command line.
//
// The widget side (the track map form) forwards its controls' events to the
// *_Click and *_Change members with the control's index (an index above
// RunsInUse() - 1 is the common row that acts on all panels), shows the
// panels' texts (PlayTime, AniRunNameTxt, RunToDisplay, JumpToTime) and
// RunsDisplayed / AutoPan, and implements PlaybackViews to reach the other
// views.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tl {

class Clock;
class Dashboard;
class GraphCursors;
class ValueTable;

// What playback moves, implemented by the window that owns the views. The
// defaults do nothing: playback with no views open.
class PlaybackViews {
  public:
    virtual ~PlaybackViews() = default;
    // The track map's "Options" tab is up: no animation then.
    virtual bool MapOptionsUp() const { return false; }
    // The PlayTime field of a panel shows a text ("0.00").
    virtual void ShowPlayTime(int /*panel*/, const std::string& /*text*/) {}
    // The map's dots and g vectors: per panel the absolute RunData row, and
    // whether panel 0 plays (AutoPan follows it only then).
    virtual void AnimateMap(const std::vector<int32_t>& /*rows*/, bool /*panel0Playing*/) {}
    // The map's ReDraw (after a change of a panel's run).
    virtual void RedrawMap() {}
    // The dashboard of a panel whose DashForms entry is in use, or null.
    virtual Dashboard* DashboardOf(int /*panel*/) { return nullptr; }
    // Makes a dashboard window for a panel and enters it in DashForms;
    // playback then sets its caption, variables, scales and first picture.
    // Null when none can be made.
    virtual Dashboard* CreateDashboard(int /*panel*/) { return nullptr; }
    // Closes the dashboard of a panel (ReGenerateAniControls closes those
    // beyond the number of runs displayed).
    virtual void CloseDashboard(int /*panel*/) {}
    // The open graphs (XYGraphForms entries not free).
    virtual std::vector<GraphCursors*> Graphs() { return {}; }
    // The value table when it is open, else null.
    virtual ValueTable* OpenValueTable() { return nullptr; }
    // The panels were loaded or unloaded: the map is resized by the strip of
    // PanelHeight().
    virtual void PanelsChanged() {}
    // A starting button began playback with no panel playing before: the
    // window starts its step timer (Step when notBefore has come).
    virtual void PlaybackStarted() {}
};

struct PlaybackPanel {
    float PlayTimes = 0;
    bool Playing = false;
    float PlayRates = 1;
    float PlayBases = 0;
    int32_t LastRunInPanel = 1;
    int32_t CurrentIndex = 0;
    int32_t PreviousIndex = 0;
    // The controls' texts.
    std::string RunToDisplay = "1";
    std::string AniRunNameTxt;
    std::string PlayTime = "0.00";
    std::string JumpToTime = "0.00";
};

// The result of one step of the loop.
struct PlayStep {
    // False when the step did not run because the clock had not moved on.
    bool stepped = false;
    // Some panel still plays: call Step again.
    bool playing = false;
    // The clock reading at the end of the step's drawing, and the earliest
    // clock at which the next step may run (end + 0.02 s; above 86400 near
    // midnight).
    double end = 0;
    double notBefore = 0;
    // The next step may run at clock reading now: 0.02 s have passed since
    // end, counted across midnight (a clock set back by other means counts
    // as a whole day gone, so playback never hangs on it).
    bool Ready(double now) const;
};

class Playback {
  public:
    static constexpr int kMaxPanels = 10;
    static constexpr double kMinStep = 0.02;
    static constexpr int32_t kPanelPitch = 255;  // twips per panel row

    // clock reads seconds since midnight; Timer() of the installed platform
    // when empty.
    explicit Playback(PlaybackViews& views, std::function<double()> clock = {});

    int RunsInUse() const { return static_cast<int>(panels_.size()); }
    int32_t PanelHeight() const { return RunsInUse() * kPanelPitch; }
    PlaybackPanel& Panel(int i) { return panels_[i]; }
    const PlaybackPanel& Panel(int i) const { return panels_[i]; }
    // The run of RunToDisplay(i).
    int32_t RunOf(int panel) const;
    // The panel's RunData row: CurrentIndex + RunStart, not beyond RunEnd.
    int32_t PanelRow(int panel) const;
    bool AnyPlaying() const;
    // The JumpToTime text of the common row (index RunsInUse()).
    std::string CommonJumpToTime = "0.00";

    // The number of runs text and the AutoPan check box.
    std::string RunsDisplayed = "1";
    bool AutoPanEnabled = true;
    bool AutoPan = false;

    // --- buttons (index above RunsInUse() - 1: all panels) ---
    // The starting buttons return true when they started playback (no panel
    // was playing before): the window then steps it.
    bool PlayButton_Click(int index);
    bool SlowPlayButton_Click(int index);
    bool FForwardButton_Click(int index);
    bool RewindButton_Click(int index);
    void StopButton_Click(int index);
    void JumpButton_Click(int index);
    void RewindToMarker_Click(int index);
    void ForwardToMarker_Click(int index);
    // The jump time text limited to the run's times and written "0.00";
    // JumpTimeAdj_Change moves it by the up-down's step first.
    void JumpToTime_LostFocus(int index);
    void JumpTimeAdj_Change(int index, double step);
    // The run number text wraps (above RunCount to "1", below 1 to
    // RunCount); a change of run stops the panel and redraws.
    void RunToDisplay_Change(int panel);
    // The number of runs limited to 1 ... 10 and written back whole; AutoPan
    // is enabled with exactly one run, else disabled and cleared. Then the
    // panels are regenerated.
    void RunsDisplayed_Change();
    void ReGenerateAniControls();

    // --- dashboards ---
    // The four DashVar selections on the form.
    std::array<std::string, 4> DashVar{"Select Variable", "Select Variable", "Select Variable",
                                       "Select Variable"};
    // ShowDash_Click: the number of runs applied, then a dashboard for each
    // panel that has none, captioned with its run, drawn at its row.
    void ShowDash_Click();
    // HideDash_Click: every dashboard in use closed.
    void HideDash_Click();
    // DashVar_click: every open dashboard takes the selections again.
    void DashVar_Click();

    // --- the loop ---
    // Step 1 of SyncedPlay: the clock noted, the playing panels' bases set.
    // Returns whether any panel plays.
    bool Start(double now);
    // One pass of steps 2.1 to 2.6 at clock reading now.
    PlayStep Step(double now);
    // The whole loop over a clock (events let run while it idles); all
    // panels stopped at its end.
    void SyncedPlay(Clock& clock);

    // Every view to the playback positions.
    void UpdateRunAnimation();

  private:
    // The panels an index acts on.
    template <class F>
    void ForPanels(int index, F&& f);
    // Shared by the starting buttons: the rate change, Playing set, the
    // loop started when nothing played.
    template <class F>
    bool StartButton(int index, F&& rate);
    // The jump time limited to the Time of the run's first and last rows.
    double LimitJump(int panel, double j) const;
    void ToMarker(int index, bool forward);
    void LoadPanel(PlaybackPanel& p);

    PlaybackViews& views_;
    std::function<double()> clock_;
    std::vector<PlaybackPanel> panels_;
    double last_ = 0;
};

}  // namespace tl
