// The raster and vector surfaces: where twips land in pixels at 100 % and
// 200 %, the line, box, circle and pie forms, text metrics and Print, XOR and
// invert marks that vanish bit for bit when drawn twice, and the files.
#include <gtest/gtest.h>

#include <QImage>
#include <QSvgRenderer>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "support/engine_fixture.h"

namespace tl::render {
namespace {

bool IsColour(const QImage& img, int x, int y, uint32_t packed) {
    const QRgb p = img.pixel(x, y);
    return qRed(p) == int(packed & 0xFF) && qGreen(p) == int((packed >> 8) & 0xFF) &&
           qBlue(p) == int((packed >> 16) & 0xFF);
}

int CountColour(const QImage& img, uint32_t packed) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) n += IsColour(img, x, y, packed) ? 1 : 0;
    return n;
}

TEST(RasterSurface, TwipsLandOnThePixelsThatHoldThem) {
    // 96 dpi: 15 twips a pixel. A line from (1440, 720) to (2880, 720) is
    // pixel row 48, columns 96 to 192.
    RasterSurface s(300, 200, 96.0);
    EXPECT_DOUBLE_EQ(s.ScaleWidth(), 4500.0);
    EXPECT_DOUBLE_EQ(s.ScaleHeight(), 3000.0);
    const uint32_t red = Rgb(255, 0, 0);
    s.Line(1440, 720, 2880, 720, red);
    const QImage& img = s.Image();
    EXPECT_TRUE(IsColour(img, 96, 48, red));
    EXPECT_TRUE(IsColour(img, 150, 48, red));
    EXPECT_FALSE(IsColour(img, 150, 47, red));
    EXPECT_FALSE(IsColour(img, 150, 49, red));
    EXPECT_FALSE(IsColour(img, 95, 48, red));
    EXPECT_EQ(s.CurrentX, 2880);
    EXPECT_EQ(s.CurrentY, 720);
    // Continuing from the current point: down to (2880, 1440), column 192.
    s.LineTo(2880, 1440, red);
    EXPECT_TRUE(IsColour(img, 192, 60, red));
    EXPECT_FALSE(IsColour(img, 191, 60, red));

    // 192 dpi (200 %): 7.5 twips a pixel, DrawWidth 1 is two pixels wide.
    RasterSurface big(600, 400, 192.0);
    big.Line(1440, 720, 2880, 720, red);
    const QImage& b = big.Image();
    EXPECT_TRUE(IsColour(b, 250, 96, red));
    EXPECT_TRUE(IsColour(b, 250, 95, red) != IsColour(b, 250, 97, red));
    EXPECT_EQ(CountColour(b, red) % 2, 0);
}

TEST(RasterSurface, WidePensCoverTheirLinesWithSquareEnds) {
    // 192 dpi: DrawWidth 1 is a two-pixel pen on the line between pixels
    // 191 and 192, its ends grown by one pixel: (1440, 720) to (1440, 1440)
    // is columns 191 and 192, rows 95 to 192.
    const uint32_t red = Rgb(255, 0, 0);
    RasterSurface big(400, 300, 192.0);
    big.Line(1440, 720, 1440, 1440, red);
    EXPECT_EQ(CountColour(big.Image(), red), 2 * 98);
    EXPECT_TRUE(IsColour(big.Image(), 191, 95, red));
    EXPECT_TRUE(IsColour(big.Image(), 192, 192, red));
    EXPECT_FALSE(IsColour(big.Image(), 193, 150, red));
    // A point with that pen is its two by two square.
    big.Cls();
    big.Polyline(std::vector<double>{1440, 1441}.data(), std::vector<double>{720, 721}.data(), 2,
                 red);
    EXPECT_EQ(CountColour(big.Image(), red), 4);
    EXPECT_TRUE(IsColour(big.Image(), 191, 95, red));
    EXPECT_TRUE(IsColour(big.Image(), 192, 96, red));
    // 96 dpi, DrawWidth 3: three pixels centred on row 48, one more at
    // each end: (1440, 720) to (2880, 720) is rows 47 to 49, columns 95 to
    // 193.
    RasterSurface s(300, 200, 96.0);
    s.DrawWidth = 3;
    s.Line(2880, 720, 1440, 720, red);
    EXPECT_EQ(CountColour(s.Image(), red), 3 * 99);
    EXPECT_TRUE(IsColour(s.Image(), 95, 47, red));
    EXPECT_TRUE(IsColour(s.Image(), 193, 49, red));
}

