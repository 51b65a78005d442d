// The track map's picture: the change check, the colour range, the strips
// beside the map, the reference lap, each panel's path from the compressed
// index, the highlighted stretches, the variable ticks, the track markers and
// the section names, and the scroll bars' numbers.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

#include "core/log.h"
#include "core/support.h"
#include "derived/reference_lap.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/track_map.h"

namespace tl {
namespace {

constexpr uint32_t kGreen = 65280;

// Joined lines whose consecutive segments share a colour go to the surface
// as one polyline.
class ColouredLine {
  public:
    explicit ColouredLine(DrawSurface& s) : s_(s) {}
    ~ColouredLine() { Flush(); }
    void Segment(double x1, double y1, double x2, double y2, uint32_t c) {
        if (xs_.empty() || c != colour_ || xs_.back() != x1 || ys_.back() != y1) {
            Flush();
            colour_ = c;
            xs_.push_back(x1);
            ys_.push_back(y1);
        }
        xs_.push_back(x2);
        ys_.push_back(y2);
    }
    void Flush() {
        if (xs_.size() > 1) s_.Polyline(xs_.data(), ys_.data(), int(xs_.size()), colour_);
        xs_.clear();
        ys_.clear();
    }

  private:
    DrawSurface& s_;
    uint32_t colour_ = 0;
    std::vector<double> xs_, ys_;
};

// The panels' paths as the surface is given them: polylines in twips, one
// per stretch of joined segments of one colour. They are kept while the
// view (size, scale, rotation, centre), the compressed index, the panels'
// runs and the data they are read from stay as they were, so a repaint of an
// unchanged view costs only the drawing.
struct PathPiece {
    uint32_t colour = 0;
    int32_t first = 0, count = 0;  // points of xs, ys
};

struct PathKey {
    double W = 0, H = 0;
    float scale = 0, rotation = 0, centreX = 0, centreY = 0;
    const float *x = nullptr, *y = nullptr, *v = nullptr;
    int32_t rows = -1;
    PositionCheck positions;
    float low = 0, high = 0;
    double valueSample = 0;
    std::vector<int32_t> panels;  // per panel: run, RunStart, RunEnd, RunLength
    std::vector<int32_t> index;
    bool operator==(const PathKey&) const = default;
};

struct PathLines {
    PathKey key;
    bool valid = false;
    std::vector<double> xs, ys;
    std::vector<PathPiece> pieces;
    // Pieces of panel p: panelFirst[p] up to panelFirst[p + 1].
    std::vector<size_t> panelFirst;
};

// Gathers the pieces the way ColouredLine joins segments.
class PieceRecorder {
  public:
    explicit PieceRecorder(PathLines& l) : l_(l) {}
    void Segment(double x1, double y1, double x2, double y2, uint32_t c) {
        if (open_ < 0 || c != l_.pieces.back().colour || l_.xs.back() != x1 || l_.ys.back() != y1) {
            Close();
            PathPiece p;
            p.colour = c;
            p.first = static_cast<int32_t>(l_.xs.size());
            l_.pieces.push_back(p);
            open_ = static_cast<int32_t>(l_.pieces.size()) - 1;
            l_.xs.push_back(x1);
            l_.ys.push_back(y1);
        }
        l_.xs.push_back(x2);
        l_.ys.push_back(y2);
    }
    void Close() {
        if (open_ < 0) return;
        PathPiece& p = l_.pieces[size_t(open_)];
        p.count = static_cast<int32_t>(l_.xs.size()) - p.first;
        open_ = -1;
    }

