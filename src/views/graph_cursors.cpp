#include "views/graph_cursors.h"

#include <algorithm>
#include <cmath>

#include "core/support.h"
#include "core/ui_services.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/graph_paint.h"

namespace tl {
namespace {

const char* const kGraphFont = "Microsoft Sans Serif";

bool Ticked(int16_t box) {
    return box != 0;
}

// The value of a named variable at a RunData row; false when the name has no
// column or the row lies outside the table.
bool ValueAt(const std::string& name, int32_t row, float& value) {
    RunArray& rd = Store().RunData;
    const int32_t c = FindVarIndex(name);
    if (c < 0 || c >= rd.Columns() || row < 0 || row > rd.UpperRow()) return false;
    auto col = rd.Column(c);
    if (static_cast<size_t>(row) >= col.size()) return false;
    value = col[static_cast<size_t>(row)];
    return true;
}

}  // namespace

GraphCursors::GraphCursors(GraphModel& model, DrawSurface& surface, GraphLinks* links)
    : g_(model), s_(surface), links_(links), nearest_(kGraphSlots, -1) {}

void GraphCursors::Paint() {
    if (!graphTabUp) return;
    Graphbox_Paint(g_, s_);
    // The click's search index follows new points here, so that a click
    // costs only the search.
    index_.Update(g_);
    // The picture is new: no playback cursor stands on it any more. With the
    // track map open, playback puts it back at once.
    CursorDrawn = false;
    if (links_ != nullptr && links_->TrackMapOpen()) links_->UpdateRunAnimation();
}

void GraphCursors::Fractions(double& fx, double& fy) const {
    const GraphFrame f = FrameOf(g_, s_);
    fx = FindClip(0.0f, static_cast<float>((DragX - f.left) / (0.95 * f.W - f.left)), 1.0f);
    fy = FindClip(
        0.0f, static_cast<float>(1.0 - (DragY - 0.05 * f.H) / (f.H - f.bottom - 0.05 * f.H)), 1.0f);
}

void GraphCursors::CrossAndCircles(double x, double y, DrawModes mode, uint32_t colour) {
    s_.DrawMode = mode;
    s_.DrawWidth = 1;
    s_.FillStyle = FillStyles::Transparent;
    s_.Line(x - 300, y, x + 300, y, colour);
    s_.Line(x, y - 300, x, y + 300, colour);
    s_.Circle(x, y, 150, colour);
    s_.Circle(x, y, 300, colour);
    s_.DrawMode = DrawModes::CopyPen;
}

void GraphCursors::PrintReadOuts(int k, double wx, double wy, int colourIndex, int show) {
    const double W = s_.ScaleWidth(), H = s_.ScaleHeight();
    const double bottom = Ticked(g_.settings.MultipleXAxis) ? 500.0 * k : 500.0;
    s_.DrawMode = DrawModes::CopyPen;
    s_.ForeColor = show == 1 ? VqColorIndex(colourIndex, false) : kWhite;
    s_.FontName = kGraphFont;
    s_.FontSize = 7;
    s_.FontBold = false;
    // Taken away by printing again in white: no smoothing, so that the white
    // covers every pixel the colour did.
    s_.FontSmoothing = false;
    const std::string xt = "<" + FormToSD(wx, 4) + ">";
    s_.CurrentX = 0.95 * W - s_.TextWidth(xt);
    s_.CurrentY = H - bottom + 220;
    s_.Print(xt);
    const std::string yt = "<" + FormToSD(wy, 4) + ">";
    s_.CurrentX = 650.0 * k - s_.TextWidth(yt);
    s_.CurrentY = 0.05 * H - 1.4 * s_.TextHeight(yt);
    s_.Print(yt);
    s_.FontSmoothing = true;
}

void GraphCursors::DrawBox() {
    if (!s_.CanUndoMarks()) return;
    s_.DrawMode = DrawModes::Invert;
    s_.DrawWidth = 1;
    s_.Box(DragStartX, DragStartY, DragX, DragY, kBlack);
    s_.DrawMode = DrawModes::CopyPen;
}

void GraphCursors::ShowGraphValue(int show) {
    if (!s_.CanUndoMarks()) return;
    double fx = 0, fy = 0;
    Fractions(fx, fy);
    CrossAndCircles(DragX, DragY, DrawModes::Invert, kBlack);
    int k = 0;
    for (int slot = 0; slot < kGraphSlots; ++slot) {
        if (!g_.SlotActive(slot)) continue;
        ++k;
        const GraphAxis& a = g_.axis[slot];
        const double wx = a.XMin + (a.XMax - a.XMin) * fx;
        const double wy = a.YMin + (a.YMax - a.YMin) * fy;
        PrintReadOuts(k, wx, wy, a.AxisColour, show);
    }
}

void GraphCursors::ShowNearestValueAxis(int show) {
    if (!s_.CanUndoMarks()) return;
    const double H = s_.ScaleHeight();
    const bool multi = Ticked(g_.settings.SelectMultiNearestChk);
    const bool multiX = Ticked(g_.settings.MultipleXAxis);
    double fx = 0, fy = 0;
    Fractions(fx, fy);
    if (multi) {
        CrossAndCircles(DragX, DragY, DrawModes::XorPen, VqColorIndex(0, true));
    } else {
        // 500 whatever the number of X axes.
        s_.DrawMode = DrawModes::XorPen;
        s_.DrawWidth = 1;
        s_.Line(DragX, 0.05 * H, DragX, H - 500, VqColorIndex(0, true));
        s_.DrawMode = DrawModes::CopyPen;
    }
    const GraphFrame f = FrameOf(g_, s_);
    std::fill(nearest_.begin(), nearest_.end(), -1);
    index_.Update(g_);
    int32_t lastSample = -1, lastRun = 0;
    int k = 0;
    for (int slot = 0; slot < kGraphSlots; ++slot) {
        if (!g_.SlotActive(slot)) continue;
        ++k;
        const GraphAxis& a = g_.axis[slot];
        double wx = a.XMin + (a.XMax - a.XMin) * fx;
        double wy = a.YMin + (a.YMax - a.YMin) * fy;
        const int32_t row = index_.NearestRow(g_, slot, wx, wy, multi);
        if (row < 1) continue;
        nearest_[static_cast<size_t>(slot)] = row;
        const GraphPoints& pts = g_.data[static_cast<size_t>(slot)];
        if (row < a.PointCount) {
            wx = pts.X[static_cast<size_t>(row)];
            wy = pts.Y[static_cast<size_t>(row)];
        }
        const int32_t sample = static_cast<int32_t>(pts.Row[static_cast<size_t>(row)]);
        const int32_t run =
            static_cast<int32_t>(std::nearbyint(GetVal(g_.settings.Slots[slot].AxisRun)));
        lastSample = sample;
        lastRun = run;
        if (multiX || multi) {
            if (links_ != nullptr) {
                if (links_->TrackMapOpen()) links_->MoveTrackMap(sample, a.AxisColour);
                links_->MoveOtherGraphs(this, sample, run, a.AxisColour, 2);
                if (links_->ValueTableOpen()) links_->MoveValueTable(sample);
            }
        }
        // The point: a cross with arms of 150 and a circle, in XOR pen.
        const double x = f.X(wx, a), y = f.Y(wy, a);
        const uint32_t c = VqColorIndex(a.AxisColour, true);
        s_.DrawMode = DrawModes::XorPen;
        s_.DrawWidth = 1;
        s_.FillStyle = FillStyles::Transparent;
        s_.Line(x - 150, y, x + 150, y, c);
        s_.Line(x, y - 150, x, y + 150, c);
        s_.Circle(x, y, 150, c);
        s_.DrawMode = DrawModes::CopyPen;
        if (!multi || show == 1) PrintReadOuts(k, wx, wy, a.AxisColour, show);
    }
    if (lastSample < 0 || links_ == nullptr) return;
    if (!multiX && !multi) {
        if (links_->TrackMapOpen()) links_->MoveTrackMap(lastSample, 0);
        links_->MoveOtherGraphs(this, lastSample, lastRun, 0, show);
        if (links_->ValueTableOpen()) links_->MoveValueTable(lastSample);
    }
    if (links_->MiniMapOpen()) {
        for (int slot = kGraphSlots - 1; slot >= 0; --slot) {
            if (!g_.SlotActive(slot) || nearest_[static_cast<size_t>(slot)] < 1) continue;
            const GraphPoints& pts = g_.data[static_cast<size_t>(slot)];
            links_->MoveMiniMap(
                static_cast<int32_t>(std::nearbyint(GetVal(g_.settings.Slots[slot].AxisRun))),
                static_cast<int32_t>(
                    pts.Row[static_cast<size_t>(nearest_[static_cast<size_t>(slot)])]));
            break;
        }
    }
}

void GraphCursors::UpDateGraphAni(int32_t row, int32_t run, int colourIndex, int mode) {
    if (!graphTabUp || !Ticked(g_.settings.RealTimeUpdate) || !s_.CanUndoMarks()) return;
    const double W = s_.ScaleWidth(), H = s_.ScaleHeight();
    const GraphFrame f = FrameOf(g_, s_);
    const uint32_t xorColour = VqColorIndex(colourIndex, true);
    const bool conditions = Ticked(g_.settings.LimitVariables);
    auto slotRun = [&](int slot) {
        return static_cast<int32_t>(std::nearbyint(GetVal(g_.settings.Slots[slot].AxisRun)));
    };
    if (Ticked(g_.settings.MultipleXAxis)) {
        int k = 0;
        for (int slot = 0; slot < kGraphSlots; ++slot) {
            if (!g_.SlotActive(slot)) continue;
            ++k;
            if (slotRun(slot) != run) continue;
            const GraphSlotSettings& gs = g_.settings.Slots[slot];
            const GraphAxis& a = g_.axis[slot];
            float xv = 0, yv = 0, cv = 0;
            if (!ValueAt(gs.SelXAxis, row, xv) || !ValueAt(gs.SelYAxis, row, yv) ||
                !ValueAt(gs.LimitVar, row, cv))
                continue;
            float lower = -1e10f, upper = 1e10f;
            if (Ticked(gs.DisplayIf) && conditions) {
                lower = static_cast<float>(GetVal(gs.LimitVarMin));
                upper = static_cast<float>(GetVal(gs.LimitVarMax));
            }
            if (!(a.XMin <= xv && xv <= a.XMax && a.YMin <= yv && yv <= a.YMax && lower < cv &&
                  cv < upper))
                continue;
            const double x = f.X(xv, a), y = f.Y(yv, a);
            s_.DrawMode = DrawModes::XorPen;
            s_.DrawWidth = 1;
            s_.FillStyle = FillStyles::Transparent;
            s_.Line(x - 100, y, x + 100, y, xorColour);
            s_.Line(x, y - 100, x, y + 100, xorColour);
            s_.Circle(x, y, 100, xorColour);
            s_.Circle(x, y, 200, xorColour);
            s_.DrawMode = DrawModes::CopyPen;
            if (mode != 2) PrintReadOuts(k, xv, yv, a.AxisColour, mode == 0 ? 0 : 1);
        }
        return;
    }
    // One X axis: slot 0 alone, a vertical line at the row's X. Its x is
    // (W - left) x 0.95 x f + left, not the data's mapping: the line stands
    // a little right of the data, as it always did.
    if (slotRun(0) != run) return;
    const GraphSlotSettings& gs = g_.settings.Slots[0];
    const GraphAxis& a = g_.axis[0];
    float xv = 0;
    if (!ValueAt(gs.SelXAxis, row, xv) || a.XMax == a.XMin) return;
    if (!(a.XMin <= xv && xv <= a.XMax)) return;
    const double fx = (static_cast<double>(xv) - a.XMin) / (a.XMax - a.XMin);
    const double x = (W - f.left) * 0.95 * fx + f.left;
    s_.DrawMode = DrawModes::XorPen;
    s_.DrawWidth = 1;
    s_.Line(x, H - f.bottom, x, 0.05 * H, xorColour);
    s_.DrawMode = DrawModes::CopyPen;
    if (mode != 2) {
        float yv = 0;
        if (!ValueAt(gs.SelYAxis, row, yv)) return;
        PrintReadOuts(1, xv, yv, a.AxisColour, mode == 0 ? 0 : 1);
    }
}

void GraphCursors::MouseDown(int button, int shift, double x, double y) {
    if (links_ != nullptr && links_->TrackMapOpen()) links_->StopPlayback();
    if (button != kLeftButton) return;
    if (g_.ZoomWindowActive) {
        DragStartX = DragX = x;
        DragStartY = DragY = y;
        DrawBox();
        return;
    }
    DragX = x;
    DragY = y;
    if ((shift & kCtrlMask) != 0) {
        ValueCursorActive = true;
        ShowGraphValue(1);
    } else {
        NearestCursorActive = true;
        ShowNearestValueAxis(1);
    }
}

void GraphCursors::MouseMove(int button, int /*shift*/, double x, double y) {
    if (!graphTabUp || button != kLeftButton) return;
    // Erase at the old place, draw at the new one.
    if (g_.ZoomWindowActive) DrawBox();
    if (ValueCursorActive) ShowGraphValue(0);
    if (NearestCursorActive) ShowNearestValueAxis(0);
    DragX = x;
    DragY = y;
    if (g_.ZoomWindowActive) DrawBox();
    if (ValueCursorActive) ShowGraphValue(1);
    if (NearestCursorActive) ShowNearestValueAxis(1);
}

bool GraphCursors::MouseUp(int button, int /*shift*/, double x, double y) {
    if (!graphTabUp || button != kLeftButton) return false;
    // Each mark is taken away where it was drawn, then the release point is
    // taken: a release away from the last move cannot leave a mark behind.
    if (ValueCursorActive) {
        ValueCursorActive = false;
        ShowGraphValue(0);
    }
    if (NearestCursorActive) {
        NearestCursorActive = false;
        ShowNearestValueAxis(0);
    }
    if (!g_.ZoomWindowActive) {
        DragX = x;
        DragY = y;
        return false;
    }
    g_.ZoomWindowActive = false;
    DrawBox();
    DragX = x;
    DragY = y;
    g_.RecordZoomLevels();
    if (!g_.AutoSetMinsMaxs(DragStartX, DragStartY, DragX, DragY, s_.ScaleWidth(),
                            s_.ScaleHeight()))
        return false;
    Paint();
    return true;
}

bool GraphCursors::KeyPress(int ascii) {
    if (ascii != 3) return false;
    ShowPleaseWait("Copying graph data to clipboard");
    SetClipboardText(g_.ClipboardText());
    HidePleaseWait();
    return true;
}

}  // namespace tl
