// Figures of this machine: the memory status from /proc/meminfo and the
// system description logged at start.
#pragma once

#include <string>

#include "core/platform.h"

namespace tl {

// Physical memory: MemTotal / MemAvailable. Virtual memory: physical plus
// swap (SwapTotal / SwapFree), which is what a process can still commit.
class ProcMemoryStatus final : public MemoryStatus {
  public:
    MemoryFigures Read() override;
};

// Parses the text of /proc/meminfo (exposed for tests).
MemoryFigures ParseMemInfo(const std::string& text);
// "###,###,###" with K behind, as the start-up log writes memory sizes.
std::string FormatKilobytes(double bytes);

}  // namespace tl
