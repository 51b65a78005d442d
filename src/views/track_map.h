// The track map (frmTrackMap) without its window: the paths of up to ten
// runs from Position X and Y (slots 21 and 22), coloured by a chosen
// variable, over the grey reference lap, with the track markers, the section
// names, the highlighted stretches and the variable ticks; its rotation, zoom
// and scrolling; the adding and deleting of track markers with the mouse; the
// nearest-point cursor that moves the other views; and the map's part of a
// playback step (the vehicle dots and g vectors).
//
// World units are metres, the surface's are twips (y down). The view turns
// the world by ViewRotation and shows the rotated point (ViewCentreX,
// ViewCentreY) at the middle of the surface, ViewScale metres to a twip.
//
// How a window uses it: it owns a RasterSurface for `Map` (retained: the
// widget shows its image after every call below), creates a TrackMap over it
// with a TrackMapLinks of its own, and forwards its buttons (ZoomIn_Click,
// ...), mouse (Map_MouseDown/Move/Up, Map_DblClick), key (Form_KeyPress) and
// resize (Resize) here, then shows the image again. After each call it
// applies `view.pointer` to the widget and sets its scroll bars from
// `view.scroll` (it calls HScroll_Change/VScroll_Change when the user moves
// them). The colour strip `ColorScale` and the scale bar `MapScale` are two
// small surfaces of their own: ReDraw leaves their description in
// `view.strips` (with the texts of `ScaleMin`, `ScaleMax` and
// `ScaleLabel`), and DrawColorScale / DrawMapScale paint them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/draw_surface.h"

