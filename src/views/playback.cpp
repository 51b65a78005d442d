// Synchronised playback (see playback.h).
#include "views/playback.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "core/errors.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "views/dashboard.h"
#include "views/graph_cursors.h"
#include "views/value_table.h"

namespace tl {

namespace {

// The format "0.00".
std::string TwoDecimals(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.2f", v);
    std::string text = buf;
    if (text == "-0.00") text = "0.00";
    return text;
}

float TimeAtRow(int32_t row) {
    const RunArray& rd = Store().RunData;
    const int32_t c = ColumnOf(slot::Time);
    if (row < 0 || row > rd.UpperRow() || c < 0 || c >= rd.Columns()) return 0;
    return rd(row, c);
}

const RunRecord& RecordOf(int32_t run) {
    return Store().RunInfo[std::clamp<int32_t>(run, 0, 11)];
}

constexpr double kDay = 86400.0;

}  // namespace

bool PlayStep::Ready(double now) const {
    double since = now - end;
    if (since < 0) since += kDay;
    return since >= notBefore - end;
}

Playback::Playback(PlaybackViews& views, std::function<double()> clock)
    : views_(views), clock_(std::move(clock)) {
    if (!clock_) clock_ = [] { return Timer(); };
    panels_.resize(1);
    LoadPanel(panels_[0]);
}

void Playback::LoadPanel(PlaybackPanel& p) {
    p = PlaybackPanel{};
    p.RunToDisplay = "1";
    p.AniRunNameTxt = Store().RunInfo[1].Name;
    p.LastRunInPanel = 1;
}

int32_t Playback::RunOf(int panel) const {
    const double v = GetVal(panels_[panel].RunToDisplay);
    return std::clamp<int32_t>(static_cast<int32_t>(std::floor(v)), 1, 11);
}

int32_t Playback::PanelRow(int panel) const {
    const RunRecord& r = RecordOf(RunOf(panel));
    return std::min(panels_[panel].CurrentIndex + r.RunStart, r.RunEnd);
}

bool Playback::AnyPlaying() const {
    return std::any_of(panels_.begin(), panels_.end(),
                       [](const PlaybackPanel& p) { return p.Playing; });
}

template <class F>
void Playback::ForPanels(int index, F&& f) {
    if (index < 0) return;
    if (index > RunsInUse() - 1) {
        for (int i = 0; i < RunsInUse(); ++i) f(i);
    } else {
        f(index);
    }
}

template <class F>
bool Playback::StartButton(int index, F&& rate) {
    const bool wasPlaying = AnyPlaying();
    ForPanels(index, [&](int i) {
        PlaybackPanel& p = panels_[i];
        // A panel that stood still takes its time up from where it stands.
        if (!p.Playing) p.PlayBases = 0;
        p.PlayRates = rate(p.PlayRates);
        p.Playing = true;
    });
    if (wasPlaying) return false;
    Start(clock_());
    views_.PlaybackStarted();
    return true;
}

bool Playback::PlayButton_Click(int index) {
    return StartButton(index, [](float) { return 1.0f; });
}

bool Playback::SlowPlayButton_Click(int index) {
    return StartButton(index, [](float) { return 0.25f; });
}

bool Playback::FForwardButton_Click(int index) {
    return StartButton(index, [](float r) { return r > 0 ? 2 * r : 2.0f; });
}

bool Playback::RewindButton_Click(int index) {
    return StartButton(index, [](float r) { return r < 0 ? 2 * r : -2.0f; });
}

void Playback::StopButton_Click(int index) {
    ForPanels(index, [&](int i) {
        PlaybackPanel& p = panels_[i];
        p.PlayRates = 1;
        p.Playing = false;
        p.PlayBases = 0;
    });
}

double Playback::LimitJump(int panel, double j) const {
    const RunRecord& r = RecordOf(RunOf(panel));
    const double first = TimeAtRow(r.RunStart), last = TimeAtRow(r.RunEnd);
    if (first <= j && j <= last) return j;
    return j >= last ? last : first;
}

void Playback::JumpButton_Click(int index) {
    if (index < 0) return;
    Procedure("JumpButton_Click", [&] {
        const std::string text =
            index > RunsInUse() - 1 ? CommonJumpToTime : panels_[index].JumpToTime;
        const double j = GetVal(text);
        ForPanels(index, [&](int i) {
            PlaybackPanel& p = panels_[i];
            p.PlayTimes = static_cast<float>(LimitJump(i, j));
            p.CurrentIndex = static_cast<int32_t>(std::floor(p.PlayTimes * 100.0 + 0.5));
            p.PlayBases = 0;
        });
        UpdateRunAnimation();
    });
}

void Playback::JumpToTime_LostFocus(int index) {
    if (index < 0) return;
    const bool common = index > RunsInUse() - 1;
    std::string& text = common ? CommonJumpToTime : panels_[index].JumpToTime;
    text = TwoDecimals(LimitJump(common ? 0 : index, GetVal(text)));
}

void Playback::JumpTimeAdj_Change(int index, double step) {
    if (index < 0) return;
    std::string& text = index > RunsInUse() - 1 ? CommonJumpToTime : panels_[index].JumpToTime;
    text = TwoDecimals(GetVal(text) + step);
    JumpToTime_LostFocus(index);
}

void Playback::ToMarker(int index, bool forward) {
    const auto& entries = Markers().Entries;
    ForPanels(index, [&](int i) {
        PlaybackPanel& p = panels_[i];
        const int32_t run = RunOf(i);
        const RunRecord& r = RecordOf(run);
        const auto cur = static_cast<int32_t>(std::nearbyint(p.PlayTimes * 100.0 + r.RunStart));
        int32_t best = forward ? r.RunEnd : r.RunStart;
        for (int m = 0; m < static_cast<int>(entries.size()); ++m) {
            if (entries[m].Name.empty()) continue;
            for (int32_t row : MarkerCrossings(m, run)) {
                if (forward ? (row > cur && row < best) : (row < cur && row > best)) best = row;
            }
        }
        const float t = TimeAtRow(best);
        p.PlayTimes = t;
        p.CurrentIndex = static_cast<int32_t>(std::floor(t * 100.0 + 0.5));
        p.PlayBases = 0;
        LogDebug(forward ? "Jump to next track marker"
                         : "jumping to the next track marker at index: " + std::to_string(best));
    });
    UpdateRunAnimation();
}

void Playback::RewindToMarker_Click(int index) {
    Procedure("RewindToMarker_Click", [&] { ToMarker(index, false); });
}

void Playback::ForwardToMarker_Click(int index) {
    Procedure("ForwardToMarker_Click", [&] { ToMarker(index, true); });
}

void Playback::RunToDisplay_Change(int panel) {
    if (panel < 0 || panel >= RunsInUse()) return;
    Procedure("RunToDisplay_Change", [&] {
        PlaybackPanel& p = panels_[panel];
        const int32_t count = Store().RunCount;
        const double v = GetVal(p.RunToDisplay);
        if (v > count) {
            p.RunToDisplay = "1";
        } else if (v < 1) {
            p.RunToDisplay = std::to_string(count);
        }
        const int32_t run = RunOf(panel);
        p.AniRunNameTxt = Store().RunInfo[run].Name;
        if (run == p.LastRunInPanel) return;
        p.LastRunInPanel = run;
        StopButton_Click(panel);
        LogDebug("All animations stoped as another run was selected");
        if (Dashboard* d = views_.DashboardOf(panel)) {
            d->SetRunName(Store().RunInfo[run].Name);
            d->UpdateDash(PanelRow(panel));
        }
        views_.RedrawMap();
        UpdateRunAnimation();
    });
}

void Playback::RunsDisplayed_Change() {
    const int n = static_cast<int>(std::floor(GetVal(RunsDisplayed)));
    if (n > kMaxPanels) {
        RunsDisplayed = "10";
    } else if (n < 1) {
        RunsDisplayed = "1";
    } else {
        RunsDisplayed = std::to_string(n);
    }
    if (GetVal(RunsDisplayed) == 1) {
        AutoPanEnabled = true;
    } else {
        AutoPanEnabled = false;
        AutoPan = false;
    }
    ReGenerateAniControls();
}

void Playback::ReGenerateAniControls() {
    const int n = std::clamp(static_cast<int>(std::floor(GetVal(RunsDisplayed))), 1, kMaxPanels);
    for (int i = kMaxPanels - 1; i >= n; --i)
        if (views_.DashboardOf(i)) views_.CloseDashboard(i);
    if (n == RunsInUse()) return;
    while (RunsInUse() > n) panels_.pop_back();
    while (RunsInUse() < n) {
        panels_.emplace_back();
        LoadPanel(panels_.back());
    }
    views_.PanelsChanged();
}

void Playback::ShowDash_Click() {
    Procedure("ShowDash_Click", [&] {
        RunsDisplayed_Change();
        ReGenerateAniControls();
        for (int i = 0; i < RunsInUse(); ++i) {
            if (views_.DashboardOf(i)) continue;
            Dashboard* d = views_.CreateDashboard(i);
            if (!d) continue;
            d->SetRunName(Store().RunInfo[RunOf(i)].Name);
            d->DashVar = DashVar;
            d->FindDialLimits();
            d->ReDrawDash();
            d->UpdateDash(PanelRow(i));
        }
    });
}

void Playback::HideDash_Click() {
    for (int i = 0; i < kMaxPanels; ++i)
        if (views_.DashboardOf(i)) views_.CloseDashboard(i);
}

void Playback::DashVar_Click() {
    Procedure("DashVar_click", [&] {
        for (int i = 0; i < kMaxPanels; ++i) {
            Dashboard* d = views_.DashboardOf(i);
            if (!d) continue;
            d->DashVar = DashVar;
            d->Refresh();
        }
    });
}

bool Playback::Start(double now) {
    last_ = now;
    bool any = false;
    for (PlaybackPanel& p : panels_) {
        if (!p.Playing) continue;
        any = true;
        p.PlayBases = static_cast<float>(now - p.PlayTimes);
    }
    return any;
}

PlayStep Playback::Step(double now) {
    PlayStep result;
    double dt = now - last_;
    if (dt == 0) {
        // The clock has not moved on since the last step: nothing to do yet.
        result.playing = AnyPlaying();
        result.end = result.notBefore = now;
        return result;
    }
    if (dt < 0) {
        // The clock passed midnight: no time is counted for this step, and
        // the panels at rate 1 follow the clock again from where they stand.
        dt = 0;
        for (PlaybackPanel& p : panels_)
            if (p.Playing) p.PlayBases = 0;
    }
    last_ = now;
    Procedure("SyncedPlay", [&] {
        ValueTable* table = views_.OpenValueTable();
        for (int i = 0; i < RunsInUse(); ++i) {
            PlaybackPanel& p = panels_[i];
            if (!p.Playing) continue;
            const RunRecord& r = RecordOf(RunOf(i));
            if (p.PlayRates != 1 || p.PlayBases <= 0) {
                p.PlayTimes += static_cast<float>(dt * p.PlayRates);
                p.PlayBases = static_cast<float>(now - p.PlayTimes);
            } else {
                p.PlayTimes = static_cast<float>(now - p.PlayBases);
            }
            p.PreviousIndex = p.CurrentIndex;
            p.CurrentIndex = static_cast<int32_t>(std::floor(p.PlayTimes * 100.0));
            if (p.CurrentIndex >= 0 && p.CurrentIndex >= r.RunLength - 1) {
                p.CurrentIndex = std::max(r.RunLength - 1, 0);
                p.PlayTimes = static_cast<float>(p.CurrentIndex / 100.0);
                p.Playing = false;
                p.PlayRates = 1;
            }
            if (p.CurrentIndex < 0) {
                p.CurrentIndex = 0;
                p.PlayTimes = 0;
                p.Playing = false;
                p.PlayRates = 1;
            }
            if (table)
                table->UpDateMultiVarTable(p.CurrentIndex + r.RunStart, i + 1, RunsInUse(), i);
        }
    });
    UpdateRunAnimation();
    result.stepped = true;
    result.end = clock_();
    result.notBefore = result.end + kMinStep;
    result.playing = AnyPlaying();
    return result;
}

void Playback::SyncedPlay(Clock& clock) {
    auto saved = clock_;
    clock_ = [&clock] { return clock.SecondsSinceMidnight(); };
    if (Start(clock.SecondsSinceMidnight())) {
        for (;;) {
            const PlayStep r = Step(clock.SecondsSinceMidnight());
            if (!r.stepped) {
                clock.DoEvents();
                continue;
            }
            // Idle until 0.02 s have passed.
            while (!r.Ready(clock.SecondsSinceMidnight())) clock.DoEvents();
            if (!AnyPlaying()) break;
        }
    }
    for (PlaybackPanel& p : panels_) p.Playing = false;
    clock_ = saved;
}

void Playback::UpdateRunAnimation() {
    if (views_.MapOptionsUp()) {
        LogDebug("Animation Update aborted whilst track not in view!");
        return;
    }
    Procedure("UpdateRunAnimation", [&] {
        const int n = RunsInUse();
        std::vector<int32_t> rows(n);
        for (int i = 0; i < n; ++i) {
            PlaybackPanel& p = panels_[i];
            p.PlayTime = TwoDecimals(p.PlayTimes);
            views_.ShowPlayTime(i, p.PlayTime);
            rows[i] = PanelRow(i);
        }
        views_.AnimateMap(rows, panels_[0].Playing);
        for (int i = 0; i < n; ++i)
            if (Dashboard* d = views_.DashboardOf(i)) d->UpdateDash(rows[i]);
        for (GraphCursors* g : views_.Graphs()) {
            if (!g) continue;
            const bool drawn = g->CursorDrawn;
            for (int i = 0; i < n; ++i) {
                const PlaybackPanel& p = panels_[i];
                const int32_t run = RunOf(i);
                const int32_t start = RecordOf(run).RunStart;
                if (drawn) g->UpDateGraphAni(p.PreviousIndex + start, run, i, 2);
                g->UpDateGraphAni(p.CurrentIndex + start, run, i, 2);
            }
            g->CursorDrawn = true;
        }
        for (PlaybackPanel& p : panels_) p.PreviousIndex = p.CurrentIndex;
    });
}

}  // namespace tl