  private:
    PathLines& l_;
    int32_t open_ = -1;
};

// MapTransform's XPos2Screen and YPos2Screen, the same sums, with the
// rotation's cosine and sine taken once.
struct FastTransform {
    explicit FastTransform(const MapTransform& t)
        : c(std::cos(double(t.rotation))),
          s(std::sin(double(t.rotation))),
          cx(t.centreX),
          cy(t.centreY),
          scale(t.scale),
          W(t.W),
          H(t.H) {}
    double X(double x, double y) const {
        const double u = x * c + y * s;
        return std::clamp((u - cx) / scale + W / 2, -W, 5 * W);
    }
    double Y(double x, double y) const {
        const double v = -x * s + y * c;
        return std::clamp(-(v - cy) / scale + H / 2, -H, 5 * H);
    }
    double c, s, cx, cy, scale, W, H;
};

PathKey KeyOf(const TrackMap& map, const MapTransform& t, const ColourRange& range, const float* x,
              const float* y, const float* v) {
    PathKey k;
    k.W = t.W;
    k.H = t.H;
    k.scale = t.scale;
    k.rotation = t.rotation;
    k.centreX = t.centreX;
    k.centreY = t.centreY;
    k.x = x;
    k.y = y;
    k.v = v;
    const RunArray& d = Store().RunData;
    k.rows = d.UpperRow();
    k.positions = map.view.change;
    if (v != nullptr) {
        k.low = range.low;
        k.high = range.high;
        for (int32_t i = 0; i <= k.rows; i += 50) k.valueSample += v[i];
    }
    for (int panel = 0; panel < map.Panels(); ++panel) {
        const int32_t run = map.PanelRun(panel);
        k.panels.push_back(run);
        if (run < 1) continue;
        const RunRecord& r = Store().RunInfo[run];
        k.panels.insert(k.panels.end(), {r.RunStart, r.RunEnd, r.RunLength});
    }
    k.index = map.view.CompressedIndex;
    return k;
}

const PathLines& PathLinesOf(const TrackMap& map, const MapTransform& t, const ColourRange& range,
                             const float* x, const float* y, const float* v) {
    static PathLines lines;
    PathKey key = KeyOf(map, t, range, x, y, v);
    if (lines.valid && lines.key == key) return lines;
    lines.key = std::move(key);
    lines.valid = true;
    lines.xs.clear();
    lines.ys.clear();
    lines.pieces.clear();
    lines.panelFirst.assign(1, 0);
    const RunArray& d = Store().RunData;
    const std::vector<int32_t>& index = map.view.CompressedIndex;
    const FastTransform f(t);
    constexpr size_t kAhead = 16;
    for (int panel = 0; panel < map.Panels(); ++panel) {
        const int32_t run = map.PanelRun(panel);
        if (run >= 1 && Store().RunInfo[run].RunLength > 10) {
            const RunRecord& r = Store().RunInfo[run];
            const int32_t end = std::min(r.RunEnd, d.UpperRow());
            PieceRecorder line(lines);
            size_t k = FirstCompressedEntry(index, r.RunStart);
            if (k < index.size() && index[k] <= end) {
                int32_t a = index[k];
                double ax = f.X(x[a], y[a]), ay = f.Y(x[a], y[a]);
                for (++k; k < index.size() && index[k] <= end; ++k) {
                    // The rows ahead are far apart in the columns: asked for
                    // early, they arrive while these are mapped.
                    if (k + kAhead < index.size() && index[k + kAhead] <= end) {
                        const int32_t ahead = index[k + kAhead];
                        __builtin_prefetch(x + ahead);
                        __builtin_prefetch(y + ahead);
                        if (v != nullptr) __builtin_prefetch(v + ahead);
                    }
                    const int32_t b = index[k];
                    const double bx = f.X(x[b], y[b]), by = f.Y(x[b], y[b]);
                    // A segment wholly beyond one edge draws nothing.
                    const bool outside = (ax < 0 && bx < 0) || (ay < 0 && by < 0) ||
                                         (ax > t.W && bx > t.W) || (ay > t.H && by > t.H);
                    if (!outside)
                        line.Segment(ax, ay, bx, by, PathColour(range, v ? v[a] : 0, panel));
                    a = b;
                    ax = bx;
                    ay = by;
                }
            }
            line.Close();
        }
        lines.panelFirst.push_back(lines.pieces.size());
    }
    return lines;
}

std::string Metres(double unit) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", unit);
    return buf;
}

// Text centred on its height at (x, y).
void PrintAt(DrawSurface& s, double x, double y, const std::string& text) {
    s.CurrentX = x;
    s.CurrentY = y - s.TextHeight(text) / 2;
    s.Print(text);
}

}  // namespace

