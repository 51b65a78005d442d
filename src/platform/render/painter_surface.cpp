#include "platform/render/painter_surface.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPdfWriter>
#include <QStaticText>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "core/config_store.h"

namespace tl::render {
namespace {

constexpr double kPi = 3.14159265358979323846;

QColor ToQColor(uint32_t packed) {
    return QColor(static_cast<int>(packed & 0xFF), static_cast<int>((packed >> 8) & 0xFF),
                  static_cast<int>((packed >> 16) & 0xFF));
}

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

}  // namespace

void PainterSurface::Begin(QPaintDevice* device, double width, double height, double dpi) {
    End();
    dpi_ = dpi;
    ppt_ = dpi / kTwipsPerInch;
    width_ = width;
    height_ = height;
    // Fonts are sized in device pixels: made again at the new resolution.
    metrics_.reset();
    painter_ = std::make_unique<QPainter>(device);
    prepared_ = false;
    painter_->setRenderHint(QPainter::Antialiasing, false);
    painter_->setRenderHint(QPainter::TextAntialiasing, true);
}

void PainterSurface::End() {
    prepared_ = false;
    pixels_ = nullptr;
    if (painter_) painter_->end();
    painter_.reset();
}

double PainterSurface::Dx(double twips) const {
    return twips * ppt_;
}

double PainterSurface::Dy(double twips) const {
    return twips * ppt_;
}

bool PainterSurface::Prepare(uint32_t colour, bool fill) {
    if (!painter_) return false;
    const bool mark = DrawMode == DrawModes::XorPen || DrawMode == DrawModes::Invert;
    if (mark && !CanUndoMarks()) return false;
    QPainter& p = *painter_;
    // A path draws thousands of short lines with the state unchanged, or
    // with a new colour alone: the painter keeps what it was last given.
    const PenKey key{colour, fill, DrawMode, DrawWidth, DrawStyle};
    if (prepared_ && key == preparedKey_) return true;
    if (prepared_ && key.fill == preparedKey_.fill && key.mode == preparedKey_.mode &&
        key.width == preparedKey_.width && key.style == preparedKey_.style) {
        pen_.setColor(ToQColor(colour));
        p.setPen(pen_);
        if (fill) p.setBrush(ToQColor(colour));
        preparedKey_ = key;
        return true;
    }
    switch (DrawMode) {
        case DrawModes::XorPen:
            p.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
            break;
        case DrawModes::Invert:
            p.setCompositionMode(QPainter::RasterOp_NotDestination);
            break;
        case DrawModes::CopyPen:
            p.setCompositionMode(QPainter::CompositionMode_SourceOver);
            break;
    }
    const double penPx = std::max(1.0, std::round(DrawWidth * dpi_ / 96.0));
    QPen pen(ToQColor(colour));
    pen.setWidthF(penPx);
    // A one-pixel pen is cosmetic: each line is laid pixel by pixel, never
    // filled as an outline, so lines drawn together cannot cancel each
    // other where they overlap.
    pen.setCosmetic(penPx <= 1.0);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    if (DrawWidth <= 1 && DrawStyle == DrawStyles::Dot)
        pen.setStyle(Qt::DotLine);
    else if (DrawWidth <= 1 && DrawStyle == DrawStyles::Dash)
        pen.setStyle(Qt::DashLine);
    p.setPen(pen);
    if (fill)
        p.setBrush(ToQColor(colour));
    else
        p.setBrush(Qt::NoBrush);
    pen_ = pen;
    preparedKey_ = key;
    prepared_ = true;
    return true;
}

namespace {

// Positions go to the device unit that holds them (DeviceX); a pen of odd
// width is centred in its pixels.
double Snap(double device, double penPx) {
    const double base = std::floor(device);
    return (static_cast<int>(penPx) % 2 == 1) ? base + 0.5 : base;
}

// A line of a one-pixel solid pen laid on 32-bit pixels the way the raster
// painter lays it, so that the two can be mixed pixel for pixel: the ends
// are clipped (in floating point) to the image grown by one pixel up and
// left and two down and right, taken to 26.6 fixed point (truncated), and
// stepped one pixel at a time along the longer axis with a 16.16 increment
// across; square caps push both ends out by half a pixel.
void LayLine(uint32_t* pixels, int64_t perLine, int width, int height, double x1, double y1,
             double x2, double y2, uint32_t argb) {
    // A line with an end that is not a number is not drawn.
    if (std::isnan(x1) || std::isnan(y1) || std::isnan(x2) || std::isnan(y2)) return;
    const double xmin = -1, xmax = width + 1, ymin = -1, ymax = height + 1;
    if (x1 < xmin) {
        if (x2 <= xmin) return;
        y1 += (y2 - y1) / (x2 - x1) * (xmin - x1);
        x1 = xmin;
    } else if (x1 > xmax) {
        if (x2 >= xmax) return;
        y1 += (y2 - y1) / (x2 - x1) * (xmax - x1);
        x1 = xmax;
    }
    if (x2 < xmin) {
        y2 += (y2 - y1) / (x2 - x1) * (xmin - x2);
        x2 = xmin;
    } else if (x2 > xmax) {
        y2 += (y2 - y1) / (x2 - x1) * (xmax - x2);
        x2 = xmax;
    }
    if (y1 < ymin) {
        if (y2 <= ymin) return;
        x1 += (x2 - x1) / (y2 - y1) * (ymin - y1);
        y1 = ymin;
    } else if (y1 > ymax) {
        if (y2 >= ymax) return;
        x1 += (x2 - x1) / (y2 - y1) * (ymax - y1);
        y1 = ymax;
    }
    if (y2 < ymin) {
        x2 += (x2 - x1) / (y2 - y1) * (ymin - y2);
        y2 = ymin;
    } else if (y2 > ymax) {
        x2 += (x2 - x1) / (y2 - y1) * (ymax - y2);
        y2 = ymax;
    }
    int64_t a1 = static_cast<int>(x1 * 64.), b1 = static_cast<int>(y1 * 64.);
    int64_t a2 = static_cast<int>(x2 * 64.), b2 = static_cast<int>(y2 * 64.);
    // The line is laid along its longer axis (a); b is across.
    const bool steep = std::abs(a2 - a1) < std::abs(b2 - b1);
    if (steep) {
        std::swap(a1, b1);
        std::swap(a2, b2);
    }
    if (a1 == a2) return;
    if (a1 > a2) {
        std::swap(a1, a2);
        std::swap(b1, b2);
    }
    const int64_t inc = ((b2 - b1) * 65536) / (a2 - a1);
    int64_t b = b1 * 1024;
    a1 -= 32;
    b -= inc >> 1;
    a2 += 32;
    int64_t a = (a1 + 32) >> 6;
    const int64_t as = (a2 + 32) >> 6;
    if (a == as) return;
    // The first step is taken from the pixel's centre when the line rises
    // across, from its near edge when it falls.
    b += (((a * 64) + (inc > 0 ? 32 : 0) - a1) * inc) >> 6;
    // Only the steps within the image.
    const int64_t extent = steep ? height : width;
    if (a < 0) {
        b += -a * inc;
        a = 0;
    }
    for (const int64_t stop = std::min(as, extent); a < stop; ++a, b += inc) {
        const int64_t x = steep ? (b >> 16) : a, y = steep ? a : (b >> 16);
        if (x < 0 || x >= width || y < 0 || y >= height) continue;
        pixels[y * perLine + x] = argb;
    }
}

}  // namespace

void PainterSurface::Cls() {
    CurrentX = 0;
    CurrentY = 0;
    if (!painter_) return;
    prepared_ = false;
    painter_->setCompositionMode(QPainter::CompositionMode_Source);
    painter_->fillRect(QRectF(0, 0, width_, height_), ToQColor(BackColor));
    painter_->setCompositionMode(QPainter::CompositionMode_SourceOver);
}

// A line of no length with a one-pixel pen is its own pixel: the painter
// would put a point on a pixel's centre into the next pixel down and right.
void PainterSurface::Dot(const QPointF& at) {
    painter_->drawPoint(
        QPoint(static_cast<int>(std::floor(at.x())), static_cast<int>(std::floor(at.y()))));
}

// A wide solid pen's line straight across or down (the grid, the axes, a
// graph's line within one pixel column) covers the rectangle of its ends
// grown by half the pen on every side, square caps included: filled as that
// rectangle it takes the same pixels for far less than a stroked outline.
// Files and the printer keep their lines.
void PainterSurface::WideLine(const QPointF& from, const QPointF& to) {
    const QPen& pen = painter_->pen();
    if (HasPixelColumns() && DrawMode == DrawModes::CopyPen && pen.style() == Qt::SolidLine &&
        (from.x() == to.x() || from.y() == to.y())) {
        const double h = pen.widthF() / 2;
        painter_->fillRect(
            QRectF(QPointF(std::min(from.x(), to.x()) - h, std::min(from.y(), to.y()) - h),
                   QPointF(std::max(from.x(), to.x()) + h, std::max(from.y(), to.y()) + h)),
            pen.color());
        return;
    }
    painter_->drawLine(from, to);
}

void PainterSurface::Line(double x1, double y1, double x2, double y2, uint32_t colour) {
    CurrentX = x2;
    CurrentY = y2;
    if (!Prepare(colour, false)) return;
    const double w = painter_->pen().widthF();
    const QPointF from(Snap(Dx(x1), w), Snap(Dy(y1), w)), to(Snap(Dx(x2), w), Snap(Dy(y2), w));
    if (!painter_->pen().isCosmetic())
        WideLine(from, to);
    else if (from == to)
        Dot(from);
    else
        painter_->drawLine(from, to);
}

void PainterSurface::Polyline(const double* xs, const double* ys, int count, uint32_t colour) {
    if (count <= 0) return;
    if (count == 1) {
        Line(xs[0], ys[0], xs[0], ys[0], colour);
        return;
    }
    CurrentX = xs[count - 1];
    CurrentY = ys[count - 1];
    if (pixels_ != nullptr && painter_ && DrawMode == DrawModes::CopyPen &&
        DrawStyle == DrawStyles::Solid && std::round(DrawWidth * dpi_ / 96.0) <= 1.0) {
        // A one-pixel solid line on the image: laid here, the same pixels as
        // the painter's, without a painter call for each colour (a path of
        // many short lines in many colours). Lines of no length are left
        // out: their pixel is the end of a neighbour, or the run's one dot
        // when every point is in one pixel.
        const uint32_t argb =
            0xFF000000u | ((colour & 0xFF) << 16) | (colour & 0xFF00) | ((colour >> 16) & 0xFF);
        const int pw = static_cast<int>(width_), ph = static_cast<int>(height_);
        auto at = [&](int i) { return QPointF(Snap(Dx(xs[i]), 1), Snap(Dy(ys[i]), 1)); };
        bool drawn = false;
        QPointF from = at(0);
        for (int i = 1; i < count; ++i) {
            const QPointF to = at(i);
            if (to != from) {
                LayLine(pixels_, perLine_, pw, ph, from.x(), from.y(), to.x(), to.y(), argb);
                drawn = true;
            }
            from = to;
        }
        if (!drawn && Prepare(colour, false)) Dot(from);
        return;
    }
    if (!Prepare(colour, false)) return;
    // Separate segments, each drawn alone with its caps: no joins, so the
    // pixels are the union of the single lines however the points zigzag. A
    // cosmetic pen lays each line pixel by pixel, and the lines go in one
    // call; a wider pen's outlines are filled one line at a time, since
    // outlines filled together would cancel where they overlap.
    const double w = painter_->pen().widthF();
    auto at = [&](int i) { return QPointF(Snap(Dx(xs[i]), w), Snap(Dy(ys[i]), w)); };
    if (painter_->pen().isCosmetic()) {
        // Lines of no length are left out: their pixel is the end of a
        // neighbour, or the run's one dot when every point is in one pixel.
        thread_local std::vector<QLineF> lines;
        lines.resize(static_cast<size_t>(count - 1));
        size_t n = 0;
        QPointF from = at(0);
        for (int i = 1; i < count; ++i) {
            const QPointF to = at(i);
            if (to != from) lines[n++] = QLineF(from, to);
            from = to;
        }
        if (n == 0)
            Dot(from);
        else
            painter_->drawLines(lines.data(), static_cast<int>(n));
    } else {
        QPointF from = at(0);
        for (int i = 1; i < count; ++i) {
            const QPointF to = at(i);
            WideLine(from, to);
            from = to;
        }
    }
}

void PainterSurface::Box(double x1, double y1, double x2, double y2, uint32_t colour) {
    CurrentX = x2;
    CurrentY = y2;
    if (!Prepare(colour, false)) return;
    const double w = painter_->pen().widthF();
    const double l = Snap(Dx(std::min(x1, x2)), w), r = Snap(Dx(std::max(x1, x2)), w);
    const double t = Snap(Dy(std::min(y1, y2)), w), b = Snap(Dy(std::max(y1, y2)), w);
    painter_->drawRect(QRectF(l, t, r - l, b - t));
}

void PainterSurface::FilledBox(double x1, double y1, double x2, double y2, uint32_t colour) {
    CurrentX = x2;
    CurrentY = y2;
    if (!Prepare(colour, true)) return;
    prepared_ = false;
    painter_->setPen(Qt::NoPen);
    const double l = std::floor(Dx(std::min(x1, x2))), r = std::floor(Dx(std::max(x1, x2))) + 1;
    const double t = std::floor(Dy(std::min(y1, y2))), b = std::floor(Dy(std::max(y1, y2))) + 1;
    painter_->drawRect(QRectF(l, t, r - l, b - t));
}

void PainterSurface::Circle(double cx, double cy, double radius, uint32_t colour) {
    CurrentX = cx;
    CurrentY = cy;
    if (!Prepare(colour, false)) return;
    if (FillStyle == FillStyles::Solid) {
        prepared_ = false;
        painter_->setBrush(ToQColor(FillColor));
    }
    const double w = painter_->pen().widthF();
    const double r = std::max(0.0, radius * ppt_);
    painter_->drawEllipse(QPointF(Snap(Dx(cx), w), Snap(Dy(cy), w)), r, r);
}

void PainterSurface::Arc(double cx, double cy, double radius, uint32_t colour, double start,
                         double end) {
    CurrentX = cx;
    CurrentY = cy;
    if (!Prepare(colour, false)) return;
    const bool radiusAtStart = start < 0, radiusAtEnd = end < 0;
    start = std::fabs(start);
    end = std::fabs(end);
    double span = end - start;
    if (span <= 0) span += 2 * kPi;
    const double w = painter_->pen().widthF();
    const double r = std::max(0.0, radius * ppt_);
    const QPointF c(Snap(Dx(cx), w), Snap(Dy(cy), w));
    const QRectF box(c.x() - r, c.y() - r, 2 * r, 2 * r);
    const int a16 = static_cast<int>(std::lround(start * 180.0 / kPi * 16.0));
    const int s16 = static_cast<int>(std::lround(span * 180.0 / kPi * 16.0));
    if (radiusAtStart && radiusAtEnd) {
        if (FillStyle == FillStyles::Solid) {
            prepared_ = false;
            painter_->setBrush(ToQColor(FillColor));
        }
        painter_->drawPie(box, a16, s16);
        return;
    }
    painter_->drawArc(box, a16, s16);
    // Counter-clockwise on the page is towards negative y.
    auto rim = [&](double a) { return QPointF(c.x() + r * std::cos(a), c.y() - r * std::sin(a)); };
    if (radiusAtStart) painter_->drawLine(c, rim(start));
    if (radiusAtEnd) painter_->drawLine(c, rim(end));
}

const QFont& PainterSurface::Font() {
    if (metrics_ && fontName_ == FontName && fontSize_ == FontSize && fontBold_ == FontBold &&
        fontSmoothing_ == FontSmoothing)
        return font_;
    fontName_ = FontName;
    fontSize_ = FontSize;
    fontBold_ = FontBold;
    fontSmoothing_ = FontSmoothing;
    QFont f;
    QStringList families;
    // The views were laid out for "Microsoft Sans Serif" and "Arial": their
    // strips of 650 twips per Y axis hold labels and titles of those widths.
    // Liberation Sans has Arial's metrics; DejaVu Sans, a fifth wider, is
    // the fallback where it is missing.
    families << QString::fromStdString(FontName) << QStringLiteral("Liberation Sans")
             << QStringLiteral("Arimo") << QStringLiteral("DejaVu Sans");
    f.setFamilies(families);
    f.setStyleHint(QFont::SansSerif);
    // Sizes in points at the device's resolution.
    f.setPixelSize(std::max(1, static_cast<int>(std::lround(FontSize * dpi_ / 72.0))));
    f.setBold(FontBold);
    // Read-outs are erased by printing them again in white, which only
    // works for text without antialiasing on the raster surfaces: they turn
    // FontSmoothing off. Everything else is smoothed.
    if (CanUndoMarks() && !FontSmoothing) f.setStyleStrategy(QFont::NoAntialias);
    font_ = f;
    metrics_ = std::make_unique<QFontMetricsF>(font_);
    widths_.clear();
    texts_.clear();
    return font_;
}

const QFontMetricsF& PainterSurface::Metrics() {
    Font();
    return *metrics_;
}

double PainterSurface::TextWidth(const std::string& text) {
    // The axes measure the same labels at every paint, and shaping a text
    // costs more than drawing a line: widths are kept while the font lasts.
    const QFontMetricsF& metrics = Metrics();
    const auto kept = widths_.find(text);
    if (kept != widths_.end()) return kept->second;
    if (widths_.size() >= kKeptWidths) widths_.clear();
    const double width = metrics.horizontalAdvance(QString::fromStdString(text)) / ppt_;
    widths_.emplace(text, width);
    return width;
}

double PainterSurface::TextHeight(const std::string&) {
    return Metrics().height() / ppt_;
}

void PainterSurface::Print(const std::string& text) {
    const double width = TextWidth(text);
    if (painter_ && !text.empty()) {
        QPainter& p = *painter_;
        prepared_ = false;
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
        if (p.font() != Font()) p.setFont(Font());
        p.setRenderHint(QPainter::TextAntialiasing, FontSmoothing || !CanUndoMarks());
        p.setPen(ToQColor(ForeColor));
        // Laid out once while the font lasts: the axes print the same labels
        // at every paint.
        auto kept = texts_.find(text);
        if (kept == texts_.end()) {
            if (texts_.size() >= kKeptWidths) texts_.clear();
            QStaticText laid(QString::fromStdString(text));
            laid.setTextFormat(Qt::PlainText);
            laid.prepare(QTransform(), Font());
            kept = texts_.emplace(text, std::move(laid)).first;
        }
        p.drawStaticText(QPointF(std::floor(Dx(CurrentX)), std::floor(Dy(CurrentY))), kept->second);
    }
    CurrentX += width;
}

RasterSurface::RasterSurface(int widthPx, int heightPx, double dpi) {
    Resize(widthPx, heightPx, dpi);
}

RasterSurface::~RasterSurface() {
    End();
}

void RasterSurface::Resize(int widthPx, int heightPx, double dpi) {
    widthPx = std::max(widthPx, 1);
    heightPx = std::max(heightPx, 1);
    if (!image_.isNull() && image_.width() == widthPx && image_.height() == heightPx &&
        PixelsPerTwip() == dpi / kTwipsPerInch)
        return;
    End();
    image_ = QImage(widthPx, heightPx, QImage::Format_RGB32);
    const int dpm = static_cast<int>(std::lround(dpi / 0.0254));
    image_.setDotsPerMeterX(dpm);
    image_.setDotsPerMeterY(dpm);
    Begin(&image_, widthPx, heightPx, dpi);
    pixels_ = reinterpret_cast<uint32_t*>(image_.bits());
    perLine_ = image_.bytesPerLine() / 4;
    Cls();
}

bool RasterSurface::SavePng(const std::string& path, std::string* error) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image_.save(&buffer, "PNG")) {
        if (error) *error = "The picture could not be encoded";
        return false;
    }
    if (!WriteFileAtomically(path, bytes.toStdString())) {
        if (error) *error = "The file " + path + " could not be written";
        return false;
    }
    return true;
}

