// The track map on the window's raster surface with the demo road run: every
// mark drawn twice leaves the picture bit for bit; a click finds the row
// nearest the point (against a search of every tenth row and the
// simulation's positions) and moves the other views; rotation keeps the
// centre, the zoom window and the zoom limits; a marker dragged across the
// start line makes the laps of the simulation and its deletion takes them
// away; the colour strip runs from low at the left to high at the right.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/track_map.h"

namespace tl {
namespace {

const std::string kDemo = test::DemoPath("demo_hx40_road");

struct RecordedLinks : TrackMapLinks {
    struct Move {
        int32_t row, run;
        int panel;
    };
    std::vector<Move> graphs, mini, table;
    int stops = 0;
    bool miniOpen = true, tableOpen = true;
    void StopPlayback() override { ++stops; }
    void MoveGraphs(int32_t row, int32_t run, int panel) override {
        graphs.push_back({row, run, panel});
    }
    bool MiniMapOpen() const override { return miniOpen; }
    void MoveMiniMap(int32_t row, int32_t run, int panel) override {
        mini.push_back({row, run, panel});
    }
    bool ValueTableOpen() const override { return tableOpen; }
    void MoveValueTable(int32_t row, int panel, int) override { table.push_back({row, 0, panel}); }
    int AskNewMarkerName() override {
        NewMarkerProposal p = ProposeNewMarker();
        if (p.index < 0 || !AcceptNewMarkerName(p.index, "Line", true)) return -1;
        return p.index;
    }
};

// The simulation's position of each row of the run.
struct Truth {
    std::vector<double> x, y;
};
Truth ReadTruth() {
    Truth t;
    std::ifstream in(kDemo + ".truth.csv");
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::stringstream ss(line);
        std::string f;
        for (int c = 0; c < 5 && std::getline(ss, f, ','); ++c) {
            if (c == 3) t.x.push_back(std::stod(f));
            if (c == 4) t.y.push_back(std::stod(f));
        }
    }
    return t;
}

class TrackMapTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        run_ = Store().RunInfo[1];
        map_.settings.MapColorVar = "GPS Speed [kph]";
        map_.ReDraw();
        picture_ = surface_.Image().copy();
    }
    bool Unchanged() const { return surface_.Image() == picture_; }
    // The screen point of a RunData row.
    void Screen(int32_t row, double& sx, double& sy) const {
        const double x = RunData(row, ColumnOf(slot::PositionX));
        const double y = RunData(row, ColumnOf(slot::PositionY));
        sx = map_.XPos2Screen(x, y);
        sy = map_.YPos2Screen(x, y);
    }

    render::RasterSurface surface_{1200, 700};
    RecordedLinks links_;
    TrackMap map_{surface_, &links_};
    RunRecord run_;
    QImage picture_;
};

TEST_F(TrackMapTest, EveryMarkDrawnTwiceLeavesThePicture) {
    const int32_t mid = run_.RunStart + run_.RunLength / 2;
    double sx = 0, sy = 0;
    Screen(mid, sx, sy);
    // The click cross of a graph.
    map_.UpDateGraphAni(mid, 1);
    EXPECT_FALSE(Unchanged());
    map_.UpDateGraphAni(mid, 1);
    EXPECT_TRUE(Unchanged());
    // The rubber bands.
    map_.view.MapDragStartX = 2000;
    map_.view.MapDragStartY = 1500;
    map_.view.MapDragX = 9000;
    map_.view.MapDragY = 7000;
    for (int k = 0; k < 2; ++k) {
        map_.DrawBox();
        map_.DrawTimeBound();
        EXPECT_EQ(Unchanged(), k == 1);
    }
    // The nearest-point cursor, dragged: down, two moves, up.
    map_.Map_MouseDown(1, sx, sy);
    EXPECT_FALSE(Unchanged());
    map_.Map_MouseMove(1, sx + 700, sy - 300);
    map_.Map_MouseMove(1, sx - 400, sy + 900);
    map_.Map_MouseUp(1, sx - 400, sy + 900);
    EXPECT_TRUE(Unchanged());
    EXPECT_EQ(links_.stops, 1);
    // Playback: two panels with g vectors; a step elsewhere and back gives
    // the first step's picture again, and a redraw forgets the dots.
    map_.settings.RunsInUse = 2;
    map_.settings.RunToDisplay = {"1", "1"};
    map_.settings.ShowGVectors = 1;
    map_.ReDraw();
    picture_ = surface_.Image().copy();
    map_.AnimateStep({mid, mid + 3000}, false);
    const QImage first = surface_.Image().copy();
    EXPECT_FALSE(Unchanged());
    EXPECT_NE(map_.view.LastLatX[0], map_.view.LastMarkX[0]);
    map_.AnimateStep({mid + 50, mid + 3100}, false);
    EXPECT_NE(surface_.Image(), first);
    map_.AnimateStep({mid, mid + 3000}, false);
    EXPECT_EQ(surface_.Image(), first);
    map_.ReDraw();
    EXPECT_TRUE(Unchanged());
    EXPECT_EQ(map_.view.MapDrawnFlag, 0);
    // Within five rows of the run's end the vectors have no length.
    map_.AnimateStep({run_.RunEnd - 3, run_.RunEnd + 40}, false);
    EXPECT_EQ(map_.view.LastLatX[0], map_.view.LastMarkX[0]);
    EXPECT_EQ(map_.view.LastLonY[1], map_.view.LastMarkY[1]);
}

