// The XY graph's picture on any DrawSurface: the window's graph box, a PNG,
// SVG or PDF file and the printed page all come through Graphbox_Paint.
//
// All lengths are twips; W and H are the surface's ScaleWidth and
// ScaleHeight. Each Y axis owns a strip of 650 at the left, each X axis a
// strip of 500 at the bottom (one strip when the slots share their X axis).
// The plot runs from x = left to 0.95 W and from y = 0.05 H to H - bottom.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/draw_surface.h"
#include "views/graph_model.h"

namespace tl {

struct GraphFrame {
    double W = 0, H = 0;
    double left = 0, bottom = 0;
    // World to surface of a slot's ranges.
    double X(double v, const GraphAxis& a) const {
        return left + (v - a.XMin) / (a.XMax - a.XMin) * (0.95 * W - left);
    }
    double Y(double v, const GraphAxis& a) const {
        return 0.05 * H + (1 - (v - a.YMin) / (a.YMax - a.YMin)) * (H - bottom - 0.05 * H);
    }
};

// left = 650 x active slots; bottom = 500 x active slots with MultipleXAxis,
// else 500.
GraphFrame FrameOf(const GraphModel& g, const DrawSurface& s);

// How a slot's joined line is drawn: Envelope (what the views use) draws
// the per-column envelope of SlotLine, the same pixels as Full, the polyline
// through every inside point.
enum class LineDetail { Envelope, Full };

// The whole picture: grids, each active slot's axes and data, the title.
void Graphbox_Paint(const GraphModel& g, DrawSurface& s);
void Graphbox_Paint(const GraphModel& g, DrawSurface& s, LineDetail detail);

void DrawGrid(const GraphModel& g, double left, double bottom, DrawSurface& s);
void DrawCircularGrid(const GraphModel& g, double left, double bottom, DrawSurface& s);
void DrawXAxis(double left, double bottom, double min, double max, int32_t ticks,
               const std::string& title, int colourIndex, DrawSurface& s);
void DrawYAxis(double x, double bottom, double min, double max, int32_t ticks,
               const std::string& title, int colourIndex, DrawSurface& s);
void DrawEllipse(double cx, double cy, double rx, double ry, double left, double bottom,
                 DrawSurface& s);
void DrawData(const GraphModel& g, int slot, double left, double bottom, DrawSurface& s,
              LineDetail detail = LineDetail::Envelope);

// The points a slot's joined line is drawn through: runs of consecutive
// inside points, a point outside the ranges breaking the line; each run is
// closed by a NaN pair.
struct GraphPolyline {
    std::vector<double> x, y;
};
GraphPolyline JoinedLine(const GraphModel& g, int slot, const GraphFrame& f);

// The per-pixel-column envelope of JoinedLine on a surface with pixel
// columns: within each run of inside points, the points falling in one
// device column (DeviceX) are reduced to the first, the top, the foot and
// the last of them, in that order, and the last joins the next column's
// first. The lines between points of one column all stand straight
// down that column, so the envelope gives the very pixels of the full line,
// whatever the pen's width: a 1-pixel pen at 96 dpi, its 2 pixels at 192.
// A point is kept once where it is more than one of the four.
GraphPolyline ColumnEnvelope(const GraphModel& g, int slot, const GraphFrame& f,
                             const DrawSurface& s);

// What DrawData draws a slot's joined line through on a surface with pixel
// columns: the envelope when the slot has more inside points than the plot
// has columns, else JoinedLine. Kept in g.lineCache and made again only when
// the data (DataGeneration), the slot's ranges or count, or the surface's
// size or resolution change. Vector surfaces (files, the printer) have no
// columns: DrawData draws every point there and keeps nothing.
const GraphLineCache& SlotLine(const GraphModel& g, int slot, const GraphFrame& f,
                               const DrawSurface& s);

// Draws the runs of a GraphPolyline, each as one joined line.
void DrawPolyline(const GraphPolyline& line, uint32_t colour, DrawSurface& s);
void DrawPolyline(const std::vector<double>& x, const std::vector<double>& y, uint32_t colour,
                  DrawSurface& s);

// The nearest-point search of a click, on slot's points: with multi off the
// first row from 1 up whose X and the next one's lie either side of wx (or
// equal it), else PointCount; with multi on the point nearest in the plane,
// each axis weighted by its range squared (at least 0.001), the lowest row on
// a tie. -1 when the slot has fewer than 3 points.
int32_t NearestRow(const GraphModel& g, int slot, double wx, double wy, bool multi);

}  // namespace tl
