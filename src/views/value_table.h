// frmValueTable's logic ("Variable Values Table"): the value of every enabled
// variable at the present row, one column per displayed run, following the
// cursor of the other views.
//
// The grid model: row 0 is the heading row (over each run's column the run's
// name, in the column's colour), then one row per enabled RunVars
// slot (1 to 201, in slot order); column 0 holds the variable names, then one
// column per run (column 1 is panel 0's run). A widget (ValuesGrid, a flex
// grid) shows Cell(row, column).text in Cell(row, column).colour, with the
// font FontName / FontSize, column widths ColumnWidth(c) and row heights
// RowHeight(r) in twips, and repaints when Generation() has changed (the
// grid's redraw switch is the model's: nothing half-updated is seen between
// two generations).
//
// The form forwards: Form_Load -> Load(), Form_Unload -> Unload() (the place
// and size in the options file and the ValueTableOpen flag), Form_Resize ->
// Resize(inner width, inner height), and gives the model a measure of text
// (SetTextMeasure) so that the name column fits its widest name.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tl {

// A tool window's place and size in twips, kept in the options file under
// <prefix>Left, <prefix>Top, <prefix>Width and <prefix>Height: prefixes
// "ValueTable" and "MiniMap".
struct ToolWindowPlace {
    float Left = 0, Top = 0, Width = 0, Height = 0;
};
ToolWindowPlace ReadToolWindowPlace(const std::string& prefix);
void WriteToolWindowPlace(const std::string& prefix, const ToolWindowPlace& place);
inline const std::string kValueTableKeys = "ValueTable";
inline const std::string kMiniMapKeys = "MiniMap";

class ValueTable {
  public:
    struct Cell {
        std::string text;
        uint32_t colour = 0;
    };
    // Width and height in twips of a text in the grid's font.
    using TextMeasure = std::function<double(const std::string&)>;

    ValueTable();

    // Form_Load: the open flag set, place and size read from the options
    // file. Form_Unload: place and size written, the flag cleared.
    void Load();
    void Unload();
    bool Open() const { return open_; }
    ToolWindowPlace Place;

    // Rebuilds the grid: one row per enabled slot with its name, the
    // columns kept (at least two), the name column as wide as 1.1 x the
    // widest name.
    void RegenerateTable();
    // The values of a RunData row in a column, in VqColorIndex(colourIndex);
    // the grid grows to columnCount + 1 columns first. A column above
    // columnCount is logged as "Value column out of range error" and skipped.
    void UpDateMultiVarTable(int32_t row, int32_t column, int32_t columnCount, int colourIndex);
    // Form_Resize: the grid fills the width, its height clipped to its rows;
    // the run columns share the width left by the names equally.
    void Resize(double innerWidth, double innerHeight);

    void SetTextMeasure(TextMeasure width, TextMeasure height);

    int32_t Rows() const { return static_cast<int32_t>(cells_.size()); }
    int32_t Cols() const { return cols_; }
    const Cell& At(int32_t row, int32_t column) const { return cells_[row][column]; }
    // The slot shown in a grid row (0 for the heading row).
    int SlotOfRow(int32_t row) const { return row > 0 ? slots_[row - 1] : 0; }
    double ColumnWidth(int32_t column) const { return colWidths_[column]; }
    double RowHeight(int32_t row) const { return rowHeights_[row]; }
    double GridWidth() const { return gridWidth_; }
    double GridHeight() const { return gridHeight_; }
    uint64_t Generation() const { return generation_; }

    const std::string FontName = "Microsoft Sans Serif";
    const double FontSize = 7;

  private:
    void SetCols(int32_t cols);

    bool open_ = false;
    int32_t cols_ = 2;
    std::vector<std::vector<Cell>> cells_;
    std::vector<int> slots_;        // per grid row 1.. the slot
    std::vector<int32_t> columns_;  // per grid row 1.. the slot's RunData column
    std::vector<double> colWidths_;
    std::vector<double> rowHeights_;
    double gridWidth_ = 0, gridHeight_ = 0;
    double innerWidth_ = 0, innerHeight_ = 0;
    uint64_t generation_ = 0;
    TextMeasure width_, height_;
};

}  // namespace tl
