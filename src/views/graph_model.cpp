#include "views/graph_model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/config_store.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "results/track_markers.h"
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

// A number as a text box shows it after the program wrote it there.
std::string BoxText(float v) {
    return ConfigNumberText(v);
}

// The exponent search of the nice span: from -6 up until span x 10^e is at
// least 1, stopping at `stop` (the search of the zoom window stops at 5).
int SpanExponent(float span, int stop) {
    int e = -6;
    while (e < stop && static_cast<double>(span) * std::pow(10.0, e) < 1.0) ++e;
    return e;
}

}  // namespace

AxisRange NiceAxisRange(float min, float max, bool minTyped, bool maxTyped) {
    // Step 3.
    if (min == max) {
        min = min - 1;
        max = max + 1;
    }
    if (min > max) std::swap(min, max);
    // Step 4: an even number in the span's first digits. The search is held
    // to the float's range, where a span can only be 0 through rounding.
    float span = max - min;
    const int e = SpanExponent(span, 45);
    const double mult = std::pow(10.0, e);
    double s = RoundEven(static_cast<double>(span) * mult + 0.5);
    if (std::fmod(s / 2.0, 1.0) != 0.0) s += 1.0;
    span = static_cast<float>(s / mult);
    // Step 5.
    const double step = static_cast<double>(span) / 10.0;
    float centre = (max + min) / 2.0f;
    if (step > 0) centre = static_cast<float>(RoundEven(centre / step) * step);
    // Step 6.
    AxisRange r;
    if (!minTyped && (maxTyped || max == 0)) {
        r.min = max - span;
        r.max = max;
    } else if (!maxTyped && (minTyped || min == 0)) {
        r.min = min;
        r.max = min + span;
    } else if (!minTyped && !maxTyped) {
        r.min = centre - span / 2.0f;
        r.max = centre + span / 2.0f;
    } else {
        r.min = min;
        r.max = max;
    }
    return r;
}

void GraphModel::Load(int32_t graphNumber) {
    GraphNumber = graphNumber;
    settings = GraphSettings{};
    ClearMinsMaxs_Click();
    const std::string x = Catalogue().RunVars[1].Name;
    for (int s = 0; s < kGraphSlots; ++s) {
        GraphSlotSettings& g = settings.Slots[s];
        g.AxisRun = "1";
        g.SelYAxis = "Select Variable";
        g.SelXAxis = x;
        g.ActivateYAxis = 0;
        axis[s] = GraphAxis{};
        axis[s].XTicks = 11;
        axis[s].YTicks = 11;
        data[s] = GraphPoints{};
        markers[s] = GraphMarkers{};
    }
    MultipleXAxis_Click();
    ClearZoomLevels();
    ZoomWindowActive = false;
}

std::string GraphModel::Caption() const {
    if (!settings.MainTitle.empty()) return settings.MainTitle;
    return "Graph " + std::to_string(GraphNumber);
}

int GraphModel::ActiveSlotCount() const {
    int n = 0;
    for (int s = 0; s < kGraphSlots; ++s) n += SlotActive(s) ? 1 : 0;
    return n;
}

void GraphModel::MultipleXAxis_Click() {
    if (Ticked(settings.MultipleXAxis)) return;
    const GraphSlotSettings& z = settings.Slots[0];
    for (int s = 1; s < kGraphSlots; ++s) {
        GraphSlotSettings& g = settings.Slots[s];
        g.SelXAxis = z.SelXAxis;
        g.AutoMinX = z.AutoMinX;
        g.MinXAxis = z.MinXAxis;
        g.AutoMaxX = z.AutoMaxX;
        g.MaxXAxis = z.MaxXAxis;
        g.AxisRun = z.AxisRun;
        g.AxisTitle = z.AxisTitle;
        g.ZeroBaseXAxis = z.ZeroBaseXAxis;
    }
}

void GraphModel::AxisRun_Change(int slot) {
    AxisRunName[slot] = WrapAxisRun(settings.Slots[slot].AxisRun);
    if (slot == 0) MultipleXAxis_Click();
}

int32_t GraphModel::LegalRun(int slot) {
    ClampAxisRun(settings.Slots[slot].AxisRun);
    AxisRun_Change(slot);
    return static_cast<int32_t>(RoundEven(GetVal(settings.Slots[slot].AxisRun)));
}

void GraphModel::FollowRunsByName() {
    MultipleXAxis_Click();
    for (int s = 0; s < kGraphSlots; ++s) {
        settings.Slots[s].AxisRun = std::to_string(FindRunIndex(AxisRunName[s]));
        AxisRun_Change(s);
    }
}

