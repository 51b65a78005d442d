// The track map's transforms, the path data it draws from (limits, change
// check, compressed index, colour range), its navigation, its mouse and the
// marks it puts on the picture: rubber bands, the nearest-point cursor, a
// graph click's cross and the playback dots. The picture itself is
// track_map_paint.cpp.
#include "views/track_map.h"

#include <algorithm>
#include <cmath>

#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

// --- transform ---

double MapTransform::XUnclamped(double x, double y) const {
    const double r = rotation;
    const double u = x * std::cos(r) + y * std::sin(r);
    return (u - centreX) / scale + W / 2;
}

double MapTransform::YUnclamped(double x, double y) const {
    const double r = rotation;
    const double v = -x * std::sin(r) + y * std::cos(r);
    return -(v - centreY) / scale + H / 2;
}

double MapTransform::XPos2Screen(double x, double y) const {
    return std::clamp(XUnclamped(x, y), -W, 5 * W);
}

double MapTransform::YPos2Screen(double x, double y) const {
    return std::clamp(YUnclamped(x, y), -H, 5 * H);
}

double MapTransform::Screen2XPos(double sx, double sy) const {
    const double u = (sx - W / 2) * scale + centreX;
    const double v = -(sy - H / 2) * scale + centreY;
    return u * std::cos(double(rotation)) - v * std::sin(double(rotation));
}

double MapTransform::Screen2YPos(double sx, double sy) const {
    const double u = (sx - W / 2) * scale + centreX;
    const double v = -(sy - H / 2) * scale + centreY;
    return u * std::sin(double(rotation)) + v * std::cos(double(rotation));
}

// --- path data ---

TrackLimits PositionLimits(int32_t first, int32_t last) {
    TrackLimits l{1e20f, -1e20f, 1e20f, -1e20f};
    const RunArray& d = Store().RunData;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    first = std::max(first, 0);
    last = std::min(last, d.UpperRow());
    if (first <= last && cx < d.Columns() && cy < d.Columns()) {
        const float* x = d.Column(cx).data();
        const float* y = d.Column(cy).data();
        for (int32_t i = first; i <= last; ++i) {
            l.MinX = std::min(l.MinX, x[i]);
            l.MaxX = std::max(l.MaxX, x[i]);
            l.MinY = std::min(l.MinY, y[i]);
            l.MaxY = std::max(l.MaxY, y[i]);
        }
    }
    if (l.MinX > l.MaxX) l = TrackLimits{};
    auto widen = [](float& lo, float& hi) {
        if (hi - lo >= 200) return;
        const float c = (lo + hi) / 2;
        lo = c - 100;
        hi = c + 100;
    };
    widen(l.MinX, l.MaxX);
    widen(l.MinY, l.MaxY);
    return l;
}

TrackLimits FindTrackLimits() {
    return PositionLimits(1, Store().RunData.UpperRow());
}

float WholeTrackScale(const TrackLimits& l, double W, double H) {
    const double s = std::max((l.MaxY - l.MinY) / H, (l.MaxX - l.MinX) / W);
    return FindClip(0.01f, static_cast<float>(s), 100.0f);
}

PositionCheck TakePositionCheck() {
    PositionCheck c;
    const RunArray& d = Store().RunData;
    c.rows = d.UpperRow();
    c.sum = 0;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    if (cx >= d.Columns() || cy >= d.Columns()) return c;
    const float* x = d.Column(cx).data();
    const float* y = d.Column(cy).data();
    for (int32_t i = 0; i <= c.rows; i += 50) c.sum += std::trunc(x[i]) + std::trunc(y[i]);
    return c;
}

