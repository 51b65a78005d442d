// Synchronised playback: real time kept by an irregular clock across
// midnight, the rates of the buttons, panels played apart, the common row,
// the jumps and their limits, the previous and next marker on the demo road
// run against the simulation's lap crossings, and the control rules.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/playback.h"

namespace tl {
namespace {

// What playback asked of the views, in order.
struct RecordedViews : PlaybackViews {
    bool optionsUp = false;
    int started = 0, redraws = 0, panelChanges = 0;
    std::vector<std::vector<int32_t>> mapRows;
    std::vector<bool> panel0Playing;
    std::vector<std::string> playTimes;
    std::vector<int> closedDashboards;
    bool MapOptionsUp() const override { return optionsUp; }
    void ShowPlayTime(int, const std::string& text) override { playTimes.push_back(text); }
    void AnimateMap(const std::vector<int32_t>& rows, bool playing0) override {
        mapRows.push_back(rows);
        panel0Playing.push_back(playing0);
    }
    void RedrawMap() override { ++redraws; }
    void CloseDashboard(int panel) override { closedDashboards.push_back(panel); }
    void PanelsChanged() override { ++panelChanges; }
    void PlaybackStarted() override { ++started; }
};

// Two runs of 100 s (10,000 rows) with their Time column.
class PlaybackTest : public test::EngineTest {
  protected:
    static constexpr int32_t kRows = 10000;
    void SetUp() override {
        test::EngineTest::SetUp();
        SetConfig(Paths().TracelabCfgPath, PlainVarName(slot::Time), -1);
        SetAvailableVars();
        test::LayOutRuns(2, kRows, "run");
        Store().RunInfo[1].Name = "first";
        Store().RunInfo[2].Name = "second";
        float* t = SlotColumn(slot::Time);
        for (int n = 1; n <= 2; ++n)
            for (int32_t k = 0; k < kRows; ++k) t[Store().RunInfo[n].RunStart + k] = k / 100.0f;
    }
    // Steps at clock readings `step` apart until `seconds` of clock have gone.
    static void Run(Playback& pb, double& clock, double seconds, double step = 0.025) {
        for (double gone = 0; gone < seconds - 1e-9; gone += step) {
            clock += step;
            pb.Step(clock);
        }
    }
    RecordedViews views;
    double clock = 36000.0;
};

TEST_F(PlaybackTest, RealTimeOverAnIrregularClockAcrossMidnight) {
    // The clock starts 20 s before midnight and moves on by 0.013 to 0.031 s
    // between looks, as a busy event loop would; a step runs at the first
    // look at which the last one allows it.
    clock = 86400.0 - 20.0;
    Playback pb(views, [&] { return clock; });
    ASSERT_TRUE(pb.PlayButton_Click(0));
    EXPECT_EQ(views.started, 1);
    uint32_t seed = 12345;
    double gone = 0, lastStepAt = -1;
    double shortest = 1e9;
    int steps = 0, wraps = 0;
    PlayStep last;
    last.notBefore = last.end = clock;
    while (gone < 60.0) {
        seed = seed * 1664525u + 1013904223u;
        const double look = 0.013 + 0.018 * ((seed >> 8) / double(1u << 24));
        clock += look;
        gone += look;
        if (clock >= 86400.0) {
            clock -= 86400.0;
            ++wraps;
        }
        if (!last.Ready(clock)) continue;
        if (lastStepAt >= 0) shortest = std::min(shortest, gone - lastStepAt);
        lastStepAt = gone;
        last = pb.Step(clock);
        ASSERT_TRUE(last.playing);
        ++steps;
        const PlaybackPanel& p = pb.Panel(0);
        EXPECT_EQ(p.CurrentIndex, static_cast<int32_t>(std::floor(p.PlayTimes * 100.0)));
    }
    EXPECT_EQ(wraps, 1);
    EXPECT_GE(shortest, 0.02 - 1e-9);
    EXPECT_GT(steps, 60 * 20);  // about one step per 0.03 to 0.045 s
    EXPECT_LE(steps, 60 * 50);
    // 60 s of run time in 60 s of clock, within 0.5 %.
    EXPECT_NEAR(pb.Panel(0).PlayTimes, gone, 0.005 * 60.0);
    EXPECT_TRUE(pb.Panel(0).Playing);
    EXPECT_EQ(pb.Panel(0).PlayTime, views.playTimes.back());
}

TEST_F(PlaybackTest, RatesOfTheButtons) {
    Playback pb(views, [&] { return clock; });
    EXPECT_TRUE(pb.FForwardButton_Click(0));
    EXPECT_FALSE(pb.FForwardButton_Click(0));  // the loop already runs
    EXPECT_EQ(views.started, 1);
    EXPECT_EQ(pb.Panel(0).PlayRates, 4.0f);
    pb.FForwardButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 8.0f);
    pb.PlayButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 1.0f);
    pb.SlowPlayButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 0.25f);
    pb.FForwardButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 0.5f);  // a rate above 0 is doubled
    pb.RewindButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, -2.0f);
    pb.RewindButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, -4.0f);
    pb.FForwardButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 2.0f);
    pb.StopButton_Click(0);
    EXPECT_EQ(pb.Panel(0).PlayRates, 1.0f);
    EXPECT_FALSE(pb.Panel(0).Playing);
}