void TrackMap::Map_Paint() {
    ReDraw();
    if (links_ != nullptr) links_->UpdateRunAnimation();
}

void TrackMap::ChangeCheck(double W, double H) {
    const PositionCheck now = TakePositionCheck();
    if (now == view.change) return;
    view.change = now;
    view.CompressedIndex = CompressData();
    view.limits = FindTrackLimits();
    settings.ViewCentreX = (view.limits.MinX + view.limits.MaxX) / 2;
    settings.ViewCentreY = (view.limits.MinY + view.limits.MaxY) / 2;
    settings.ViewRotation = 0;
    settings.ViewScale = WholeTrackScale(view.limits, W, H);
    // Each panel follows its run by name.
    settings.AniRunNameTxt.resize(settings.RunToDisplay.size());
    for (size_t i = 0; i < settings.RunToDisplay.size(); ++i) {
        std::string& name = settings.AniRunNameTxt[i];
        if (!name.empty()) {
            const int32_t run = FindRunIndex(name);
            if (run >= 1) settings.RunToDisplay[i] = std::to_string(run);
        }
        const int32_t run = PanelRun(int(i));
        name = run >= 1 ? Store().RunInfo[run].Name : std::string();
    }
}

void TrackMap::MakeStrips(const ColourRange& range) {
    MapStrips& st = view.strips;
    st = MapStrips{};
    st.coded = range.coded;
    if (range.coded) {
        st.low = range.low;
        st.high = range.high;
        st.ScaleMin = FormToSD(range.low, 3);
        st.ScaleMax = FormToSD(range.high, 3);
    }
    // The scale bar: a round number of metres between 400 and 2000 twips.
    const double s = settings.ViewScale;
    double unit = 1, length = 1;
    while (length < 2000 && unit < 100000) {
        length = unit / s;
        unit *= 10;
    }
    unit /= 100;
    length = unit / s;
    if (length < 400)
        unit *= 5;
    else if (length < 1000)
        unit *= 2;
    length = unit / s;
    st.barUnit = unit;
    st.barLength = length;
    st.barShown = unit < 100000;
    if (st.barShown) st.ScaleLabel = "scale: " + Metres(unit) + "m";
}

void TrackMap::DrawColorScale(DrawSurface& strip) const {
    strip.Cls();
    if (!view.strips.coded) return;
    strip.DrawMode = DrawModes::CopyPen;
    strip.DrawWidth = 1;
    const double width = strip.ScaleWidth(), h = strip.ScaleHeight();
    const double whole = std::max(1.0, std::trunc(width));
    for (double x = 0; x <= width; x += 15) {
        int n = static_cast<int>(std::floor(x / whole * 600 + 2));
        strip.Line(x, 0, x, h, GraphColorGen2(n));
    }
}

void TrackMap::DrawMapScale(DrawSurface& strip) const {
    strip.Cls();
    if (!view.strips.barShown) return;
    strip.DrawMode = DrawModes::CopyPen;
    strip.DrawWidth = 1;
    const double l = view.strips.barLength;
    strip.Line(1000 - l / 2, 350, 1000 + l / 2, 350, kBlack);
    strip.Line(1000 - l / 2, 350, 1000 - l / 2, 200, kBlack);
    strip.Line(1000 + l / 2, 350, 1000 + l / 2, 200, kBlack);
}