TEST(RasterSurface, ALineOfNoLengthIsTheDotOfItsPixel) {
    // (1447, 727) twips is pixel (96, 48) at 96 dpi, as DeviceX says; a
    // polyline whose points all fall there is the same one pixel, and an
    // XOR dot drawn twice is gone.
    RasterSurface s(300, 200, 96.0);
    const uint32_t red = Rgb(255, 0, 0);
    EXPECT_TRUE(s.HasPixelColumns());
    EXPECT_EQ(s.DeviceX(1447), 96);
    s.Line(1447, 727, 1447, 727, red);
    EXPECT_TRUE(IsColour(s.Image(), 96, 48, red));
    EXPECT_EQ(CountColour(s.Image(), red), 1);
    s.Cls();
    const double xs[] = {1441, 1447, 1454, 1447}, ys[] = {721, 727, 734, 720};
    s.Polyline(xs, ys, 4, red);
    EXPECT_TRUE(IsColour(s.Image(), 96, 48, red));
    EXPECT_EQ(CountColour(s.Image(), red), 1);
    s.Cls();
    const QImage clean = s.Image().copy();
    s.DrawMode = DrawModes::XorPen;
    s.Line(1447, 727, 1447, 727, red);
    EXPECT_EQ(CountColour(s.Image(), Rgb(0, 255, 255)), 1);
    s.Line(1447, 727, 1447, 727, red);
    EXPECT_TRUE(s.Image() == clean);
}

TEST(RasterSurface, BoxesCirclesAndPies) {
    RasterSurface s(200, 200, 96.0);
    const uint32_t blue = Rgb(0, 0, 255), green = Rgb(0, 255, 0);
    // Filled box from pixel 10 to 20 in both directions: 11 x 11 pixels of
    // the line's colour.
    s.FilledBox(150, 150, 300, 300, blue);
    EXPECT_EQ(CountColour(s.Image(), blue), 121);
    // The outline form leaves the inside alone.
    s.Cls();
    s.Box(150, 150, 300, 300, blue);
    EXPECT_TRUE(IsColour(s.Image(), 10, 15, blue));
    EXPECT_FALSE(IsColour(s.Image(), 15, 15, blue));
    // A circle of radius 600 twips (40 px) about pixel (100, 100): its left,
    // right, top and bottom pixels, nothing at the centre; a solid fill fills.
    s.Cls();
    s.Circle(1500, 1500, 600, green);
    EXPECT_TRUE(IsColour(s.Image(), 140, 100, green) || IsColour(s.Image(), 139, 100, green));
    EXPECT_TRUE(IsColour(s.Image(), 60, 100, green) || IsColour(s.Image(), 61, 100, green));
    EXPECT_TRUE(IsColour(s.Image(), 100, 60, green) || IsColour(s.Image(), 100, 61, green));
    EXPECT_FALSE(IsColour(s.Image(), 100, 100, green));
    EXPECT_EQ(s.CurrentX, 1500);
    s.FillStyle = FillStyles::Solid;
    s.FillColor = blue;
    s.Circle(1500, 1500, 600, green);
    EXPECT_TRUE(IsColour(s.Image(), 100, 100, blue));
    // A pie of the first quarter (both angles negative): its radii run right
    // and up from the centre; the lower half stays clear.
    s.Cls();
    s.FillStyle = FillStyles::Transparent;
    s.Arc(1500, 1500, 600, green, -1e-9, -3.14159265 / 2);
    EXPECT_TRUE(IsColour(s.Image(), 120, 100, green));  // along the 3 o'clock radius
    EXPECT_TRUE(IsColour(s.Image(), 100, 80, green));   // along the 12 o'clock radius
    EXPECT_FALSE(IsColour(s.Image(), 100, 120, green));
    EXPECT_FALSE(IsColour(s.Image(), 80, 100, green));
    // An arc alone has no radii.
    s.Cls();
    s.Arc(1500, 1500, 600, green, 0.1, 3.14159265 / 2);
    EXPECT_FALSE(IsColour(s.Image(), 120, 100, green));
}

TEST(RasterSurface, DottedPenLeavesGaps) {
    RasterSurface s(200, 20, 96.0);
    s.DrawStyle = DrawStyles::Dot;
    s.Line(0, 150, 2985, 150, kBlack);
    const int on = CountColour(s.Image(), kBlack);
    EXPECT_GT(on, 40);
    EXPECT_LT(on, 160);
}

TEST(RasterSurface, TextMetricsScaleAndPrintMoves) {
    RasterSurface s(400, 200, 96.0);
    s.FontSize = 8;
    const double w8 = s.TextWidth("12345"), h8 = s.TextHeight("12345");
    EXPECT_GT(w8, 0);
    s.FontSize = 16;
    EXPECT_NEAR(s.TextWidth("12345"), 2 * w8, 0.2 * w8);
    EXPECT_NEAR(s.TextHeight("12345"), 2 * h8, 0.2 * h8);
    // In twips the metrics do not depend on the resolution.
    RasterSurface big(800, 400, 192.0);
    big.FontSize = 16;
    EXPECT_NEAR(big.TextWidth("12345"), s.TextWidth("12345"), 0.1 * w8);
    s.CurrentX = 300;
    s.CurrentY = 450;
    s.Print("Lap 1");
    EXPECT_NEAR(s.CurrentX, 300 + s.TextWidth("Lap 1"), 1e-9);
    EXPECT_EQ(s.CurrentY, 450);
    s.PrintLine("x");
    EXPECT_EQ(s.CurrentX, 0);
    EXPECT_NEAR(s.CurrentY, 450 + s.TextHeight("x"), 1e-9);
    // The text is drawn below and right of the point it starts at.
    int ink = 0;
    for (int y = 30; y < 60; ++y)
        for (int x = 20; x < 120; ++x) ink += IsColour(s.Image(), x, y, kBlack) ? 1 : 0;
    EXPECT_GT(ink, 10);
    EXPECT_FALSE(IsColour(s.Image(), 19, 31, kBlack));
}

