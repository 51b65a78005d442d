// The marks on a drawn XY graph, on the window's raster surface with the demo
// road run: every mark drawn twice leaves the picture as it was, bit for bit;
// a click finds the row whose time the click points at and moves the other
// views there; the playback cursor stands where its row's value puts it; a
// zoom drag turns the dragged window into the new ranges; Ctrl+C copies.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/graph_cursors.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace tl {
namespace {

// What a graph asked of the other views, in order.
struct RecordedLinks : GraphLinks {
    struct Move {
        int32_t row, run;
        int colour, mode;
    };
    bool mapOpen = false, tableOpen = false, miniOpen = false;
    int stops = 0, animations = 0;
    std::vector<Move> graphs;
    std::vector<int32_t> map, table, mini;
    bool TrackMapOpen() const override { return mapOpen; }
    void StopPlayback() override { ++stops; }
    void MoveTrackMap(int32_t row, int) override { map.push_back(row); }
    void MoveOtherGraphs(const GraphCursors*, int32_t row, int32_t run, int colour,
                         int mode) override {
        graphs.push_back({row, run, colour, mode});
    }
    bool ValueTableOpen() const override { return tableOpen; }
    void MoveValueTable(int32_t row) override { table.push_back(row); }
    bool MiniMapOpen() const override { return miniOpen; }
    void MoveMiniMap(int32_t, int32_t row) override { mini.push_back(row); }
    void UpdateRunAnimation() override { ++animations; }
};

class GraphCursorsTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        run_ = Store().RunInfo[1];
    }
    // Speed (and engine speed) against time, every row, on a 1200 x 700
    // pixel box.
    void Prepare(bool multipleX, bool twoSlots = true) {
        g.Load(1);
        g.settings.FastPlot = 0;
        g.settings.MultipleXAxis = multipleX ? 1 : 0;
        g.settings.Slots[0].SelYAxis = "GPS Speed [kph]";
        g.SelYAxis_Click(0);
        if (twoSlots) {
            g.settings.Slots[1].SelYAxis = "Engine Speed [rpm]";
            g.SelYAxis_Click(1);
        }
        g.MultipleXAxis_Click();
        g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
        g.ReGenerateGraph();
        cursors.Paint();
        picture_ = surface.Image().copy();
    }
    // The surface x of a time on slot 0's axis.
    double XOf(double seconds) const {
        const GraphFrame f = FrameOf(g, surface);
        return f.X(seconds, g.axis[0]);
    }
    bool Unchanged() const { return surface.Image() == picture_; }
    int ChangedPixels() const {
        int n = 0;
        const QImage& now = surface.Image();
        for (int y = 0; y < now.height(); ++y)
            for (int x = 0; x < now.width(); ++x) n += now.pixel(x, y) != picture_.pixel(x, y);
        return n;
    }
    // Pixel columns that differ from the picture.
    std::vector<int> ChangedColumns() const {
        std::vector<int> cols;
        const QImage& now = surface.Image();
        for (int x = 0; x < now.width(); ++x)
            for (int y = 0; y < now.height(); ++y)
                if (now.pixel(x, y) != picture_.pixel(x, y)) {
                    cols.push_back(x);
                    break;
                }
        return cols;
    }

    GraphModel g;
    render::RasterSurface surface{1200, 700, 96.0};
    RecordedLinks links;
    GraphCursors cursors{g, surface, &links};
    RunRecord run_;
    QImage picture_;
};