void GraphModel::ShowGraphTab() {
    if (!Ticked(settings.MultipleXAxis)) {
        const GraphSlotSettings& z = settings.Slots[0];
        for (int s = 1; s < kGraphSlots; ++s) {
            GraphSlotSettings& g = settings.Slots[s];
            g.AutoMinX = z.AutoMinX;
            g.MinXAxis = z.MinXAxis;
            g.AutoMaxX = z.AutoMaxX;
            g.MaxXAxis = z.MaxXAxis;
        }
    }
    MultipleXAxis_Click();
    ClearZoomLevels();
    ReGenerateGraph();
}

void GraphModel::ReGenerateGraph() {
    MultipleXAxis_Click();
    ShowPleaseWait("Re-Generating Graph");
    for (int s = 0; s < kGraphSlots; ++s)
        if (SlotActive(s)) CalcMinMaxs(s);
    LoadDataArray();
    HidePleaseWait();
}

void GraphModel::CalcMinMaxs(int slot) {
    GraphSlotSettings& g = settings.Slots[slot];
    GraphAxis& a = axis[slot];
    const int32_t run = LegalRun(slot);
    const RunStore& st = Store();
    const RunRecord& r = st.RunInfo[std::clamp(run, 1, 11)];
    const int32_t first = std::max(r.RunStart, 0);
    const int32_t last = std::min(r.RunEnd, st.RunData.UpperRow());
    auto scan = [&](const std::string& name, bool minTyped, const std::string& minText,
                    bool maxTyped, const std::string& maxText) {
        float mn = 1e20f, mx = -1e20f;
        const float* col = ColumnOfName(name);
        if ((!minTyped || !maxTyped) && col && st.RunCount >= 1) {
            for (int32_t i = first; i <= last; ++i) {
                mn = std::min(mn, col[i]);
                mx = std::max(mx, col[i]);
            }
        }
        if (minTyped) mn = static_cast<float>(GetVal(minText));
        if (maxTyped) mx = static_cast<float>(GetVal(maxText));
        return NiceAxisRange(mn, mx, minTyped, maxTyped);
    };
    const int y = FindVar(g.SelYAxis);
    a.YTitle = Catalogue().RunVars[y].Name;
    a.AxisColour = slot;
    const AxisRange yr =
        scan(g.SelYAxis, Ticked(g.AutoMinY), g.MinYAxis, Ticked(g.AutoMaxY), g.MaxYAxis);
    a.YMin = yr.min;
    a.YMax = yr.max;
    a.XTitle = !g.AxisTitle.empty() ? g.AxisTitle : (r.Name + ", " + g.SelXAxis);
    const AxisRange xr =
        scan(g.SelXAxis, Ticked(g.AutoMinX), g.MinXAxis, Ticked(g.AutoMaxX), g.MaxXAxis);
    a.XMin = xr.min;
    a.XMax = xr.max;
}

