// The bar chart (frmHistoGraph) without its window: how the samples of one
// variable spread over equal bins, for one run or for up to five runs or
// conditions at once, drawn as frequency bars or lines.
//
// BarChartSettings is what the user sets on the "Setup" and "Options" tabs
// (and what a session file keeps, in the order of its fields here);
// CalcFrequency derives the bin edges and counts from it, ReDraw paints them
// on any DrawSurface (the window's `GraphBox`, a file, the printed page).
// The form's widgets forward their events to the *_Click and *_Change
// functions below and repaint after them.
//
// Check boxes are 16-bit 0 or 1 as the form keeps them; an `Auto...` box
// ticked means the typed limit is used. Texts stay as typed and are read
// with GetVal at each use.
//
// Counting walks the chosen run from its first row. Once a sample has found
// its bin, the rows that follow are tested against that bin alone until one
// leaves it (or the condition): samples that lie together share a bin, so
// the search is skipped for most rows. That walk is bounded by the end of
// RunData, not of the run: a stretch of samples in one bin that runs over
// the run's last row goes on counting the next run's rows until it leaves
// the bin. This is how the chart has always counted, and it stays so.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/draw_surface.h"

namespace tl {

// Five runs or conditions at once; at most 100 bins.
inline constexpr int kBarChartAxes = 5;
inline constexpr int kBarChartMaxBins = 100;
// The text of a list before a variable is chosen, and of the reserved
// strings of a saved chart.
inline constexpr const char* kSelectVariable = "Select Variable";
inline constexpr const char* kBlankData = "Blank Data";

struct BarChartAxisSettings {
    int16_t AxisEnabled = 0;
    std::string AxisRun = "1";
    std::string ConstrainMin;
    std::string ConstrainMax;
    std::string AxisTitle;  // "Axis Title (optional)"
};

struct BarChartSettings {
    std::string DisplayVar = kSelectVariable;  // "Variable To Display"
    int16_t AutoMin = 0;
    std::string DispVarMin;  // "Minimum"
    int16_t AutoMax = 0;
    std::string DispVarMax;                      // "Maximum"
    std::string ConstrainVar = kSelectVariable;  // the variable of the condition
    int16_t Constrain = 0;                       // "Only Count If"
    int16_t ShowGrid = 1;                        // "Show Grid"
    int16_t MultiBar = 0;                        // "Show Multiple Bar Charts"
    int16_t PercentFreq = 1;                     // "Show Results as a Percentage"
    int16_t ShowBars = 1;                        // "Show Bars"
    int16_t ShowLines = 0;                       // "Show Lines"
    std::string BinCount = "10";                 // "Number of Bars"
    std::string MainTitle;                       // "Main Title (optional)"
    // The form's place in twips and its state (0 normal, 1 minimised, 2
    // maximised), kept for sessions.
    float WindowLeft = 0, WindowTop = 0, WindowWidth = 0, WindowHeight = 0;
    int16_t WindowState = 0;
    std::array<std::string, 6> Reserved{kBlankData, kBlankData, kBlankData,
                                        kBlankData, kBlankData, kBlankData};
    std::array<BarChartAxisSettings, kBarChartAxes> Axes;
};

// The tabs of `ChartTab`.
enum class ChartTabs { BarChart = 0, Setup = 1, Options = 2 };

class BarChart {
  public:
    BarChartSettings settings;
    int32_t GraphNumber = 0;
    // Derived by CalcFrequency. BinEdges 1 to Bins + 1 and each axis's
    // BinCounts 1 to Bins (index 0 held, not used).
    int32_t Bins = 1;
    std::vector<float> BinEdges;
    std::array<std::vector<float>, kBarChartAxes> BinCounts;
    float DispMin = 0, DispMax = 0;
    float PeakCount = 1;  // the tallest value, 1 when all are 0
    std::string DispName;
    // The name of each axis's run, as `AxisRunName` shows it.
    std::array<std::string, kBarChartAxes> AxisRunName;

    // Form_Load: the defaults, `AxisRun` "1" on every axis, BinEdges small.
    void Load(int32_t graphNumber);
    // "Bar Chart " and the number, or MainTitle when that is set.
    std::string Caption() const;
    static std::string TabCaption(ChartTabs tab);

    // All counts, between the wait form's "Calculating Bar Chart
    // Frequencies".
    void CalcFrequency();
    // The bin of a value: the first i from 1 up with BinEdges(i) <= v <=
    // BinEdges(i + 1), so that a value on an edge falls in the lower bin; 0
    // when it lies outside every bin.
    int32_t FindBin(float v) const;
    // Whether axis k is counted and drawn: axis 0 alone with MultiBar off,
    // else every enabled axis.
    bool AxisCounted(int k) const;

    // ChartTab_Click: the "Bar Chart" tab runs CalcFrequency and returns true
    // (the window hides the frames, shows `GraphBox` and repaints); "Setup"
    // and "Options" return false (their frame shown, `GraphBox` hidden).
    bool ChartTab_Click(ChartTabs tab);
    // MultiBar_Click: `HideMultipleAxis` covers the axes 1 to 4 while
    // MultiBar is clear.
    bool HideMultipleAxisVisible() const { return settings.MultiBar == 0; }
    // At least one of bars and lines stays on: clearing the last ticks the
    // other again.
    void ShowBars_Click();
    void ShowLines_Click();
    // Typing a limit ticks its box.
    void DispVarMin_Change() { settings.AutoMin = 1; }
    void DispVarMax_Change() { settings.AutoMax = 1; }
    void ConstrainMin_Change() { settings.Constrain = 1; }
    void ConstrainMax_Change() { settings.Constrain = 1; }
    // Keeps the typed run legal, wrapping: above RunCount it becomes "1",
    // below 1 RunCount; the run's name goes to AxisRunName.
    void AxisRun_Change(int axis);
    // The lists of `DisplayVar` and `ConstrainVar` when they are opened:
    // every enabled variable.
    static std::vector<std::string> VariableNames();

    // The legend of an axis with MultiBar on: its AxisTitle when set,
    // otherwise the run's name and, with the condition on, ", " and the
    // condition ("Lateral G 0.5 to 2").
    std::string LegendText(int axis) const;

    // The text the copy to the clipboard puts there: a heading row ("From",
    // "To" and the legend of each counted axis, or DispName with MultiBar
    // off), then a row per bin with its two edges and each counted axis's
    // value; tab-separated, CR LF rows.
    std::string ClipboardText() const;
};

// The picture on any surface. An axis whose AxisTitle is empty gets its
// legend written there (the run's name and the condition), as the chart
// always did, so that the title stays with the chart when it is saved.
void ReDraw(BarChart& chart, DrawSurface& s);
// Form_Paint's picture: the surface cleared, then ReDraw.
void GraphBox_Paint(BarChart& chart, DrawSurface& s);

}  // namespace tl
