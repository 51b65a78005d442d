#include "sim/faults.h"

#include <cmath>
#include <cstdlib>

#include "sim/rng.h"

namespace tl::sim {

bool ParseFaults(const std::string& text, Faults& faults, std::string& error) {
    faults = Faults{};
    if (text.empty() || text == "none") return true;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(',', start);
        if (end == std::string::npos) end = text.size();
        const std::string item = text.substr(start, end - start);
        start = end + 1;
        if (item.empty()) continue;
        const size_t eq = item.find('=');
        if (eq == std::string::npos) {
            error = "fault \"" + item + "\" needs a value (name=value)";
            return false;
        }
        const std::string key = item.substr(0, eq), value = item.substr(eq + 1);
        char* stop = nullptr;
        const double v = std::strtod(value.c_str(), &stop);
        if (value.empty() || *stop != '\0' || !std::isfinite(v) || v < 0.0) {
            error = "fault \"" + key + "\" has a bad value \"" + value + "\"";
            return false;
        }
        if (key == "corrupt" && v <= 1.0) {
            faults.corruptRate = v;
        } else if (key == "dropgps" && v <= 1.0) {
            faults.dropGps = v;
        } else if (key == "badnmea" && v <= 1.0) {
            faults.badSentences = v;
        } else if (key == "timejumps" && v <= 1000.0) {
            faults.timeJumps = static_cast<int>(v);
        } else if (key == "jumpticks" && v >= 2.0 && v <= 1000.0) {
            faults.jumpTicks = static_cast<int>(v);
        } else if (key == "cut" && v > 0.0 && v <= 1.0) {
            faults.keep = v;
        } else {
            error = "unknown fault or value out of range: \"" + item +
                    "\" (corrupt, dropgps, badnmea: 0..1; timejumps; jumpticks: 2..1000; cut: "
                    "share kept, 0..1)";
            return false;
        }
        if (end == text.size()) break;
    }
    return true;
}

size_t CorruptBytes(std::vector<uint8_t>& bytes, size_t from, double rate, uint64_t seed) {
    if (rate <= 0.0 || from >= bytes.size()) return 0;
    Rng rng(seed);
    size_t changed = 0;
    size_t pos = from;
    const double logKeep = rate < 1.0 ? std::log(1.0 - rate) : 0.0;
    while (true) {
        if (rate < 1.0) {
            double u = rng.Uniform();
            if (u <= 0.0) u = 1e-300;
            const double skip = std::floor(std::log(u) / logKeep);
            if (skip >= static_cast<double>(bytes.size() - pos)) break;
            pos += static_cast<size_t>(skip);
        }
        if (pos >= bytes.size()) break;
        bytes[pos] ^= static_cast<uint8_t>(rng.UniformInt(1, 255));
        ++changed;
        ++pos;
    }
    return changed;
}

}  // namespace tl::sim
