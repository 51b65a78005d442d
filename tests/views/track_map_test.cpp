// The track map's data side: the limits' 200 m window, the compressed index
// of the demo road run against every row, the colour rule and the ticks'
// count, with a surface that records what is drawn.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/mini_map.h"
#include "views/track_map.h"

namespace tl {
namespace {

// Counts what is drawn; text is 100 twips high and 60 a character.
struct RecordingSurface : DrawSurface {
    double w = 18000, h = 10500;
    std::vector<double> circles;  // radii
    std::vector<std::string> texts;
    std::vector<uint32_t> lineColours;
    double ScaleWidth() const override { return w; }
    double ScaleHeight() const override { return h; }
    double PixelsPerTwip() const override { return 96.0 / 1440; }
    bool CanUndoMarks() const override { return true; }
    void Cls() override {
        circles.clear();
        texts.clear();
        lineColours.clear();
    }
    void Line(double, double, double, double, uint32_t c) override { lineColours.push_back(c); }
    void Box(double, double, double, double, uint32_t) override {}
    void FilledBox(double, double, double, double, uint32_t) override {}
    void Circle(double, double, double r, uint32_t) override { circles.push_back(r); }
    void Arc(double, double, double, uint32_t, double, double) override {}
    double TextWidth(const std::string& t) override { return 60.0 * double(t.size()); }
    double TextHeight(const std::string&) override { return 100; }
    void Print(const std::string& t) override { texts.push_back(t); }
};

class TrackMapDataTest : public test::EngineTest {
  protected:
    // One run of `rows` rows with positions and speed enabled.
    void LayOut(int32_t rows) {
        for (int s :
             {slot::Time, slot::SpeedKph, slot::DistanceKm, slot::PositionX, slot::PositionY})
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
        SetAvailableVars();
        test::LayOutRuns(1, rows, "small");
    }
};

TEST_F(TrackMapDataTest, ShortExtentsSpanTwoHundredMetres) {
    LayOut(1000);
    float* x = SlotColumn(slot::PositionX);
    float* y = SlotColumn(slot::PositionY);
    // 50 m wide, 1000 m tall, off the origin; row 0 is never used and holds 0
    // but the limits start at row 1 and go to the table's last row.
    for (int32_t i = 1; i <= Store().RunData.UpperRow(); ++i) {
        x[i] = 300 + 50.0f * float(i) / 1000;
        y[i] = -500 + float(i);
    }
    const TrackLimits l = FindTrackLimits();
    EXPECT_NEAR(l.MaxX - l.MinX, 200, 1e-3);
    EXPECT_NEAR((l.MaxX + l.MinX) / 2, 325.025, 0.1);
    EXPECT_NEAR(l.MinY, -499, 1e-3);
    EXPECT_NEAR(l.MaxY, 501, 1e-3);
    // The whole view takes the larger of the two ratios.
    EXPECT_NEAR(WholeTrackScale(l, 18000, 10500), 1000.0 / 10500, 1e-6);
    EXPECT_EQ(WholeTrackScale(l, 1, 1), 100.0f);
}

TEST_F(TrackMapDataTest, ColourBySizeAndConstantVariableUsesRunColours) {
    LayOut(500);
    float* v = SlotColumn(slot::SpeedKph);
    for (int32_t i = 1; i <= Store().RunData.UpperRow(); ++i) v[i] = float(i % 7) - 3;  // -3 ... 3
    const std::string name = Catalogue().RunVars[slot::SpeedKph].Name;
    const ColourRange r = ColourRangeOf(name);
    ASSERT_TRUE(r.coded);
    EXPECT_EQ(r.low, 0);
    EXPECT_EQ(r.high, 3);
    EXPECT_EQ(PathColour(r, -2, 0), PathColour(r, 2, 0));
    EXPECT_NE(PathColour(r, 1, 0), PathColour(r, 2, 0));
    int top = 602;
    EXPECT_EQ(PathColour(r, -3, 0), GraphColorGen2(top));
    // New data are scanned again: a constant variable has no range, and the
    // panels' own colours are used.
    for (int32_t i = 0; i <= Store().RunData.UpperRow(); ++i) v[i] = 42;
    const ColourRange flat = ColourRangeOf(name);
    EXPECT_EQ(flat.low, flat.high);
    EXPECT_EQ(PathColour(flat, 42, 3), VqColorIndex(3, false));
    EXPECT_FALSE(ColourRangeOf(kNoColorCoding).coded);
    EXPECT_EQ(PathColour(ColourRangeOf(kNoColorCoding), 7, 2), VqColorIndex(2, false));
}

TEST_F(TrackMapDataTest, NumberOfTicksIsClippedToTwoToHundred) {
    LayOut(1000);
    float* x = SlotColumn(slot::PositionX);
    for (int32_t i = 1; i <= 1000; ++i) x[i] = float(i);
    RecordingSurface s;
    TrackMap map(s);
    map.settings.ShowVariable = 1;
    map.settings.VarToAdd = Catalogue().RunVars[slot::PositionX].Name;
    for (auto [text, ticks] : std::vector<std::pair<std::string, size_t>>{
             {"1", 2}, {"1000", 100}, {"abc", 2}, {"7", 7}, {"25.9", 25}}) {
        map.settings.NumOfTicks = text;
        map.ReDraw();
        const size_t n = size_t(std::count(s.circles.begin(), s.circles.end(), 40.0));
        EXPECT_EQ(n, ticks) << text;
        EXPECT_EQ(s.texts.size(), ticks) << text;
    }
}

class TrackMapDemoTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
    }
};

