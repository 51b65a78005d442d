// The track map's path against the plain drawing of it: every segment of the
// compressed index as a line of its own in the colour of its first row, on a
// surface of the same size. The demo road run is drawn whole, zoomed in and
// turned (lines cut by the edges and the clamp), uncoloured over two panels,
// at 200 %, after its speeds changed in place and with a second map drawn in
// between; each picture is the plain one bit for bit. And the raster
// surface's pen follows every change of state between lines.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/track_map.h"

namespace tl {
namespace {

const std::string kDemo = test::DemoPath("demo_hx40_road");

// Each panel's path, one Line per segment, nothing left out.
QImage PlainPicture(const TrackMap& map, int widthPx, int heightPx, double dpi) {
    render::RasterSurface s(widthPx, heightPx, dpi);
    const MapTransform t = map.Transform();
    const ColourRange range = ColourRangeOf(map.settings.MapColorVar);
    const std::vector<int32_t>& index = map.view.CompressedIndex;
    for (int panel = 0; panel < map.Panels(); ++panel) {
        const RunRecord& r = Store().RunInfo[map.PanelRun(panel)];
        for (size_t k = FirstCompressedEntry(index, r.RunStart);
             k + 1 < index.size() && index[k + 1] <= r.RunEnd; ++k) {
            const int32_t a = index[k], b = index[k + 1];
            const double ax = RunData(a, ColumnOf(slot::PositionX));
            const double ay = RunData(a, ColumnOf(slot::PositionY));
            const double bx = RunData(b, ColumnOf(slot::PositionX));
            const double by = RunData(b, ColumnOf(slot::PositionY));
            const float v = range.coded ? RunData(a, range.column) : 0;
            s.Line(t.XPos2Screen(ax, ay), t.YPos2Screen(ax, ay), t.XPos2Screen(bx, by),
                   t.YPos2Screen(bx, by), PathColour(range, v, panel));
        }
    }
    return s.Image().copy();
}

class TrackMapPaintTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        // The path alone: no reference lap, ticks, markers or sections.
        for (TrackMarker& m : Markers().Entries) m.Name.clear();
    }
    static void PathOnly(TrackMap& map) {
        map.settings.ShowReferenceLap = 0;
        map.settings.ShowVariable = 0;
        map.settings.MapColorVar = "GPS Speed [kph]";
    }
    // Differing pixels between the map's picture and the plain one.
    static int Differences(const render::RasterSurface& s, const TrackMap& map) {
        const QImage& a = s.Image();
        const QImage b =
            PlainPicture(map, a.width(), a.height(), s.PixelsPerTwip() * kTwipsPerInch);
        int n = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) n += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
        return n;
    }
    static int Painted(const QImage& img) {
        int n = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) n += img.pixel(x, y) != 0xFFFFFFFF ? 1 : 0;
        return n;
    }
};

TEST_F(TrackMapPaintTest, PathIsEverySegmentInTheColourOfItsRow) {
    render::RasterSurface surface(1200, 700);
    TrackMap map(surface);
    PathOnly(map);
    map.ReDraw();
    ASSERT_GT(map.view.CompressedIndex.size(), 100u);
    EXPECT_GT(Painted(surface.Image()), 2000);
    EXPECT_EQ(Differences(surface, map), 0);
    // A repaint of the unchanged view is the same picture.
    const QImage first = surface.Image().copy();
    map.ReDraw();
    EXPECT_TRUE(surface.Image() == first);

    // Zoomed in and turned: lines leave the map on every side, far ends
    // stop at the clamp.
    for (int k = 0; k < 6; ++k) map.ZoomIn_Click();
    map.RotateCW_Click();
    map.RotateCW_Click();
    EXPECT_GT(Painted(surface.Image()), 500);
    EXPECT_EQ(Differences(surface, map), 0);
    map.HScroll_Change(map.view.scroll.HValue + 20);
    EXPECT_EQ(Differences(surface, map), 0);

    // Uncoloured, two panels over the same run.
    map.ShowWholeTrack_Click();
    map.settings.MapColorVar = kNoColorCoding;
    map.settings.RunsInUse = 2;
    map.settings.RunToDisplay = {"1", "1"};
    map.ReDraw();
    EXPECT_EQ(Differences(surface, map), 0);
}

TEST_F(TrackMapPaintTest, PathAt200PercentAndAfterChanges) {
    render::RasterSurface surface(2400, 1400, 192.0);
    TrackMap map(surface);
    PathOnly(map);
    map.ReDraw();
    EXPECT_EQ(Differences(surface, map), 0);
    const QImage before = surface.Image().copy();

    // Another map of another size drawn in between.
    render::RasterSurface small(500, 300);
    TrackMap other(small);
    PathOnly(other);
    other.settings.MapColorVar = kNoColorCoding;
    other.ReDraw();
    EXPECT_EQ(Differences(small, other), 0);
    map.ReDraw();
    EXPECT_TRUE(surface.Image() == before);

    // The speeds change in place (the range stays): the colours follow.
    const ColourRange range = ColourRangeOf(map.settings.MapColorVar);
    ASSERT_TRUE(range.coded);
    const RunRecord& r = Store().RunInfo[1];
    for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) {
        float& v = Store().RunData(i, range.column);
        v = range.low + range.high - v;
    }
    map.ReDraw();
    EXPECT_FALSE(surface.Image() == before);
    EXPECT_EQ(Differences(surface, map), 0);
}

