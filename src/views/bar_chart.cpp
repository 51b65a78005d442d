#include "views/bar_chart.h"

#include <algorithm>
#include <cmath>

#include "core/support.h"
#include "core/ui_services.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/view_data.h"

namespace tl {
namespace {

bool Ticked(int16_t box) {
    return box != 0;
}

// Round half to even, as the platform's Round did.
double RoundEven(double v) {
    return std::nearbyint(v);
}

// Counts one run's samples into counts (1 to bins). The bin a stretch of
// samples sits in is found once; the rows after it are tested against that
// bin alone, up to the last row of RunData.
template <bool kConstrained>
void CountRun(const BarChart& chart, const float* x, const float* c, int32_t first, int32_t last,
              int32_t upper, float lo, float hi, float* counts) {
    const float* e = chart.BinEdges.data();
    auto holds = [&](int32_t i) { return !kConstrained || (lo < c[i] && c[i] < hi); };
    int32_t i = first;
    while (i <= last) {
        if (!holds(i)) {
            ++i;
            continue;
        }
        const int32_t b = chart.FindBin(x[i]);
        if (b == 0) {
            ++i;
            continue;
        }
        const float low = e[b], high = e[b + 1];
        int32_t j = i + 1;
        while (j <= upper && low <= x[j] && x[j] <= high && holds(j)) ++j;
        counts[b] += static_cast<float>(j - i);
        i = j;
    }
}

}  // namespace

void BarChart::Load(int32_t graphNumber) {
    GraphNumber = graphNumber;
    settings = BarChartSettings{};
    for (BarChartAxisSettings& a : settings.Axes) a.AxisRun = "1";
    Bins = 1;
    BinEdges.assign(3, 0.0f);
    for (auto& counts : BinCounts) counts.assign(2, 0.0f);
    DispMin = DispMax = 0;
    PeakCount = 1;
    DispName.clear();
    AxisRunName.fill(std::string());
}

std::string BarChart::Caption() const {
    if (!settings.MainTitle.empty()) return settings.MainTitle;
    return "Bar Chart " + std::to_string(GraphNumber);
}

std::string BarChart::TabCaption(ChartTabs tab) {
    switch (tab) {
        case ChartTabs::BarChart:
            return "Bar Chart";
        case ChartTabs::Setup:
            return "Setup";
        case ChartTabs::Options:
            return "Options";
    }
    return {};
}

bool BarChart::AxisCounted(int k) const {
    if (k < 0 || k >= kBarChartAxes) return false;
    if (!Ticked(settings.MultiBar)) return k == 0;
    return settings.Axes[k].AxisEnabled == 1;
}

int32_t BarChart::FindBin(float v) const {
    const float* e = BinEdges.data();
    if (Bins < 1 || static_cast<int32_t>(BinEdges.size()) < Bins + 2) return 0;
    const float first = e[1], step = (e[Bins + 1] - e[1]) / static_cast<float>(Bins);
    if (!(step > 0) || !std::isfinite(step)) {
        // Edges that do not rise: the plain search from bin 1 up.
        for (int32_t b = 1; b <= Bins; ++b)
            if (e[b] <= v && v <= e[b + 1]) return b;
        return 0;
    }
    if (!(e[1] <= v && v <= e[Bins + 1])) return 0;  // outside, or not a number
    // The bin the value's place along the range points at, then moved to the
    // lowest bin whose edges hold it (the edges were rounded one by one).
    int32_t b = static_cast<int32_t>(std::clamp<double>(
                    std::floor((static_cast<double>(v) - first) / step), 0.0, Bins - 1.0)) +
                1;
    while (b > 1 && v <= e[b]) --b;
    while (b < Bins && v > e[b + 1]) ++b;
    return b;
}

void BarChart::CalcFrequency() {
    ShowPleaseWait("Calculating Bar Chart Frequencies");
    const RunStore& st = Store();
    const int32_t upper = st.RunData.UpperRow();
    const float* x = ColumnOfName(settings.DisplayVar);
    const float* c = ColumnOfName(settings.ConstrainVar);
    DispName = Catalogue().RunVars[FindVar(settings.DisplayVar)].Name;

    // The range over every row of every run, unless typed.
    DispMin = 1e20f;
    DispMax = -1e20f;
    if (!Ticked(settings.AutoMin) || !Ticked(settings.AutoMax)) {
        float mn = 1e20f, mx = -1e20f;
        if (x)
            for (int32_t i = 1; i <= upper; ++i) {
                mn = std::min(mn, x[i]);
                mx = std::max(mx, x[i]);
            }
        if (!Ticked(settings.AutoMin)) DispMin = mn;
        if (!Ticked(settings.AutoMax)) DispMax = mx;
    }
    if (Ticked(settings.AutoMin)) DispMin = static_cast<float>(GetVal(settings.DispVarMin));
    if (Ticked(settings.AutoMax)) DispMax = static_cast<float>(GetVal(settings.DispVarMax));
    if (DispMin == DispMax) {
        DispMin -= 1;
        DispMax += 1;
    }

    // The bins: 1 to 99 as typed, 1 below that, 100 above.
    const double typed = std::trunc(GetVal(settings.BinCount));
    if (typed > 0 && typed < kBarChartMaxBins)
        Bins = static_cast<int32_t>(typed);
    else if (typed < 1)
        Bins = 1;
    else
        Bins = kBarChartMaxBins;
    for (auto& counts : BinCounts) counts.assign(static_cast<size_t>(Bins) + 1, 0.0f);
    BinEdges.assign(static_cast<size_t>(Bins) + 2, 0.0f);
    const double width = (static_cast<double>(DispMax) - DispMin) / Bins;
    for (int32_t i = 1; i <= Bins + 1; ++i)
        BinEdges[i] = static_cast<float>(DispMin + width * (i - 1));

    // The count, axis by axis.
    const bool constrained = Ticked(settings.Constrain);
    for (int k = 0; k < kBarChartAxes; ++k) {
        if (!AxisCounted(k)) continue;
        BarChartAxisSettings& a = settings.Axes[k];
        const float lo = static_cast<float>(GetVal(a.ConstrainMin));
        const float hi = static_cast<float>(GetVal(a.ConstrainMax));
        const int32_t run = ClampAxisRun(a.AxisRun);
        if (st.RunCount < 1 || !x || !c) continue;
        const RunRecord& r = st.RunInfo[std::clamp(run, 1, 11)];
        const int32_t first = std::max(r.RunStart, 0);
        const int32_t last = std::min(r.RunEnd, upper);
        if (constrained)
            CountRun<true>(*this, x, c, first, last, upper, lo, hi, BinCounts[k].data());
        else
            CountRun<false>(*this, x, c, first, last, upper, lo, hi, BinCounts[k].data());
    }

    // Percentages of the samples counted (a chart that counted none stays
    // at 0).
    if (Ticked(settings.PercentFreq)) {
        for (int k = 0; k < kBarChartAxes; ++k) {
            if (!AxisCounted(k)) continue;
            std::vector<float>& counts = BinCounts[k];
            double total = 0;
            for (int32_t b = 1; b <= Bins; ++b) total += counts[b];
            if (total == 0) continue;
            for (int32_t b = 1; b <= Bins; ++b)
                counts[b] = static_cast<float>(counts[b] / total * 100.0);
        }
    }

    PeakCount = 0;
    for (const auto& counts : BinCounts)
        for (int32_t b = 1; b <= Bins; ++b) PeakCount = std::max(PeakCount, counts[b]);
    if (PeakCount == 0) PeakCount = 1;
    HidePleaseWait();
}

bool BarChart::ChartTab_Click(ChartTabs tab) {
    if (tab != ChartTabs::BarChart) return false;
    CalcFrequency();
    return true;
}

void BarChart::ShowBars_Click() {
    if (!Ticked(settings.ShowBars) && !Ticked(settings.ShowLines)) settings.ShowLines = 1;
}

void BarChart::ShowLines_Click() {
    if (!Ticked(settings.ShowBars) && !Ticked(settings.ShowLines)) settings.ShowBars = 1;
}

void BarChart::AxisRun_Change(int axis) {
    if (axis < 0 || axis >= kBarChartAxes) return;
    AxisRunName[axis] = WrapAxisRun(settings.Axes[axis].AxisRun);
}

std::vector<std::string> BarChart::VariableNames() {
    std::vector<std::string> names;
    const auto& vars = Catalogue().RunVars;
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (vars[s].Enabled) names.push_back(vars[s].Name);
    return names;
}

std::string BarChart::LegendText(int axis) const {
    const BarChartAxisSettings& a = settings.Axes[axis];
    if (!a.AxisTitle.empty()) return a.AxisTitle;
    const double v = RoundEven(GetVal(a.AxisRun));
    const int32_t count = Store().RunCount;
    const int32_t run = static_cast<int32_t>(std::clamp(v >= 1 ? v : 1.0, 1.0, 11.0));
    std::string text = run <= std::max(count, 1) ? Store().RunInfo[run].Name : std::string();
    if (Ticked(settings.Constrain))
        text += ", " + settings.ConstrainVar + " " + a.ConstrainMin + " to " + a.ConstrainMax;
    return text;
}

std::string BarChart::ClipboardText() const {
    std::string text = "From\tTo";
    for (int k = 0; k < kBarChartAxes; ++k)
        if (AxisCounted(k)) text += "\t" + (Ticked(settings.MultiBar) ? LegendText(k) : DispName);
    text += "\r\n";
    for (int32_t b = 1; b <= Bins && b + 1 < static_cast<int32_t>(BinEdges.size()); ++b) {
        text += ShortestSingle(BinEdges[b]) + "\t" + ShortestSingle(BinEdges[b + 1]);
        for (int k = 0; k < kBarChartAxes; ++k)
            if (AxisCounted(k) && b < static_cast<int32_t>(BinCounts[k].size()))
                text += "\t" + ShortestSingle(BinCounts[k][b]);
        text += "\r\n";
    }
    return text;
}

}  // namespace tl