// Distance from p to the segment a-b.
double ToSegment(double px, double py, double ax, double ay, double bx, double by) {
    const double dx = bx - ax, dy = by - ay, l2 = dx * dx + dy * dy;
    double t = l2 > 0 ? ((px - ax) * dx + (py - ay) * dy) / l2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(px - ax - t * dx, py - ay - t * dy);
}

TEST_F(TrackMapDemoTest, CompressedPathStaysWithinHalfAMetreOfEveryRow) {
    const std::vector<int32_t> index = CompressData();
    const RunRecord& r = Store().RunInfo[1];
    ASSERT_GE(index.size(), 3u);
    EXPECT_EQ(index.front(), r.RunStart);
    EXPECT_EQ(index.back(), kCompressedEnd);
    EXPECT_EQ(index[index.size() - 2], r.RunEnd);
    EXPECT_TRUE(std::is_sorted(index.begin(), index.end() - 1));
    // Far fewer points than rows: straights cost almost nothing.
    EXPECT_LT(index.size() * 10, size_t(r.RunLength));
    const float* x = SlotColumn(slot::PositionX);
    const float* y = SlotColumn(slot::PositionY);
    double worst = 0;
    for (size_t k = 0; k + 2 < index.size(); ++k)
        for (int32_t i = index[k]; i <= index[k + 1]; ++i)
            worst = std::max(worst, ToSegment(x[i], y[i], x[index[k]], y[index[k]], x[index[k + 1]],
                                              y[index[k + 1]]));
    EXPECT_LE(worst, 0.5);
}

TEST_F(TrackMapDemoTest, MiniMapShowsItsRunWholeAndSwitchesRun) {
    RecordingSurface s;
    s.w = 3000;
    s.h = 3000;
    MiniMap mini(s);
    mini.ReDraw(1);
    ASSERT_FALSE(s.lineColours.empty());
    EXPECT_EQ(s.lineColours.front(), kBlack);
    // Every row of the run lies on the surface.
    const RunRecord& r = Store().RunInfo[1];
    const MapTransform t = mini.Transform();
    for (int32_t i = r.RunStart; i < r.RunEnd; i += 7) {
        const double px = t.XUnclamped(RunData(i, ColumnOf(slot::PositionX)),
                                       RunData(i, ColumnOf(slot::PositionY)));
        const double py = t.YUnclamped(RunData(i, ColumnOf(slot::PositionX)),
                                       RunData(i, ColumnOf(slot::PositionY)));
        ASSERT_GE(px, -0.5);
        ASSERT_LE(px, 3000.5);
        ASSERT_GE(py, -0.5);
        ASSERT_LE(py, 3000.5);
    }
    // A cross drawn on a run that is not the one shown: no such run leaves
    // the picture empty, and the run number is taken.
    mini.UpDateGraphAni(r.RunStart + 100, 2, 0);
    EXPECT_EQ(mini.MiniRun, 2);
}

}  // namespace
}  // namespace tl