TEST_F(PlaybackTest, RewindFromZeroStopsAtZeroAndTheEndAtTheLastRow) {
    Playback pb(views, [&] { return clock; });
    pb.RewindButton_Click(0);
    clock += 0.03;
    const PlayStep s = pb.Step(clock);
    EXPECT_TRUE(s.stepped);
    EXPECT_FALSE(s.playing);
    EXPECT_EQ(pb.Panel(0).CurrentIndex, 0);
    EXPECT_EQ(pb.Panel(0).PlayTimes, 0.0f);
    EXPECT_EQ(pb.Panel(0).PlayRates, 1.0f);
    EXPECT_EQ(pb.Panel(0).PlayTime, "0.00");

    // Fast forward through the end: the last row, rate 1, stopped.
    pb.Panel(0).JumpToTime = "99.5";
    pb.JumpButton_Click(0);
    EXPECT_EQ(pb.Panel(0).CurrentIndex, 9950);
    pb.FForwardButton_Click(0);
    Run(pb, clock, 1.0);
    EXPECT_FALSE(pb.Panel(0).Playing);
    EXPECT_EQ(pb.Panel(0).CurrentIndex, kRows - 1);
    EXPECT_FLOAT_EQ(pb.Panel(0).PlayTimes, (kRows - 1) / 100.0f);
    EXPECT_EQ(pb.Panel(0).PlayRates, 1.0f);
    EXPECT_EQ(views.mapRows.back()[0], Store().RunInfo[1].RunEnd);
}

TEST_F(PlaybackTest, PanelsPlayApartAndTheCommonRowActsOnAll) {
    Playback pb(views, [&] { return clock; });
    pb.RunsDisplayed = "2";
    pb.RunsDisplayed_Change();
    ASSERT_EQ(pb.RunsInUse(), 2);
    pb.Panel(1).RunToDisplay = "2";
    pb.RunToDisplay_Change(1);
    EXPECT_EQ(pb.Panel(1).AniRunNameTxt, "second");

    EXPECT_TRUE(pb.PlayButton_Click(0));
    clock += 1.0;  // panel 1 stands still meanwhile
    pb.Step(clock);
    EXPECT_FALSE(pb.FForwardButton_Click(1));
    Run(pb, clock, 2.0);
    EXPECT_NEAR(pb.Panel(0).PlayTimes, 3.0, 0.011);
    EXPECT_NEAR(pb.Panel(1).PlayTimes, 4.0, 0.011);
    // The map was given each panel's row of its own run.
    const std::vector<int32_t>& rows = views.mapRows.back();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0], Store().RunInfo[1].RunStart + pb.Panel(0).CurrentIndex);
    EXPECT_EQ(rows[1], Store().RunInfo[2].RunStart + pb.Panel(1).CurrentIndex);
    EXPECT_TRUE(views.panel0Playing.back());

    // Index 2 is the common row: both stop; a pause and a restart of one
    // panel continue from where it stood.
    pb.StopButton_Click(2);
    EXPECT_FALSE(pb.Panel(0).Playing);
    EXPECT_FALSE(pb.Panel(1).Playing);
    const float stood = pb.Panel(0).PlayTimes;
    clock += 5.0;
    EXPECT_TRUE(pb.PlayButton_Click(5));
    EXPECT_EQ(pb.Panel(1).PlayRates, 1.0f);
    Run(pb, clock, 1.0);
    EXPECT_NEAR(pb.Panel(0).PlayTimes, stood + 1.0, 0.011);
    EXPECT_NEAR(pb.Panel(1).PlayTimes, 5.0, 0.03);
}

