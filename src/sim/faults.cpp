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
        } else if (key == "missbeacon" && v >= 1.0 && v <= 1.0e6) {
            faults.missBeacon = static_cast<int>(v);
        } else if (key == "falsebeacon" && v <= 1.0e6) {
            faults.falseBeacon = v;
        } else {
            error = "unknown fault or value out of range: \"" + item +
                    "\" (corrupt, dropgps, badnmea: 0..1; timejumps; jumpticks: 2..1000; cut: "
                    "share kept, 0..1; missbeacon: pulse number from 1; falsebeacon: time in s)";
            return false;
        }
        if (end == text.size()) break;
    }
    return true;
}

std::vector<uint8_t> LoggedBeacon(const Trajectory& traj, const Faults& faults) {
    const size_t n = traj.rows.size();
    std::vector<uint8_t> out(n, 0);
    for (size_t r = 0; r < n; ++r) out[r] = traj.rows[r].beacon ? 1 : 0;
    auto truth = [&](size_t r) { return traj.rows[r].beacon; };
    if (faults.missBeacon > 0) {
        int pulse = 0;
        for (size_t r = 0; r < n; ++r) {
            if (!truth(r) || (r > 0 && truth(r - 1))) continue;
            if (++pulse != faults.missBeacon) continue;
            for (size_t k = r; k < n && truth(k); ++k) out[k] = 0;
            break;
        }
    }
    if (faults.falseBeacon >= 0.0) {
        const double at = std::round(faults.falseBeacon * 100.0);
        if (at < static_cast<double>(n))
            for (size_t k = static_cast<size_t>(at);
                 k < n && k < static_cast<size_t>(at) + kFalseBeaconRows; ++k)
                out[k] = 1;
    }
    return out;
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