VectorSurface::VectorSurface(QPaintDevice* device, double widthUnits, double heightUnits,
                             double dpi) {
    Begin(device, widthUnits, heightUnits, dpi);
    Cls();
}

VectorSurface::~VectorSurface() {
    End();
}

bool RenderToFile(const std::string& path, int widthPx, int heightPx,
                  const std::function<void(DrawSurface&)>& draw, std::string* error) {
    widthPx = std::max(widthPx, 1);
    heightPx = std::max(heightPx, 1);
    const std::string ext = Lower(std::filesystem::path(path).extension().string());
    auto fail = [&](const std::string& why) {
        if (error) *error = why;
        return false;
    };
    if (ext == ".png") {
        RasterSurface surface(widthPx, heightPx, 96.0);
        draw(surface);
        return surface.SavePng(path, error);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (ext == ".svg") {
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(QSize(widthPx, heightPx));
        svg.setViewBox(QRect(0, 0, widthPx, heightPx));
        svg.setResolution(96);
        svg.setTitle(QStringLiteral("Tracelab"));
        {
            VectorSurface surface(&svg, widthPx, heightPx, 96.0);
            draw(surface);
        }
    } else if (ext == ".pdf") {
        QPdfWriter pdf(&buffer);
        // Device units of one twip: every length of the views lands exactly.
        pdf.setResolution(static_cast<int>(kTwipsPerInch));
        pdf.setPageSize(
            QPageSize(QSizeF(widthPx * 72.0 / 96.0, heightPx * 72.0 / 96.0), QPageSize::Point));
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        pdf.setCreator(QStringLiteral("Tracelab"));
        {
            VectorSurface surface(&pdf, widthPx * 15.0, heightPx * 15.0, kTwipsPerInch);
            draw(surface);
        }
    } else {
        return fail("The file " + path + " is not a .png, .svg or .pdf file");
    }
    buffer.close();
    if (bytes.isEmpty()) return fail("The picture could not be drawn");
    if (!WriteFileAtomically(path, bytes.toStdString()))
        return fail("The file " + path + " could not be written");
    return true;
}

}  // namespace tl::render