std::vector<int32_t> CompressData() {
    ShowPleaseWait("Compressing Graph Data");
    const RunStore& st = Store();
    std::vector<int32_t> index;
    index.reserve(static_cast<size_t>(std::max(st.RunData.UpperRow(), 2)) / 16 + 16);
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    const bool have = cx < st.RunData.Columns() && cy < st.RunData.Columns();
    const float* x = have ? st.RunData.Column(cx).data() : nullptr;
    const float* y = have ? st.RunData.Column(cy).data() : nullptr;
    // The distance between the chord's middle and the path's point halfway.
    auto chordError = [&](int32_t cur, int32_t step) {
        const int32_t mid = cur + step / 2;
        const double mx = (double(x[cur]) + x[cur + step]) / 2;
        const double my = (double(y[cur]) + y[cur + step]) / 2;
        return std::hypot(mx - x[mid], my - y[mid]);
    };
    // The farthest any row of the chord lies from it.
    auto deviation = [&](int32_t cur, int32_t step) {
        const double ax = x[cur], ay = y[cur];
        const double dx = double(x[cur + step]) - ax, dy = double(y[cur + step]) - ay;
        const double l2 = dx * dx + dy * dy;
        double worst = 0;
        for (int32_t i = cur + 1; i < cur + step; ++i) {
            const double t =
                l2 > 0 ? std::clamp(((x[i] - ax) * dx + (y[i] - ay) * dy) / l2, 0.0, 1.0) : 0;
            worst = std::max(worst, std::hypot(x[i] - ax - t * dx, y[i] - ay - t * dy));
        }
        return worst;
    };
    for (int32_t run = 1; run <= st.RunCount; ++run) {
        const RunRecord& r = st.RunInfo[run];
        const int32_t end = std::min(r.RunEnd, st.RunData.UpperRow());
        index.push_back(r.RunStart);
        int32_t cur = r.RunStart;
        while (cur < end) {
            // The longest chord whose middle stays within half a metre of
            // the path: grow while the next step would still pass.
            int32_t step = 1;
            while (have && cur + step < end && chordError(cur, step + 1) < 0.5) ++step;
            // The middle alone can pass a chord that cuts a corner elsewhere:
            // shorten it until every row lies within half a metre.
            while (have && step > 1 && deviation(cur, step) > 0.5)
                step = std::min(step - 1, step * 3 / 4 + 1);
            cur = cur + step >= end ? end : cur + step;
            index.push_back(cur);
        }
    }
    index.push_back(kCompressedEnd);
    HidePleaseWait();
    return index;
}

size_t FirstCompressedEntry(const std::vector<int32_t>& index, int32_t row) {
    return static_cast<size_t>(std::lower_bound(index.begin(), index.end(), row) - index.begin());
}

namespace {

struct RangeCache {
    int32_t column = -1;
    int32_t rows = -1;
    const float* data = nullptr;
    double sample = 0;
    float low = 0, high = 0;
};

}  // namespace

ColourRange ColourRangeOf(const std::string& varName) {
    static RangeCache cache;
    ColourRange r;
    if (varName == kNoColorCoding) return r;
    r.column = FindVarIndex(varName);
    const RunArray& d = Store().RunData;
    if (r.column == ColumnOf(kNoDataSlot) || r.column < 0 || r.column >= d.Columns()) return r;
    r.coded = true;
    const int32_t rows = d.UpperRow();
    const float* v = d.Column(r.column).data();
    double sample = 0;
    for (int32_t i = 0; i <= rows; i += 50) sample += v[i];
    if (cache.column == r.column && cache.rows == rows && cache.data == v &&
        cache.sample == sample) {
        r.low = cache.low;
        r.high = cache.high;
        return r;
    }
    float low = 1e20f, high = -1e20f;
    for (int32_t i = 1; i <= rows; ++i) {
        const float a = std::fabs(v[i]);
        low = std::min(low, a);
        high = std::max(high, a);
    }
    if (low > high) low = high = 0;
    cache = RangeCache{r.column, rows, v, sample, low, high};
    r.low = low;
    r.high = high;
    return r;
}

uint32_t PathColour(const ColourRange& r, float value, int panel) {
    if (!r.coded || r.high == r.low) return VqColorIndex(panel, false);
    int n = static_cast<int>(std::floor((std::fabs(value) - r.low) / (r.high - r.low) * 600 + 2));
    return GraphColorGen2(n);
}

std::array<HighlightSection, 5>& HighlightSections() {
    static std::array<HighlightSection, 5> sections;
    return sections;
}

// --- the map ---