namespace tl {

inline constexpr int32_t kCompressedEnd = 2000000000;
inline constexpr int kMapPanels = 10;
inline constexpr const char* kNoColorCoding = "No Color Coding";

// --- what the track map and the mini map share ---

// The world-to-surface transform of a map of W x H twips.
struct MapTransform {
    double W = 0, H = 0;
    float scale = 100, rotation = 0, centreX = 0, centreY = 0;
    // Clamped to -W ... 5 W and -H ... 5 H.
    double XPos2Screen(double x, double y) const;
    double YPos2Screen(double x, double y) const;
    // Without the clamp (the printer's forms, and what the clamp cuts).
    double XUnclamped(double x, double y) const;
    double YUnclamped(double x, double y) const;
    double Screen2XPos(double sx, double sy) const;
    double Screen2YPos(double sx, double sy) const;
};

struct TrackLimits {
    float MinX = 0, MaxX = 0, MinY = 0, MaxY = 0;
};
// Extremes of Position X and Y over rows first to last (from 1e20 and
// -1e20); an extent under 200 m becomes 200 m about its centre.
TrackLimits PositionLimits(int32_t first, int32_t last);
// Every row of RunData, all runs.
TrackLimits FindTrackLimits();
// The scale that shows the limits whole on W x H, clipped to 0.01 ... 100.
float WholeTrackScale(const TrackLimits& l, double W, double H);

// The change check of the position data: the whole parts of Position X and Y
// summed over every fiftieth row, and the row count.
struct PositionCheck {
    double sum = -1;
    int32_t rows = -1;
    bool operator==(const PositionCheck&) const = default;
};
PositionCheck TakePositionCheck();

// CompressData: for each run RunStart, then the rows at which a chord from
// the last kept row would pass more than 0.5 m from the path's point halfway
// along, then RunEnd; the whole ended by kCompressedEnd. Shows the wait form
// "Compressing Graph Data".
std::vector<int32_t> CompressData();
// The first entry of the index at or after row (binary search).
size_t FirstCompressedEntry(const std::vector<int32_t>& index, int32_t row);

// The colour range of a variable over all rows: lowest and highest absolute
// value. The scan is kept, keyed by the column, the row count, the column's
// storage and a sample of every fiftieth value, so that a redraw of unchanged
// data does not read every row again.
struct ColourRange {
    bool coded = false;  // false: "No Color Coding" or the *No Data* column
    int32_t column = 0;
    float low = 0, high = 0;
};
ColourRange ColourRangeOf(const std::string& varName);
// The segment colour of a value: the panel's colour when not coded or when
// high equals low, else GraphColorGen2(Int((|v| - low) / (high - low) x 600
// + 2)).
uint32_t PathColour(const ColourRange& r, float value, int panel);

// HighlightSections: five stretches the measurement table asks the map to
// draw wide (rows of RunData).
struct HighlightSection {
    bool active = false;
    int32_t run = 0;
    int32_t firstRow = 0;
    int32_t lastRow = 0;
};
std::array<HighlightSection, 5>& HighlightSections();

// --- the track map ---

// What a session file keeps, in its order (the padding is the writer's).
struct TrackMapSettings {
    std::string VarToAdd = "Select Variable";
    int16_t ShowVariable = 0;
    std::string NumOfTicks = "10";
    std::string MapColorVar = kNoColorCoding;
    int16_t ShowGVectors = 0;
    int16_t ReverseGVectors = 0;
    int16_t ShowReferenceLap = 1;
    int16_t AutoPan = 0;
    std::string RunsDisplayed = "1";
    std::array<std::string, 4> DashVar = {"Select Variable", "Select Variable", "Select Variable",
                                          "Select Variable"};
    int32_t RunsInUse = 1;
    // Run number of each panel as text, RunsInUse of them; the panel's run
    // name (AniRunNameTxt) is kept beside it so a panel follows its run.
    std::vector<std::string> RunToDisplay = {"1"};
    std::vector<std::string> AniRunNameTxt = {""};
    float ViewScale = 100, ViewRotation = 0, ViewCentreX = 0, ViewCentreY = 0;
    float WindowTop = 0, WindowLeft = 0, WindowWidth = 0, WindowHeight = 0;
    int16_t WindowState = 0;
};

enum class MapPointer { Default, Cross, Pointing };

// The views a map click or a playback step moves, which the shell implements
// over its open windows. The default does nothing: right for a map alone.
class TrackMapLinks {
  public:
    virtual ~TrackMapLinks() = default;
    // StopButton_Click of every panel: a press on the map stops playback.
    virtual void StopPlayback() {}
    // UpdateRunAnimation: the playback marks put back after a redraw.
    virtual void UpdateRunAnimation() {}
    // Each open graph's UpDateGraphAni(row, run, panel, 2).
    virtual void MoveGraphs(int32_t /*row*/, int32_t /*run*/, int /*panel*/) {}
    virtual bool MiniMapOpen() const { return false; }
    virtual void MoveMiniMap(int32_t /*row*/, int32_t /*run*/, int /*panel*/) {}
    virtual bool ValueTableOpen() const { return false; }
    // UpDateMultiVarTable(row, panel + 1, panels, panel).
    virtual void MoveValueTable(int32_t /*row*/, int /*panel*/, int /*panels*/) {}
    // The dialog "Enter details forthe new marker" (ProposeNewMarker,
    // AcceptNewMarkerName): the entry named, or -1 when cancelled.
    virtual int AskNewMarkerName() { return -1; }
};

// What the two strips beside the map show after a ReDraw.
struct MapStrips {
    bool coded = false;
    float low = 0, high = 0;
    std::string ScaleMin, ScaleMax;  // FormToSD(low/high, 3); empty uncoded
    bool barShown = false;
    double barUnit = 0;    // metres
    double barLength = 0;  // twips
    std::string ScaleLabel;
};

// The scroll bars in tenths of metres.
struct MapScrollBars {
    int32_t HMin = 0, HMax = 0, HValue = 0;
    int32_t VMin = 0, VMax = 0, VValue = 0;
};

struct TrackView {
    float PrintScale = 1;
    TrackLimits limits;
    std::vector<int32_t> CompressedIndex;
    PositionCheck change;
    float MaxAccel = 1;
    bool ZoomWindowMode = false, ZoomDragging = false, CursorDragging = false;
    bool MarkerDragging = false, AddMarkerMode = false, DeleteMarkerMode = false;
    float MapDragStartX = 0, MapDragStartY = 0, MapDragX = 0, MapDragY = 0;
    double LastMapWidth = 0, LastMapHeight = 0;
    MapPointer pointer = MapPointer::Default;
    MapStrips strips;
    MapScrollBars scroll;
    // "Options" is up: ReDraw and the playback step do nothing.
    bool optionsUp = false;
    // Playback marks per panel, in twips, as drawn.
    std::array<float, kMapPanels> LastMarkX{}, LastMarkY{};
    std::array<float, kMapPanels> LastLatX{}, LastLatY{}, LastLonX{}, LastLonY{};
    float GVectorScale = 0;
    // -1 while the dots stand on the map, 0 after a fresh ReDraw.
    int32_t MapDrawnFlag = 0;
    // The rows the last nearest-point cursor found, per panel (-1 none).
    std::array<int32_t, kMapPanels> nearestRows{};
};

class TrackMap {
  public:
    // The surface (the form's Map) and the links outlive this object; links
    // may be null. Form_Load: the message when positions are missing,
    // MaxAccel, ViewScale 100, the modes cleared.
    TrackMap(DrawSurface& map, TrackMapLinks* links = nullptr);

