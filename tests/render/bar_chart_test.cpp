// The bar chart drawn on the raster surface: bars where their bins and
// counts put them, five charts staggered in their palette colours, lines
// with crosses when there are no bars, the title only when there is one, and
// the demo road run's bars as tall as their counts.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <string>

#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/bar_chart.h"

namespace tl {
namespace {

// 1000 x 600 pixels at 96 dpi: 15000 x 9000 twips. The plot runs from x =
// 800 (pixel 53.3) to 14250 (950), its base at 7200 (480), its top at 1800
// (120): 360 pixels are full scale. Four bins are 3362.5 twips (224.2
// pixels) wide.
constexpr int kW = 1000, kH = 600;
constexpr double kPx = 96.0 / 1440;
constexpr double kBin = (14250.0 - 800.0) / 4;

int Px(double twips) {
    return static_cast<int>(twips * kPx);
}

class BarChartPicture : public test::EngineTest {
  protected:
    // Run 1: 100 samples at 5, 50 at 15, 25 at 35 (bins 1, 2, 4 of 0..40);
    // run 2: 80 at 5, 100 at 25.
    void SetUp() override {
        test::EngineTest::SetUp();
        test::EnableEveryVariable();
        test::LayOutRuns(2, 200, "run");
        float* v = SlotColumn(slot::SpeedKph);
        for (int32_t k = 0; k < 200; ++k) {
            v[1 + k] = k < 100 ? 5.0f : k < 150 ? 15.0f : k < 175 ? 35.0f : -10.0f;
            v[201 + k] = k < 80 ? 5.0f : k < 180 ? 25.0f : -10.0f;
        }
        v[401] = -10;
        Store().RunInfo[1].Name = "first";
        Store().RunInfo[2].Name = "second";
    }
    BarChart Chart() {
        BarChart c;
        c.Load(1);
        c.settings.DisplayVar = Catalogue().RunVars[slot::SpeedKph].Name;
        c.settings.PercentFreq = 0;
        c.settings.DispVarMin = "0";
        c.DispVarMin_Change();
        c.settings.DispVarMax = "40";
        c.DispVarMax_Change();
        c.settings.BinCount = "4";
        return c;
    }
    // The first row from the base up whose pixel is not the colour, in a
    // column.
    static int TopOf(const QImage& img, int x, QRgb colour) {
        int y = Px(7200) - 2;
        while (y > 0 && img.pixel(x, y) == colour) --y;
        return y + 1;
    }
    const QRgb black = qRgb(0, 0, 0), white = qRgb(255, 255, 255), red = qRgb(255, 0, 0);
};

TEST_F(BarChartPicture, BarsStandInTheirBinsAsTallAsTheirCounts) {
    BarChart c = Chart();
    c.CalcFrequency();
    ASSERT_EQ(c.PeakCount, 100);
    render::RasterSurface s(kW, kH, 96.0);
    GraphBox_Paint(c, s);
    const QImage& img = s.Image();
    // Bar 1 fills its bin but a tenth at each side: 1136 to 3826 twips.
    const int y = 300;
    EXPECT_EQ(img.pixel(Px(800 + 0.1 * kBin) + 2, y), black);
    EXPECT_EQ(img.pixel(Px(800 + 0.9 * kBin) - 2, y), black);
    EXPECT_EQ(img.pixel(Px(800 + 0.1 * kBin) - 3, y), white);
    EXPECT_EQ(img.pixel(Px(800 + 0.9 * kBin) + 3, y), white);
    // Heights: 100 is full scale (top at pixel 120), 50 half, 25 a quarter;
    // the empty bin 3 draws nothing.
    auto centre = [](int bin) { return Px(800 + (bin - 0.5) * kBin); };
    EXPECT_NEAR(TopOf(img, centre(1), black), 120, 1);
    EXPECT_NEAR(TopOf(img, centre(2), black), 300, 1);
    EXPECT_NEAR(TopOf(img, centre(4), black), 390, 1);
    EXPECT_EQ(img.pixel(centre(3), 470), white);
    // The grid's dotted lines: ten from the base up, every 40 pixels.
    int dots = 0;
    for (int x = Px(800 + kBin) + 10; x < Px(800 + 3 * kBin); ++x)
        dots += img.pixel(x, 440) == black ? 1 : 0;
    EXPECT_GT(dots, 50);
    EXPECT_LT(dots, Px(2 * kBin) - 20);
    // No title without MainTitle: the band above the plot is blank but for
    // the top label of the scale.
    for (int yy = 0; yy < 100; ++yy)
        for (int x = 100; x < kW; ++x) ASSERT_EQ(img.pixel(x, yy), white) << x << "," << yy;
    c.settings.MainTitle = "Speeds";
    GraphBox_Paint(c, s);
    int inked = 0;
    for (int yy = 0; yy < 100; ++yy)
        for (int x = 100; x < kW; ++x) inked += img.pixel(x, yy) != white ? 1 : 0;
    EXPECT_GT(inked, 30);
}

TEST_F(BarChartPicture, SeveralChartsStaggerInTheirColours) {
    BarChart c = Chart();
    c.settings.MultiBar = 1;
    c.settings.Axes[0].AxisEnabled = 1;
    c.settings.Axes[1].AxisEnabled = 1;
    c.settings.Axes[1].AxisRun = "2";
    c.CalcFrequency();
    render::RasterSurface s(kW, kH, 96.0);
    GraphBox_Paint(c, s);
    const QImage& img = s.Image();
    // Bin 1: run 1's 100 in black from 0.1 to 0.5 of the bin, run 2's 80 in
    // red from 0.2 to 0.6, drawn over it.
    const int y = 470;
    EXPECT_EQ(img.pixel(Px(800 + 0.15 * kBin), y), black);
    EXPECT_EQ(img.pixel(Px(800 + 0.35 * kBin), y), red);
    EXPECT_EQ(img.pixel(Px(800 + 0.55 * kBin), y), red);
    EXPECT_EQ(img.pixel(Px(800 + 0.65 * kBin), y), white);
    // Above run 2's 80 the black bar shows again in the overlap.
    EXPECT_EQ(img.pixel(Px(800 + 0.35 * kBin), 140), black);
    EXPECT_NEAR(TopOf(img, Px(800 + 0.55 * kBin), red), 480 - 288, 1);
    // Bin 3 holds run 2's 100 alone, red, full height.
    EXPECT_NEAR(TopOf(img, Px(800 + 2.4 * kBin), red), 120, 1);
    // The legends: the runs' names under the plot, each in its colour.
    EXPECT_EQ(c.settings.Axes[0].AxisTitle, "first");
    EXPECT_EQ(c.settings.Axes[1].AxisTitle, "second");
    int blackLegend = 0, redLegend = 0;
    for (int yy = Px(0.95 * 9000) - 10; yy < Px(0.95 * 9000) + 10; ++yy)
        for (int x = 0; x < kW; ++x) {
            const bool left = x < kW / 5, second = x >= kW / 5 && x < 2 * kW / 5;
            // Text is smoothed: its darkest pixels carry the colour.
            const QColor p = QColor::fromRgb(img.pixel(x, yy));
            blackLegend += left && p.red() < 90 && p.green() < 90 && p.blue() < 90 ? 1 : 0;
            redLegend += second && p.red() > 200 && p.green() < 90 && p.blue() < 90 ? 1 : 0;
        }
    EXPECT_GT(blackLegend, 8);
    EXPECT_GT(redLegend, 8);
}

TEST_F(BarChartPicture, LinesWithoutBarsCarryCrosses) {
    BarChart c = Chart();
    c.settings.ShowBars = 0;
    c.settings.ShowLines = 1;
    c.settings.ShowGrid = 0;
    c.CalcFrequency();
    render::RasterSurface s(kW, kH, 96.0);
    GraphBox_Paint(c, s);
    const QImage& img = s.Image();
    // The point of bin 1 at full scale, its cross's arms 200 twips (13
    // pixels) long; no bar below it.
    const int x1 = Px(800 + 0.5 * kBin), y1 = 120;
    EXPECT_EQ(img.pixel(x1 + 12, y1), black);
    EXPECT_EQ(img.pixel(x1 - 12, y1), black);
    EXPECT_EQ(img.pixel(x1, y1 + 12), black);
    EXPECT_EQ(img.pixel(x1, 400), white);
    // The line runs from bin 1's point down to bin 2's (half scale).
    const int xm = Px(800 + kBin), ym = (120 + 300) / 2;
    int near = 0;
    for (int dy = -3; dy <= 3; ++dy) near += img.pixel(xm, ym + dy) == black ? 1 : 0;
    EXPECT_GE(near, 1);
}

using BarChartDemoPicture = test::EngineTest;

TEST_F(BarChartDemoPicture, DemoRoadRunBarsAreAsTallAsTheirCounts) {
    ASSERT_EQ(LoadDemoRun(), 1);
    BarChart c;
    c.Load(1);
    c.settings.DisplayVar = "GPS Speed [kph]";
    c.settings.BinCount = "12";
    c.CalcFrequency();
    render::RasterSurface s(1600, 900, 96.0);
    GraphBox_Paint(c, s);
    const QImage& img = s.Image();
    const double w = (0.95 * 24000 - 800) / 12;
    for (int b = 1; b <= 12; ++b) {
        const int x = static_cast<int>((800 + (b - 0.5) * w) * kPx);
        const double top = 0.8 * 13500 - c.BinCounts[0][b] / c.PeakCount * 0.6 * 13500;
        int y = static_cast<int>(0.8 * 13500 * kPx) - 2;
        while (y > 0 && img.pixel(x, y) == qRgb(0, 0, 0)) --y;
        if (c.BinCounts[0][b] > 0.5f) {
            EXPECT_NEAR(y + 1, top * kPx, 1.0) << "bin " << b;
        }
    }
}

}  // namespace
}  // namespace tl