TrackMap::TrackMap(DrawSurface& map, TrackMapLinks* links) : map_(map), links_(links) {
    const VariableCatalogue& cat = Catalogue();
    if (!cat.RunVars[slot::PositionX].Enabled || !cat.RunVars[slot::PositionY].Enabled) {
        Message(
            "Track maps have not been calculated for this run, please check that the positional "
            "variables are selected in the variable list");
        LogDebug("no track map data");
    }
    // The greatest longitudinal or lateral acceleration scales the g vectors.
    float most = -1e20f;
    const RunArray& d = Store().RunData;
    for (int s : {slot::AccelLong, slot::AccelLat}) {
        const int32_t c = ColumnOf(s);
        if (c >= d.Columns()) continue;
        const float* v = d.Column(c).data();
        for (int32_t i = 1; i <= d.UpperRow(); ++i) most = std::max(most, v[i]);
    }
    view.MaxAccel = most == 0 || most <= -1e20f ? 1 : most;
    settings.ViewScale = 100;
    view.nearestRows.fill(-1);
}

MapTransform TrackMap::Transform() const {
    MapTransform t;
    t.W = map_.ScaleWidth();
    t.H = map_.ScaleHeight();
    t.scale = settings.ViewScale;
    t.rotation = settings.ViewRotation;
    t.centreX = settings.ViewCentreX;
    t.centreY = settings.ViewCentreY;
    return t;
}

MapTransform TrackMap::PrinterTransform(double pageW, double pageH) const {
    MapTransform t = Transform();
    t.W = pageW;
    t.H = pageH;
    t.scale = view.PrintScale;
    return t;
}

double TrackMap::XPos2Printer(double x, double y, double pageW, double pageH) const {
    return PrinterTransform(pageW, pageH).XUnclamped(x, y);
}

double TrackMap::YPos2Printer(double x, double y, double pageW, double pageH) const {
    return PrinterTransform(pageW, pageH).YUnclamped(x, y);
}

int TrackMap::Panels() const {
    return std::clamp(settings.RunsInUse, 0,
                      std::min<int>(kMapPanels, int(settings.RunToDisplay.size())));
}

int32_t TrackMap::PanelRun(int panel) const {
    if (panel < 0 || panel >= int(settings.RunToDisplay.size())) return 0;
    const int32_t run = static_cast<int32_t>(GetVal(settings.RunToDisplay[size_t(panel)]));
    return run >= 1 && run <= Store().RunCount ? run : 0;
}

void TrackMap::DrawNow() {
    ReDraw();
    if (links_ != nullptr) links_->UpdateRunAnimation();
}

void TrackMap::ShowWholeTrack_Click() {
    view.limits = FindTrackLimits();
    const TrackLimits& l = view.limits;
    const double mx = (l.MinX + l.MaxX) / 2.0, my = (l.MinY + l.MaxY) / 2.0;
    const double r = settings.ViewRotation;
    settings.ViewCentreX = static_cast<float>(mx * std::cos(r) + my * std::sin(r));
    settings.ViewCentreY = static_cast<float>(-mx * std::sin(r) + my * std::cos(r));
    settings.ViewScale = WholeTrackScale(l, map_.ScaleWidth(), map_.ScaleHeight());
    ReDraw();
}

void TrackMap::ZoomIn_Click() {
    settings.ViewScale = FindClip(0.01f, settings.ViewScale / 1.2f, 100.0f);
    DrawNow();
}

void TrackMap::ZoomOut_Click() {
    settings.ViewScale = FindClip(0.01f, settings.ViewScale * 1.2f, 100.0f);
    DrawNow();
}

namespace {

void Rotate(TrackMapSettings& s, float a) {
    s.ViewRotation += a;
    const float cx = s.ViewCentreX, cy = s.ViewCentreY;
    s.ViewCentreX = cx * std::cos(a) + cy * std::sin(a);
    s.ViewCentreY = -cx * std::sin(a) + cy * std::cos(a);
}

}  // namespace

void TrackMap::RotateCW_Click() {
    Rotate(settings, kPi / 36);
    DrawNow();
}

void TrackMap::RotateCCW_Click() {
    Rotate(settings, -kPi / 36);
    DrawNow();
}