// One-pixel polylines laid on the image itself against the painter's (a
// surface whose painter was handed out draws through it): short and long
// lines at every angle, ends far beyond each edge or not a number, points
// repeated, lines of no length alone and on the pixel edges.
TEST(RasterSurfacePen, LaidLinesAreThePaintersPixelForPixel) {
    render::RasterSurface laid(317, 211), painted(317, 211);
    painted.Painter();
    std::mt19937 random(7);
    const double W = laid.ScaleWidth(), H = laid.ScaleHeight();
    std::uniform_real_distribution<double> far(-1.2, 5.2), near(0, 1), step(-400, 400);
    std::uniform_int_distribution<int> pick(0, 5);
    std::uniform_int_distribution<uint32_t> colour(0, 0xFFFFFF);
    std::vector<double> xs, ys;
    for (int line = 0; line < 6000; ++line) {
        xs.clear();
        ys.clear();
        const int count = 1 + pick(random) * 3;
        double x = near(random) * W, y = near(random) * H;
        for (int k = 0; k < count; ++k) {
            switch (pick(random)) {
                case 0:  // anywhere within the clamp
                    x = far(random) * W;
                    y = far(random) * H;
                    break;
                case 1:  // on a pixel's edge
                    x = std::floor(x / 15) * 15;
                    break;
                case 2:  // the same point again, or not a number
                    if (line % 500 == 0) x = std::nan("");
                    break;
                default:
                    x += step(random);
                    y += step(random) * (pick(random) == 0 ? 0 : 1);
            }
            xs.push_back(x);
            ys.push_back(y);
        }
        const uint32_t c = colour(random);
        laid.Polyline(xs.data(), ys.data(), count, c);
        painted.Polyline(xs.data(), ys.data(), count, c);
    }
    int differ = 0;
    for (int y = 0; y < laid.Image().height(); ++y)
        for (int x = 0; x < laid.Image().width(); ++x)
            differ += laid.Image().pixel(x, y) != painted.Image().pixel(x, y) ? 1 : 0;
    EXPECT_EQ(differ, 0);
    EXPECT_FALSE(laid.Image() == render::RasterSurface(317, 211).Image());
}

TEST(RasterSurfacePen, FollowsEveryChangeBetweenLines) {
    render::RasterSurface s(120, 120);
    const uint32_t red = Rgb(255, 0, 0), blue = Rgb(0, 0, 255);
    auto at = [&](int x, int y) { return s.Image().pixel(x, y) & 0xFFFFFF; };
    s.Line(150, 150, 1350, 150, red);
    // A filled box takes the pen away; the next line of the same colour
    // still draws.
    s.FilledBox(150, 300, 300, 450, red);
    s.Line(150, 600, 1350, 600, red);
    EXPECT_EQ(at(50, 40), 0xFF0000u);
    // A filled circle sets the brush; a box of the same colour after it is
    // not filled.
    s.FillStyle = FillStyles::Solid;
    s.FillColor = blue;
    s.Circle(750, 900, 150, red);
    EXPECT_EQ(at(50, 60), 0x0000FFu);
    s.FillStyle = FillStyles::Transparent;
    s.Box(1050, 1200, 1350, 1350, red);
    EXPECT_EQ(at(70, 85), 0xFF0000u);
    EXPECT_EQ(at(80, 85), 0xFFFFFFu);
    // Text sets its own pen; an XOR line after it XORs, then copies again.
    s.ForeColor = blue;
    s.Print("x");
    s.DrawMode = DrawModes::XorPen;
    s.Line(150, 150, 1350, 150, red);
    EXPECT_EQ(at(50, 10), 0x000000u);
    s.DrawMode = DrawModes::CopyPen;
    s.Line(150, 150, 1350, 150, red);
    EXPECT_EQ(at(50, 10), 0xFF0000u);
    // A wider pen, then one pixel again.
    s.DrawWidth = 3;
    s.Line(150, 1500, 1350, 1500, blue);
    EXPECT_EQ(at(50, 99), 0x0000FFu);
    EXPECT_EQ(at(50, 101), 0x0000FFu);
    s.DrawWidth = 1;
    s.Line(150, 1575, 1350, 1575, blue);
    EXPECT_EQ(at(50, 103), 0xFFFFFFu);
    EXPECT_EQ(at(50, 104), 0xFFFFFFu);
    EXPECT_EQ(at(50, 105), 0x0000FFu);
}

}  // namespace
}  // namespace tl