void TrackMap::ReDraw() {
    LogDebug("track map redraw");
    if (view.optionsUp) {
        LogDebug("redraw aborted whilst track not in view!");
        return;
    }
    DrawSurface& s = map_;
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    ChangeCheck(W, H);
    settings.ViewScale = FindClip(0.01f, settings.ViewScale, 100.0f);
    const ColourRange range = ColourRangeOf(settings.MapColorVar);
    MakeStrips(range);

    s.Cls();
    s.DrawMode = DrawModes::CopyPen;
    s.DrawWidth = 1;
    s.FillStyle = FillStyles::Transparent;
    const MapTransform t = Transform();

    // The reference lap, grey and wide, thinned to every fiftieth point.
    const ReferenceLap& ref = RefLap();
    if (settings.ShowReferenceLap != 0 && ref.RefLapPoints >= 1 &&
        int32_t(ref.RefLapX.size()) > ref.RefLapPoints) {
        std::vector<double> xs, ys;
        auto add = [&](int32_t j) {
            xs.push_back(t.XPos2Screen(ref.RefLapX[size_t(j)], ref.RefLapY[size_t(j)]));
            ys.push_back(t.YPos2Screen(ref.RefLapX[size_t(j)], ref.RefLapY[size_t(j)]));
        };
        for (int32_t j = 1; j <= ref.RefLapPoints; j += 50) add(j);
        if ((ref.RefLapPoints - 1) % 50 != 0) add(ref.RefLapPoints);
        s.DrawWidth = 5;
        s.Polyline(xs.data(), ys.data(), int(xs.size()), Rgb(178, 178, 178));
        s.DrawWidth = 1;
    }

    DrawPaths(s, t, range);
    if (settings.ShowVariable != 0) DrawTicks(s, t);
    DrawMarkers(s, t);
    DrawSectionNames(s, t);
    SetScrollBars();
    view.MapDrawnFlag = 0;
}

void TrackMap::DrawPaths(DrawSurface& s, const MapTransform& t, const ColourRange& range) {
    const RunArray& d = Store().RunData;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    if (cx >= d.Columns() || cy >= d.Columns()) return;
    const float* x = d.Column(cx).data();
    const float* y = d.Column(cy).data();
    const float* v = range.coded ? d.Column(range.column).data() : nullptr;
    const PathLines& lines = PathLinesOf(*this, t, range, x, y, v);
    for (int panel = 0; panel < Panels(); ++panel) {
        const int32_t run = PanelRun(panel);
        if (run < 1) continue;
        if (Store().RunInfo[run].RunLength <= 10) continue;
        for (size_t p = lines.panelFirst[size_t(panel)]; p < lines.panelFirst[size_t(panel) + 1];
             ++p) {
            const PathPiece& piece = lines.pieces[p];
            s.Polyline(lines.xs.data() + piece.first, lines.ys.data() + piece.first, piece.count,
                       piece.colour);
        }
        // The stretches the measurement table highlights, row by row.
        ColouredLine line(s);
        for (const HighlightSection& h : HighlightSections()) {
            if (!h.active || h.run != run) continue;
            const int32_t first = std::max(h.firstRow, 0), last = std::min(h.lastRow, d.UpperRow());
            if (first >= last) continue;
            s.DrawWidth = 5;
            for (int32_t i = first; i < last; ++i)
                line.Segment(t.XPos2Screen(x[i], y[i]), t.YPos2Screen(x[i], y[i]),
                             t.XPos2Screen(x[i + 1], y[i + 1]), t.YPos2Screen(x[i + 1], y[i + 1]),
                             PathColour(range, v ? v[i] : 0, panel));
            line.Flush();
            s.DrawWidth = 1;
        }
    }
}