void TrackMap::AutoSetMinsMaxs() {
    const MapTransform t = Transform();
    const double sx = (view.MapDragStartX + view.MapDragX) / 2.0;
    const double sy = (view.MapDragStartY + view.MapDragY) / 2.0;
    const double u = t.Screen2XPos(sx, sy), v = t.Screen2YPos(sx, sy);
    const double r = settings.ViewRotation;
    settings.ViewCentreX = static_cast<float>(u * std::cos(r) + v * std::sin(r));
    settings.ViewCentreY = static_cast<float>(-u * std::sin(r) + v * std::cos(r));
    const double dx = std::fabs(view.MapDragX - view.MapDragStartX);
    const double dy = std::fabs(view.MapDragY - view.MapDragStartY);
    const double f = std::max(dy / t.H, dx / t.W);
    settings.ViewScale = FindClip(0.01f, static_cast<float>(settings.ViewScale * f), 100.0f);
}

void TrackMap::HScroll_Change(int32_t value) {
    if (scrollReentry_) return;
    settings.ViewCentreX = static_cast<float>(value) * 10;
    DrawNow();
}

void TrackMap::VScroll_Change(int32_t value) {
    if (scrollReentry_) return;
    settings.ViewCentreY = -static_cast<float>(value) * 10;
    DrawNow();
}

void TrackMap::SetScrollBars() {
    scrollReentry_ = true;
    MapScrollBars& b = view.scroll;
    const TrackLimits& l = view.limits;
    auto bar = [](float lo, float hi, float at, int32_t& mn, int32_t& mx, int32_t& value) {
        mn = static_cast<int32_t>(std::lround(lo / 10));
        mx = static_cast<int32_t>(std::lround(hi / 10));
        value = static_cast<int32_t>(std::lround(at / 10));
        // A centre outside the track widens the bar to it.
        mn = std::min(mn, value);
        mx = std::max(mx, value);
    };
    bar(l.MinX, l.MaxX, settings.ViewCentreX, b.HMin, b.HMax, b.HValue);
    bar(-l.MaxY, -l.MinY, -settings.ViewCentreY, b.VMin, b.VMax, b.VValue);
    scrollReentry_ = false;
}

void TrackMap::Resize() {
    const double W = map_.ScaleWidth(), H = map_.ScaleHeight();
    if (view.LastMapWidth > 0 && view.LastMapHeight > 0 && W + H > 0) {
        const double f = (view.LastMapWidth + view.LastMapHeight) / (W + H);
        settings.ViewScale = FindClip(0.01f, static_cast<float>(settings.ViewScale * f), 100.0f);
    }
    view.LastMapWidth = W;
    view.LastMapHeight = H;
    DrawNow();
}

// --- modes and mouse ---

void TrackMap::LeaveModes() {
    view.ZoomWindowMode = view.AddMarkerMode = view.DeleteMarkerMode = false;
    view.ZoomDragging = view.MarkerDragging = view.CursorDragging = false;
    SetPointer(MapPointer::Default);
}

void TrackMap::ZoomWindow_Click() {
    const bool on = !view.ZoomWindowMode;
    LeaveModes();
    view.ZoomWindowMode = on;
    SetPointer(on ? MapPointer::Cross : MapPointer::Default);
}

void TrackMap::AddNewNode_Click() {
    const bool on = !view.AddMarkerMode;
    LeaveModes();
    view.AddMarkerMode = on;
    SetPointer(on ? MapPointer::Cross : MapPointer::Default);
}

void TrackMap::DeleteNode_Click() {
    const bool on = !view.DeleteMarkerMode;
    LeaveModes();
    view.DeleteMarkerMode = on;
    SetPointer(on ? MapPointer::Pointing : MapPointer::Default);
}

void TrackMap::Form_KeyPress(int ascii) {
    if (ascii != 27) return;
    LeaveModes();
    DrawNow();
}