// A busy picture: lines of every colour of the palette, filled boxes, text.
void Busy(DrawSurface& s) {
    for (int i = 0; i < 10; ++i) {
        s.FilledBox(i * 300, 0, i * 300 + 280, 2000, VqColorIndex(i, false));
        s.Line(0, i * 200, 3000, 3000 - i * 150, VqColorIndex(9 - i, false));
    }
    s.CurrentX = 100;
    s.CurrentY = 100;
    s.FontSize = 12;
    s.FontBold = true;
    s.Print("Speed [kph] 123.4");
}

TEST(RasterSurface, XorAndInvertMarksVanishWhenDrawnTwice) {
    for (double dpi : {96.0, 192.0}) {
        RasterSurface s(dpi == 96.0 ? 200 : 400, dpi == 96.0 ? 140 : 280, dpi);
        Busy(s);
        const QImage before = s.Image().copy();
        auto marks = [&] {
            s.DrawMode = DrawModes::XorPen;
            const uint32_t c = VqColorIndex(3, true);
            s.Line(1500, 0, 1500, 2000, c);
            s.Line(1200, 1000, 1800, 1000, c);
            s.Circle(1500, 1000, 100, c);
            s.Circle(1500, 1000, 200, c);
            s.DrawMode = DrawModes::Invert;
            s.Line(100, 1900, 2900, 100, kBlack);
            s.Circle(700, 700, 300, kBlack);
            s.DrawMode = DrawModes::CopyPen;
        };
        marks();
        EXPECT_NE(s.Image(), before);
        marks();
        ASSERT_EQ(s.Image().sizeInBytes(), before.sizeInBytes());
        EXPECT_EQ(std::memcmp(s.Image().constBits(), before.constBits(), before.sizeInBytes()), 0)
            << "at " << dpi << " dpi";
    }
}

TEST(RasterSurface, XorOnWhiteShowsTheTrueColour) {
    RasterSurface s(100, 100, 96.0);
    s.DrawMode = DrawModes::XorPen;
    s.Line(0, 300, 1485, 300, VqColorIndex(1, true));
    EXPECT_TRUE(IsColour(s.Image(), 50, 20, VqColorIndex(1, false)));
}

class RenderFiles : public ::testing::Test {
  protected:
    test::TempDir dir;
};

TEST_F(RenderFiles, PngSvgAndPdfAreWrittenWhole) {
    const std::string png = dir.file("g.png"), svg = dir.file("g.svg"), pdf = dir.file("g.pdf");
    std::string error;
    auto draw = [](DrawSurface& s) {
        Busy(s);
        s.DrawMode = DrawModes::XorPen;  // no cursors on files
        s.Line(0, 0, 3000, 3000, kBlack);
        s.DrawMode = DrawModes::CopyPen;
    };
    ASSERT_TRUE(RenderToFile(png, 320, 240, draw, &error)) << error;
    QImage img(QString::fromStdString(png));
    ASSERT_EQ(img.width(), 320);
    EXPECT_TRUE(IsColour(img, 5, 100, VqColorIndex(0, false)));
    ASSERT_TRUE(RenderToFile(svg, 320, 240, draw, &error)) << error;
    QSvgRenderer renderer(QString::fromStdString(svg));
    ASSERT_TRUE(renderer.isValid());
    EXPECT_EQ(renderer.viewBox(), QRect(0, 0, 320, 240));
    ASSERT_TRUE(RenderToFile(pdf, 320, 240, draw, &error)) << error;
    EXPECT_EQ(test::ReadAll(pdf).substr(0, 5), "%PDF-");
    // An unknown kind and an unwritable place fail and leave the old file.
    EXPECT_FALSE(RenderToFile(dir.file("g.bmp"), 10, 10, draw, &error));
    EXPECT_NE(error.find(".png"), std::string::npos);
    // A folder that does not exist, and a target that is a folder: both fail
    // with a message, and the folder stays as it was.
    EXPECT_FALSE(RenderToFile(dir.file("missing/g.png"), 50, 50, draw, &error));
    EXPECT_FALSE(error.empty());
    std::filesystem::create_directory(dir.file("taken.png"));
    EXPECT_FALSE(RenderToFile(dir.file("taken.png"), 50, 50, draw, &error));
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("taken.png")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator{}),
              4);  // g.png, g.svg, g.pdf, taken.png: no temporary left behind
}

}  // namespace
}  // namespace tl::render
