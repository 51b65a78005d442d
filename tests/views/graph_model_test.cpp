// The data side of the XY graph: ranges and their rounding, the two ways of
// filling the point arrays, the run number's rules, the zoom ring and the
// toolbar, worked by hand from the definitions.
#include <gtest/gtest.h>

#include <string>

#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/graph_model.h"

namespace tl {
namespace {

TEST(GraphRange, NiceSpansAndCentres) {
    // 0 to 7.3, both computed: the span 7.3 becomes 8, and with a minimum of
    // 0 the bottom stays: 0 to 8.
    AxisRange r = NiceAxisRange(0.0f, 7.3f, false, false);
    EXPECT_FLOAT_EQ(r.min, 0.0f);
    EXPECT_FLOAT_EQ(r.max, 8.0f);
    // -3 to 7.3: span 10.3 -> first digits 1.03 + 0.5 -> 2 -> 20; the centre
    // 2.15 to the nearest 2 (a tenth of the span) is 2: -8 to 12.
    r = NiceAxisRange(-3.0f, 7.3f, false, false);
    EXPECT_FLOAT_EQ(r.min, -8.0f);
    EXPECT_FLOAT_EQ(r.max, 12.0f);
    // A constant channel is plotted about its value: 5 -> 4..6, span 2.5
    // rounds half to even to 2.
    r = NiceAxisRange(5.0f, 5.0f, false, false);
    EXPECT_FLOAT_EQ(r.min, 4.0f);
    EXPECT_FLOAT_EQ(r.max, 6.0f);
    // An automatic minimum with a data maximum of exactly 0 keeps 0 on top.
    r = NiceAxisRange(-7.3f, 0.0f, false, false);
    EXPECT_FLOAT_EQ(r.min, -8.0f);
    EXPECT_FLOAT_EQ(r.max, 0.0f);
    // Both typed: the values as they are, a swapped pair put in order.
    r = NiceAxisRange(10.0f, 2.5f, true, true);
    EXPECT_FLOAT_EQ(r.min, 2.5f);
    EXPECT_FLOAT_EQ(r.max, 10.0f);
    // Typed maximum, computed minimum: the top stays, the span below it.
    // 1234 - 0 = 1234 -> 1.234 + 0.5 rounds to 2 -> 2000.
    r = NiceAxisRange(0.0f, 1234.0f, false, true);
    EXPECT_FLOAT_EQ(r.min, 1234.0f - 2000.0f);
    EXPECT_FLOAT_EQ(r.max, 1234.0f);
    // An odd first digit is made even: 0.35 -> 3.5 + 0.5 = 4 -> 0.4, while
    // 0.25 -> 2.5 + 0.5 = 3 -> odd -> 4 -> 0.4 as well.
    r = NiceAxisRange(1.0f, 1.25f, true, false);
    EXPECT_NEAR(r.max - r.min, 0.4f, 1e-6);
}

class GraphModelTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        test::EnableEveryVariable();
        time = Catalogue().RunVars[1].Name;
        speed = Catalogue().RunVars[8].Name;
    }
    // Runs of `rows` rows: time in seconds from 0, speed = 10 x run + row
    // index within the run.
    void Runs(int runs, int32_t rows) {
        test::LayOutRuns(runs, rows, "run");
        RunStore& s = Store();
        float* t = s.RunData.Column(FindVarIndex(time)).data();
        float* v = s.RunData.Column(FindVarIndex(speed)).data();
        for (int n = 1; n <= runs; ++n) {
            RunRecord& r = s.RunInfo[n];
            r.Name = "run" + std::to_string(n);
            for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) {
                t[i] = static_cast<float>(i - r.RunStart) / 100.0f;
                v[i] = static_cast<float>(10 * n + (i - r.RunStart));
            }
        }
    }
    GraphModel Graph() {
        GraphModel g;
        g.Load(1);
        g.settings.Slots[0].SelYAxis = speed;
        g.SelYAxis_Click(0);
        return g;
    }
    std::string time, speed;
};