TEST_F(TrackMapTest, ClickFindsTheNearestRowAndMovesTheOtherViews) {
    const Truth truth = ReadTruth();
    ASSERT_EQ(truth.x.size(), size_t(run_.RunLength));
    const float* x = Store().RunData.Column(ColumnOf(slot::PositionX)).data();
    const float* y = Store().RunData.Column(ColumnOf(slot::PositionY)).data();
    for (double f : {0.2, 0.37, 0.55, 0.81}) {
        // The simulation's position of a row, clicked on the screen.
        const size_t k = size_t(f * double(run_.RunLength));
        const double sx = map_.XPos2Screen(truth.x[k], truth.y[k]);
        const double sy = map_.YPos2Screen(truth.x[k], truth.y[k]);
        links_.graphs.clear();
        map_.Map_MouseDown(1, sx, sy);
        map_.Map_MouseUp(1, sx, sy);
        const int32_t row = map_.view.nearestRows[0];
        ASSERT_GE(row, run_.RunStart);
        // Every tenth row searched by hand.
        const double wx = map_.Screen2XPos(sx, sy), wy = map_.Screen2YPos(sx, sy);
        int32_t best = -1;
        double bestD = 1e300;
        for (int32_t i = run_.RunStart; i <= run_.RunEnd; i += 10) {
            const double d = std::hypot(x[i] - wx, y[i] - wy);
            if (d < bestD) bestD = d, best = i;
        }
        EXPECT_EQ(row, best) << f;
        // The row found was truly near the point: within the ten rows'
        // travel and the map's few metres of GPS error.
        const size_t tr = size_t(row - run_.RunStart);
        EXPECT_LT(std::hypot(truth.x[tr] - truth.x[k], truth.y[tr] - truth.y[k]), 12.0) << f;
        // Shown and erased: the graphs, the mini map and the table follow.
        ASSERT_EQ(links_.graphs.size(), 2u);
        EXPECT_EQ(links_.graphs[0].row, row);
        EXPECT_EQ(links_.graphs[0].run, 1);
        EXPECT_EQ(links_.mini.back().row, row);
        EXPECT_EQ(links_.table.back().row, row);
    }
}

TEST_F(TrackMapTest, RotationKeepsTheCentreAndZoomStaysInItsLimits) {
    const double W = surface_.ScaleWidth(), H = surface_.ScaleHeight();
    const double cx = map_.Screen2XPos(W / 2, H / 2), cy = map_.Screen2YPos(W / 2, H / 2);
    for (int k = 0; k < 9; ++k) map_.RotateCW_Click();
    map_.RotateCCW_Click();
    EXPECT_NEAR(map_.settings.ViewRotation, 8 * kPi / 36, 1e-5);
    EXPECT_NEAR(map_.Screen2XPos(W / 2, H / 2), cx, 1e-2);
    EXPECT_NEAR(map_.Screen2YPos(W / 2, H / 2), cy, 1e-2);
    // Under rotation a world point comes back from its screen point, and a
    // point far off stands at the clamp.
    for (double wx : {-300.0, 12.5, 640.0})
        for (double wy : {-450.0, 3.0, 220.0}) {
            const double sx = map_.XPos2Screen(wx, wy), sy = map_.YPos2Screen(wx, wy);
            ASSERT_GT(sx, -W);
            ASSERT_LT(sx, 5 * W);
            EXPECT_NEAR(map_.Screen2XPos(sx, sy), wx, 1e-2);
            EXPECT_NEAR(map_.Screen2YPos(sx, sy), wy, 1e-2);
        }
    EXPECT_EQ(map_.XPos2Screen(1e7, 0), 5 * W);
    EXPECT_EQ(map_.YPos2Screen(0, 1e7), -H);
    // The zoom's limits hold on a further press.
    map_.settings.ViewScale = 99;
    map_.ZoomOut_Click();
    map_.ZoomOut_Click();
    EXPECT_EQ(map_.settings.ViewScale, 100.0f);
    map_.settings.ViewScale = 0.011f;
    map_.ZoomIn_Click();
    map_.ZoomIn_Click();
    EXPECT_EQ(map_.settings.ViewScale, 0.01f);
}

