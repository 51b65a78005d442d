// frmTrackMeasurements without its widgets: the 89 measurement rows as the
// form edits them (add, delete, clear, the row frmAddMeasurement writes), the
// grid BPGrid with its cell selection, the checks of "Graph" and "Highlight"
// and the cells they send on, and the copy of the grid as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "results/measurement_table.h"

namespace tl {

inline constexpr int kFirstMeasurementRow = 1;
inline constexpr int kLastMeasurementRow = 89;

// MeasMode's entries, in order.
const std::vector<std::string>& MeasurementModes();

// Where RequestGraph sends a cell of a mode: 1 an XY graph ("Change in",
// "Maximum of", "Average of", "Minimum of", "Complete Laps"), 2 a bar chart
// ("Std Dev of", "COV of", "95th percentile"), 0 nowhere ("Value of").
int GraphKindOfMode(const std::string& mode);

// AddMeasurement: a blank row m, the rows from m on moving down by one (row
// 89 drops off). Refused, after "There are no track markers available to
// base maeasurements on", when no marker is named.
bool AddMeasurement(int m);
// DeleteMeasurement: the rows after m move up by one and row 89 is blanked.
void DeleteMeasurement(int m);
// ClearAllMeasurements: rows 1 to 89 emptied if "Are you sure you want to
// clear all measurements" is answered Yes.
bool ClearAllMeasurements();
// frmAddMeasurement's OK on row m: the four fields, EndMarker empty for
// "Value of". False, with nothing written, for a row outside 1 to 89 or a
// mode not in MeasMode.
bool WriteMeasurementRow(int m, const std::string& mode, const std::string& varName,
                         const std::string& startMarker, const std::string& endMarker);

// BPGrid and its selection. Grid column m holds measurement row m.
class MeasurementsTable {
  public:
    struct Cell {
        int row = 0, col = 0;
        bool operator==(const Cell&) const = default;
    };
    // ReprocessStats ("Update"): the cells again; selected cells that are
    // gone or empty are released.
    void Update();
    // A click toggles a cell with a value (or a lap in column 0).
    bool Click(int row, int col);
    // ClearSelections ("Deselect").
    void ClearSelections();
    bool IsSelected(int row, int col) const;

    // GenerateGraph ("Graph"): the selected cells with their rows, or none
    // after "All the selected cells must be in a single column", "Please
    // select the data to be graphed" or "You cannot plot a graph of a single
    // measured value". kind is GraphKindOfMode of the column.
    std::vector<CellRequest> GraphCells(int* kind = nullptr);
    // HighLightOnMap ("Highlight"): the selected cells, or none after "Please
    // select some data to be highlighted on the track map".
    std::vector<CellRequest> HighlightCells();

    // The grid as text: tab between cells, CR LF after each row.
    std::string CopyText() const;

    const TableGrid& Grid() const { return grid_; }
    const std::vector<Cell>& Selected() const { return selected_; }

  private:
    bool Selectable(int row, int col) const;
    void Paint();
    std::vector<CellRequest> Requests(bool graph, bool map);
    TableGrid grid_;
    std::vector<Cell> selected_;
};

}  // namespace tl