TEST_F(GraphModelTest, LoadSetsTheFormsDefaults) {
    Runs(1, 100);
    GraphModel g = Graph();
    EXPECT_EQ(g.Caption(), "Graph 1");
    EXPECT_EQ(g.settings.JoinPoints, 1);
    EXPECT_EQ(g.settings.FastPlot, 1);
    EXPECT_EQ(g.settings.MaximumPoints, "2000");
    for (int s = 0; s < kGraphSlots; ++s) {
        EXPECT_EQ(g.settings.Slots[s].AxisRun, "1");
        EXPECT_EQ(g.settings.Slots[s].SelXAxis, time);
        EXPECT_EQ(g.axis[s].XTicks, 11);
    }
    g.settings.MainTitle = "Braking";
    EXPECT_EQ(g.Caption(), "Braking");
    g.SetTickCounts(14001, 8000);
    EXPECT_EQ(g.axis[3].XTicks, 21);
    EXPECT_EQ(g.axis[3].YTicks, 11);
}

TEST_F(GraphModelTest, PlainPathDropsTheFirstSampleAndThinsByTheLimit) {
    Runs(1, 200);
    GraphModel g = Graph();
    // A run of exactly PointLimit samples: skip 1, the first sample has no
    // place, PointCount is RunLength - 1.
    g.settings.MaximumPoints = "200";
    g.ReGenerateGraph();
    EXPECT_EQ(g.PointLimit, 200);
    EXPECT_EQ(g.axis[0].PointCount, 199);
    EXPECT_FLOAT_EQ(g.data[0].Y[1], 11.0f);  // sample 1 of run 1 (speed 10 + 1)
    EXPECT_FLOAT_EQ(g.data[0].X[1], 0.01f);
    EXPECT_FLOAT_EQ(g.data[0].Row[199], 200.0f);
    // "10" acts as 50: skip = 200 / 50 + 1 = 5, rows (sample - 1) / 5,
    // PointCount = 200 / 5 - 1 = 39.
    g.settings.MaximumPoints = "10";
    g.ReGenerateGraph();
    EXPECT_EQ(g.PointLimit, 50);
    EXPECT_EQ(g.axis[0].PointCount, 39);
    EXPECT_FLOAT_EQ(g.data[0].Y[1], 15.0f);
    // Above the row bound acts as the row bound (the fixture's table has
    // rows 0 to 201).
    g.settings.MaximumPoints = "100000";
    g.ReGenerateGraph();
    EXPECT_EQ(g.PointLimit, 201);
    // FastPlot off: the row bound, and every sample but the first.
    g.settings.FastPlot = 0;
    g.ReGenerateGraph();
    EXPECT_EQ(g.PointLimit, 201);
    EXPECT_EQ(g.axis[0].PointCount, 199);
}

TEST_F(GraphModelTest, FilteredPathCountsInsideTheOpenBoxAndMarksGaps) {
    Runs(1, 200);
    GraphModel g = Graph();
    g.settings.MaximumPoints = "50";
    // Typed Y limits 10 and 210 (speed runs 10 to 209): 10 itself fails the
    // open test, so 199 samples count; skip = 199 / 50 + 1 = 4.
    g.settings.Slots[0].MinYAxis = "10";
    g.settings.Slots[0].AutoMinY = 1;
    g.settings.Slots[0].MaxYAxis = "210";
    g.settings.Slots[0].AutoMaxY = 1;
    g.ReGenerateGraph();
    EXPECT_FLOAT_EQ(g.axis[0].YMin, 10.0f);
    EXPECT_FLOAT_EQ(g.data[0].Y[1], 10.0f);  // the first sample is stored as it is
    EXPECT_FLOAT_EQ(g.data[0].Y[2], 14.0f);  // four inside samples later
    EXPECT_FLOAT_EQ(g.data[0].Y[3], 18.0f);
    // Row r holds sample 1 + 4 (r - 1): row 50 holds sample 197, and the
    // array holds no more than PointLimit rows.
    EXPECT_FLOAT_EQ(g.data[0].Row[50], 197.0f);
    EXPECT_EQ(g.axis[0].PointCount, 50);

    // A count of exactly PointLimit has skip 2: limits 159.5 .. 210 leave the
    // 50 samples of speed 160 to 209.
    g.settings.Slots[0].MinYAxis = "159,5";  // decimal comma
    g.ReGenerateGraph();
    EXPECT_FLOAT_EQ(g.axis[0].YMin, 159.5f);
    EXPECT_FLOAT_EQ(g.data[0].Y[1], 10.0f);  // row 1: the run's first sample
    // Everything before 160 is outside: the gap flag is set on the way, so
    // row 2 is a gap at the sample reached (the second inside one, 161).
    EXPECT_FLOAT_EQ(g.data[0].Y[2], kGraphGap);
    EXPECT_FLOAT_EQ(g.data[0].X[2], kGraphGap);
    EXPECT_FLOAT_EQ(g.data[0].Row[2], 152.0f);  // speed 161 is row 151 + 1
    EXPECT_FLOAT_EQ(g.data[0].Y[3], 163.0f);
}

