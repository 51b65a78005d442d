// The data side of frmGraphXY, the program's general plot: up to five Y
// variables, each from a run of its own against an X variable of that run.
//
// GraphSettings is what the user sets on the form's tabs (and what a session
// file keeps); GraphAxis is what ReGenerateGraph derives from it for each
// slot: the displayed ranges with their rounding, the titles, the tick
// counts. DataArray holds the decimated points the drawing reads, MarkerArray
// the track marker crossings of each slot. The zoom ring keeps 21 levels of
// the four ranges. The form's widgets only forward to this model; drawing is
// graph_paint.h.
//
// Check boxes are 16-bit 0 or 1 as the form keeps them, and their names are
// the opposite of their sense: a ticked AutoMinY means the typed minimum is
// used. Texts stay as typed; numbers are read with GetVal at each use.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tl {

inline constexpr int kGraphSlots = 5;
// The end of a slot's list in MarkerArray, and the value a gap row holds.
inline constexpr float kGraphMarkerEnd = 1e20f;
inline constexpr float kGraphGap = -1e20f;
inline constexpr int kGraphMarkerLimit = 25000;
inline constexpr int kZoomLevels = 21;

struct GraphSlotSettings {
    std::string SelYAxis = "Select Variable";
    int16_t ActivateYAxis = 0;
    std::string MinYAxis;
    int16_t AutoMinY = 0;
    std::string MaxYAxis;
    int16_t AutoMaxY = 0;
    std::string LimitVar;
    int16_t DisplayIf = 0;
    std::string LimitVarMin;
    std::string LimitVarMax;
    std::string AxisRun = "1";
    std::string SelXAxis;  // the form's load puts the name of slot 1 here
    std::string MinXAxis;
    int16_t AutoMinX = 0;
    std::string MaxXAxis;
    int16_t AutoMaxX = 0;
    std::string AxisTitle;
    int16_t ZeroBaseXAxis = 0;
};

struct GraphSettings {
    int16_t MultipleXAxis = 0;
    int16_t LimitVariables = 0;
    int16_t JoinPoints = 1;
    int16_t ShowGrid = 1;
    int16_t DispCircGrid = 0;
    int16_t RealTimeUpdate = 1;
    int16_t FastPlot = 1;
    std::string MaximumPoints = "2000";
    std::string MainTitle;
    // The form's place in twips and its state (0 normal, 1 minimised, 2
    // maximised), kept for sessions.
    float WindowLeft = 0, WindowTop = 0, WindowWidth = 0, WindowHeight = 0;
    int16_t WindowState = 0;
    int16_t SelectMultiNearestChk = 0;
    int16_t DispTrackMarkers = 0;
    std::array<GraphSlotSettings, kGraphSlots> Slots;
};

struct GraphAxis {
    std::string XTitle;
    std::string YTitle;
    float XMin = 0, XMax = 0;
    int32_t XTicks = 11;
    float YMin = 0, YMax = 0;
    int32_t YTicks = 11;
    int32_t AxisColour = 0;
    int32_t PointCount = 0;
};

// The points of one slot, 1 to PointLimit (index 0 is held but not used):
// X, Y and the RunData row the point came from.
struct GraphPoints {
    std::vector<float> X, Y, Row;
};
// The marker crossings of one slot, from index 1, closed by a point of
// kGraphMarkerEnd.
struct GraphMarkers {
    std::vector<float> X, Y;
};

// A slot's joined line as the last paint drew it (graph_paint.cpp makes and
// reads it): the points in twips with NaN breaks, and what they were made
// from (the data generation, the slot's ranges and count, the surface's
// geometry), so that a repaint of unchanged data draws them again without
// going through every point.
struct GraphLineCache {
    std::array<double, 12> key{};
    std::vector<double> x, y;
};

struct ZoomRecord {
    float XMin = 0, XMax = 0, YMin = 0, YMax = 0;
};

class GraphModel {
  public:
    GraphSettings settings;
    std::array<GraphAxis, kGraphSlots> axis;
    std::array<GraphPoints, kGraphSlots> data;
    std::array<GraphMarkers, kGraphSlots> markers;
    std::array<std::string, kGraphSlots> AxisRunName;
    int32_t GraphNumber = 0;
    int32_t PointLimit = 0;
    bool ZoomWindowActive = false;
    // Counts the loads of DataArray and MarkerArray: LoadDataArray adds one.
    uint64_t DataGeneration = 0;
    // Filled by the paint; never part of the graph's state.
    mutable std::array<GraphLineCache, kGraphSlots> lineCache;

