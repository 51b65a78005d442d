// The cells of the measurements table and of the lap and sector time table:
// the grid model both windows show, the pairing of marker crossings lap by
// lap, and the statistic of one cell.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tl {

// The grid a table window shows (rows and columns from 0; row 0 and column 0
// are the fixed headings). A cell whose back colour is kSelectedCellColour is
// selected.
inline constexpr uint32_t kSelectedCellColour = 255;
inline constexpr uint32_t kPlainCellColour = 0xFFFFFF;

struct TableGrid {
    int rows = 0;
    int cols = 0;
    std::vector<std::string> text;
    std::vector<uint32_t> back;
    // Empties every cell and sets the size; back colours are kept where the
    // cell still exists, so a selection survives a regeneration.
    void Resize(int rowCount, int colCount);
    std::string& Text(int row, int col) { return text[static_cast<size_t>(row) * cols + col]; }
    const std::string& Text(int row, int col) const {
        return text[static_cast<size_t>(row) * cols + col];
    }
    uint32_t& Back(int row, int col) { return back[static_cast<size_t>(row) * cols + col]; }
};

// The statistic of rows a to b of a RunData column by mode text ("Value of",
// "Change in", "Average of", "Maximum of", "Minimum of", "Std Dev of", "COV
// of", "95th percentile"; anything else is "Change in"). 0 when a equals b.
float CalcRunStat(int32_t a, int32_t b, const std::string& mode, int32_t column);

// One cell of a measurement row for one run: the grid row offset from the
// run's base row, the two RunData rows it spans (equal for "Value of") and
// its value.
struct MeasurementCell {
    int offset = 0;
    int32_t startRow = 0;
    int32_t endRow = 0;
    float value = 0;
};
// The cells of MeasurementRows[m] in run, paired as the table pairs them: lap
// by lap when there is a lap marker, crossing by crossing otherwise. Empty
// when the row's markers are missing or its variable is unknown.
std::vector<MeasurementCell> MeasurementCells(int m, int32_t run);

// The heading of a run in the tables: Run "<name>".
std::string RunHeading(int32_t run);

// Fills grid with rows firstRow to lastRow of MeasurementRows (column m -
// firstRow + 1 holds row m): the lap column, the headings and the cells, as
// the measurements table (lapTable false) or the lap and sector time table
// (lapTable true) show them. With graphSelected or mapSelected the selected
// cells are collected into requests (the graph and map windows act on them).
struct CellRequest {
    int32_t run = 0;
    int m = 0;  // row of MeasurementRows; 0 for the lap column
    int32_t startRow = 0;
    int32_t endRow = 0;
    std::string mode;
    std::string varName;
};
std::vector<CellRequest> RegenerateTable(bool graphSelected, bool mapSelected, TableGrid& grid,
                                         int firstRow, int lastRow, bool lapTable);

}  // namespace tl