TEST_F(GraphModelTest, ConditionOnlyWithTheMasterSwitchAndAllBoxesClearIsPlain) {
    Runs(1, 300);
    GraphModel g = Graph();
    g.settings.MaximumPoints = "100";
    // The master switch on, nothing ticked: the plain path (skip 300/100+1 = 4,
    // PointCount 300/4 - 1 = 74).
    g.settings.LimitVariables = 1;
    g.ReGenerateGraph();
    EXPECT_EQ(g.axis[0].PointCount, 74);
    // A condition on time between 1 and 2 s: 99 samples strictly inside; the
    // bounds come from the typed texts only with the master switch on.
    g.settings.Slots[0].LimitVar = time;
    g.settings.Slots[0].DisplayIf = 1;
    g.settings.Slots[0].LimitVarMin = "1";
    g.settings.Slots[0].LimitVarMax = "2";
    g.ReGenerateGraph();
    EXPECT_EQ(g.axis[0].PointCount, 100);  // skip 1: the first sample and 99
    EXPECT_FLOAT_EQ(g.data[0].Y[1], 10.0f);
    EXPECT_FLOAT_EQ(g.data[0].Y[2], kGraphGap);  // 1 to 100 lay outside
    EXPECT_FLOAT_EQ(g.data[0].Y[3], 112.0f);
    // Master off: the bounds are +-1e10, but the ticked condition still
    // takes the filtered path: 299 samples inside (time 0 is on the X
    // axis's bound), skip 299 / 100 + 1 = 3.
    g.settings.LimitVariables = 0;
    g.ReGenerateGraph();
    EXPECT_FLOAT_EQ(g.data[0].Y[2], 13.0f);
}

TEST_F(GraphModelTest, RunNumbersWrapRoundAndFollowNames) {
    Runs(3, 100);
    GraphModel g = Graph();
    g.settings.Slots[2].AxisRun = "0";
    g.AxisRun_Change(2);
    EXPECT_EQ(g.settings.Slots[2].AxisRun, "3");
    EXPECT_EQ(g.AxisRunName[2], "run3");
    g.settings.Slots[2].AxisRun = "4";
    g.AxisRun_Change(2);
    EXPECT_EQ(g.settings.Slots[2].AxisRun, "1");
    g.settings.Slots[0].AxisRun = "2.5";
    g.CalcMinMaxs(0);
    EXPECT_EQ(g.settings.Slots[0].AxisRun, "2");
    EXPECT_EQ(g.axis[0].XTitle, "run2, " + time);
    // With MultipleXAxis off the other slots follow slot 0's run.
    EXPECT_EQ(g.settings.Slots[4].AxisRun, "2");
    // Run 2 is followed by its name after run 1 goes.
    g.settings.MultipleXAxis = 1;
    g.settings.Slots[1].AxisRun = "3";
    g.AxisRun_Change(1);
    Store().RunInfo[1] = Store().RunInfo[2];
    Store().RunInfo[2] = Store().RunInfo[3];
    Store().RunCount = 2;
    g.FollowRunsByName();
    EXPECT_EQ(g.settings.Slots[0].AxisRun, "1");
    EXPECT_EQ(g.settings.Slots[1].AxisRun, "2");
}

TEST_F(GraphModelTest, ZoomRingKeepsTwentyLevelsAndGoesBack) {
    Runs(1, 100);
    GraphModel g = Graph();
    g.ReGenerateGraph();
    const float top = g.axis[0].YMax;
    for (int i = 0; i < 21; ++i) g.RecordZoomLevels();
    // 21 records on a ring of 21 levels: the oldest moved on.
    EXPECT_EQ(g.ZoomCurrent(), 0);
    EXPECT_EQ(g.ZoomOldest(), 1);
    g.ClearZoomLevels();
    g.ZoomBtn_Click(2);  // zoom out: records, then the range grows by 40 %
    const float range = g.axis[0].YMax - g.axis[0].YMin;
    EXPECT_EQ(g.settings.Slots[0].AutoMaxY, 1);
    EXPECT_GT(range, 0);
    EXPECT_EQ(g.ZoomCurrent(), 1);
    g.ZoomBtn_Click(0);  // back: the recorded ranges typed into the boxes
    EXPECT_EQ(g.ZoomCurrent(), 0);
    EXPECT_FLOAT_EQ(g.axis[0].YMax, top);
    // Back again with current = oldest only regenerates.
    g.ZoomBtn_Click(0);
    EXPECT_FLOAT_EQ(g.axis[0].YMax, top);
    EXPECT_EQ(GraphModel::ZoomBtnToolTip(2), "Zoom Out By 20%");
    EXPECT_EQ(GraphModel::PanBtnToolTip(3), "Pan Graph To The Left");
    // Pan right moves X by a tenth of its range and ticks only X's boxes.
    g.ZoomBtn_Click(3);
    const float x0 = g.axis[0].XMin, xr = g.axis[0].XMax - g.axis[0].XMin;
    g.PanBtn_Click(3);
    EXPECT_FLOAT_EQ(g.axis[0].XMin, x0 + 0.1f * xr);
    EXPECT_EQ(g.settings.Slots[0].AutoMinX, 1);
    EXPECT_EQ(g.settings.Slots[0].AutoMinY, 0);
}

