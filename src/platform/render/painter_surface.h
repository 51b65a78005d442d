// DrawSurface over a QPainter.
//
// RasterSurface owns a QImage (32-bit, opaque) at a given resolution and is
// what the view windows draw on and what PNG files are written from. XOR pen
// and invert marks are done with the painter's raster operations on the
// pixels, with antialiasing off, so that drawing a mark twice restores every
// pixel bit for bit.
//
// VectorSurface draws on a QSvgGenerator or a QPdfWriter (or, later, the
// printer): the same lines, circles and text, resolution-independent; XOR and
// invert marks are not drawn there (CanUndoMarks is false).
//
// Twips become device units through the device's resolution: a device unit is
// 1440 / dpi twips. Positions are taken to the device unit that holds them,
// and a pen of odd width is centred in its pixels, so a one-pixel line at 96
// dpi is one crisp pixel and two crisp pixels at 192 dpi.
#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QStaticText>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "core/draw_surface.h"

namespace tl::render {

class PainterSurface : public DrawSurface {
  public:
    double ScaleWidth() const override { return width_ / ppt_; }
    double ScaleHeight() const override { return height_ / ppt_; }
    double PixelsPerTwip() const override { return ppt_; }

    void Cls() override;
    using DrawSurface::Line;
    void Line(double x1, double y1, double x2, double y2, uint32_t colour) override;
    void Box(double x1, double y1, double x2, double y2, uint32_t colour) override;
    void FilledBox(double x1, double y1, double x2, double y2, uint32_t colour) override;
    void Circle(double cx, double cy, double radius, uint32_t colour) override;
    void Arc(double cx, double cy, double radius, uint32_t colour, double start,
             double end) override;
    double TextWidth(const std::string& text) override;
    double TextHeight(const std::string& text) override;
    void Print(const std::string& text) override;

    // A polyline through device-mapped points, one call for many segments
    // (the data of a graph); same pixels as the single lines.
    void Polyline(const double* xs, const double* ys, int count, uint32_t colour) override;

    // The pixel column a position is drawn in: the device unit that holds it.
    int64_t DeviceX(double twips) const override {
        return static_cast<int64_t>(std::floor(Dx(twips)));
    }

    // The painter itself; what is done with it is not known here, so the
    // next line sets the pen again.
    QPainter& Painter() {
        prepared_ = false;
        pixels_ = nullptr;
        return *painter_;
    }

  protected:
    // The 32-bit pixels of a raster surface's image (perLine_ of them to a
    // row), on which one-pixel lines are laid directly; null elsewhere, and
    // once the painter was handed out (it may have been given a clip or a
    // transform).
    uint32_t* pixels_ = nullptr;
    int64_t perLine_ = 0;

    // Starts painting on the device, which is width x height device units
    // at dpi.
    void Begin(QPaintDevice* device, double width, double height, double dpi);
    void End();
    // Device coordinates of a position in twips.
    double Dx(double twips) const;
    double Dy(double twips) const;

  private:
    // Sets the pen, brush and raster operation for the current state; false
    // when the mark is not to be drawn on this surface.
    bool Prepare(uint32_t colour, bool fill);
    // The font of the current state, made again only when the name, size or
    // weight changed (text is measured and drawn many times a paint).
    // The pixel that holds a snapped position, in the current pen.
    void Dot(const QPointF& at);
    // A line of snapped ends in the current pen, wider than one pixel.
    void WideLine(const QPointF& from, const QPointF& to);
    const QFont& Font();
    const QFontMetricsF& Metrics();

    std::unique_ptr<QPainter> painter_;
    // What Prepare last gave the painter; prepared_ is cleared by whatever
    // else sets its pen, brush or composition mode.
    struct PenKey {
        uint32_t colour = 0;
        bool fill = false;
        DrawModes mode = DrawModes::CopyPen;
        int width = 1;
        DrawStyles style = DrawStyles::Solid;
        bool operator==(const PenKey&) const = default;
    };
    bool prepared_ = false;
    PenKey preparedKey_;
    QPen pen_;
    double ppt_ = 96.0 / kTwipsPerInch;
    double dpi_ = 96.0;
    double width_ = 0, height_ = 0;
    std::string fontName_;
    double fontSize_ = -1;
    bool fontBold_ = false;
    bool fontSmoothing_ = true;
    QFont font_;
    std::unique_ptr<QFontMetricsF> metrics_;
    // Text widths in twips in the current font.
    static constexpr size_t kKeptWidths = 4096;
    std::unordered_map<std::string, double> widths_;
    // Texts laid out in the current font, as Print draws them.
    std::unordered_map<std::string, QStaticText> texts_;
};

class RasterSurface : public PainterSurface {
  public:
    // widthPx x heightPx device pixels at dpi (96 at 100 %); cleared to
    // BackColor.
    RasterSurface(int widthPx, int heightPx, double dpi = 96.0);
    ~RasterSurface() override;
    bool CanUndoMarks() const override { return true; }
    bool HasPixelColumns() const override { return true; }
    const QImage& Image() const { return image_; }
    // Resizes (contents cleared) when the size or resolution changes.
    void Resize(int widthPx, int heightPx, double dpi);
    // The picture as a PNG file, written through a temporary file renamed
    // over the target. False with a message in error on failure.
    bool SavePng(const std::string& path, std::string* error);

  private:
    QImage image_;
};

class VectorSurface : public PainterSurface {
  public:
    // Draws on a device the caller keeps alive for the surface's life;
    // widthUnits x heightUnits of the device at dpi.
    VectorSurface(QPaintDevice* device, double widthUnits, double heightUnits, double dpi);
    ~VectorSurface() override;
    bool CanUndoMarks() const override { return false; }
};

// Draws a picture of widthPx x heightPx pixels at 96 dpi (1 px = 15 twips)
// into a PNG, SVG or PDF file chosen by the path's extension, through a
// temporary file renamed over the target so that a failed write never
// replaces a good file. False with a message in error on failure.
bool RenderToFile(const std::string& path, int widthPx, int heightPx,
                  const std::function<void(DrawSurface&)>& draw, std::string* error);

}  // namespace tl::render
