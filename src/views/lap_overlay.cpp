#include "views/lap_overlay.h"

#include <algorithm>
#include <charconv>

#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl {
namespace {

// A value as the shortest text that reads back to the same single-precision
// number, so that a condition bound equals the crossing's value.
std::string ExactText(float value) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

float ValueAt(int32_t row, int slotNumber) {
    const RunArray& rd = Store().RunData;
    const int32_t column = ColumnOf(slotNumber);
    if (row < 0 || row > rd.UpperRow() || column < 0 || column >= rd.Columns()) return 0.0f;
    return rd(row, column);
}

bool EnabledName(const std::string& name) {
    const std::vector<std::string> names = GraphModel::VariableNames();
    return !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

SectorGraphAxes AxesOfSectorGraph(SectorGraphType type, const std::string& otherX,
                                  const std::string& otherY) {
    const auto& vars = Catalogue().RunVars;
    switch (type) {
        case SectorGraphType::Speed:
            return {vars[slot::DistanceKm].Name, vars[slot::SpeedKph].Name};
        case SectorGraphType::LateralAcceleration:
            return {vars[slot::DistanceKm].Name, vars[slot::AccelLat].Name};
        case SectorGraphType::TimeSlipRate:
            return {vars[slot::DistanceKm].Name, vars[slot::RateOfTimeSlip].Name};
        case SectorGraphType::GCircle:
            return {vars[slot::AccelLat].Name, vars[slot::AccelLong].Name};
        case SectorGraphType::Other:
            break;
    }
    return {EnabledName(otherX) ? otherX : vars[slot::DistanceKm].Name,
            EnabledName(otherY) ? otherY : vars[slot::SpeedKph].Name};
}

void SetUpLapOverlay(GraphModel& g, const std::vector<OverlayCell>& cells,
                     const SectorGraphAxes& axes) {
    const int count = std::min(static_cast<int>(cells.size()), kGraphSlots);
    const auto& vars = Catalogue().RunVars;
    const bool alongDistance = axes.x == vars[slot::DistanceKm].Name;
    g.settings.LimitVariables = 1;
    g.settings.MultipleXAxis = count > 1 ? 1 : 0;
    for (int k = 0; k < count; ++k) {
        const OverlayCell& cell = cells[k];
        GraphSlotSettings& s = g.settings.Slots[k];
        s.SelYAxis = axes.y;
        g.SelYAxis_Click(k);
        s.SelXAxis = axes.x;
        s.AxisRun = std::to_string(cell.run);
        s.LimitVar = vars[slot::Time].Name;
        s.DisplayIf = 1;
        s.LimitVarMin = ExactText(ValueAt(cell.startRow, slot::Time));
        s.LimitVarMax = ExactText(ValueAt(cell.endRow, slot::Time));
        if (alongDistance) {
            s.MinXAxis = ExactText(ValueAt(cell.startRow, slot::DistanceKm));
            s.MaxXAxis = ExactText(ValueAt(cell.endRow, slot::DistanceKm));
            s.AutoMinX = 1;
            s.AutoMaxX = 1;
            s.ZeroBaseXAxis = 1;
        }
        const bool knownRun = cell.run >= 1 && cell.run <= Store().RunCount;
        s.AxisTitle = (knownRun ? Store().RunInfo[cell.run].Name + ", " : std::string()) +
                      cell.label + ", " + axes.x;
    }
    // The runs' names, and with one slot its X fields are the graph's.
    for (int k = count - 1; k >= 0; --k) g.AxisRun_Change(k);
}

}  // namespace tl
