// frmPerformanceTable ("Calculated Performance Table") without its widgets:
// for a time window of one run, the best time (AccelGrid) and the best
// distance (DistanceGrid) between every pair of speeds in steps of 10, the
// assembly of long intervals from the best short ones, the summary text from
// the SummaryPerformance.cfg template, and the clipboard text of a grid.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tl {

// The form's option buttons, kept under MphPerformance, KphPerformance,
// MetersPerformance, FeetPerformance, AssembledPerformance and
// NoAssembledPerformance in the options file (True is -1).
struct PerformanceOptions {
    bool mph = false;             // MphOption, else KphOption
    bool feet = false;            // FeetOption, else MetersOption
    bool assembled = false;       // AssembledDataOption, else NoAssembledDataOption
    std::string trigger = "0.2";  // TriggerGTxt, g
};
// Read on load: with neither button of a pair stored, kph, metres and the
// timings taken directly from the data.
PerformanceOptions LoadPerformanceOptions();
// Saved on unload: each pair's two keys.
void SavePerformanceOptions(const PerformanceOptions& options);

// Form load: the message for a missing speed or distance ("Neither speed in
// Kph or Mph is available for this analysis", "Distance is not available in
// meters or feet for this analysis"); true when both are there.
bool CheckPerformanceVariables();

// A grid as the form shows it: row 0 and column 0 head the end and start
// speeds; accelerating cells are written in blue.
inline constexpr uint32_t kAcceleratingCellColour = 0xFF0000;
struct PerformanceGrid {
    int rows = 0;
    int cols = 0;
    std::vector<std::string> text;
    std::vector<uint32_t> fore;
    std::string& Text(int row, int col) { return text[static_cast<size_t>(row) * cols + col]; }
    const std::string& Text(int row, int col) const {
        return text[static_cast<size_t>(row) * cols + col];
    }
};

// The window's RunData rows from the two time texts (s from the run's
// start); ok false after "The end time must be greater than the start time"
// or "The times you have entered are out of range for this run".
struct PerformanceWindow {
    int32_t first = 0;
    int32_t last = 0;
    bool ok = false;
};
PerformanceWindow PerformanceRows(int32_t run, const std::string& startTime,
                                  const std::string& endTime);

// GenPerfGrid: column is the RunData column measured (time for AccelGrid,
// distance for DistanceGrid), first and last the window's rows. Each cell is
// the least change of column from a crossing of the start speed to the next
// crossing of the end speed, over every pass in the window ("0.00"; "na"
// when none; "==" on the diagonal). From 0 the pass starts at a launch (speed
// at most 5 and the longitudinal acceleration reaching the trigger); to 0 it
// ends when the acceleration falls back to the trigger at most 5.
PerformanceGrid GenPerfGrid(int32_t column, int32_t first, int32_t last,
                            const PerformanceOptions& options);

// The assembly of AssembledDataOption, on a grid GenPerfGrid made: every
// cell two steps or more from the diagonal becomes the sum of the cell one
// step nearer and the 10-wide interval that closes the gap; "na" in either
// makes it "na".
void AssemblePerformanceGrid(PerformanceGrid& grid);

// GenerateSummaryText: the template's lines with each tag <letter,row,column>
// replaced by the cell of AccelGrid (letter "a") or DistanceGrid (any other),
// "na" for a cell outside the grid; each line closed by CR LF. Without the
// file: "SummaryPerformance.cfg cannot be found" and an empty text.
std::string GenerateSummaryText(const std::string& templatePath, const PerformanceGrid& accel,
                                const PerformanceGrid& distance);
// The same for the template's lines in memory.
std::string SummaryFromTemplate(const std::vector<std::string>& lines, const PerformanceGrid& accel,
                                const PerformanceGrid& distance);

// The whole table of a run as the tab change computes it: both grids and the
// summary from Paths().SummaryPerformanceCfgPath. ok false when the window
// was refused.
struct PerformanceTables {
    PerformanceGrid accel;
    PerformanceGrid distance;
    std::string summary;
    bool ok = false;
};
PerformanceTables CalculatePerformance(int32_t run, const std::string& startTime,
                                       const std::string& endTime,
                                       const PerformanceOptions& options);

// CopyToExcelBtn: the grid's cells separated by tab, each row closed by CR LF.
std::string PerformanceGridText(const PerformanceGrid& grid);

}  // namespace tl