void TrackMap::Map_MouseDown(int button, double x, double y) {
    lastMouseX_ = x;
    lastMouseY_ = y;
    if (links_ != nullptr) links_->StopPlayback();
    if (button != 1) return;
    auto takeAll = [&] {
        view.MapDragStartX = view.MapDragX = static_cast<float>(x);
        view.MapDragStartY = view.MapDragY = static_cast<float>(y);
    };
    if (view.ZoomWindowMode) {
        view.ZoomDragging = true;
        takeAll();
        DrawBox();
    } else if (view.DeleteMarkerMode) {
        const MapTransform t = Transform();
        bool met = false;
        for (int i = 1; i < kTrackMarkerCount; ++i) {
            const TrackMarker& m = Markers().Entries[size_t(i)];
            if (m.Name.empty()) continue;
            auto near = [&](float wx, float wy) {
                return std::hypot(t.XPos2Screen(wx, wy) - x, t.YPos2Screen(wx, wy) - y) <= 100;
            };
            if (!near(m.X1, m.Y1) && !near(m.X2, m.Y2)) continue;
            met = true;
            if (YesNoBox("Question", "Do you want to delete the track marker ?"))
                DeleteTrackMarker(i);
            DrawNow();
        }
        if (met) {
            view.DeleteMarkerMode = false;
            SetPointer(MapPointer::Default);
        }
    } else if (!view.AddMarkerMode) {
        view.MapDragX = static_cast<float>(x);
        view.MapDragY = static_cast<float>(y);
        HighlightNearestPointToCursor(true);
        view.CursorDragging = true;
    } else {
        view.MarkerDragging = true;
        takeAll();
        DrawBox();
        DrawTimeBound();
    }
}

void TrackMap::Map_MouseMove(int button, double x, double y) {
    lastMouseX_ = x;
    lastMouseY_ = y;
    if (button != 1) return;
    auto take = [&] {
        view.MapDragX = static_cast<float>(x);
        view.MapDragY = static_cast<float>(y);
    };
    if (view.ZoomDragging) {
        DrawBox();
        take();
        DrawBox();
    } else if (view.MarkerDragging) {
        DrawBox();
        DrawTimeBound();
        take();
        DrawBox();
        DrawTimeBound();
    } else if (view.CursorDragging) {
        HighlightNearestPointToCursor(false);
        take();
        HighlightNearestPointToCursor(true);
    }
}

void TrackMap::Map_MouseUp(int button, double x, double y) {
    if (button != 1) return;
    auto take = [&] {
        view.MapDragX = static_cast<float>(x);
        view.MapDragY = static_cast<float>(y);
    };
    if (view.ZoomDragging) {
        view.ZoomDragging = view.ZoomWindowMode = false;
        SetPointer(MapPointer::Default);
        DrawBox();
        take();
        AutoSetMinsMaxs();
        DrawNow();
    } else if (view.MarkerDragging) {
        view.MarkerDragging = false;
        // The bands go where they were drawn; the release point is taken
        // after, so none is left behind.
        DrawBox();
        DrawTimeBound();
        take();
        const MapTransform t = Transform();
        const double x1 = t.Screen2XPos(view.MapDragStartX, view.MapDragStartY);
        const double y1 = t.Screen2YPos(view.MapDragStartX, view.MapDragStartY);
        const double x2 = t.Screen2XPos(view.MapDragX, view.MapDragY);
        const double y2 = t.Screen2YPos(view.MapDragX, view.MapDragY);
        CalcIntersectTime(x1, y1, x2, y2,
                          [this] { return links_ != nullptr ? links_->AskNewMarkerName() : -1; });
        DrawNow();
    } else if (view.CursorDragging) {
        HighlightNearestPointToCursor(false);
        view.CursorDragging = false;
    }
}

void TrackMap::Map_DblClick() {
    Map_MouseDown(1, lastMouseX_, lastMouseY_);
}

// --- marks ---

void TrackMap::Cross(double x, double y, double arm, uint32_t colour) {
    map_.Line(x - arm, y, x + arm, y, colour);
    map_.Line(x, y - arm, x, y + arm, colour);
}

void TrackMap::DrawBox() {
    if (!map_.CanUndoMarks()) return;
    map_.DrawMode = DrawModes::XorPen;
    map_.DrawWidth = 1;
    map_.Box(view.MapDragStartX, view.MapDragStartY, view.MapDragX, view.MapDragY,
             VqColorIndex(0, true));
    map_.DrawMode = DrawModes::CopyPen;
}

void TrackMap::DrawTimeBound() {
    if (!map_.CanUndoMarks()) return;
    constexpr uint32_t kGreen = 65280;
    map_.DrawMode = DrawModes::XorPen;
    map_.DrawWidth = 1;
    map_.Line(view.MapDragStartX, view.MapDragStartY, view.MapDragX, view.MapDragY, kGreen);
    Cross(view.MapDragStartX, view.MapDragStartY, 60, kGreen);
    Cross(view.MapDragX, view.MapDragY, 60, kGreen);
    map_.DrawMode = DrawModes::CopyPen;
}