void TrackMap::DrawTicks(DrawSurface& s, const MapTransform& t) {
    const RunArray& d = Store().RunData;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    const int32_t column = FindVarIndex(settings.VarToAdd);
    if (cx >= d.Columns() || cy >= d.Columns() || column < 0 || column >= d.Columns()) return;
    s.FontName = "Microsoft Sans Serif";
    s.FontSize = 7;
    s.FontBold = false;
    s.FillStyle = FillStyles::Transparent;
    for (int panel = 0; panel < Panels(); ++panel) {
        const int32_t run = PanelRun(panel);
        if (run < 1) continue;
        const RunRecord& r = Store().RunInfo[run];
        if (r.RunLength < 1) continue;
        const int ticks =
            std::clamp(static_cast<int>(std::trunc(GetVal(settings.NumOfTicks))), 2, 100);
        const int32_t step = std::clamp(
            static_cast<int32_t>(std::lround(double(r.RunLength) / ticks)), 1, r.RunLength);
        const uint32_t c = VqColorIndex(panel, false);
        s.ForeColor = c;
        for (int32_t i = r.RunStart; i <= std::min(r.RunEnd, d.UpperRow()); i += step) {
            const double px = t.XPos2Screen(d(i, cx), d(i, cy));
            const double py = t.YPos2Screen(d(i, cx), d(i, cy));
            s.Circle(px, py, 40, c);
            s.CurrentX = px;
            s.CurrentY = py;
            s.Print(FormToSD(d(i, column), 3));
        }
    }
    s.ForeColor = kBlack;
}

void TrackMap::DrawMarkers(DrawSurface& s, const MapTransform& t) {
    s.FontName = "Microsoft Sans Serif";
    s.FontSize = 7;
    s.FontBold = false;
    for (int i = 1; i < kTrackMarkerCount; ++i) {
        const TrackMarker& m = Markers().Entries[size_t(i)];
        if (m.Name.empty()) continue;
        s.FillColor = kGreen;
        s.FillStyle = FillStyles::Solid;
        s.DrawWidth = 1;
        const double x1 = t.XPos2Screen(m.X1, m.Y1), y1 = t.YPos2Screen(m.X1, m.Y1);
        const double x2 = t.XPos2Screen(m.X2, m.Y2), y2 = t.YPos2Screen(m.X2, m.Y2);
        const double a = std::atan2(y2 - y1, x2 - x1);
        const double ex = 100 * std::cos(a), ey = 100 * std::sin(a);
        s.Line(x1 - ex, y1 - ey, x2 + ex, y2 + ey, kGreen);
        s.Circle(x1 - ex, y1 - ey, 80, kGreen);
        s.Circle(x2 + ex, y2 + ey, 80, kGreen);
        s.FillStyle = FillStyles::Transparent;
        s.ForeColor = kBlack;
        // The name beside the first end's disc.
        PrintAt(s, x1 - ex + 120, y1 - ey, m.Name);
    }
}

void TrackMap::DrawSectionNames(DrawSurface& s, const MapTransform& t) {
    const int lap = CheckForLapMarker();
    if (lap < 1 || Store().RunCount < 1) return;
    const std::vector<int32_t>& c = MarkerCrossings(lap, 1);
    if (c.size() <= 2) return;
    const int32_t time = ColumnOf(slot::Time);
    double best = 1e20;
    int32_t lapStart = 0, lapEnd = 0;
    for (size_t k = 1; k < c.size(); ++k) {
        const double dt = double(RunData(c[k], time)) - RunData(c[k - 1], time);
        if (dt < best) {
            best = dt;
            lapStart = c[k - 1];
            lapEnd = c[k];
        }
    }
    auto inLap = [&](const std::string& name) -> int32_t {
        const int index = FindTrackMarkerIndex(name);
        for (int32_t row : MarkerCrossings(index, 1))
            if (row >= lapStart && row <= lapEnd) return row;
        return -1;
    };
    const int32_t dist = ColumnOf(slot::DistanceKm);
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    s.ForeColor = kBlack;
    for (int r = kFirstSectorRow; r <= kLastSectorRow; ++r) {
        const MeasurementRow& row = Measurements().Rows[size_t(r)];
        if (row.Mode.empty()) continue;
        const int32_t a = inLap(row.StartMarker), b = inLap(row.EndMarker);
        if (a < 0 || b < 0) continue;
        const float mid = (RunData(a, dist) + RunData(b, dist)) / 2;
        const int32_t at = FindIndexFromDistance(mid, Store().RunInfo[1].RunStart, 1);
        PrintAt(s, t.XPos2Screen(RunData(at, cx), RunData(at, cy)),
                t.YPos2Screen(RunData(at, cx), RunData(at, cy)), row.Mode);
    }
}

}  // namespace tl