TEST_F(PlaybackTest, JumpLimitsAndTheJumpText) {
    Playback pb(views, [&] { return clock; });
    PlaybackPanel& p = pb.Panel(0);
    p.JumpToTime = "12,34";  // a comma reads as the point
    pb.JumpButton_Click(0);
    EXPECT_FLOAT_EQ(p.PlayTimes, 12.34f);
    EXPECT_EQ(p.CurrentIndex, 1234);
    EXPECT_EQ(views.mapRows.back()[0], Store().RunInfo[1].RunStart + 1234);
    EXPECT_EQ(views.playTimes.back(), "12.34");
    p.JumpToTime = "-3";
    pb.JumpButton_Click(0);
    EXPECT_EQ(p.PlayTimes, 0.0f);
    p.JumpToTime = "250";
    pb.JumpButton_Click(0);
    EXPECT_FLOAT_EQ(p.PlayTimes, 99.99f);
    EXPECT_EQ(p.CurrentIndex, kRows - 1);

    p.JumpToTime = "1000";
    pb.JumpToTime_LostFocus(0);
    EXPECT_EQ(p.JumpToTime, "99.99");
    p.JumpToTime = "7.5";
    pb.JumpToTime_LostFocus(0);
    EXPECT_EQ(p.JumpToTime, "7.50");
    pb.JumpTimeAdj_Change(0, -10);
    EXPECT_EQ(p.JumpToTime, "0.00");

    // A jump while playing holds: the time goes on from the new place.
    p.JumpToTime = "10";
    pb.JumpButton_Click(0);
    pb.PlayButton_Click(0);
    Run(pb, clock, 1.0);
    EXPECT_NEAR(p.PlayTimes, 11.0, 0.011);
    Run(pb, clock, 1.0);
    p.JumpToTime = "50";
    pb.JumpButton_Click(0);
    Run(pb, clock, 1.0);
    EXPECT_NEAR(p.PlayTimes, 51.0, 0.03);
}

TEST_F(PlaybackTest, RunsDisplayedAndAutoPan) {
    Playback pb(views, [&] { return clock; });
    pb.AutoPan = true;
    EXPECT_TRUE(pb.AutoPanEnabled);
    pb.RunsDisplayed = "2";
    pb.RunsDisplayed_Change();
    EXPECT_FALSE(pb.AutoPanEnabled);
    EXPECT_FALSE(pb.AutoPan);
    EXPECT_EQ(pb.RunsInUse(), 2);
    EXPECT_EQ(pb.PanelHeight(), 510);
    EXPECT_EQ(pb.Panel(1).RunToDisplay, "1");
    EXPECT_EQ(pb.Panel(1).AniRunNameTxt, "first");
    pb.RunsDisplayed = "14";
    pb.RunsDisplayed_Change();
    EXPECT_EQ(pb.RunsDisplayed, "10");
    EXPECT_EQ(pb.RunsInUse(), 10);
    pb.RunsDisplayed = "0";
    pb.RunsDisplayed_Change();
    EXPECT_EQ(pb.RunsDisplayed, "1");
    EXPECT_TRUE(pb.AutoPanEnabled);
    EXPECT_EQ(pb.RunsInUse(), 1);
    pb.RunsDisplayed = "3.7";
    pb.RunsDisplayed_Change();
    EXPECT_EQ(pb.RunsDisplayed, "3");
    EXPECT_EQ(views.panelChanges, 4);
}

TEST_F(PlaybackTest, RunToDisplayWrapsAndAChangeOfRunStops) {
    Playback pb(views, [&] { return clock; });
    PlaybackPanel& p = pb.Panel(0);
    p.RunToDisplay = "3";
    pb.RunToDisplay_Change(0);
    EXPECT_EQ(p.RunToDisplay, "1");
    EXPECT_EQ(views.redraws, 0);  // the same run: nothing else
    pb.PlayButton_Click(0);
    p.RunToDisplay = "0";
    pb.RunToDisplay_Change(0);
    EXPECT_EQ(p.RunToDisplay, "2");
    EXPECT_EQ(p.AniRunNameTxt, "second");
    EXPECT_EQ(p.LastRunInPanel, 2);
    EXPECT_FALSE(p.Playing);
    EXPECT_EQ(views.redraws, 1);
    EXPECT_EQ(views.mapRows.back()[0], Store().RunInfo[2].RunStart);
}