void TrackMap::HighlightNearestPointToCursor(bool /*show*/) {
    if (!map_.CanUndoMarks()) return;
    const MapTransform t = Transform();
    map_.DrawMode = DrawModes::XorPen;
    map_.DrawWidth = 1;
    map_.FillStyle = FillStyles::Transparent;
    const uint32_t white = VqColorIndex(0, true);
    Cross(view.MapDragX, view.MapDragY, 300, white);
    map_.Circle(view.MapDragX, view.MapDragY, 150, white);
    map_.Circle(view.MapDragX, view.MapDragY, 300, white);
    const double wx = t.Screen2XPos(view.MapDragX, view.MapDragY);
    const double wy = t.Screen2YPos(view.MapDragX, view.MapDragY);
    const RunArray& d = Store().RunData;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    view.nearestRows.fill(-1);
    for (int panel = 0; panel < Panels(); ++panel) {
        const int32_t run = PanelRun(panel);
        if (run < 1 || cx >= d.Columns() || cy >= d.Columns()) continue;
        const RunRecord& r = Store().RunInfo[run];
        const float* x = d.Column(cx).data();
        const float* y = d.Column(cy).data();
        double best = 1e20;
        int32_t row = -1;
        for (int32_t i = r.RunStart; i <= std::min(r.RunEnd, d.UpperRow()); i += 10) {
            const double e = (x[i] - wx) * (x[i] - wx) + (y[i] - wy) * (y[i] - wy);
            if (e < best) {
                best = e;
                row = i;
            }
        }
        if (row < 0) continue;
        view.nearestRows[size_t(panel)] = row;
        const double px = t.XPos2Screen(x[row], y[row]), py = t.YPos2Screen(x[row], y[row]);
        const uint32_t c = VqColorIndex(panel, true);
        Cross(px, py, 150, c);
        map_.Circle(px, py, 150, c);
        if (links_ != nullptr) {
            links_->MoveGraphs(row, run, panel);
            if (links_->MiniMapOpen()) links_->MoveMiniMap(row, run, panel);
            if (links_->ValueTableOpen()) links_->MoveValueTable(row, panel, Panels());
        }
    }
    map_.DrawMode = DrawModes::CopyPen;
}

void TrackMap::UpDateGraphAni(int32_t row, int colourIndex) {
    if (!map_.CanUndoMarks() || row < 0 || row > Store().RunData.UpperRow()) return;
    const MapTransform t = Transform();
    const double x = RunData(row, ColumnOf(slot::PositionX));
    const double y = RunData(row, ColumnOf(slot::PositionY));
    const double half = std::floor(std::min(t.W, t.H) / 50);
    map_.DrawMode = DrawModes::XorPen;
    map_.DrawWidth = 1;
    Cross(t.XPos2Screen(x, y), t.YPos2Screen(x, y), half, VqColorIndex(colourIndex, true));
    map_.DrawMode = DrawModes::CopyPen;
}

// --- playback ---

