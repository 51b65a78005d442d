#include "shell/laps_model.h"

#include <algorithm>
#include <cstdio>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/support.h"
#include "results/ideal_lap.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl {

std::vector<SectorLine> SectorLines() {
    std::vector<SectorLine> lines;
    const auto& rows = Measurements().Rows;
    for (int m = kFirstSectorRow; m <= kLastSectorRow; ++m)
        lines.push_back({m, rows[m].Mode, rows[m].StartMarker, rows[m].EndMarker});
    return lines;
}

MarkerChoices LapMarkerChoices() {
    MarkerChoices choices;
    const int lap = CheckForLapMarker();
    const auto& entries = Markers().Entries;
    for (int i = 1; i <= kLastMarkerEntry; ++i) {
        if (entries[i].Name.empty()) continue;
        if (i == lap) choices.lapMarker = static_cast<int>(choices.markers.size());
        choices.markers.push_back({i, WithoutHash(entries[i].Name)});
    }
    return choices;
}

std::vector<std::string> MarkerNames() {
    std::vector<std::string> names;
    const auto& entries = Markers().Entries;
    for (int i = 1; i <= kLastMarkerEntry; ++i)
        if (!entries[i].Name.empty()) names.push_back(entries[i].Name);
    return names;
}

bool WriteSectorRow(int line, const std::string& name, const std::string& startMarker,
                    const std::string& endMarker) {
    const int m = kFirstSectorRow + line;
    if (line < 0 || m > kLastSectorRow || name.empty() || startMarker.empty() || endMarker.empty())
        return false;
    MeasurementRow& row = Measurements().Rows[m];
    row.Mode = name;
    row.VarName = Catalogue().RunVars[slot::Time].Name;
    row.StartMarker = startMarker;
    row.EndMarker = endMarker;
    return true;
}

LapSectorOptions LoadLapSectorOptions() {
    const std::string& file = Paths().TracelabCfgPath;
    LapSectorOptions o;
    o.markerLength =
        std::to_string(LimitMarkerLength(ConfigNumberText(GetConfig(file, "MarkerLengthTxt"))));
    o.sectorCount = std::to_string(
        LimitAutoSectorCount(ConfigNumberText(GetConfig(file, "NumOfAutoSectorsTxt"))));
    o.autoPlaceLaps = GetConfig(file, "AutoPlaceLaps") == 1.0f;
    o.autoPlaceSectors = GetConfig(file, "AutoPlaceSectors") == 1.0f;
    return o;
}

void SaveLapSectorOptions(const LapSectorOptions& o) {
    const std::string& file = Paths().TracelabCfgPath;
    SetConfig(file, "AutoPlaceLaps", o.autoPlaceLaps ? 1.0f : 0.0f);
    SetConfig(file, "AutoPlaceSectors", o.autoPlaceSectors ? 1.0f : 0.0f);
    SetConfig(file, "NumOfAutoSectorsTxt", static_cast<float>(LimitAutoSectorCount(o.sectorCount)));
    SetConfig(file, "MarkerLengthTxt", static_cast<float>(LimitMarkerLength(o.markerLength)));
}

void LapSectorTimesTable::Update() {
    RegenerateTable(false, false, grid_, kFirstSectorRow, kLastSectorRow, true);
    AddIdealLaps();
    std::erase_if(selected_, [this](const Cell& c) { return !Selectable(c.row, c.col); });
    Paint();
}

