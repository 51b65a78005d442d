// The value table's grid model (see value_table.h).
#include "views/value_table.h"

#include <algorithm>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

namespace {

// A flex grid's row height before the table sets its own.
constexpr double kDefaultRowHeight = 240;

int CountEnabledSlots() {
    int n = 0;
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (Catalogue().RunVars[s].Enabled) ++n;
    return n;
}

}  // namespace

ToolWindowPlace ReadToolWindowPlace(const std::string& prefix) {
    const std::string& file = Paths().TracelabCfgPath;
    ToolWindowPlace p;
    p.Left = GetConfig(file, prefix + "Left");
    p.Top = GetConfig(file, prefix + "Top");
    p.Width = GetConfig(file, prefix + "Width");
    p.Height = GetConfig(file, prefix + "Height");
    return p;
}

void WriteToolWindowPlace(const std::string& prefix, const ToolWindowPlace& place) {
    const std::string& file = Paths().TracelabCfgPath;
    SetConfig(file, prefix + "Left", place.Left);
    SetConfig(file, prefix + "Top", place.Top);
    SetConfig(file, prefix + "Width", place.Width);
    SetConfig(file, prefix + "Height", place.Height);
}

ValueTable::ValueTable() {
    // Without a widget's metrics: an average character of the 7 point face.
    width_ = [](const std::string& t) { return 80.0 * static_cast<double>(t.size()); };
    height_ = [](const std::string&) { return 165.0; };
    SetCols(2);
    cells_.assign(1, std::vector<Cell>(cols_));
    rowHeights_.assign(1, kDefaultRowHeight);
}

void ValueTable::SetTextMeasure(TextMeasure width, TextMeasure height) {
    if (width) width_ = std::move(width);
    if (height) height_ = std::move(height);
}

void ValueTable::Load() {
    open_ = true;
    Place = ReadToolWindowPlace(kValueTableKeys);
}

void ValueTable::Unload() {
    WriteToolWindowPlace(kValueTableKeys, Place);
    open_ = false;
}

void ValueTable::SetCols(int32_t cols) {
    cols_ = std::max(cols, 2);
    for (auto& row : cells_) row.resize(cols_);
    colWidths_.resize(cols_, 0.0);
}

void ValueTable::RegenerateTable() {
    Procedure("RegenerateTable", [&] {
        const auto& vars = Catalogue().RunVars;
        slots_.clear();
        columns_.clear();
        for (int s = 1; s <= kNoDataSlot; ++s) {
            if (!vars[s].Enabled) continue;
            slots_.push_back(s);
            columns_.push_back(vars[s].Column);
        }
        cells_.assign(slots_.size() + 1, std::vector<Cell>(cols_));
        rowHeights_.assign(cells_.size(), kDefaultRowHeight);
        colWidths_[0] = 0;
        for (size_t r = 0; r < slots_.size(); ++r) {
            const std::string& name = vars[slots_[r]].Name;
            cells_[r + 1][0] = {name, 0};
            const double w = 1.1 * width_(name);
            if (w > colWidths_[0]) colWidths_[0] = w;
            if (colWidths_[0] < gridWidth_ || gridWidth_ == 0)
                rowHeights_[r + 1] = 1.4 * height_(name);
        }
        ++generation_;
    });
}

void ValueTable::UpDateMultiVarTable(int32_t row, int32_t column, int32_t columnCount,
                                     int colourIndex) {
    Procedure("UpDateMultiVarTable", [&] {
        if (CountEnabledSlots() != Rows() - 1) RegenerateTable();
        if (cols_ < columnCount + 1) {
            SetCols(columnCount + 1);
            RegenerateTable();
            Resize(innerWidth_, innerHeight_);
        }
        if (column <= columnCount && column >= 1 && column < cols_) {
            const RunArray& rd = Store().RunData;
            const uint32_t colour = VqColorIndex(colourIndex, false);
            const bool rowOk = row >= 0 && row <= rd.UpperRow();
            for (size_t r = 0; r < columns_.size(); ++r) {
                const int32_t c = columns_[r];
                const float v = rowOk && c >= 0 && c < rd.Columns() ? rd(row, c) : 0.0f;
                Cell& cell = cells_[r + 1][column];
                cell.text = FormToSD(v, 4);
                cell.colour = colour;
            }
            // The heading names the run the column shows.
            const int32_t run = rowOk ? FindRunOfRow(row) : 0;
            Cell& heading = cells_[0][column];
            heading.text = run >= 1 ? Store().RunInfo[run].Name : std::string();
            heading.colour = colour;
        } else {
            LogDebug("Value column out of range error");
        }
        ++generation_;
    });
}

void ValueTable::Resize(double innerWidth, double innerHeight) {
    innerWidth_ = innerWidth;
    innerHeight_ = innerHeight;
    LogDebug("Resizing Value Table");
    gridWidth_ = std::max(0.0, innerWidth);
    double rows = 0;
    for (double h : rowHeights_) rows += h;
    gridHeight_ = std::max(0.0, innerHeight);
    if (gridHeight_ > rows) {
        LogDebug("Clipping Value Table Height " + std::to_string(static_cast<long>(rows)));
        gridHeight_ = rows;
    }
    const double share = (gridWidth_ - colWidths_[0]) / (cols_ - 1);
    for (int32_t c = 1; c < cols_; ++c) colWidths_[c] = std::max(0.0, share);
    ++generation_;
}

}  // namespace tl