void TrackMap::AnimateStep(const std::vector<int32_t>& rows, bool panel0Playing) {
    if (view.optionsUp) {
        LogDebug("Animation Update aborted whilst track not in view!");
        return;
    }
    if (!map_.CanUndoMarks()) return;
    const RunArray& d = Store().RunData;
    const double W = map_.ScaleWidth(), H = map_.ScaleHeight();
    const double R = std::floor(std::min(W, H) / 100);
    const bool vectors = settings.ShowGVectors != 0 && Catalogue().RunVars[slot::AccelLong].Enabled;
    auto xorMode = [&] {
        map_.DrawMode = DrawModes::XorPen;
        map_.FillStyle = FillStyles::Solid;
        map_.DrawWidth = 1;
    };
    xorMode();
    if (view.MapDrawnFlag == -1) {
        for (int i = 0; i < kMapPanels; ++i) {
            if (!dotDrawn_[size_t(i)]) continue;
            const uint32_t c = VqColorIndex(i, true);
            map_.FillColor = c;
            if (vectorsDrawn_[size_t(i)]) {
                map_.Line(view.LastMarkX[i], view.LastMarkY[i], view.LastLatX[i], view.LastLatY[i],
                          c);
                map_.Line(view.LastMarkX[i], view.LastMarkY[i], view.LastLonX[i], view.LastLonY[i],
                          c);
            }
            map_.Circle(view.LastMarkX[i], view.LastMarkY[i], R, c);
        }
    }
    dotDrawn_.fill(false);
    vectorsDrawn_.fill(false);
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    const int panels = std::min<int>(Panels(), int(rows.size()));
    for (int i = 0; i < panels; ++i) {
        const int32_t run = PanelRun(i);
        if (run < 1) continue;
        const RunRecord& r = Store().RunInfo[run];
        const int32_t row =
            std::clamp(rows[size_t(i)], r.RunStart, std::min(r.RunEnd, d.UpperRow()));
        const float wx = d(row, cx), wy = d(row, cy);
        double x = std::trunc(XPos2Screen(wx, wy)), y = std::trunc(YPos2Screen(wx, wy));
        if (i == 0 && panel0Playing && settings.AutoPan != 0) {
            const double step = 0.5 * H * settings.ViewScale, stepX = 0.5 * W * settings.ViewScale;
            auto moved = [&] {
                ReDraw();
                view.MapDrawnFlag = -1;
                xorMode();
            };
            if (y > 0.8 * H) {
                settings.ViewCentreY -= static_cast<float>(step);
                moved();
            }
            if (y < 0.2 * H) {
                settings.ViewCentreY += static_cast<float>(step);
                moved();
            }
            if (x < 0.2 * W) {
                settings.ViewCentreX -= static_cast<float>(stepX);
                moved();
            }
            if (x > 0.8 * W) {
                settings.ViewCentreX += static_cast<float>(stepX);
                moved();
            }
            x = std::trunc(XPos2Screen(wx, wy));
            y = std::trunc(YPos2Screen(wx, wy));
        }
        view.LastMarkX[i] = static_cast<float>(x);
        view.LastMarkY[i] = static_cast<float>(y);
        const uint32_t c = VqColorIndex(i, true);
        map_.FillColor = c;
        if (vectors) {
            double theta = 0;
            if (row - r.RunStart >= 11) {
                const double dx = double(d(row, cx)) - d(row - 10, cx);
                const double dy = double(d(row, cy)) - d(row - 10, cy);
                theta = dx == 0 ? 0 : std::atan(dy / dx);
                if (dx < 0) theta += kPi;
                theta -= kPi / 2;
            }
            if (settings.ReverseGVectors != 0) theta += kPi;
            theta += settings.ViewRotation;
            view.GVectorScale = static_cast<float>(std::min(W, H) / 5 / 1000 / view.MaxAccel);
            double latX = x, latY = y, lonX = x, lonY = y;
            if (row - r.RunStart >= 6 && r.RunEnd - row >= 6) {
                const double k = double(view.GVectorScale) * 1000;
                const double lat = AvVar(row - 5, row + 5, ColumnOf(slot::AccelLat));
                const double lon = AvVar(row - 5, row + 5, ColumnOf(slot::AccelLong));
                latX = x + lat * k * std::cos(theta + kPi / 2);
                latY = y + lat * k * std::sin(theta + kPi / 2);
                lonX = x + lon * k * std::cos(theta);
                lonY = y + lon * k * std::sin(theta);
            }
            view.LastLatX[i] = static_cast<float>(latX);
            view.LastLatY[i] = static_cast<float>(latY);
            view.LastLonX[i] = static_cast<float>(lonX);
            view.LastLonY[i] = static_cast<float>(lonY);
            map_.Line(x, y, view.LastLatX[i], view.LastLatY[i], c);
            map_.Line(x, y, view.LastLonX[i], view.LastLonY[i], c);
            vectorsDrawn_[size_t(i)] = true;
        }
        map_.Circle(x, y, R, c);
        dotDrawn_[size_t(i)] = true;
    }
    map_.DrawMode = DrawModes::CopyPen;
    map_.FillStyle = FillStyles::Transparent;
    if (view.MapDrawnFlag == 0) view.MapDrawnFlag = -1;
}

}  // namespace tl
