// The logic of the laps and sectors windows without their widgets: the rows
// of SectorDefinitionGrid and the lap marker list of FrmLapsSectors, the row
// frmAddSector writes, and the table of FrmLapAndSectorTimes with its cell
// selection (HighLightCells).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "results/measurement_table.h"
#include "views/lap_overlay.h"

namespace tl {

// One line of SectorDefinitionGrid: sector rows 90 to 100.
struct SectorLine {
    int row = 0;  // row of MeasurementRows
    std::string name, startMarker, endMarker;
};
std::vector<SectorLine> SectorLines();

// LapMarkerCmbo: the named markers, shown without "#", and the position of
// the lap marker among them (-1 when there is none).
struct MarkerChoice {
    int index = 0;      // entry of the marker table
    std::string shown;  // name without "#"
};
struct MarkerChoices {
    std::vector<MarkerChoice> markers;
    int lapMarker = -1;
};
MarkerChoices LapMarkerChoices();
// The names as they stand in the table (the lap marker with its "#"), for the
// start and end boxes of frmAddSector.
std::vector<std::string> MarkerNames();

// frmAddSector's OK on the grid's line (0 for row 90): Mode = name, VarName =
// the time slot's name, the two markers. False, with nothing written, when a
// field is empty or the line is outside the sector rows.
bool WriteSectorRow(int line, const std::string& name, const std::string& startMarker,
                    const std::string& endMarker);

// The limits FrmLapsSectors applies to its option texts on load and on save.
struct LapSectorOptions {
    std::string markerLength;  // MarkerLengthTxt
    std::string sectorCount;   // NumOfAutoSectorsTxt
    bool autoPlaceLaps = false;
    bool autoPlaceSectors = false;
};
LapSectorOptions LoadLapSectorOptions();
void SaveLapSectorOptions(const LapSectorOptions& options);

// FrmLapAndSectorTimes' table: the grid RegenerateTable fills for sector rows
// 90 to 100, and the selected cells in the order they were taken.
class LapSectorTimesTable {
  public:
    static constexpr int kMaxSelected = 5;
    struct Cell {
        int row = 0, col = 0;
        bool operator==(const Cell&) const = default;
    };

    // Update_Table: the cells again; a selected cell that is gone or empty
    // is released. Under each run's laps, in the row its block keeps free
    // after the last lap, the run's ideal lap (IdealLapOfRun): "Ideal lap,
    // <time>s (<gap>s under the fastest)" in column 0 and the best time of
    // each sector in its column. That row can't be selected.
    void Update();
    // The grid row of a run's ideal lap, or -1 when the run has none.
    int IdealLapRow(int32_t run) const;
    // A click on a cell: an unselected cell with a value (or a lap's heading)
    // is taken while fewer than five are; a selected one is released, and the
    // later selections move up by one. Returns whether anything changed.
    bool Click(int row, int col);
    bool Selectable(int row, int col) const;
    bool IsSelected(int row, int col) const;

    const TableGrid& Grid() const { return grid_; }
    const std::vector<Cell>& Selected() const { return selected_; }
    // The selected cells as CmdGenerateGraph lays them over each other, in
    // the order they were taken: each cell's run and the rows of its two
    // crossings (as the table pairs them), labelled "Lap 2" or "Sector 1,
    // Lap 2".
    std::vector<OverlayCell> SelectedCells() const;

  private:
    void Paint();
    void AddIdealLaps();
    TableGrid grid_;
    std::vector<int> idealRows_;  // by run, from 1; -1 for none
    std::vector<Cell> selected_;
};

}  // namespace tl
