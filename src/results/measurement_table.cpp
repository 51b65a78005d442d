#include "results/measurement_table.h"

#include <algorithm>
#include <cstdio>

#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl {

void TableGrid::Resize(int rowCount, int colCount) {
    rowCount = std::max(rowCount, 0);
    colCount = std::max(colCount, 0);
    std::vector<uint32_t> keptBack(static_cast<size_t>(rowCount) * colCount, kPlainCellColour);
    for (int r = 0; r < std::min(rows, rowCount); ++r)
        for (int c = 0; c < std::min(cols, colCount); ++c)
            keptBack[static_cast<size_t>(r) * colCount + c] =
                back[static_cast<size_t>(r) * cols + c];
    rows = rowCount;
    cols = colCount;
    back = std::move(keptBack);
    text.assign(static_cast<size_t>(rows) * cols, std::string{});
}

namespace {

bool ColumnExists(int32_t column) {
    return column >= 0 && column < Store().RunData.Columns();
}

float Cell(int32_t row, int32_t column) {
    if (!ColumnExists(column) || row < 0 || row > Store().RunData.UpperRow()) return 0.0f;
    return Store().RunData(row, column);
}

std::string Format2(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.2f", value);
    return buf;
}

}  // namespace

float CalcRunStat(int32_t a, int32_t b, const std::string& mode, int32_t column) {
    if (a == b) return 0.0f;
    if (!ColumnExists(column)) return 0.0f;
    const int32_t upper = Store().RunData.UpperRow();
    if (a < 0 || b < 0 || a > upper || b > upper) return 0.0f;
    const auto col = Store().RunData.Column(column);
    if (mode == "Value of") return col[a];
    const int32_t lo = std::min(a, b), hi = std::max(a, b);
    // Every divisor is b - a, one less than the number of rows.
    const double divisor = static_cast<double>(b - a);
    auto average = [&] {
        double sum = 0;
        for (int32_t i = lo; i <= hi; ++i) sum += col[i];
        return sum / divisor;
    };
    auto squares = [&](double mean) {
        double sum = 0;
        for (int32_t i = lo; i <= hi; ++i) sum += (col[i] - mean) * (col[i] - mean);
        return sum / divisor;
    };
    if (mode == "Average of") return static_cast<float>(average());
    if (mode == "Maximum of") {
        float most = -1.0E+20f;
        for (int32_t i = lo; i <= hi; ++i) most = std::max(most, col[i]);
        return most;
    }
    if (mode == "Minimum of") {
        float least = 1.0E+20f;
        for (int32_t i = lo; i <= hi; ++i) least = std::min(least, col[i]);
        return least;
    }
    // "Std Dev of" is the variance: no square root is taken.
    if (mode == "Std Dev of") return static_cast<float>(squares(average()));
    if (mode == "COV of") {
        const double mean = average();
        if (mean == 0) return 1.0E+20f;
        return static_cast<float>(squares(mean) / mean);
    }
    if (mode == "95th percentile") return FindPercentileOfData(a, b, column, 0.95f);
    return col[b] - col[a];
}

std::vector<MeasurementCell> MeasurementCells(int m, int32_t run) {
    std::vector<MeasurementCell> cells;
    if (m < 1 || m > kLastSectorRow) return cells;
    const MeasurementRow& row = Measurements().Rows[m];
    if (row.Mode.empty()) return cells;
    const bool valueOf = row.Mode == "Value of";
    const int a = FindTrackMarkerIndex(row.StartMarker);
    const int b = valueOf ? 0 : FindTrackMarkerIndex(row.EndMarker);
    if (a == 0 || (!valueOf && b == 0)) return cells;
    const int slotNumber = FindVar(row.VarName);
    if (slotNumber == kNoDataSlot && row.VarName != Catalogue().RunVars[kNoDataSlot].Name)
        return cells;
    const int32_t column = FindVarIndex(row.VarName);
    const auto& starts = MarkerCrossings(a, run);
    const auto& ends = MarkerCrossings(b, run);
    const int lap = CheckForLapMarker();
    const auto& laps = MarkerCrossings(lap, run);

    if (lap > 0 && !valueOf) {
        size_t sp = 0, ep = 0;
        for (size_t k = 0; k + 1 < laps.size(); ++k) {
            while (sp < starts.size() && starts[sp] < laps[k]) ++sp;
            if (sp >= starts.size()) continue;
            // The first end crossing beyond the start row; the same marker at
            // both ends gives the next crossing, a whole lap.
            while (ep < ends.size() && ends[ep] <= starts[sp]) ++ep;
            if (ep >= ends.size()) continue;
            if (ends[ep] <= laps[k + 1])
                cells.push_back({static_cast<int>(k), starts[sp], ends[ep],
                                 CalcRunStat(starts[sp], ends[ep], row.Mode, column)});
        }
    } else if (!valueOf) {
        size_t ep = 0;
        for (size_t j = 0; j < starts.size(); ++j) {
            while (ep < ends.size() && ends[ep] <= starts[j]) ++ep;
            if (ep >= ends.size()) continue;
            cells.push_back({static_cast<int>(j), starts[j], ends[ep],
                             CalcRunStat(starts[j], ends[ep], row.Mode, column)});
        }
    } else if (lap > 0) {
        size_t sp = 0;
        for (size_t k = 0; k + 1 < laps.size(); ++k) {
            while (sp < starts.size() && starts[sp] < laps[k]) ++sp;
            if (sp < starts.size() && starts[sp] < laps[k + 1])
                cells.push_back(
                    {static_cast<int>(k), starts[sp], starts[sp], Cell(starts[sp], column)});
        }
    } else {
        for (size_t j = 0; j < starts.size(); ++j)
            cells.push_back({static_cast<int>(j), starts[j], starts[j], Cell(starts[j], column)});
    }
    return cells;
}

