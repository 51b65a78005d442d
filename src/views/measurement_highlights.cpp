#include "views/measurement_highlights.h"

#include <algorithm>

#include "views/track_map.h"

namespace tl {

void SetHighlightSections(const std::vector<CellRequest>& cells) {
    auto& sections = HighlightSections();
    for (size_t i = 0; i < sections.size(); ++i) {
        HighlightSection s;
        if (i < cells.size()) {
            s.active = true;
            s.run = cells[i].run;
            s.firstRow = std::min(cells[i].startRow, cells[i].endRow);
            s.lastRow = std::max(cells[i].startRow, cells[i].endRow);
        }
        sections[i] = s;
    }
}

}  // namespace tl
