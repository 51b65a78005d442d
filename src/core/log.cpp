#include "core/log.h"

#include <cstdio>

#include "core/build_profile.h"

namespace tl {

void LogDebug(const std::string& text) {
    const BuildProfile& p = Profile();
    if (!p.DebugFlag || p.InterpFlag) return;
    const std::string& path = Paths().LogPath;
    if (path.empty()) return;
    // Open, append one line, close: a crash loses nothing.
    if (std::FILE* f = std::fopen(path.c_str(), "ab")) {
        std::fwrite(text.data(), 1, text.size(), f);
        std::fwrite("\r\n", 1, 2, f);
        std::fclose(f);
    }
}

}  // namespace tl