void GraphModel::LoadDataArray() {
    ++DataGeneration;
    const RunStore& st = Store();
    const int32_t upper = std::max(st.RunData.UpperRow(), 0);
    if (Ticked(settings.FastPlot))
        PointLimit = static_cast<int32_t>(RoundEven(FindClip(
            50.0f, static_cast<float>(GetVal(settings.MaximumPoints)), static_cast<float>(upper))));
    else
        PointLimit = upper;
    const size_t size = static_cast<size_t>(std::max(PointLimit, 1)) + 1;
    for (int s = 0; s < kGraphSlots; ++s) {
        data[s].X.assign(size, 0.0f);
        data[s].Y.assign(size, 0.0f);
        data[s].Row.assign(size, 0.0f);
        markers[s].X.assign(1, 0.0f);
        markers[s].Y.assign(1, 0.0f);
    }
    if (PointLimit == 0) {
        for (int s = 0; s < kGraphSlots; ++s) {
            markers[s].X.push_back(kGraphMarkerEnd);
            markers[s].Y.push_back(kGraphMarkerEnd);
            axis[s].PointCount = 1;
        }
        return;
    }
    const bool conditions = Ticked(settings.LimitVariables);
    for (int s = 0; s < kGraphSlots; ++s) {
        if (!SlotActive(s)) continue;
        GraphSlotSettings& g = settings.Slots[s];
        GraphAxis& a = axis[s];
        GraphPoints& pts = data[s];
        const int32_t run = LegalRun(s);
        const RunRecord& r = st.RunInfo[std::clamp(run, 1, 11)];
        const float* xc = ColumnOfName(g.SelXAxis);
        const float* yc = ColumnOfName(g.SelYAxis);
        const float* cc = ColumnOfName(g.LimitVar);
        a.PointCount = 0;
        const bool rowsOk = st.RunCount >= 1 && r.RunStart >= 0 && r.RunEnd >= r.RunStart &&
                            r.RunEnd <= st.RunData.UpperRow();
        if (xc && yc && cc && rowsOk) {
            float lower = -1e10f, upperBound = 1e10f;
            if (Ticked(g.DisplayIf) && conditions) {
                lower = static_cast<float>(GetVal(g.LimitVarMin));
                upperBound = static_cast<float>(GetVal(g.LimitVarMax));
            }
            const bool filtered = Ticked(g.AutoMinX) || Ticked(g.AutoMaxX) || Ticked(g.AutoMinY) ||
                                  Ticked(g.AutoMaxY) || Ticked(g.DisplayIf);
            if (filtered) {
                auto inside = [&](int32_t i) {
                    return a.XMin < xc[i] && xc[i] < a.XMax && a.YMin < yc[i] && yc[i] < a.YMax &&
                           lower < cc[i] && cc[i] < upperBound;
                };
                int64_t count = 0;
                for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) count += inside(i) ? 1 : 0;
                // The skip is a 16-bit whole number; a quotient past its range
                // is held at its largest value.
                const int64_t skip =
                    count >= PointLimit ? std::min<int64_t>(count / PointLimit + 1, 32767) : 1;
                int32_t row = 1;
                bool gap = false;
                int32_t sample = r.RunStart;
                while (sample < r.RunEnd && row <= PointLimit) {
                    if (gap) {
                        pts.X[row] = kGraphGap;
                        pts.Y[row] = kGraphGap;
                        gap = false;
                    } else {
                        pts.X[row] = xc[sample];
                        pts.Y[row] = yc[sample];
                    }
                    pts.Row[row] = static_cast<float>(sample);
                    a.PointCount = row;
                    for (int64_t passed = 0; passed < skip && sample < r.RunEnd;) {
                        ++sample;
                        if (inside(sample))
                            ++passed;
                        else
                            gap = true;
                    }
                    ++row;
                }
            } else {
                const int32_t skip = r.RunLength > PointLimit ? r.RunLength / PointLimit + 1 : 1;
                for (int32_t sample = r.RunStart; sample <= r.RunEnd; sample += skip) {
                    const int32_t row = (sample - r.RunStart) / skip;
                    if (row < 1 || row > PointLimit) continue;
                    pts.X[row] = xc[sample];
                    pts.Y[row] = yc[sample];
                    pts.Row[row] = static_cast<float>(sample);
                }
                a.PointCount =
                    static_cast<int32_t>(RoundEven(static_cast<double>(r.RunLength) / skip - 1.0));
                a.PointCount = std::clamp(a.PointCount, 0, PointLimit);
            }
        }
        // The marker crossings of the slot's run, not thinned and not tested
        // against the conditions.
        GraphMarkers& m = markers[s];
        if (xc && yc && rowsOk) {
            const TrackMarkerTable& table = Markers();
            for (int k = 1; k <= 100 && k < kTrackMarkerCount; ++k) {
                const TrackMarker& tm = table.Entries[k];
                if (tm.Name.empty()) continue;
                for (int32_t row : MarkerCrossings(k, run)) {
                    if (static_cast<int>(m.X.size()) - 1 >= kGraphMarkerLimit - 1) break;
                    if (row < 0 || row > st.RunData.UpperRow()) continue;
                    m.X.push_back(xc[row]);
                    m.Y.push_back(yc[row]);
                }
            }
        }
        m.X.push_back(kGraphMarkerEnd);
        m.Y.push_back(kGraphMarkerEnd);
    }
}

void GraphModel::SetTickCounts(double widthTwips, double heightTwips) {
    const int32_t x = widthTwips > 14000 ? 21 : 11;
    const int32_t y = heightTwips > 8000 ? 21 : 11;
    for (GraphAxis& a : axis) {
        a.XTicks = x;
        a.YTicks = y;
    }
}

