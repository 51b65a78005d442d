// The XY graph drawn on the raster surface: the grid lines stand where their
// fractions put them; each slot draws in its palette colour.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <cstring>
#include <string>

#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace tl {
namespace {

class GraphPicture : public test::EngineTest {
  protected:
    void LoadDemo() { ASSERT_EQ(LoadDemoRun(), 1); }
    GraphModel Graph(std::initializer_list<const char*> ys) {
        GraphModel g;
        g.Load(1);
        int k = 0;
        for (const char* y : ys) {
            g.settings.Slots[k].SelYAxis = y;
            g.SelYAxis_Click(k++);
        }
        g.settings.FastPlot = 0;
        return g;
    }
};

TEST_F(GraphPicture, GridLinesAndSlotColours) {
    LoadDemo();
    GraphModel g = Graph({"GPS Speed [kph]", "Engine Speed [rpm]"});
    g.settings.MultipleXAxis = 1;
    g.ReGenerateGraph();
    render::RasterSurface s(1000, 600, 96.0);  // 15000 x 9000 twips: 21 by 21 ticks
    g.SetTickCounts(s.ScaleWidth(), s.ScaleHeight());
    g.ReGenerateGraph();
    ASSERT_EQ(g.axis[0].XTicks, 21);
    ASSERT_EQ(g.axis[0].YTicks, 21);
    Graphbox_Paint(g, s);
    const QImage& img = s.Image();
    // Two slots: left 1300, bottom 1000 twips. Vertical grid line 10 of 20 at
    // x = 1300 + 0.5 (14250 - 1300) = 7775 twips: pixel column 518.
    auto blackIn = [&](int x) {
        int n = 0;
        for (int y = 100; y < 500; ++y) n += img.pixel(x, y) == qRgb(0, 0, 0) ? 1 : 0;
        return n;
    };
    EXPECT_GT(blackIn(518), 50);
    // Horizontal line 1 of 20 at y = 450 + (9000 - 1000 - 450) / 20 = 827.5:
    // pixel row 55.
    int row55 = 0;
    for (int x = 100; x < 900; ++x) row55 += img.pixel(x, 55) == qRgb(0, 0, 0) ? 1 : 0;
    EXPECT_GT(row55, 100);
    // The slots' data in their palette colours: black for 0, red for 1.
    int red = 0, black = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 100; x < img.width(); ++x) {
            red += img.pixel(x, y) == qRgb(255, 0, 0) ? 1 : 0;
            black += img.pixel(x, y) == qRgb(0, 0, 0) ? 1 : 0;
        }
    EXPECT_GT(red, 2000);
    EXPECT_GT(black, 2000);
}

}  // namespace
}  // namespace tl
