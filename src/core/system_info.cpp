#include "core/system_info.h"

#include <fstream>
#include <sstream>

namespace tl {

MemoryFigures ParseMemInfo(const std::string& text) {
    double total = 0, available = 0, swapTotal = 0, swapFree = 0, memFree = 0;
    bool sawAvailable = false;
    std::istringstream in(text);
    std::string key;
    double kb = 0;
    std::string unit;
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        if (!(fields >> key >> kb)) continue;
        const double bytes = kb * 1024.0;
        if (key == "MemTotal:")
            total = bytes;
        else if (key == "MemAvailable:")
            available = bytes, sawAvailable = true;
        else if (key == "MemFree:")
            memFree = bytes;
        else if (key == "SwapTotal:")
            swapTotal = bytes;
        else if (key == "SwapFree:")
            swapFree = bytes;
    }
    if (!sawAvailable) available = memFree;
    MemoryFigures f;
    f.totalPhysical = total;
    f.availablePhysical = available;
    f.totalVirtual = total + swapTotal;
    f.availableVirtual = available + swapFree;
    return f;
}

MemoryFigures ProcMemoryStatus::Read() {
    std::ifstream in("/proc/meminfo");
    std::stringstream text;
    text << in.rdbuf();
    return ParseMemInfo(text.str());
}

std::string FormatKilobytes(double bytes) {
    long long k = static_cast<long long>(bytes / 1024.0);
    std::string digits = std::to_string(k < 0 ? -k : k);
    std::string grouped;
    int count = 0;
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (count && count % 3 == 0) grouped.insert(grouped.begin(), ',');
        grouped.insert(grouped.begin(), *it);
        ++count;
    }
    if (k < 0) grouped.insert(grouped.begin(), '-');
    return grouped + "K";
}

}  // namespace tl