TEST_F(GraphCursorsTest, EveryMarkDrawnTwiceLeavesThePictureBitForBit) {
    Prepare(true);
    const double y = surface.ScaleHeight() / 2;
    // The nearest-point cursor (line and per-slot cross and circle).
    cursors.DragX = XOf(40.0);
    cursors.DragY = y;
    cursors.ShowNearestValueAxis(1);
    EXPECT_GT(ChangedPixels(), 100);
    cursors.ShowNearestValueAxis(0);
    // The read-outs are overprinted in white beside the axes, where the
    // picture is white.
    EXPECT_TRUE(Unchanged()) << ChangedPixels() << " pixels differ";
    // The free read-out in invert.
    cursors.ShowGraphValue(1);
    EXPECT_GT(ChangedPixels(), 100);
    cursors.ShowGraphValue(0);
    EXPECT_TRUE(Unchanged());
    // The rubber band.
    cursors.DragStartX = XOf(20.0);
    cursors.DragStartY = 1000;
    cursors.DrawBox();
    EXPECT_GT(ChangedPixels(), 100);
    cursors.DrawBox();
    EXPECT_TRUE(Unchanged());
    // The playback cursor, with and without its texts.
    const int32_t row = run_.RunStart + 6000;
    cursors.UpDateGraphAni(row, 1, 0, 1);
    EXPECT_GT(ChangedPixels(), 20);
    cursors.UpDateGraphAni(row, 1, 0, 0);
    EXPECT_TRUE(Unchanged());
    cursors.UpDateGraphAni(row, 1, 3, 2);
    cursors.UpDateGraphAni(row, 1, 3, 2);
    EXPECT_TRUE(Unchanged());
    // The multi-point search's cross and circles go; its read-outs are
    // printed on the show alone and stay in the strips beside the axes.
    g.settings.SelectMultiNearestChk = 1;
    cursors.ShowNearestValueAxis(1);
    cursors.ShowNearestValueAxis(0);
    {
        const GraphFrame f = FrameOf(g, surface);
        const double ppt = surface.PixelsPerTwip();
        const QImage& now = surface.Image();
        int inPlot = 0, inStrips = 0;
        for (int yy = 0; yy < now.height(); ++yy)
            for (int x = 0; x < now.width(); ++x) {
                if (now.pixel(x, yy) == picture_.pixel(x, yy)) continue;
                const bool strip = yy < 0.05 * f.H * ppt || yy > (f.H - f.bottom + 200) * ppt;
                (strip ? inStrips : inPlot) += 1;
            }
        EXPECT_EQ(inPlot, 0);
        EXPECT_GT(inStrips, 0);
    }
}

TEST_F(GraphCursorsTest, AClickFindsTheRowOfItsTimeAndMovesTheOtherViews) {
    Prepare(false);
    links.tableOpen = true;
    links.miniOpen = true;
    const double clicked = 61.3;
    cursors.MouseDown(kLeftButton, 0, XOf(clicked), 2000);
    ASSERT_TRUE(cursors.NearestCursorActive);
    // Time is 0.01 s a row from the run's start: the crossing search finds
    // the row of 61.30 s (or the one before it, where the click falls
    // between two rows).
    ASSERT_EQ(links.graphs.size(), 1u);
    const int32_t expected = run_.RunStart + 6130;
    EXPECT_LE(std::abs(links.graphs[0].row - expected), 1) << links.graphs[0].row;
    EXPECT_EQ(links.graphs[0].run, 1);
    // One X axis: the other views move once, with colour 0 and the show
    // mode; the value table and the mini map with the same row.
    EXPECT_EQ(links.graphs[0].colour, 0);
    EXPECT_EQ(links.graphs[0].mode, 1);
    ASSERT_EQ(links.table.size(), 1u);
    EXPECT_EQ(links.table[0], links.graphs[0].row);
    ASSERT_EQ(links.mini.size(), 1u);
    EXPECT_EQ(links.mini[0], links.graphs[0].row);
    // The found rows of both slots are the same sample: they share the X.
    EXPECT_EQ(cursors.NearestRows()[0], cursors.NearestRows()[1]);
    // Dragging moves the cursor; the release takes every mark away.
    cursors.MouseMove(kLeftButton, 0, XOf(90.0), 2500);
    EXPECT_LE(std::abs(links.graphs.back().row - (run_.RunStart + 9000)), 1);
    EXPECT_FALSE(cursors.MouseUp(kLeftButton, 0, XOf(90.0), 2500));
    EXPECT_FALSE(cursors.NearestCursorActive);
    EXPECT_TRUE(Unchanged()) << ChangedPixels() << " pixels differ";
    // The erasing calls reach the other graphs too, in pairs: down, move
    // (erase + draw), up (erase).
    EXPECT_EQ(links.graphs.size(), 4u);
    EXPECT_EQ(links.graphs[1].mode, 0);
    EXPECT_EQ(links.graphs[3].mode, 0);
    // With the track map open a press stops playback first and the map
    // follows the click.
    links.mapOpen = true;
    cursors.MouseDown(kLeftButton, 0, XOf(clicked), 2000);
    EXPECT_EQ(links.stops, 1);
    ASSERT_EQ(links.map.size(), 1u);
    EXPECT_LE(std::abs(links.map[0] - expected), 1);
    cursors.MouseUp(kLeftButton, 0, XOf(clicked), 2000);
    // Only the left button acts.
    const size_t moves = links.graphs.size();
    cursors.MouseDown(2, 0, XOf(clicked), 2000);
    EXPECT_EQ(links.graphs.size(), moves);
    EXPECT_FALSE(cursors.NearestCursorActive);
}