bool GraphModel::AutoSetMinsMaxs(double dragStartX, double dragStartY, double dragX, double dragY,
                                 double W, double H) {
    const int n = ActiveSlotCount();
    const double left = 650.0 * n;
    const double bottom = Ticked(settings.MultipleXAxis) ? 500.0 * n : 500.0;
    double fx1 = (dragStartX - left) / (0.95 * W - left);
    double fx2 = (dragX - left) / (0.95 * W - left);
    if (fx1 > fx2) std::swap(fx1, fx2);
    double fy1 = 1.0 - (dragStartY - 0.05 * H) / (H - bottom - 0.05 * H);
    double fy2 = 1.0 - (dragY - 0.05 * H) / (H - bottom - 0.05 * H);
    if (fy1 > fy2) std::swap(fy1, fy2);
    for (int s = 0; s < kGraphSlots; ++s) {
        if (!SlotActive(s)) continue;
        GraphSlotSettings& g = settings.Slots[s];
        const GraphAxis& a = axis[s];
        const float yMin = static_cast<float>(a.YMin + (a.YMax - a.YMin) * fy1);
        const float yMax = static_cast<float>(a.YMin + (a.YMax - a.YMin) * fy2);
        const float xMin = static_cast<float>(a.XMin + (a.XMax - a.XMin) * fx1);
        const float xMax = static_cast<float>(a.XMin + (a.XMax - a.XMin) * fx2);
        g.MinYAxis = BoxText(yMin);
        g.MaxYAxis = BoxText(yMax);
        g.MinXAxis = BoxText(xMin);
        g.MaxXAxis = BoxText(xMax);
        g.AutoMinY = g.AutoMaxY = g.AutoMinX = g.AutoMaxX = 1;
        // A window narrower than 0.0001 on either axis ends the zoom here,
        // with the slots written so far keeping their text.
        if (SpanExponent(xMax - xMin, 5) >= 5) return false;
        if (SpanExponent(yMax - yMin, 5) >= 5) return false;
        if (LogOn())
            LogDebug("MinXAxis  ->  " + g.MinXAxis + "\r\nMaxXAxis  ->  " + g.MaxXAxis +
                     "\r\nMinYAxis  ->  " + g.MinYAxis + "\r\nMaxYAxis  ->  " + g.MaxYAxis);
    }
    if (!Ticked(settings.MultipleXAxis)) {
        int first = kGraphSlots - 1;
        for (int s = 0; s < kGraphSlots; ++s)
            if (SlotActive(s)) {
                first = s;
                break;
            }
        const std::string mn = settings.Slots[first].MinXAxis;
        const std::string mx = settings.Slots[first].MaxXAxis;
        for (GraphSlotSettings& g : settings.Slots) {
            g.MinXAxis = mn;
            g.MaxXAxis = mx;
            g.AutoMinX = g.AutoMaxX = 1;
        }
    }
    ReGenerateGraph();
    return true;
}

void GraphModel::RecordZoomLevels() {
    zoomCurrent_ = zoomCurrent_ + 1 > kZoomLevels - 1 ? 0 : zoomCurrent_ + 1;
    if (zoomCurrent_ == zoomOldest_)
        zoomOldest_ = zoomOldest_ + 1 > kZoomLevels - 1 ? 0 : zoomOldest_ + 1;
    for (int s = 0; s < kGraphSlots; ++s)
        zoomHistory_[zoomCurrent_][s] = {axis[s].XMin, axis[s].XMax, axis[s].YMin, axis[s].YMax};
}

void GraphModel::GoBackZoomLevel() {
    if (zoomCurrent_ != zoomOldest_) {
        for (int s = 0; s < kGraphSlots; ++s) {
            const ZoomRecord& z = zoomHistory_[zoomCurrent_][s];
            GraphSlotSettings& g = settings.Slots[s];
            g.MinXAxis = BoxText(z.XMin);
            g.MaxXAxis = BoxText(z.XMax);
            g.MinYAxis = BoxText(z.YMin);
            g.MaxYAxis = BoxText(z.YMax);
            g.AutoMinX = g.AutoMaxX = g.AutoMinY = g.AutoMaxY = 1;
        }
        zoomCurrent_ = zoomCurrent_ - 1 < 0 ? kZoomLevels - 1 : zoomCurrent_ - 1;
    }
    ReGenerateGraph();
}

void GraphModel::ClearZoomLevels() {
    for (auto& level : zoomHistory_) level.fill(ZoomRecord{});
    zoomCurrent_ = 0;
    zoomOldest_ = 0;
}

std::string GraphModel::ZoomBtnToolTip(int index) {
    switch (index) {
        case 0:
            return "Go Back To Previous View";
        case 1:
            return "Zoom In On A Dragged Window";
        case 2:
            return "Zoom Out By 20%";
        case 3:
            return "Reset All Axis";
    }
    return {};
}