    TrackMapSettings settings;
    TrackView view;

    MapTransform Transform() const;
    double XPos2Screen(double x, double y) const { return Transform().XPos2Screen(x, y); }
    double YPos2Screen(double x, double y) const { return Transform().YPos2Screen(x, y); }
    double Screen2XPos(double sx, double sy) const { return Transform().Screen2XPos(sx, sy); }
    double Screen2YPos(double sx, double sy) const { return Transform().Screen2YPos(sx, sy); }
    // The printer's forms: PrintScale and the page, no clamp.
    MapTransform PrinterTransform(double pageW, double pageH) const;
    double XPos2Printer(double x, double y, double pageW, double pageH) const;
    double YPos2Printer(double x, double y, double pageW, double pageH) const;

    // The run of a panel (0 when the text names none).
    int32_t PanelRun(int panel) const;
    int Panels() const;

    // The whole picture, steps 1 to 13, on the map's surface.
    void ReDraw();
    void Map_Paint();
    void DrawColorScale(DrawSurface& strip) const;
    void DrawMapScale(DrawSurface& strip) const;

    // Navigation; each draws and puts the animation back.
    void ShowWholeTrack_Click();
    void ZoomIn_Click();
    void ZoomOut_Click();
    void RotateCW_Click();
    void RotateCCW_Click();
    // The dragged window (MapDragStart to MapDrag) becomes the view.
    void AutoSetMinsMaxs();
    void HScroll_Change(int32_t value);
    void VScroll_Change(int32_t value);
    // The surface has taken its new size: the picture keeps its size.
    void Resize();

    // The modes; each toggles, entering one leaves the others.
    void ZoomWindow_Click();
    void AddNewNode_Click();
    void DeleteNode_Click();
    // Escape (27) leaves every mode.
    void Form_KeyPress(int ascii);
    // Positions in twips; button 1 is the left.
    void Map_MouseDown(int button, double x, double y);
    void Map_MouseMove(int button, double x, double y);
    void Map_MouseUp(int button, double x, double y);
    void Map_DblClick();

    // XOR marks: each drawn twice leaves the picture as it was.
    void DrawBox();
    void DrawTimeBound();
    void HighlightNearestPointToCursor(bool show);
    // The cross of a click on a graph at a RunData row.
    void UpDateGraphAni(int32_t row, int colourIndex);

    // The map's part of UpdateRunAnimation: rows[i] is panel i's RunData row
    // (CurrentIndex + RunStart), panel0Playing whether panel 0 plays (for
    // AutoPan). Erases the last dots and vectors, pans, draws the new ones.
    void AnimateStep(const std::vector<int32_t>& rows, bool panel0Playing);

  private:
    void ChangeCheck(double W, double H);
    void DrawPaths(DrawSurface& s, const MapTransform& t, const ColourRange& range);
    void DrawTicks(DrawSurface& s, const MapTransform& t);
    void DrawMarkers(DrawSurface& s, const MapTransform& t);
    void DrawSectionNames(DrawSurface& s, const MapTransform& t);
    void MakeStrips(const ColourRange& range);
    void SetScrollBars();
    void SetPointer(MapPointer p) { view.pointer = p; }
    void LeaveModes();
    void DrawNow();  // ReDraw and UpdateRunAnimation
    void Cross(double x, double y, double arm, uint32_t colour);

    DrawSurface& map_;
    TrackMapLinks* links_;
    bool scrollReentry_ = false;
    double lastMouseX_ = 0, lastMouseY_ = 0;
    // Which panels' dot and vectors the last playback step drew.
    std::array<bool, kMapPanels> dotDrawn_{}, vectorsDrawn_{};
};

}  // namespace tl
