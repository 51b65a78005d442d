// The measurements table's "Highlight": its selected cells become the track
// map's HighlightSections, the stretches the map draws wide.
#pragma once

#include <vector>

#include "results/measurement_table.h"

namespace tl {

// The first five cells become active sections (run, first and last RunData
// row of the cell); the rest of the five are made inactive.
void SetHighlightSections(const std::vector<CellRequest>& cells);

}  // namespace tl
