#include "results/measurements_form.h"

#include <algorithm>

#include "core/ui_services.h"
#include "results/track_markers.h"

namespace tl {

const std::vector<std::string>& MeasurementModes() {
    static const std::vector<std::string> modes = {"Value of",   "Change in",      "Average of",
                                                   "Maximum of", "Minimum of",     "Std Dev of",
                                                   "COV of",     "95th percentile"};
    return modes;
}

int GraphKindOfMode(const std::string& mode) {
    if (mode == "Change in" || mode == "Maximum of" || mode == "Average of" ||
        mode == "Minimum of" || mode == "Complete Laps")
        return 1;
    if (mode == "Std Dev of" || mode == "COV of" || mode == "95th percentile") return 2;
    return 0;
}

bool AddMeasurement(int m) {
    if (m < kFirstMeasurementRow || m > kLastMeasurementRow) return false;
    bool anyMarker = false;
    for (int i = 1; i <= kLastMarkerEntry; ++i) anyMarker |= !Markers().Entries[i].Name.empty();
    if (!anyMarker) {
        Message("There are no track markers available to base maeasurements on");
        return false;
    }
    auto& rows = Measurements().Rows;
    for (int r = kLastMeasurementRow; r > m; --r) rows[r] = rows[r - 1];
    rows[m] = MeasurementRow{};
    return true;
}

void DeleteMeasurement(int m) {
    if (m < kFirstMeasurementRow || m > kLastMeasurementRow) return;
    auto& rows = Measurements().Rows;
    for (int r = m; r < kLastMeasurementRow; ++r) rows[r] = rows[r + 1];
    rows[kLastMeasurementRow] = MeasurementRow{};
}

bool ClearAllMeasurements() {
    if (!YesNoBox("Tracelab", "Are you sure you want to clear all measurements")) return false;
    auto& rows = Measurements().Rows;
    for (int r = kFirstMeasurementRow; r <= kLastMeasurementRow; ++r) rows[r] = MeasurementRow{};
    return true;
}

bool WriteMeasurementRow(int m, const std::string& mode, const std::string& varName,
                         const std::string& startMarker, const std::string& endMarker) {
    const auto& modes = MeasurementModes();
    if (m < kFirstMeasurementRow || m > kLastMeasurementRow ||
        std::find(modes.begin(), modes.end(), mode) == modes.end())
        return false;
    Measurements().Rows[m] = {mode, varName, startMarker, mode == "Value of" ? "" : endMarker};
    return true;
}

void MeasurementsTable::Update() {
    RegenerateTable(false, false, grid_, kFirstMeasurementRow, kLastMeasurementRow, false);
    std::erase_if(selected_, [this](const Cell& c) { return !Selectable(c.row, c.col); });
    Paint();
}

bool MeasurementsTable::Selectable(int row, int col) const {
    if (row < 1 || col < 0 || row >= grid_.rows || col >= grid_.cols) return false;
    const std::string& text = grid_.Text(row, col);
    if (text.empty()) return false;
    return col > 0 || text.rfind("Lap ", 0) == 0;
}

bool MeasurementsTable::IsSelected(int row, int col) const {
    return std::find(selected_.begin(), selected_.end(), Cell{row, col}) != selected_.end();
}

bool MeasurementsTable::Click(int row, int col) {
    const auto at = std::find(selected_.begin(), selected_.end(), Cell{row, col});
    if (at != selected_.end())
        selected_.erase(at);
    else if (Selectable(row, col))
        selected_.push_back({row, col});
    else
        return false;
    Paint();
    return true;
}

void MeasurementsTable::ClearSelections() {
    selected_.clear();
    Paint();
}

void MeasurementsTable::Paint() {
    std::fill(grid_.back.begin(), grid_.back.end(), kPlainCellColour);
    for (const Cell& c : selected_) grid_.Back(c.row, c.col) = kSelectedCellColour;
}

std::vector<CellRequest> MeasurementsTable::Requests(bool graph, bool map) {
    // The table's own pass with the selection in the back colours; it
    // starts from the grid as shown so the selection is where it was.
    std::vector<CellRequest> requests =
        RegenerateTable(graph, map, grid_, kFirstMeasurementRow, kLastMeasurementRow, false);
    Paint();
    return requests;
}

std::vector<CellRequest> MeasurementsTable::GraphCells(int* kind) {
    if (kind) *kind = 0;
    for (const Cell& c : selected_)
        if (c.col != selected_.front().col) {
            Message("All the selected cells must be in a single column");
            return {};
        }
    if (selected_.empty()) {
        Message("Please select the data to be graphed");
        return {};
    }
    const int col = selected_.front().col;
    const std::string mode =
        col == 0 ? "Complete Laps" : Measurements().Rows[kFirstMeasurementRow + col - 1].Mode;
    if (mode == "Value of") {
        Message("You cannot plot a graph of a single measured value");
        return {};
    }
    if (kind) *kind = GraphKindOfMode(mode);
    return Requests(true, false);
}

std::vector<CellRequest> MeasurementsTable::HighlightCells() {
    if (selected_.empty()) {
        Message("Please select some data to be highlighted on the track map");
        return {};
    }
    return Requests(false, true);
}

std::string MeasurementsTable::CopyText() const {
    std::string out;
    for (int r = 0; r < grid_.rows; ++r) {
        for (int c = 0; c < grid_.cols; ++c) {
            if (c > 0) out += '\t';
            out += grid_.Text(r, c);
        }
        out += "\r\n";
    }
    return out;
}

}  // namespace tl