std::string GraphModel::PanBtnToolTip(int index) {
    switch (index) {
        case 0:
        case 3:  // the right-hand button carries the left one's tip
            return "Pan Graph To The Left";
        case 1:
            return "Pan Graph Up";
        case 2:
            return "Pan Graph Down";
    }
    return {};
}

void GraphModel::ZoomBtn_Click(int index) {
    switch (index) {
        case 0:
            GoBackZoomLevel();
            break;
        case 1:
            ZoomWindowActive = true;
            break;
        case 2:
            RecordZoomLevels();
            for (int s = 0; s < kGraphSlots; ++s) {
                const GraphAxis& a = axis[s];
                GraphSlotSettings& g = settings.Slots[s];
                const float xr = a.XMax - a.XMin, yr = a.YMax - a.YMin;
                g.MinXAxis = BoxText(a.XMin - 0.2f * xr);
                g.MaxXAxis = BoxText(a.XMax + 0.2f * xr);
                g.MinYAxis = BoxText(a.YMin - 0.2f * yr);
                g.MaxYAxis = BoxText(a.YMax + 0.2f * yr);
                g.AutoMinX = g.AutoMaxX = g.AutoMinY = g.AutoMaxY = 1;
            }
            ReGenerateGraph();
            break;
        case 3:
            RecordZoomLevels();
            for (GraphSlotSettings& g : settings.Slots) {
                g.MinXAxis.clear();
                g.MaxXAxis.clear();
                g.MinYAxis.clear();
                g.MaxYAxis.clear();
                g.AutoMinX = g.AutoMaxX = g.AutoMinY = g.AutoMaxY = 0;
            }
            ReGenerateGraph();
            break;
        default:
            break;
    }
}

void GraphModel::PanBtn_Click(int index) {
    if (index < 0 || index > 3) return;
    RecordZoomLevels();
    for (int s = 0; s < kGraphSlots; ++s) {
        const GraphAxis& a = axis[s];
        GraphSlotSettings& g = settings.Slots[s];
        const float xr = a.XMax - a.XMin, yr = a.YMax - a.YMin;
        if (index == 0 || index == 3) {
            const float d = (index == 0 ? -0.1f : 0.1f) * xr;
            g.MinXAxis = BoxText(a.XMin + d);
            g.MaxXAxis = BoxText(a.XMax + d);
            g.AutoMinX = g.AutoMaxX = 1;
        } else {
            const float d = (index == 1 ? 0.1f : -0.1f) * yr;
            g.MinYAxis = BoxText(a.YMin + d);
            g.MaxYAxis = BoxText(a.YMax + d);
            g.AutoMinY = g.AutoMaxY = 1;
        }
    }
    ReGenerateGraph();
}

void GraphModel::ClearMinsMaxs_Click() {
    for (GraphSlotSettings& g : settings.Slots) {
        g.AutoMinX = g.AutoMaxX = g.AutoMinY = g.AutoMaxY = 0;
        g.DisplayIf = 0;
        g.LimitVarMin.clear();
        g.LimitVarMax.clear();
        g.MinYAxis.clear();
        g.MaxYAxis.clear();
        g.MinXAxis.clear();
        g.MaxXAxis.clear();
    }
}

void GraphModel::MinXAxis_Click(int slot) {
    settings.Slots[slot].AutoMinX = 1;
    MultipleXAxis_Click();
}

void GraphModel::MaxXAxis_Click(int slot) {
    settings.Slots[slot].AutoMaxX = 1;
    MultipleXAxis_Click();
}

std::vector<std::string> GraphModel::VariableNames() {
    std::vector<std::string> names;
    const auto& vars = Catalogue().RunVars;
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (vars[s].Enabled) names.push_back(vars[s].Name);
    return names;
}

std::string GraphModel::ClipboardText() const {
    std::string text;
    for (int32_t row = 2; row <= PointLimit; ++row) {
        for (int s = 0; s < kGraphSlots; ++s) {
            if (row == 2) {
                text += axis[s].XTitle + "\t" + axis[s].YTitle + "\t";
            } else if (SlotActive(s) && row < axis[s].PointCount &&
                       row < static_cast<int32_t>(data[s].X.size())) {
                text +=
                    ShortestSingle(data[s].X[row]) + "\t" + ShortestSingle(data[s].Y[row]) + "\t";
            } else {
                text += "\t\t";
            }
        }
        text += "\r\n";
    }
    return text;
}

}  // namespace tl