TEST_F(PlaybackTest, OptionsTabUpStopsTheRound) {
    Playback pb(views, [&] { return clock; });
    views.optionsUp = true;
    Profile().DebugFlag = true;
    pb.UpdateRunAnimation();
    Profile().DebugFlag = false;
    EXPECT_TRUE(views.mapRows.empty());
    EXPECT_TRUE(views.playTimes.empty());
    EXPECT_NE(
        test::ReadAll(Paths().LogPath).find("Animation Update aborted whilst track not in view!"),
        std::string::npos);
}

TEST_F(PlaybackTest, SyncedPlayOverTheScriptedClock) {
    // The loop form: the scripted clock moves 0.01 s per event; a run of
    // 3 s played through takes about 3 s of clock and at most 50 steps a
    // second.
    test::LayOutRuns(1, 300, "short");
    float* t = SlotColumn(slot::Time);
    for (int32_t k = 0; k < 300; ++k) t[1 + k] = k / 100.0f;
    Playback pb(views, [&] { return ui.SecondsSinceMidnight(); });
    pb.Panel(0).Playing = true;
    const double start = ui.SecondsSinceMidnight();
    pb.SyncedPlay(ui);
    const double took = ui.SecondsSinceMidnight() - start;
    EXPECT_FALSE(pb.Panel(0).Playing);
    EXPECT_EQ(pb.Panel(0).CurrentIndex, 299);
    EXPECT_NEAR(took, 3.0, 0.1);
    EXPECT_LE(views.mapRows.size(), 3.0 / 0.02 + 2);
}

// The previous and next marker on the demo road run, with the lap marker the
// first load places at its sharpest bend: the rows are the marker's
// crossings, one lap of the simulation's distance apart.
class PlaybackMarkers : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceLaps", 1);
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
        const std::string demo = test::DemoPath("demo_hx40_road");
        ASSERT_EQ(LoadDemoRun(), 1);
        // The true distance of every row, and the lap's length between the
        // line crossings.
        std::ifstream truth(demo + ".truth.csv");
        std::string line;
        std::getline(truth, line);
        while (std::getline(truth, line)) {
            std::stringstream fields(line);
            std::string time, lap, distance;
            std::getline(fields, time, ',');
            std::getline(fields, lap, ',');
            std::getline(fields, distance, ',');
            trueDistance.push_back(std::stod(distance));
        }
        std::ifstream laps(demo + ".laps.csv");
        std::getline(laps, line);
        std::vector<double> lines;
        while (std::getline(laps, line)) {
            std::stringstream fields(line);
            std::string f[6];
            for (std::string& x : f) std::getline(fields, x, ',');
            if (f[0] == "line") lines.push_back(std::stod(f[5]));
        }
        ASSERT_GE(lines.size(), 3u);
        lapLength = lines[2] - lines[1];
    }
    std::vector<double> trueDistance;  // per row from the run's start
    double lapLength = 0;
};

TEST_F(PlaybackMarkers, PreviousAndNextMarkerGoToTheLapCrossings) {
    const int lap = CheckForLapMarker();
    ASSERT_GT(lap, 0);
    const std::vector<int32_t>& crossings = MarkerCrossings(lap, 1);
    ASSERT_EQ(crossings.size(), 2u);  // two laps pass the bend
    const RunRecord& run = Store().RunInfo[1];
    ASSERT_EQ(trueDistance.size(), static_cast<size_t>(run.RunLength));
    const double apart =
        trueDistance[crossings[1] - run.RunStart] - trueDistance[crossings[0] - run.RunStart];
    EXPECT_NEAR(apart, lapLength, 10.0);

    RecordedViews views;
    Playback pb(views, [] { return 36000.0; });
    for (int32_t c : crossings) {
        pb.ForwardToMarker_Click(0);
        EXPECT_EQ(pb.PanelRow(0), c);
        EXPECT_EQ(views.mapRows.back()[0], c);
    }
    // At the last crossing the next marker is the run's end, and there it
    // stays.
    pb.ForwardToMarker_Click(0);
    EXPECT_EQ(pb.PanelRow(0), run.RunEnd);
    pb.ForwardToMarker_Click(0);
    EXPECT_EQ(pb.PanelRow(0), run.RunEnd);
    for (size_t k = crossings.size(); k-- > 0;) {
        pb.RewindToMarker_Click(0);
        EXPECT_EQ(pb.PanelRow(0), crossings[k]);
    }
    pb.RewindToMarker_Click(0);
    EXPECT_EQ(pb.PanelRow(0), run.RunStart);
    EXPECT_EQ(pb.Panel(0).PlayTimes, 0.0f);
}

}  // namespace
}  // namespace tl