TEST_F(GraphCursorsTest, WithSeveralXAxesEachSlotMovesTheViewsInItsOwnColour) {
    Prepare(true);
    cursors.DragX = XOf(30.0);
    cursors.DragY = 3000;
    cursors.ShowNearestValueAxis(1);
    ASSERT_EQ(links.graphs.size(), 2u);
    EXPECT_EQ(links.graphs[0].colour, 0);
    EXPECT_EQ(links.graphs[1].colour, 1);
    EXPECT_EQ(links.graphs[0].mode, 2);
    EXPECT_EQ(links.graphs[1].mode, 2);
    EXPECT_LE(std::abs(links.graphs[0].row - (run_.RunStart + 3000)), 1);
    cursors.ShowNearestValueAxis(0);
    EXPECT_TRUE(Unchanged());
}

TEST_F(GraphCursorsTest, ThePlaybackLineStandsWhereItsRowsTimeFallsAndOnlyForItsRun) {
    Prepare(false, false);
    const int32_t row = run_.RunStart + 8000;  // 80.00 s
    cursors.UpDateGraphAni(row, 1, 2, 2);
    // One X axis: one vertical line at (W - left) x 0.95 x f + left.
    const GraphFrame f = FrameOf(g, surface);
    const GraphAxis& a = g.axis[0];
    const double fx = (80.0 - a.XMin) / (a.XMax - a.XMin);
    const double x = (f.W - f.left) * 0.95 * fx + f.left;
    const std::vector<int> cols = ChangedColumns();
    ASSERT_EQ(cols.size(), 1u);
    EXPECT_EQ(cols[0], static_cast<int>(std::floor(x * surface.PixelsPerTwip())));
    // In the colour of the index: XOR of the inverted colour on white.
    const QImage& img = surface.Image();
    const int mid = img.height() / 2;
    if (picture_.pixel(cols[0], mid) == qRgb(255, 255, 255)) {
        const uint32_t c = VqColorIndex(2, false);
        EXPECT_EQ(img.pixel(cols[0], mid), qRgb(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF));
    }
    cursors.UpDateGraphAni(row, 1, 2, 2);
    EXPECT_TRUE(Unchanged());
    // Another run, the Setup tab, or playback cursor switched off: nothing.
    cursors.UpDateGraphAni(row, 2, 2, 1);
    EXPECT_TRUE(Unchanged());
    cursors.graphTabUp = false;
    cursors.UpDateGraphAni(row, 1, 2, 1);
    EXPECT_TRUE(Unchanged());
    cursors.graphTabUp = true;
    g.settings.RealTimeUpdate = 0;
    cursors.UpDateGraphAni(row, 1, 2, 1);
    EXPECT_TRUE(Unchanged());
}

TEST_F(GraphCursorsTest, ThePlaybackCrossLeavesOutRowsOutsideTheRangesAndTheCondition) {
    Prepare(true, false);
    // Speed above 60 kph only.
    g.settings.LimitVariables = 1;
    g.settings.Slots[0].LimitVar = "GPS Speed [kph]";
    g.settings.Slots[0].DisplayIf = 1;
    g.settings.Slots[0].LimitVarMin = "60";
    g.settings.Slots[0].LimitVarMax = "1000";
    g.ReGenerateGraph();
    cursors.Paint();
    picture_ = surface.Image().copy();
    const float* speed = Store().RunData.Column(FindVarIndex("GPS Speed [kph]")).data();
    int32_t slow = -1, fast = -1;
    for (int32_t i = run_.RunStart + 100; i < run_.RunEnd - 100 && (slow < 0 || fast < 0); ++i) {
        if (slow < 0 && speed[i] > 5 && speed[i] < 50) slow = i;
        if (fast < 0 && speed[i] > 80) fast = i;
    }
    ASSERT_GE(slow, 0);
    ASSERT_GE(fast, 0);
    cursors.UpDateGraphAni(slow, 1, 0, 2);
    EXPECT_TRUE(Unchanged());
    cursors.UpDateGraphAni(fast, 1, 0, 2);
    EXPECT_GT(ChangedPixels(), 20);
    cursors.UpDateGraphAni(fast, 1, 0, 2);
    EXPECT_TRUE(Unchanged());
}