TEST_F(TrackMapTest, ZoomWindowShowsTheDraggedRectangle) {
    map_.RotateCW_Click();
    const double W = surface_.ScaleWidth(), H = surface_.ScaleHeight();
    const float before = map_.settings.ViewScale;
    // The world point at the rectangle's centre comes to the map's centre.
    const double wx = map_.Screen2XPos(5000, 4000), wy = map_.Screen2YPos(5000, 4000);
    map_.ZoomWindow_Click();
    EXPECT_EQ(map_.view.pointer, MapPointer::Cross);
    map_.Map_MouseDown(1, 3000, 3000);
    map_.Map_MouseMove(1, 6000, 4500);
    map_.Map_MouseUp(1, 7000, 5000);
    EXPECT_FALSE(map_.view.ZoomWindowMode);
    EXPECT_EQ(map_.view.pointer, MapPointer::Default);
    EXPECT_NEAR(map_.Screen2XPos(W / 2, H / 2), wx, 0.05);
    EXPECT_NEAR(map_.Screen2YPos(W / 2, H / 2), wy, 0.05);
    EXPECT_NEAR(map_.settings.ViewScale, before * std::max(4000 / W, 2000 / H), 1e-4);
}

TEST_F(TrackMapTest, MarkerDraggedAcrossTheStartMakesTheLapsAndItsDeletionUndoesThem) {
    // The load placed the automatic markers: away with them.
    for (int i = 1; i < kTrackMarkerCount; ++i)
        if (!Markers().Entries[size_t(i)].Name.empty()) DeleteTrackMarker(i);
    ASSERT_TRUE(LapsOfRun(1).laps.empty());
    // The start line is at the origin, the track leaving it northwards.
    map_.AddNewNode_Click();
    map_.Map_MouseDown(1, map_.XPos2Screen(-15, 0), map_.YPos2Screen(-15, 0));
    map_.Map_MouseMove(1, map_.XPos2Screen(0, 0), map_.YPos2Screen(0, 0));
    map_.Map_MouseUp(1, map_.XPos2Screen(15, 0), map_.YPos2Screen(15, 0));
    const int lap = CheckForLapMarker();
    ASSERT_GE(lap, 1);
    // The laps of the simulation, each within a second: the road logger's
    // fixes come once a second, 0.9 s old, and the first crossing is made
    // at walking pace out of the start.
    std::ifstream in(kDemo + ".laps.csv");
    std::string line;
    std::vector<double> lapTimes;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("line,", 0) != 0) continue;
        const std::string last = line.substr(line.rfind(',') + 1);
        // The first crossing ends no lap (its time is 0).
        if (!last.empty() && std::stod(last) > 0) lapTimes.push_back(std::stod(last));
    }
    const RunLaps laps = LapsOfRun(1);
    ASSERT_EQ(laps.laps.size(), lapTimes.size());
    for (size_t i = 0; i < lapTimes.size(); ++i)
        EXPECT_NEAR(laps.laps[i].time, lapTimes[i], 1.0) << i;
    // Delete mode: a click on an end asks, Yes deletes, and the mode ends.
    const TrackMarker& m = Markers().Entries[size_t(lap)];
    map_.DeleteNode_Click();
    ui.yesNoAnswers.push_back(true);
    map_.Map_MouseDown(1, map_.XPos2Screen(m.X2, m.Y2) + 50, map_.YPos2Screen(m.X2, m.Y2));
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::YesNo, "Do you want to delete the track marker ?"));
    EXPECT_FALSE(map_.view.DeleteMarkerMode);
    EXPECT_EQ(CheckForLapMarker(), -1);
    EXPECT_TRUE(LapsOfRun(1).laps.empty());
}

TEST_F(TrackMapTest, ColourStripRunsFromLowAtTheLeftToHighAtTheRight) {
    ASSERT_TRUE(map_.view.strips.coded);
    EXPECT_EQ(map_.view.strips.ScaleMin, FormToSD(map_.view.strips.low, 3));
    EXPECT_EQ(map_.view.strips.ScaleMax, FormToSD(map_.view.strips.high, 3));
    EXPECT_LT(map_.view.strips.low, map_.view.strips.high);
    render::RasterSurface strip(200, 20);
    map_.DrawColorScale(strip);
    auto at = [&](int px) { return strip.Image().pixel(px, 10) & 0xFFFFFF; };
    // QImage pixels are 0xRRGGBB; the strip's colours run black, red, yellow.
    EXPECT_EQ(at(0), 0x020000u);
    EXPECT_EQ(qRed(at(100)), 255);
    EXPECT_EQ(qGreen(at(0)), 0);
    const int last = 195;  // the last line, at 2925 of 3000 twips
    EXPECT_EQ(qRed(at(last)), 255);
    EXPECT_EQ(qGreen(at(last)), 255);
    EXPECT_GT(qBlue(at(last)), 60);
    // The scale bar: a round number of metres, 400 to 2000 twips long.
    EXPECT_TRUE(map_.view.strips.barShown);
    EXPECT_GE(map_.view.strips.barLength, 400);
    EXPECT_LE(map_.view.strips.barLength, 2000);
    EXPECT_EQ(map_.view.strips.ScaleLabel.rfind("scale: ", 0), 0u);
}

}  // namespace
}  // namespace tl