    // Form_Load: the defaults of every slot, the ring cleared, the "Graph"
    // tab up.
    void Load(int32_t graphNumber);
    // "Graph " and the number, or MainTitle when that is set.
    std::string Caption() const;
    bool SlotActive(int slot) const { return settings.Slots[slot].ActivateYAxis != 0; }
    int ActiveSlotCount() const;

    // The one entry that brings the data up to date (the paint follows in
    // the widget): MultipleXAxis_Click, CalcMinMaxs of every active slot,
    // LoadDataArray, between the wait form's "Re-Generating Graph".
    void ReGenerateGraph();
    void CalcMinMaxs(int slot);
    void LoadDataArray();

    // With MultipleXAxis off, slots 1 to 4 take the X fields of slot 0.
    void MultipleXAxis_Click();
    // Keeps the typed run number legal: above RunCount it becomes "1", below
    // 1 it becomes RunCount (the up-down control wraps); the run's name goes
    // to AxisRunName. For slot 0 the X fields are slaved again.
    void AxisRun_Change(int slot);
    // The run of a slot as CalcMinMaxs and LoadDataArray take it: rounded
    // half to even, held within 1 to RunCount, written back.
    int32_t LegalRun(int slot);
    // On a change to the "Setup" or "Options" tab: each slot looks its run up
    // by name, so that it follows the run across deletions of others.
    void FollowRunsByName();
    // The "Graph" tab: the X fields of slot 0 copied when MultipleXAxis is
    // off, the ring cleared, ReGenerateGraph.
    void ShowGraphTab();

    // 21 X ticks when the box is wider than 14000 twips, else 11; 21 Y ticks
    // when it is taller than 8000, else 11.
    void SetTickCounts(double widthTwips, double heightTwips);

    // The end of a drag with the zoom window, on a surface of W x H twips.
    // Returns false when it gave up on a span below 0.0001 (no redraw);
    // true after ReGenerateGraph.
    bool AutoSetMinsMaxs(double dragStartX, double dragStartY, double dragX, double dragY, double W,
                         double H);

    void RecordZoomLevels();
    void GoBackZoomLevel();
    void ClearZoomLevels();
    int32_t ZoomCurrent() const { return zoomCurrent_; }
    int32_t ZoomOldest() const { return zoomOldest_; }

    // The toolbar. ZoomBtn 1 only arms the zoom window (ZoomWindowActive).
    void ZoomBtn_Click(int index);
    void PanBtn_Click(int index);
    static std::string ZoomBtnToolTip(int index);
    static std::string PanBtnToolTip(int index);

    // "Reset": clears the boxes and conditions and empties the typed limits
    // of all five slots; no regeneration.
    void ClearMinsMaxs_Click();
    // The setup table's small rules.
    void MinYAxis_Click(int slot) { settings.Slots[slot].AutoMinY = 1; }
    void MaxYAxis_Click(int slot) { settings.Slots[slot].AutoMaxY = 1; }
    void MinXAxis_Click(int slot);
    void MaxXAxis_Click(int slot);
    void SelYAxis_Click(int slot) { settings.Slots[slot].ActivateYAxis = 1; }
    // The names a drop-down of variables offers: every enabled slot 1 to 201.
    static std::vector<std::string> VariableNames();

    // The text the copy to the clipboard puts there (Ctrl+C on the graph):
    // rows 2 to PointLimit, a pair of columns per slot, headed by the titles.
    std::string ClipboardText() const;

  private:
    std::array<std::array<ZoomRecord, kGraphSlots>, kZoomLevels> zoomHistory_{};
    int32_t zoomCurrent_ = 0;
    int32_t zoomOldest_ = 0;
};

// The nice span and range of CalcMinMaxs on one axis, exposed for tests:
// min and max as found (or typed), and the two boxes (ticked: typed).
struct AxisRange {
    float min = 0, max = 0;
};
AxisRange NiceAxisRange(float min, float max, bool minTyped, bool maxTyped);

}  // namespace tl