std::string RunHeading(int32_t run) {
    if (run < 1 || run >= static_cast<int32_t>(Store().RunInfo.size())) return "Run \"\"";
    return "Run \"" + Store().RunInfo[run].Name + "\"";
}

std::vector<CellRequest> RegenerateTable(bool graphSelected, bool mapSelected, TableGrid& grid,
                                         int firstRow, int lastRow, bool lapTable) {
    std::vector<CellRequest> requests;
    Procedure("RegenerateTable", [&] {
        firstRow = std::clamp(firstRow, 1, kLastSectorRow);
        lastRow = std::clamp(lastRow, firstRow, kLastSectorRow);
        ShowPleaseWait("Re-Calculating Table");
        const RunStore& s = Store();
        const int32_t runs = std::clamp(s.RunCount, 0, 11);

        // Each run gets as many rows as its busiest marker has crossings, and
        // a row for its heading.
        std::vector<int> rowBase(static_cast<size_t>(runs) + 2, 0);
        rowBase[1] = 2;
        for (int32_t r = 1; r <= runs; ++r) {
            size_t most = 0;
            for (int i = 1; i < kTrackMarkerCount; ++i)
                most = std::max(most, MarkerCrossings(i, r).size());
            rowBase[r + 1] = rowBase[r] + static_cast<int>(most) + 1;
        }
        // The grid ends with one blank row after the last run. Row m of the
        // table is column m - firstRow + 1 (column 0 holds the laps).
        grid.Resize(rowBase[runs + 1], lastRow - firstRow + 2);
        const bool wantRequests = graphSelected || mapSelected;
        auto selected = [&](int gr, int gc) {
            return wantRequests && gr < grid.rows && gc < grid.cols &&
                   grid.Back(gr, gc) == kSelectedCellColour;
        };

        for (int32_t r = 1; r <= runs; ++r) {
            if (rowBase[r] - 1 < grid.rows) grid.Text(rowBase[r] - 1, 0) = RunHeading(r);
            const RunLaps laps = LapsOfRun(r);
            for (const LapInfo& lap : laps.laps) {
                const int gr = rowBase[r] + lap.number - 1;
                if (gr >= grid.rows) break;
                std::string text =
                    "Lap " + std::to_string(lap.number) + ", " + Format2(lap.time) + "s";
                if (lap.number == laps.fastest) text += " (f)";
                grid.Text(gr, 0) = text;
                if (selected(gr, 0))
                    requests.push_back({r, 0, lap.startRow, lap.endRow, "Complete Laps",
                                        Catalogue().RunVars[slot::Time].Name});
            }
        }
        LogDebug("Set the column width of the lap time column");

        auto& rows = Measurements().Rows;
        for (int m = firstRow; m <= lastRow; ++m) {
            const int gc = m - firstRow + 1;
            const MeasurementRow& row = rows[m];
            std::string heading;
            if (lapTable)
                heading = row.Mode;
            else if (row.Mode == "Value of")
                heading = row.Mode + " " + row.VarName + " at " + row.StartMarker;
            else if (!row.Mode.empty())
                heading = row.Mode + " " + row.VarName + " from " + row.StartMarker + " to " +
                          row.EndMarker;
            grid.Text(0, gc) = heading;
            for (int32_t r = 1; r <= runs; ++r) {
                for (const MeasurementCell& cell : MeasurementCells(m, r)) {
                    const int gr = rowBase[r] + cell.offset;
                    if (gr >= rowBase[r + 1] || gr >= grid.rows) break;
                    grid.Text(gr, gc) = FormToSD(cell.value, 4);
                    if (selected(gr, gc))
                        requests.push_back(
                            {r, m, cell.startRow, cell.endRow, row.Mode, row.VarName});
                }
            }
        }
        HidePleaseWait();
    });
    return requests;
}

}  // namespace tl