TEST_F(GraphModelTest, DraggedWindowBecomesTypedLimits) {
    Runs(1, 1000);
    GraphModel g = Graph();
    g.settings.Slots[0].MinXAxis = "0";
    g.settings.Slots[0].MaxXAxis = "10";
    g.settings.Slots[0].MinYAxis = "0";
    g.settings.Slots[0].MaxYAxis = "1000";
    g.settings.Slots[0].AutoMinX = g.settings.Slots[0].AutoMaxX = 1;
    g.settings.Slots[0].AutoMinY = g.settings.Slots[0].AutoMaxY = 1;
    g.ReGenerateGraph();
    // One slot: left 650, bottom 500. On 10650 x 10500 twips the plot runs
    // x 650 .. 10117.5 and y 525 .. 10000. A drag from the plot's middle to
    // its bottom right corner.
    const double W = 10650, H = 10500;
    const double midX = 650 + 0.5 * (0.95 * W - 650), midY = 525 + 0.5 * (10000 - 525);
    ASSERT_TRUE(g.AutoSetMinsMaxs(0.95 * W, 10000, midX, midY, W, H));
    EXPECT_FLOAT_EQ(g.axis[0].XMin, 5.0f);
    EXPECT_FLOAT_EQ(g.axis[0].XMax, 10.0f);
    EXPECT_FLOAT_EQ(g.axis[0].YMin, 0.0f);
    EXPECT_FLOAT_EQ(g.axis[0].YMax, 500.0f);
    // A window too narrow ends the zoom without a redraw.
    EXPECT_FALSE(g.AutoSetMinsMaxs(midX, midY, midX + 1e-4, midY + 1, W, H));
}

TEST_F(GraphModelTest, ClipboardKeepsColumnsOfInactiveSlots) {
    Runs(1, 60);
    GraphModel g = Graph();
    g.settings.MaximumPoints = "50";
    g.ReGenerateGraph();
    const std::string text = g.ClipboardText();
    // Row 2 is the heading: five pairs of titles; then rows 3 to 50, slot 0's
    // while the row is below its PointCount, tab pairs for the others.
    const std::string head = g.axis[0].XTitle + "\t" + g.axis[0].YTitle + "\t";
    ASSERT_EQ(text.rfind(head, 0), 0u);
    const size_t line2 = text.find("\r\n") + 2;
    const std::string row3 = text.substr(line2, text.find("\r\n", line2) - line2);
    // skip = 60 / 50 + 1 = 2: row 3 holds sample 6 (time 0.06, speed 16).
    EXPECT_EQ(row3, "0.06\t16\t\t\t\t\t\t\t\t\t");
}

TEST_F(GraphModelTest, MarkersOfTheSlotsRunEndWithTheEndRow) {
    Runs(2, 100);
    GraphModel g = Graph();
    TrackMarker& m = Markers().Entries[3];
    m.Name = "Lap Marker #";
    Markers().ResizeRuns(2);
    m.Crossings[1] = {11, 61};
    m.Crossings[2] = {150};
    g.ReGenerateGraph();
    ASSERT_EQ(g.markers[0].X.size(), 4u);  // index 0, two crossings, the end
    EXPECT_FLOAT_EQ(g.markers[0].Y[1], 20.0f);
    EXPECT_FLOAT_EQ(g.markers[0].X[2], 0.60f);
    EXPECT_FLOAT_EQ(g.markers[0].X[3], kGraphMarkerEnd);
}

}  // namespace
}  // namespace tl
