#include "views/graph_paint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "core/support.h"

namespace tl {
namespace {

constexpr double kCirclePi = 3.141592654;
const char* const kGraphFont = "Microsoft Sans Serif";

bool Ticked(int16_t box) {
    return box != 0;
}

void PrintCentred(DrawSurface& s, const std::string& text, double centreX, double top) {
    s.CurrentX = centreX - s.TextWidth(text) / 2;
    s.CurrentY = top;
    s.Print(text);
}

}  // namespace

GraphFrame FrameOf(const GraphModel& g, const DrawSurface& s) {
    GraphFrame f;
    f.W = s.ScaleWidth();
    f.H = s.ScaleHeight();
    const int n = g.ActiveSlotCount();
    f.left = 650.0 * n;
    f.bottom = Ticked(g.settings.MultipleXAxis) ? 500.0 * n : 500.0;
    return f;
}

void DrawGrid(const GraphModel& g, double left, double bottom, DrawSurface& s) {
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    const uint32_t c = VqColorIndex(0, false);
    s.DrawWidth = 1;
    s.DrawStyle = DrawStyles::Dot;
    const int32_t yt = g.axis[0].YTicks, xt = g.axis[0].XTicks;
    // The top line is drawn, the bottom one is not: the X axis lies there.
    for (int32_t i = 0; i <= yt - 2; ++i) {
        const double y = 0.05 * H + double(i) / (yt - 1) * (H - bottom - 0.05 * H);
        s.Line(left, y, 0.95 * W, y, c);
    }
    for (int32_t i = 0; i <= xt - 1; ++i) {
        const double x = left + double(i) / (xt - 1) * (0.95 * W - left);
        s.Line(x, 0.05 * H, x, H - bottom, c);
    }
    s.DrawStyle = DrawStyles::Solid;
}

void DrawEllipse(double cx, double cy, double rx, double ry, double left, double bottom,
                 DrawSurface& s) {
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    auto inside = [&](double x, double y) {
        return x >= left && x <= 0.95 * W && y >= 0.05 * H && y <= H - bottom;
    };
    const uint32_t c = VqColorIndex(0, false);
    double px = cx + rx, py = cy;
    // Chords wholly inside the plot only: nothing is clipped at the edge.
    for (int k = 1; k <= 144; ++k) {
        const double a = k * kCirclePi / 72;
        const double x = cx + rx * std::cos(a), y = cy - ry * std::sin(a);
        if (inside(px, py) && inside(x, y)) s.Line(px, py, x, y, c);
        px = x;
        py = y;
    }
}

void DrawCircularGrid(const GraphModel& g, double left, double bottom, DrawSurface& s) {
    const GraphFrame f = FrameOf(g, s);
    s.DrawWidth = 1;
    s.DrawStyle = DrawStyles::Dot;
    const int32_t rings = std::min(g.axis[0].YTicks, g.axis[0].XTicks);
    for (int slot = 0; slot < kGraphSlots; ++slot) {
        if (!g.SlotActive(slot)) continue;
        const GraphAxis& a = g.axis[slot];
        if (a.XMax == a.XMin || a.YMax == a.YMin) continue;
        const double cx = f.X(0.0, a), cy = f.Y(0.0, a);
        for (int32_t i = 1; i <= rings; ++i) {
            const double rx = (0.95 * f.W - left) * i / (g.axis[0].XTicks - 1);
            const double world = rx * (a.XMax - a.XMin) / (0.95 * f.W - left);
            const double ry = world * (0.95 * f.H - bottom) / (a.YMax - a.YMin);
            DrawEllipse(cx, cy, rx, ry, left, bottom, s);
        }
    }
    s.DrawStyle = DrawStyles::Solid;
}

void DrawXAxis(double left, double bottom, double min, double max, int32_t ticks,
               const std::string& title, int colourIndex, DrawSurface& s) {
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    const uint32_t c = VqColorIndex(colourIndex, false);
    const double y = H - bottom;
    s.DrawWidth = 2;
    s.Line(left, y, 0.95 * W, y, c);
    s.FontName = kGraphFont;
    s.FontSize = 7;
    s.FontBold = false;
    s.ForeColor = c;
    for (int32_t i = 0; i < ticks; ++i) {
        const double x = left + double(i) / (ticks - 1) * (0.95 * W - left);
        s.Line(x, y, x, y + 50, c);
        PrintCentred(s, FormToSD(min + (max - min) / (ticks - 1) * i, 5), x, y + 50);
    }
    PrintCentred(s, title, left + (0.95 * W - left) / 2, y + 220);
    s.DrawWidth = 1;
}

void DrawYAxis(double x, double bottom, double min, double max, int32_t ticks,
               const std::string& title, int colourIndex, DrawSurface& s) {
    const double H = s.ScaleHeight();
    const uint32_t c = VqColorIndex(colourIndex, false);
    s.DrawWidth = 2;
    s.Line(x, 0.05 * H, x, H - bottom, c);
    s.FontName = kGraphFont;
    s.FontSize = 7;
    s.FontBold = false;
    s.ForeColor = c;
    for (int32_t i = 0; i < ticks; ++i) {
        const double y = 0.05 * H + double(i) / (ticks - 1) * (H - bottom - 0.05 * H);
        s.Line(x - 50, y, x, y, c);
        const std::string label = FormToSD(max + min - (min + (max - min) / (ticks - 1) * i), 4);
        s.CurrentX = x - 50 - s.TextWidth(label) - 20;
        s.CurrentY = y - s.TextHeight(label) / 2;
        s.Print(label);
    }
    // The title runs downwards, a letter under the other, each letter printed
    // from x - 600 as Print places text: its cell's left edge there. So the
    // title stands clear of the axis line of the strip to its left.
    const double centre = 0.05 * H + (H - bottom - 0.05 * H) / 2;
    const double L = static_cast<double>(title.size());
    for (size_t j = 0; j < title.size(); ++j) {
        const std::string letter(1, title[j]);
        s.CurrentX = x - 600;
        s.CurrentY = centre + (static_cast<double>(j) - L / 2) * s.TextHeight(letter) * 0.7;
        s.Print(letter);
    }
    s.DrawWidth = 1;
}

GraphPolyline JoinedLine(const GraphModel& g, int slot, const GraphFrame& f) {
    GraphPolyline line;
    const GraphAxis& a = g.axis[slot];
    const GraphPoints& pts = g.data[slot];
    const int32_t count = std::min<int32_t>(a.PointCount, static_cast<int32_t>(pts.X.size()) - 1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    line.x.reserve(static_cast<size_t>(std::max(count, 0)) + 16);
    line.y.reserve(line.x.capacity());
    bool open = false;
    for (int32_t p = 1; p <= count; ++p) {
        const float xv = pts.X[p], yv = pts.Y[p];
        const bool inside = a.XMin <= xv && xv <= a.XMax && a.YMin <= yv && yv <= a.YMax;
        if (!inside) {
            // A point outside the ranges (a gap row too) breaks the line.
            if (open) {
                line.x.push_back(nan);
                line.y.push_back(nan);
            }
            open = false;
            continue;
        }
        line.x.push_back(f.X(xv, a));
        line.y.push_back(f.Y(yv, a));
        open = true;
    }
    return line;
}

GraphPolyline ColumnEnvelope(const GraphModel& g, int slot, const GraphFrame& f,
                             const DrawSurface& s) {
    GraphPolyline line;
    const GraphAxis& a = g.axis[slot];
    const GraphPoints& pts = g.data[slot];
    const int32_t count = std::min<int32_t>(a.PointCount, static_cast<int32_t>(pts.X.size()) - 1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const int64_t columns = s.DeviceX(0.95 * f.W) - s.DeviceX(f.left) + 1;
    const size_t room = static_cast<size_t>(std::clamp<int64_t>(4 * columns, 0, count)) + 16;
    line.x.reserve(room);
    line.y.reserve(room);
    // The column being gathered while a run is open: its first and last
    // point and those of the greatest and the least value (the top and the
    // foot of the column on the surface), by row of DataArray, surface x and
    // value y; surface y is worked out only for the points kept.
    struct Kept {
        int32_t row;
        double x;
        float y;
    };
    Kept first{}, top{}, foot{}, last{};
    int64_t column = 0;
    bool open = false;
    auto emit = [&](const Kept& k) {
        line.x.push_back(k.x);
        line.y.push_back(f.Y(k.y, a));
    };
    // Any path from the first to the last through the top and the foot
    // covers the same pixels of the column; none is taken twice.
    auto flush = [&] {
        emit(first);
        if (top.row != first.row && top.row != last.row) emit(top);
        if (foot.row != first.row && foot.row != last.row && foot.row != top.row) emit(foot);
        if (last.row != first.row) emit(last);
    };
    for (int32_t p = 1; p <= count; ++p) {
        const float xv = pts.X[p], yv = pts.Y[p];
        const bool inside = a.XMin <= xv && xv <= a.XMax && a.YMin <= yv && yv <= a.YMax;
        if (!inside) {
            if (open) {
                flush();
                line.x.push_back(nan);
                line.y.push_back(nan);
            }
            open = false;
            continue;
        }
        const Kept k{p, f.X(xv, a), yv};
        const int64_t c = s.DeviceX(k.x);
        if (open && c == column) {
            if (k.y > top.y) top = k;
            if (k.y < foot.y) foot = k;
            last = k;
            continue;
        }
        if (open) flush();
        column = c;
        first = top = foot = last = k;
        open = true;
    }
    if (open) flush();
    return line;
}

const GraphLineCache& SlotLine(const GraphModel& g, int slot, const GraphFrame& f,
                               const DrawSurface& s) {
    const GraphAxis& a = g.axis[slot];
    GraphLineCache& cache = g.lineCache[slot];
    const std::array<double, 12> key = {static_cast<double>(g.DataGeneration),
                                        static_cast<double>(a.PointCount),
                                        a.XMin,
                                        a.XMax,
                                        a.YMin,
                                        a.YMax,
                                        f.W,
                                        f.H,
                                        f.left,
                                        f.bottom,
                                        s.PixelsPerTwip(),
                                        s.HasPixelColumns() ? 1.0 : 0.0};
    if (cache.key == key) return cache;
    cache.key = key;
    bool envelope = false;
    if (s.HasPixelColumns()) {
        // Fewer inside points than columns: every point, as they are.
        const GraphPoints& pts = g.data[slot];
        const int32_t count =
            std::min<int32_t>(a.PointCount, static_cast<int32_t>(pts.X.size()) - 1);
        const int64_t columns = s.DeviceX(0.95 * f.W) - s.DeviceX(f.left) + 1;
        int64_t inside = 0;
        for (int32_t p = 1; p <= count && inside <= columns; ++p) {
            const float xv = pts.X[p], yv = pts.Y[p];
            inside += (a.XMin <= xv && xv <= a.XMax && a.YMin <= yv && yv <= a.YMax) ? 1 : 0;
        }
        envelope = inside > columns;
    }
    GraphPolyline line = envelope ? ColumnEnvelope(g, slot, f, s) : JoinedLine(g, slot, f);
    cache.x = std::move(line.x);
    cache.y = std::move(line.y);
    return cache;
}

void DrawPolyline(const std::vector<double>& x, const std::vector<double>& y, uint32_t colour,
                  DrawSurface& s) {
    // Runs between the NaN breaks; a run of one point is a dot.
    size_t from = 0;
    for (size_t k = 0; k <= x.size(); ++k) {
        if (k < x.size() && !std::isnan(x[k])) continue;
        if (k > from)
            s.Polyline(x.data() + from, y.data() + from, static_cast<int>(k - from), colour);
        from = k + 1;
    }
}

void DrawPolyline(const GraphPolyline& line, uint32_t colour, DrawSurface& s) {
    DrawPolyline(line.x, line.y, colour, s);
}

void DrawData(const GraphModel& g, int slot, double left, double bottom, DrawSurface& s,
              LineDetail detail) {
    const GraphAxis& a = g.axis[slot];
    const GraphPoints& pts = g.data[slot];
    GraphFrame f;
    f.W = s.ScaleWidth();
    f.H = s.ScaleHeight();
    f.left = left;
    f.bottom = bottom;
    if (a.XMax == a.XMin || a.YMax == a.YMin) return;
    const uint32_t c = VqColorIndex(a.AxisColour, false);
    s.DrawWidth = 1;
    const double size = std::min(f.W / 200, f.H / 150);
    if (Ticked(g.settings.JoinPoints)) {
        // Files and the printer draw every point, once: nothing is kept.
        if (detail == LineDetail::Full || !s.HasPixelColumns()) {
            DrawPolyline(JoinedLine(g, slot, f), c, s);
        } else {
            const GraphLineCache& line = SlotLine(g, slot, f, s);
            DrawPolyline(line.x, line.y, c, s);
        }
    } else {
        const int32_t count =
            std::min<int32_t>(a.PointCount, static_cast<int32_t>(pts.X.size()) - 1);
        for (int32_t p = 1; p <= count; ++p) {
            const float xv = pts.X[p], yv = pts.Y[p];
            if (!(a.XMin <= xv && xv <= a.XMax && a.YMin <= yv && yv <= a.YMax)) continue;
            const double x = f.X(xv, a), y = f.Y(yv, a);
            switch (a.AxisColour) {
                case 0:
                    s.Line(x - size / 2, y, x + size / 2, y, c);
                    s.Line(x, y - size / 2, x, y + size / 2, c);
                    break;
                case 1:
                    s.Line(x - size, y - size, x + size, y + size, c);
                    s.Line(x - size, y + size, x + size, y - size, c);
                    break;
                case 2:
                    s.Circle(x, y, size, c);
                    break;
                case 3:
                    s.Box(x - size, y - size, x + size, y + size, c);
                    break;
                case 4:
                    s.Line(x - size, y - size, x + size, y + size, c);
                    s.Line(x - size, y + size, x + size, y - size, c);
                    s.Line(x - size, y, x + size, y, c);
                    break;
                default: {
                    s.ForeColor = c;
                    const std::string text = std::to_string(a.AxisColour);
                    s.CurrentX = x - s.TextWidth(text) / 2;
                    s.CurrentY = y - s.TextHeight(text) / 2;
                    s.Print(text);
                }
            }
        }
    }
    if (Ticked(g.settings.DispTrackMarkers)) {
        const GraphMarkers& m = g.markers[slot];
        s.FillStyle = FillStyles::Solid;
        s.FillColor = c;
        for (size_t k = 1; k < m.X.size() && m.X[k] < kGraphMarkerEnd; ++k) {
            if (!(a.XMin <= m.X[k] && m.X[k] <= a.XMax && a.YMin <= m.Y[k] && m.Y[k] <= a.YMax))
                continue;
            s.Circle(f.X(m.X[k], a), f.Y(m.Y[k], a),
                     Ticked(g.settings.JoinPoints) ? size : 2 * size, c);
        }
        s.FillStyle = FillStyles::Transparent;
    }
}

void Graphbox_Paint(const GraphModel& g, DrawSurface& s) {
    Graphbox_Paint(g, s, LineDetail::Envelope);
}

void Graphbox_Paint(const GraphModel& g, DrawSurface& s, LineDetail detail) {
    s.Cls();
    const GraphFrame f = FrameOf(g, s);
    if (Ticked(g.settings.ShowGrid)) DrawGrid(g, f.left, f.bottom, s);
    if (Ticked(g.settings.DispCircGrid)) DrawCircularGrid(g, f.left, f.bottom, s);
    double axisPos = 0, bottomPos = 0;
    for (int slot = 0; slot < kGraphSlots; ++slot) {
        if (!g.SlotActive(slot)) continue;
        const GraphAxis& a = g.axis[slot];
        const GraphSlotSettings& gs = g.settings.Slots[slot];
        axisPos += 650;
        bottomPos = Ticked(g.settings.MultipleXAxis) ? bottomPos + 500 : 500;
        if (Ticked(gs.ZeroBaseXAxis))
            DrawXAxis(f.left, bottomPos, 0, a.XMax - a.XMin, a.XTicks,
                      a.XTitle + "  (Axis Offset By " + FormToSD(-a.XMin, 4) + ")", a.AxisColour,
                      s);
        else
            DrawXAxis(f.left, bottomPos, a.XMin, a.XMax, a.XTicks, a.XTitle, a.AxisColour, s);
        DrawYAxis(axisPos, f.bottom, a.YMin, a.YMax, a.YTicks, a.YTitle, a.AxisColour, s);
        DrawData(g, slot, f.left, f.bottom, s, detail);
    }
    if (!g.settings.MainTitle.empty()) {
        s.FontName = kGraphFont;
        s.FontSize = 12;
        s.FontBold = true;
        s.ForeColor = kBlack;
        const std::string& t = g.settings.MainTitle;
        s.CurrentX = std::max(0.0, f.W / 2 - s.TextWidth(t) / 2);
        s.CurrentY = std::max(0.0, 0.025 * f.H - s.TextHeight(t) / 2);
        s.Print(t);
        s.FontBold = false;
    }
}

int32_t NearestRow(const GraphModel& g, int slot, double wx, double wy, bool multi) {
    const GraphAxis& a = g.axis[slot];
    const GraphPoints& pts = g.data[slot];
    const int32_t count = std::min<int32_t>(a.PointCount, static_cast<int32_t>(pts.X.size()) - 1);
    if (count < 3) return -1;
    if (!multi) {
        for (int32_t i = 1; i < count; ++i) {
            const double x0 = pts.X[i], x1 = pts.X[i + 1];
            if ((x0 <= wx && wx <= x1) || (x1 <= wx && wx <= x0)) return i;
        }
        return count;
    }
    const double sx = std::max(double(a.XMax - a.XMin) * (a.XMax - a.XMin), 0.001);
    const double sy = std::max(double(a.YMax - a.YMin) * (a.YMax - a.YMin), 0.001);
    double best = 1e20;
    int32_t row = count;
    for (int32_t i = 1; i <= count; ++i) {
        const double dx = pts.X[i] - wx, dy = pts.Y[i] - wy;
        const double d = dx * dx / sx + dy * dy / sy;
        if (d < best) {
            best = d;
            row = i;
        }
    }
    return row;
}

}  // namespace tl