TEST_F(GraphCursorsTest, AZoomDragBecomesTheNewRangesAndGoesBack) {
    Prepare(false, false);
    const GraphAxis before = g.axis[0];
    g.ZoomBtn_Click(1);
    ASSERT_TRUE(g.ZoomWindowActive);
    const GraphFrame f = FrameOf(g, surface);
    const double y1 = f.Y(before.YMin + 0.8 * (before.YMax - before.YMin), before);
    const double y2 = f.Y(before.YMin + 0.2 * (before.YMax - before.YMin), before);
    cursors.MouseDown(kLeftButton, 0, XOf(50.0), y1);
    cursors.MouseMove(kLeftButton, 0, XOf(80.0), y2);
    EXPECT_GT(ChangedPixels(), 100);
    EXPECT_TRUE(cursors.MouseUp(kLeftButton, 0, XOf(110.0), y2));
    EXPECT_FALSE(g.ZoomWindowActive);
    // The typed limits are the dragged window's, the boxes ticked; the shown
    // range is what CalcMinMaxs makes of them.
    const GraphSlotSettings& s0 = g.settings.Slots[0];
    EXPECT_EQ(s0.AutoMinX, 1);
    EXPECT_NEAR(GetVal(s0.MinXAxis), 50.0, 0.05);
    EXPECT_NEAR(GetVal(s0.MaxXAxis), 110.0, 0.05);
    EXPECT_NEAR(GetVal(s0.MinYAxis), before.YMin + 0.2 * (before.YMax - before.YMin),
                0.01 * (before.YMax - before.YMin));
    EXPECT_NEAR(g.axis[0].XMin, 50.0, 0.05);
    EXPECT_NEAR(g.axis[0].XMax, 110.0, 0.05);
    EXPECT_EQ(g.ZoomCurrent(), 1);
    // Back: the ranges of before the zoom.
    g.GoBackZoomLevel();
    EXPECT_FLOAT_EQ(g.axis[0].XMin, before.XMin);
    EXPECT_FLOAT_EQ(g.axis[0].XMax, before.XMax);
}

TEST_F(GraphCursorsTest, CtrlCCopiesThePointsBehindTheWaitForm) {
    Prepare(false, false);
    EXPECT_FALSE(cursors.KeyPress('c'));
    EXPECT_TRUE(ui.clipboard.empty());
    EXPECT_TRUE(cursors.KeyPress(3));
    EXPECT_EQ(ui.clipboard, g.ClipboardText());
    // The heading row names the X and Y of each slot; slot 0's first data
    // row is the run's third row (row 1 of the points is never copied).
    const std::string head = g.axis[0].XTitle + "\tGPS Speed [kph]\t";
    EXPECT_EQ(ui.clipboard.compare(0, head.size(), head), 0);
    const size_t second = ui.clipboard.find("\r\n") + 2;
    EXPECT_EQ(ui.clipboard.compare(second, 5, "0.03\t"), 0) << ui.clipboard.substr(second, 20);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::WaitShown, "Copying graph data to clipboard"));
}

TEST_F(GraphCursorsTest, FilesAndPrintersTakeNoMarks) {
    Prepare(false);
    // A paint with the track map open hands the cursor back to playback.
    links.mapOpen = true;
    cursors.CursorDrawn = true;
    cursors.Paint();
    EXPECT_FALSE(cursors.CursorDrawn);
    EXPECT_EQ(links.animations, 1);
    // A surface that cannot undo: the same calls draw nothing and return.
    QImage page(600, 400, QImage::Format_RGB32);
    page.fill(Qt::white);
    const QImage blank = page.copy();
    {
        render::VectorSurface vector(&page, 600, 400, 96.0);
        GraphCursors onPaper(g, vector, nullptr);
        onPaper.DragX = XOf(30.0);
        onPaper.DragY = 2000;
        onPaper.ShowNearestValueAxis(1);
        onPaper.ShowGraphValue(1);
        onPaper.DrawBox();
        onPaper.UpDateGraphAni(run_.RunStart + 100, 1, 0, 1);
        EXPECT_EQ(onPaper.NearestRows()[0], -1);
    }
    EXPECT_TRUE(page == blank);
}

}  // namespace
}  // namespace tl
