// The virtual dashboard's scales, faces and needles (see dashboard.h).
#include "views/dashboard.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "core/errors.h"
#include "core/support.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

namespace {

constexpr double kDegree = 3.141592654 / 180.0;

// The format "0": the nearest whole number, halves away from zero.
std::string WholeText(double v) {
    const double r = std::round(v);
    return std::to_string(static_cast<long long>(r == 0 ? 0 : r));
}

// Text centred on (x, y) in the current font and fore colour.
void PrintCentred(DrawSurface& s, const std::string& text, double x, double y) {
    s.CurrentX = x - s.TextWidth(text) / 2;
    s.CurrentY = y - s.TextHeight(text) / 2;
    s.Print(text);
}

}  // namespace

void CalcTicks(float& max, float& min, float& multiplier, int32_t& ticks) {
    multiplier = 1;
    if (max < 0) max = 0;
    if (min > 0) min = 0;
    const float big = std::max(std::fabs(max), std::fabs(min));
    if (big > 0) {
        while (big * multiplier < 10) multiplier *= 10;
        while (big * multiplier > 1000) multiplier /= 10;
    }
    const float m = big * multiplier;
    float step;
    if (max == 0 || min == 0) {
        step = m > 500 ? 50 : m > 200 ? 20 : m > 100 ? 10 : m > 50 ? 5 : m > 20 ? 2 : 1;
    } else {
        step = m > 700   ? 200
               : m > 400 ? 100
               : m > 150 ? 50
               : m > 100 ? 20
               : m > 50  ? 10
               : m > 20  ? 5
                         : 2;
    }
    // The next multiple of the step strictly above m.
    const float top = (std::floor(m / step) + 1) * step;
    if (max == 0 || min == 0) {
        ticks = static_cast<int32_t>(std::lround(top / step));
        if (min != 0) {
            min = -top;
            max = 0;
        } else {
            min = 0;
            max = top;
        }
    } else {
        min = -top;
        max = top;
        ticks = static_cast<int32_t>(std::lround(2 * top / step));
    }
}

std::string DialMultiplierText(float multiplier) {
    if (multiplier > 0 && multiplier < 1) return "x " + WholeText(1.0 / multiplier);
    if (multiplier > 1) return "x 1/" + WholeText(multiplier);
    return " ";
}

Dashboard::Dashboard(DrawSurface& surface, int panelIndex)
    : PanelIndex(panelIndex), Colour(VqColorIndex(panelIndex, false)), s_(surface) {
    DashVar.fill("Select Variable");
}

void Dashboard::SetRunName(const std::string& runName) {
    Caption = "Virtual Dashboard: " + runName;
}

void Dashboard::FindDialLimits() {
    Procedure("FindDialLimits", [&] {
        const RunArray& rd = Store().RunData;
        for (int d = 0; d < kDials; ++d) {
            DialRecord& dial = Dials[d];
            dial.VarColumn = FindVarIndex(DashVar[d]);
            float lo = 1e20f, hi = -1e20f;
            if (dial.VarColumn >= 0 && dial.VarColumn < rd.Columns()) {
                const auto col = rd.Column(dial.VarColumn);
                const int32_t upper = std::min<int32_t>(rd.UpperRow(), int32_t(col.size()) - 1);
                for (int32_t r = 1; r <= upper; ++r) {
                    lo = std::min(lo, col[r]);
                    hi = std::max(hi, col[r]);
                }
            }
            if (lo > hi) lo = hi = 0;  // no rows at all
            if (lo == hi) {
                lo -= 1;
                hi += 1;
            }
            CalcTicks(hi, lo, dial.DialMultiplier, dial.DialTicks);
            dial.DialMin = lo;
            dial.DialMax = hi;
        }
    });
}

void Dashboard::ReDrawDash() {
    DashFresh = true;
    Procedure("ReDrawDash", [&] {
        const double W = s_.ScaleWidth(), H = s_.ScaleHeight();
        s_.BackColor = kBlack;
        s_.Cls();
        const float bigR = static_cast<float>(std::min(H / 2, W / 5));
        const float smallR = static_cast<float>(std::min(H / 4, W / 10));
        const double xs[kDials] = {W / 5, 3 * W / 5, 4.5 * W / 5, 4.5 * W / 5};
        const double ys[kDials] = {H / 2, H / 2, H / 4, 3 * H / 4};
        for (int d = 0; d < kDials; ++d) {
            DialRecord& dial = Dials[d];
            dial.DialX = static_cast<float>(xs[d]);
            dial.DialY = static_cast<float>(ys[d]);
            dial.DialRadius = d < 2 ? bigR : smallR;
            const int slot = FindVar(DashVar[d]);
            DrawDial(dial.DialX, dial.DialY, 2.0 * dial.DialRadius, dial.DialMin, dial.DialMax,
                     Catalogue().RunVars[slot].Name, dial.DialTicks, dial.DialMultiplier);
        }
    });
}

