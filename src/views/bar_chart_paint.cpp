// The bar chart's picture. With W and H the surface's size in twips, the
// plot runs from x = 800 to 0.95 W, its base at 0.8 H and its top at 0.2 H:
// a height of 0.6 H is the tallest value (PeakCount). The title stands at
// 0.1 H, the bin edges' labels under the base, the variable's name at
// 0.9 H and, with several charts at once, their legends at 0.95 H, each
// centred on its fifth of the width.
#include <algorithm>
#include <array>
#include <vector>

#include "core/support.h"
#include "views/bar_chart.h"

namespace tl {
namespace {

const char* const kChartFont = "Microsoft Sans Serif";
constexpr double kPlotLeft = 800;

bool Ticked(int16_t box) {
    return box != 0;
}

struct Plot {
    double W, H, right, base, top, full, w;
    double Height(float value, float peak) const { return value / peak * full; }
};

// Text centred on x, its top at y; held inside the surface's width when it
// would run over either side and fits (a label at the first or last edge).
void PrintCentred(DrawSurface& s, const std::string& text, double x, double y) {
    const double tw = s.TextWidth(text);
    double left = x - tw / 2;
    const double W = s.ScaleWidth();
    if (tw <= W) left = std::clamp(left, 0.0, W - tw);
    s.CurrentX = left;
    s.CurrentY = y;
    s.Print(text);
}

// Each legend is centred on its fifth of the width. When one is wider than
// its fifth but all of them fit the width side by side, they stand in a row
// 300 twips apart, the row centred, so that none runs into the next.
void DrawLegends(BarChart& chart, const Plot& p, DrawSurface& s) {
    constexpr double kGap = 300;
    std::array<double, kBarChartAxes> widths{};
    bool crowded = false;
    double row = -kGap;
    for (int k = 0; k < kBarChartAxes; ++k) {
        if (!chart.AxisCounted(k)) continue;
        BarChartAxisSettings& a = chart.settings.Axes[k];
        if (a.AxisTitle.empty()) a.AxisTitle = chart.LegendText(k);
        widths[k] = s.TextWidth(a.AxisTitle);
        crowded = crowded || widths[k] + kGap > p.W / 5;
        row += widths[k] + kGap;
    }
    const bool inRow = crowded && row <= p.W;
    double x = (p.W - row) / 2;
    for (int k = 0; k < kBarChartAxes; ++k) {
        if (!chart.AxisCounted(k)) continue;
        const std::string& t = chart.settings.Axes[k].AxisTitle;
        s.ForeColor = VqColorIndex(k, false);
        const double y = 0.95 * p.H - s.TextHeight(t) / 2;
        if (inRow) {
            s.CurrentX = x;
            s.CurrentY = y;
            s.Print(t);
            x += widths[k] + kGap;
        } else {
            PrintCentred(s, t, p.W / 5 * (k + 0.5), y);
        }
    }
    s.ForeColor = VqColorIndex(0, false);
}

void DrawBars(const BarChart& chart, const Plot& p, DrawSurface& s) {
    const bool multi = Ticked(chart.settings.MultiBar);
    for (int k = 0; k < kBarChartAxes; ++k) {
        if (!chart.AxisCounted(k)) continue;
        const uint32_t colour = VqColorIndex(multi ? k : 0, false);
        const double inLeft = multi ? 0.1 * p.w * (k + 1) : 0.1 * p.w;
        const double inRight = multi ? 0.1 * p.w * (5 - k) : 0.1 * p.w;
        const std::vector<float>& counts = chart.BinCounts[k];
        for (int32_t b = 1; b <= chart.Bins && b < static_cast<int32_t>(counts.size()); ++b) {
            if (counts[b] == 0) continue;
            const double h = p.Height(counts[b], chart.PeakCount);
            s.FilledBox(kPlotLeft + (b - 1) * p.w + inLeft, p.base - h,
                        kPlotLeft + b * p.w - inRight, p.base, colour);
        }
    }
}

void DrawLines(const BarChart& chart, const Plot& p, DrawSurface& s) {
    const bool bars = Ticked(chart.settings.ShowBars);
    const bool multi = Ticked(chart.settings.MultiBar);
    s.DrawWidth = bars ? 1 : 2;
    s.DrawStyle = DrawStyles::Solid;
    std::vector<double> xs, ys;
    for (int k = 0; k < kBarChartAxes; ++k) {
        if (!chart.AxisCounted(k)) continue;
        const uint32_t colour = VqColorIndex(multi ? k : 0, false);
        const std::vector<float>& counts = chart.BinCounts[k];
        xs.clear();
        ys.clear();
        for (int32_t b = 1; b <= chart.Bins && b < static_cast<int32_t>(counts.size()); ++b) {
            xs.push_back(kPlotLeft + (b - 0.5) * p.w);
            ys.push_back(p.base - p.Height(counts[b], chart.PeakCount));
        }
        s.Polyline(xs.data(), ys.data(), static_cast<int>(xs.size()), colour);
        if (bars) continue;
        for (size_t i = 0; i < xs.size(); ++i) {
            s.Line(xs[i] - 200, ys[i], xs[i] + 200, ys[i], colour);
            s.Line(xs[i], ys[i] - 200, xs[i], ys[i] + 200, colour);
        }
    }
    s.DrawWidth = 1;
}

}  // namespace

void ReDraw(BarChart& chart, DrawSurface& s) {
    Plot p{};
    p.W = s.ScaleWidth();
    p.H = s.ScaleHeight();
    p.right = 0.95 * p.W;
    p.base = 0.8 * p.H;
    p.top = 0.2 * p.H;
    p.full = 0.6 * p.H;
    p.w = (p.right - kPlotLeft) / std::max(chart.Bins, 1);
    const uint32_t black = VqColorIndex(0, false);

    s.DrawMode = DrawModes::CopyPen;
    s.DrawStyle = DrawStyles::Solid;
    s.ForeColor = black;
    s.FontName = kChartFont;
    s.FontSize = 12;
    s.FontBold = true;
    if (!chart.settings.MainTitle.empty()) {
        const std::string& t = chart.settings.MainTitle;
        s.CurrentX = std::max(0.0, p.W / 2 - s.TextWidth(t) / 2);
        s.CurrentY = std::max(0.0, 0.1 * p.H - s.TextHeight(t) / 2);
        s.Print(t);
    }
    s.FontSize = 7;
    s.FontBold = false;

    if (Ticked(chart.settings.MultiBar)) DrawLegends(chart, p, s);

    if (Ticked(chart.settings.ShowGrid)) {
        s.DrawStyle = DrawStyles::Dot;
        s.DrawWidth = 1;
        for (int i = 0; i <= 9; ++i) {
            const double y = p.base - p.full * i / 9;
            s.Line(kPlotLeft, y, p.right, y, black);
        }
    }
    s.DrawStyle = DrawStyles::Solid;
    s.DrawWidth = 2;
    s.Line(kPlotLeft, p.base, p.right, p.base, black);
    s.Line(kPlotLeft, p.top, kPlotLeft, p.base, black);
    s.DrawWidth = 1;

    if (Ticked(chart.settings.ShowBars)) DrawBars(chart, p, s);
    if (Ticked(chart.settings.ShowLines)) DrawLines(chart, p, s);

    // The bin edges under the base, each centred under its place; a crowded
    // axis runs together.
    s.ForeColor = black;
    for (int32_t i = 1; i <= chart.Bins + 1 && i < static_cast<int32_t>(chart.BinEdges.size()); ++i)
        PrintCentred(s, FormToSD(chart.BinEdges[i], 3), kPlotLeft + (i - 1) * p.w,
                     p.base + 0.02 * p.H);

    // The frequency scale: ten ticks from the base to full scale.
    for (int i = 0; i <= 9; ++i) {
        const double y = p.base - p.full * i / 9;
        s.Line(750, y, kPlotLeft, y, black);
        const std::string label = FormToSD(chart.PeakCount / 9.0 * i, 3);
        s.CurrentX = 740 - s.TextWidth(label);
        s.CurrentY = y - s.TextHeight(label) / 2;
        s.Print(label);
    }

    // The titles: the variable under the plot; the frequency one letter under
    // the other at the left, centred on the plot's height.
    PrintCentred(s, chart.DispName, kPlotLeft + (p.right - kPlotLeft) / 2,
                 0.9 * p.H - s.TextHeight(chart.DispName) / 2);
    const std::string yTitle =
        Ticked(chart.settings.PercentFreq) ? "Frequency %" : "Frequency Count";
    const double lineHeight = s.TextHeight(yTitle);
    const double centre = p.top + p.full / 2;
    const double L = static_cast<double>(yTitle.size());
    for (size_t j = 0; j < yTitle.size(); ++j) {
        s.CurrentX = 100;
        s.CurrentY = centre + (static_cast<double>(j) - L / 2) * lineHeight;
        s.Print(std::string(1, yTitle[j]));
    }
}

void GraphBox_Paint(BarChart& chart, DrawSurface& s) {
    s.Cls();
    ReDraw(chart, s);
}

}  // namespace tl
