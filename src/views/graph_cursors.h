// The marks a user and playback put on a drawn XY graph, and the mouse and
// keyboard of its box: the rubber band of the zoom window, the free value
// read-out (Ctrl + drag), the nearest-point search that moves every other
// view, the playback cursor, and the copy to the clipboard.
//
// Every mark is drawn twice in XOR pen or invert: once to show, once to take
// away, so the picture is never repainted for a cursor. The read-out texts
// cannot be XORed; they are overprinted with the same text in white, which is
// why the show argument matters (1 draws, 0 erases). On a surface that cannot
// undo marks (a file, the printer) none of this draws.
//
// The graph does not know the other views. What a click moves elsewhere goes
// through GraphLinks, which the shell implements over the open windows (the
// track map, the other graphs, the value table, the mini map); the default
// does nothing, right for a graph alone.
#pragma once

#include <cstdint>
#include <vector>

#include "core/draw_surface.h"
#include "views/graph_model.h"
#include "views/graph_search.h"

namespace tl {

class GraphCursors;

// The views a graph moves and is moved with.
class GraphLinks {
  public:
    virtual ~GraphLinks() = default;
    virtual bool TrackMapOpen() const { return false; }
    // The track map's StopButton_Click: a press on a graph stops playback.
    virtual void StopPlayback() {}
    // The map's UpDateGraphAni(row, colourIndex): a cross at a RunData row.
    virtual void MoveTrackMap(int32_t /*row*/, int /*colourIndex*/) {}
    // UpDateGraphAni of every open graph other than `from`.
    virtual void MoveOtherGraphs(const GraphCursors* /*from*/, int32_t /*row*/, int32_t /*run*/,
                                 int /*colourIndex*/, int /*mode*/) {}
    virtual bool ValueTableOpen() const { return false; }
    virtual void MoveValueTable(int32_t /*row*/) {}
    virtual bool MiniMapOpen() const { return false; }
    virtual void MoveMiniMap(int32_t /*run*/, int32_t /*row*/) {}
    // After a paint while the track map is open: UpdateRunAnimation puts the
    // playback cursors back on the fresh picture (the graph's cursor-drawn
    // flag was cleared first).
    virtual void UpdateRunAnimation() {}
};

// Mouse buttons and shift states as the box reports them.
inline constexpr int kLeftButton = 1;
inline constexpr int kShiftMask = 1;
inline constexpr int kCtrlMask = 2;

class GraphCursors {
  public:
    // The model and surface are the form's and outlive this object; links may
    // be null.
    GraphCursors(GraphModel& model, DrawSurface& surface, GraphLinks* links = nullptr);

    // Graphbox_Paint on the form's surface and, with the track map open, the
    // playback cursor put back (CursorDrawn cleared first). Runs only while
    // the "Graph" tab is up (graphTabUp).
    void Paint();

    // The rubber band between DragStart and Drag, in invert.
    void DrawBox();
    void ShowGraphValue(int show);
    void ShowNearestValueAxis(int show);
    // The playback cursor at a RunData row of a run: mode 0 erases the texts,
    // 1 draws them, 2 draws the mark alone. Draw and erase are the same call.
    void UpDateGraphAni(int32_t row, int32_t run, int colourIndex, int mode);

    // GraphBox_MouseDown/Move/Up with the position in twips. Returns true
    // from MouseUp when the graph was regenerated (the end of a zoom drag),
    // so the widget shows the new picture.
    void MouseDown(int button, int shift, double x, double y);
    void MouseMove(int button, int shift, double x, double y);
    bool MouseUp(int button, int shift, double x, double y);
    // GraphBox_KeyPress: Ctrl+C (character 3) copies the points to the
    // clipboard. Returns true when the key was used.
    bool KeyPress(int ascii);

    // The rows a click found on the last ShowNearestValueAxis, per slot
    // (-1 where none), and the RunData row moved to: for tests and the
    // status line.
    const std::vector<int32_t>& NearestRows() const { return nearest_; }

    double DragStartX = 0, DragStartY = 0, DragX = 0, DragY = 0;
    bool ValueCursorActive = false;
    bool NearestCursorActive = false;
    // The XYGraphForms flag: the playback cursor stands on the picture.
    bool CursorDrawn = false;
    // Only while the "Graph" tab is up do paints and cursors draw.
    bool graphTabUp = true;

  private:
    // Plot fractions of the drag position, clamped to 0 ... 1.
    void Fractions(double& fx, double& fy) const;
    // The two read-outs of a slot: X at the right end of its X axis, Y over
    // its Y axis strip; white when show is not 1.
    void PrintReadOuts(int k, double wx, double wy, int colourIndex, int show);
    void CrossAndCircles(double x, double y, DrawModes mode, uint32_t colour);

    GraphModel& g_;
    DrawSurface& s_;
    GraphLinks* links_;
    std::vector<int32_t> nearest_;
    GraphPointIndex index_;
};

}  // namespace tl
