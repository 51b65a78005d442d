// The graph the lap and sector time table opens on its selected cells
// (CmdGenerateGraph and frmSectorGraphSelector): one slot per cell, in the
// order the cells were taken, each slot drawing only its lap or sector.
//
// How a cell becomes a slot:
// - the slot's run is the cell's run, its Y and X the chosen variables, its
//   colour its index (slot k, colour k);
// - the condition switch (LimitVariables) is on and the slot's DisplayIf
//   with it: LimitVar is the time variable (RunVars slot 1), between its
//   values at the cell's start and end crossing rows (the rows the table
//   pairs the crossings into);
// - with distance (slot 11) on X, the X range is typed to the distances at
//   those two rows (both boxes ticked) and the axis starts from zero, so that
//   every lap runs from 0 along its own X axis;
// - with more than one cell, each slot has its own X axis (MultipleXAxis),
//   which is what lays the laps over each other;
// - the X axis title names the run and the cell ("Lap 2", "Sector 1, Lap 2").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "views/graph_model.h"

namespace tl {

// One selected cell of the table.
struct OverlayCell {
    int32_t run = 1;
    int32_t startRow = 0;  // RunData rows of the two crossings
    int32_t endRow = 0;
    std::string label;  // "Lap 2", "Sector 1, Lap 2"
};

// The rows of frmSectorGraphSelector's OptionGraphType.
enum class SectorGraphType { Speed, LateralAcceleration, TimeSlipRate, GCircle, Other };

struct SectorGraphAxes {
    std::string x, y;
};
// The two variables of an option, X then Y: "Speed" v "Distance" slots 11
// and 8, "Lateral Acceleration" slots 11 and 4, "Time Slip Rate" slots 11
// and 24, the g-circle slots 4 and 2, and for the other option the chosen
// names, each reset to slot 11 (X) or slot 8 (Y) when it no longer names an
// enabled variable.
SectorGraphAxes AxesOfSectorGraph(SectorGraphType type, const std::string& otherX,
                                  const std::string& otherY);

// Sets up a loaded graph (GraphModel::Load) for at most five cells; the
// caller regenerates it.
void SetUpLapOverlay(GraphModel& g, const std::vector<OverlayCell>& cells,
                     const SectorGraphAxes& axes);

}  // namespace tl