void LapSectorTimesTable::AddIdealLaps() {
    idealRows_.assign(1, -1);
    auto seconds = [](double value) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.2f", value);
        return std::string(buf);
    };
    // Each run's block starts under its heading; its laps take one row each,
    // and the block has a row for every crossing of its busiest marker, so
    // the row after the last lap is free.
    int base = 1;
    for (int32_t run = 1; run <= Store().RunCount && run <= 11; ++run) {
        while (base < grid_.rows && grid_.Text(base - 1, 0) != RunHeading(run)) ++base;
        const IdealLap ideal = IdealLapOfRun(run);
        const int row = base + static_cast<int>(LapsOfRun(run).laps.size());
        const bool free = base < grid_.rows && row < grid_.rows && grid_.Text(row, 0).empty();
        ++base;  // two runs may have the same name: the next heading is further down
        if (!ideal.valid || !free) {
            idealRows_.push_back(-1);
            continue;
        }
        idealRows_.push_back(row);
        grid_.Text(row, 0) = "Ideal lap, " + seconds(ideal.time) + "s (" +
                             seconds(ideal.gapToFastest) + "s under the fastest)";
        for (size_t j = 0; j < ideal.rows.size(); ++j) {
            const int col = ideal.rows[j] - kFirstSectorRow + 1;
            if (col < grid_.cols) grid_.Text(row, col) = FormToSD(ideal.best[j], 4);
        }
    }
}

int LapSectorTimesTable::IdealLapRow(int32_t run) const {
    if (run < 1 || run >= static_cast<int32_t>(idealRows_.size())) return -1;
    return idealRows_[static_cast<size_t>(run)];
}

bool LapSectorTimesTable::Selectable(int row, int col) const {
    if (row < 1 || col < 0 || row >= grid_.rows || col >= grid_.cols) return false;
    if (std::find(idealRows_.begin(), idealRows_.end(), row) != idealRows_.end()) return false;
    const std::string& text = grid_.Text(row, col);
    if (text.empty()) return false;
    // Column 0 holds the runs' headings and the laps: a lap may be taken, a
    // run's heading may not.
    return col > 0 || text.rfind("Lap ", 0) == 0;
}

bool LapSectorTimesTable::IsSelected(int row, int col) const {
    return std::find(selected_.begin(), selected_.end(), Cell{row, col}) != selected_.end();
}

bool LapSectorTimesTable::Click(int row, int col) {
    const auto at = std::find(selected_.begin(), selected_.end(), Cell{row, col});
    if (at != selected_.end()) {
        selected_.erase(at);
    } else if (Selectable(row, col) && static_cast<int>(selected_.size()) < kMaxSelected) {
        selected_.push_back({row, col});
    } else {
        return false;
    }
    Paint();
    return true;
}

void LapSectorTimesTable::Paint() {
    std::fill(grid_.back.begin(), grid_.back.end(), kPlainCellColour);
    for (const Cell& c : selected_) grid_.Back(c.row, c.col) = kSelectedCellColour;
}

std::vector<OverlayCell> LapSectorTimesTable::SelectedCells() const {
    // The table's own pass over the cells with the selection in the back
    // colours gives their crossing rows, column by column and down each
    // column; the cells are put back in the order they were taken.
    TableGrid grid = grid_;
    const std::vector<CellRequest> requests =
        RegenerateTable(true, false, grid, kFirstSectorRow, kLastSectorRow, true);
    std::vector<Cell> byPlace = selected_;
    std::sort(byPlace.begin(), byPlace.end(), [](const Cell& a, const Cell& b) {
        return a.col != b.col ? a.col < b.col : a.row < b.row;
    });
    std::vector<OverlayCell> cells;
    if (requests.size() != byPlace.size()) return cells;
    auto lapOf = [this](int row) {
        const std::string& text = grid_.Text(row, 0);
        return text.rfind("Lap ", 0) == 0 ? text.substr(0, text.find(',')) : std::string();
    };
    for (const Cell& c : selected_) {
        const size_t i =
            static_cast<size_t>(std::find(byPlace.begin(), byPlace.end(), c) - byPlace.begin());
        const CellRequest& r = requests[i];
        std::string label = lapOf(c.row);
        if (c.col > 0) label = grid_.Text(0, c.col) + (label.empty() ? "" : ", " + label);
        cells.push_back({r.run, r.startRow, r.endRow, label});
    }
    return cells;
}

}  // namespace tl