void Dashboard::DrawDial(double x, double y, double size, float min, float max,
                         const std::string& name, int32_t ticks, float multiplier) {
    const double R = size / 2;
    const double f = std::max(R / 1500, 0.1);
    const double t = R / 12;
    if (ticks < 1) ticks = 1;
    const double A = 270.0 / ticks;
    const double k = A * (ticks / 5);
    auto at = [&](double r, double a, double& px, double& py) {
        px = x + r * std::cos(a * kDegree);
        py = y - r * std::sin(a * kDegree);
    };

    s_.FontName = "Arial";
    s_.FontSize = 7 * f;
    s_.FontBold = false;
    s_.DrawMode = DrawModes::CopyPen;
    s_.FillStyle = FillStyles::Solid;
    s_.DrawWidth = 1;
    // The black disc, then the red and green zones as pies, then the black
    // disc again short of the rim: the zones stay as a coloured rim.
    s_.ForeColor = kBlack;
    s_.FillColor = kBlack;
    s_.Circle(x, y, R, kBlack);
    if (k > 0) {
        s_.FillColor = 0x0000FF;
        s_.Arc(x, y, R, 0x0000FF, -45 * kDegree, -(45 + k) * kDegree);
        s_.FillColor = 0x00FF00;
        s_.Arc(x, y, R, 0x00FF00, -(315 - k) * kDegree, -315 * kDegree);
    }
    s_.FillColor = kBlack;
    s_.Circle(x, y, R - t, kBlack);

    s_.ForeColor = kWhite;
    s_.DrawWidth = static_cast<int>(R / 1200) + 1;
    for (int i = 0; i <= ticks; ++i) {
        const double a = 45 + i * A;
        double x1, y1, x2, y2;
        at(R, a, x1, y1);
        at(R - t, a, x2, y2);
        s_.Line(x1, y1, x2, y2, kWhite);
    }
    s_.Circle(x, y, 10, kWhite);
    s_.DrawWidth = 2;
    for (int i = 0; i <= ticks; ++i) {
        const double a = 45 + i * A;
        const double value = min + (1 - ((a - 45) / A) / ticks) * (double(max) - min);
        double px, py;
        at(R - 2 * t, a, px, py);
        PrintCentred(s_, WholeText(value), px, py);
    }
    s_.FontSize = 9.5 * f;
    PrintCentred(s_, name, x, y + 0.3 * R);
    PrintCentred(s_, DialMultiplierText(multiplier), x, y + 0.15 * R);
    s_.DrawWidth = 1;
}

void Dashboard::UpDateDial(double x, double y, double size, float min, float max, float value) {
    if (max == min) return;
    const double L = 0.85 * size / 2;
    const double a = ((double(value) - min) / (double(max) - min) * 270 + 45) * kDegree;
    s_.DrawMode = DrawModes::XorPen;
    s_.DrawWidth = static_cast<int>(L / 500) + 1;
    s_.Line(x, y, x + L * std::cos(a), y + L * std::sin(a), kWhite);
    s_.DrawWidth = 1;
    s_.DrawMode = DrawModes::CopyPen;
    s_.ForeColor = kWhite;
    s_.FillStyle = FillStyles::Solid;
    s_.FillColor = kBlack;
    s_.Circle(x, y, L / 16, kWhite);
}

void Dashboard::UpdateDash(int32_t row) {
    Procedure("UpdateDash", [&] {
        const RunArray& rd = Store().RunData;
        row = std::clamp<int32_t>(row, 1, std::max<int32_t>(rd.UpperRow(), 1));
        DashRow = row;
        if (!DashFresh)
            for (const DialRecord& d : Dials)
                UpDateDial(d.DialX, d.DialY, 2.0 * d.DialRadius, d.DialMin, d.DialMax, d.DialValue);
        DashFresh = false;
        for (DialRecord& d : Dials) {
            const bool inTable = d.VarColumn >= 0 && d.VarColumn < rd.Columns() &&
                                 row < static_cast<int32_t>(rd.Column(d.VarColumn).size());
            d.DialValue = (inTable ? rd(row, d.VarColumn) : 0.0f) * d.DialMultiplier;
            UpDateDial(d.DialX, d.DialY, 2.0 * d.DialRadius, d.DialMin, d.DialMax, d.DialValue);
        }
    });
}

void Dashboard::Refresh() {
    FindDialLimits();
    ReDrawDash();
    UpdateDash(DashRow);
}

void DashFormTable::Open(int panel, Dashboard* form) {
    if (panel < 0 || panel >= kPanels) return;
    entries_[panel] = {form != nullptr, form};
}

void DashFormTable::Close(int panel) {
    if (panel < 0 || panel >= kPanels) return;
    entries_[panel] = {};
}

Dashboard* DashFormTable::At(int panel) const {
    if (panel < 0 || panel >= kPanels || !entries_[panel].inUse) return nullptr;
    return entries_[panel].form;
}

void DashFormTable::Reset() {
    entries_.fill({});
}

DashFormTable& DashForms() {
    static DashFormTable table;
    return table;
}

}  // namespace tl
