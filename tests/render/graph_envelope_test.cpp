// The XY graph's joined line drawn from its per-pixel-column envelope gives
// the very pixels of the polyline through every point: the demo road run
// with every row in three slots, at 100 % and 200 %, whole, zoomed so that
// the line breaks at many excursions, and fast-plotted.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "platform/render/painter_surface.h"
#include "road/run_road.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace tl {
namespace {

class GraphEnvelope : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        g.Load(1);
        const char* ys[] = {"GPS Speed [kph]", "Accel Lateral [g]", "Accel Longitudinal [g]"};
        for (int k = 0; k < 3; ++k) {
            g.settings.Slots[k].SelYAxis = ys[k];
            g.SelYAxis_Click(k);
        }
        g.settings.FastPlot = 0;
    }
    // Typed limits of a slot (X limits on slot 0 serve every slot).
    void Limits(int slot, const char* minY, const char* maxY) {
        GraphSlotSettings& s = g.settings.Slots[slot];
        s.MinYAxis = minY;
        s.MaxYAxis = maxY;
        s.AutoMinY = s.AutoMaxY = 1;
    }
    int Breaks(int slot, const GraphFrame& f) const {
        int n = 0;
        for (double x : JoinedLine(g, slot, f).x) n += std::isnan(x) ? 1 : 0;
        return n;
    }
    // Paints through the envelope and through every point on surfaces of
    // 1000 x 600 pixels at 96 dpi and of the same twips at 192 dpi, from one
    // regeneration (the envelope kept for 96 dpi must not serve 192); the
    // pictures must agree bit for bit, and the envelope must have been used
    // (fewer times fewer points than the full line) in the first slots.
    void ExpectSamePixels(const char* what, size_t fewer = 3, int checked = 3) {
        g.SetTickCounts(15000, 9000);
        g.ReGenerateGraph();
        for (double dpi : {96.0, 192.0}) {
            SCOPED_TRACE(std::string(what) + " at " + std::to_string(int(dpi)) + " dpi");
            const int w = static_cast<int>(1000 * dpi / 96), h = static_cast<int>(600 * dpi / 96);
            render::RasterSurface envelope(w, h, dpi), full(w, h, dpi);
            Graphbox_Paint(g, envelope);
            Graphbox_Paint(g, full, LineDetail::Full);
            const GraphFrame f = FrameOf(g, envelope);
            for (int slot = 0; slot < checked; ++slot) {
                const size_t every = JoinedLine(g, slot, f).x.size();
                EXPECT_LE(SlotLine(g, slot, f, envelope).x.size() * fewer, every)
                    << "slot " << slot;
            }
            const QImage& a = envelope.Image();
            const QImage& b = full.Image();
            int differ = 0;
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) differ += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
            EXPECT_EQ(differ, 0);
            // A paint again (from the kept envelope) changes nothing.
            Graphbox_Paint(g, envelope);
            EXPECT_TRUE(envelope.Image() == full.Image());
        }
    }

    GraphModel g;
};

TEST_F(GraphEnvelope, WholeRunsGiveThePixelsOfEveryPoint) {
    // An X axis a slot: speed and lateral g against time, and longitudinal
    // against lateral g, whose X goes back and forth over the columns.
    g.settings.MultipleXAxis = 1;
    g.settings.Slots[1].SelXAxis = g.settings.Slots[0].SelXAxis;
    g.settings.Slots[2].SelXAxis = "Accel Lateral [g]";
    g.ReGenerateGraph();
    ASSERT_GT(g.axis[0].PointCount, 20000);
    ASSERT_LT(g.axis[2].XMin, -1.0f);
    // Against g the points rarely share a column with the one before: the
    // envelope is not much shorter there.
    ExpectSamePixels("whole", 3, 2);
}

TEST_F(GraphEnvelope, ZoomedWithBreaksAtExcursionsGivesThePixelsOfEveryPoint) {
    // Against time, a window of the laps cut through the slow and the fast
    // stretches, the hard corners and the hard braking, so that each line
    // leaves and comes back many times.
    g.settings.MultipleXAxis = 0;
    GraphSlotSettings& x = g.settings.Slots[0];
    x.MinXAxis = "40";
    x.MaxXAxis = "240";
    x.AutoMinX = x.AutoMaxX = 1;
    Limits(0, "60", "180");
    Limits(1, "-0.8", "0.8");
    Limits(2, "-0.6", "0.4");
    g.ReGenerateGraph();
    render::RasterSurface probe(1000, 600, 96.0);
    const GraphFrame f = FrameOf(g, probe);
    for (int slot = 0; slot < 3; ++slot) EXPECT_GE(Breaks(slot, f), 4) << "slot " << slot;
    ExpectSamePixels("zoomed");
    // A zoom out after those paints: the kept envelopes are made again.
    x.MinXAxis = "0";
    Limits(0, "0", "250");
    ExpectSamePixels("zoomed out");
}

TEST_F(GraphEnvelope, FastPlotPointsAndTheRawLineOfAFewPoints) {
    // Up to 2000 points a slot, still more than the plot's 821 columns at
    // 100 %.
    g.settings.FastPlot = 1;
    g.ReGenerateGraph();
    ASSERT_GT(g.axis[0].PointCount, 1500);
    render::RasterSurface s(1000, 600, 96.0);
    const GraphFrame f = FrameOf(g, s);
    EXPECT_LT(SlotLine(g, 0, f, s).x.size(), JoinedLine(g, 0, f).x.size());
    ExpectSamePixels("fast plot", 1);
    // 600 points a slot, fewer than the columns: every point as it is.
    g.settings.MaximumPoints = "600";
    g.ReGenerateGraph();
    const GraphPolyline every = JoinedLine(g, 0, f);
    ASSERT_GT(every.x.size(), 500u);
    EXPECT_EQ(SlotLine(g, 0, f, s).x, every.x);
}

}  // namespace
}  // namespace tl
