// Minimal readers of the raw formats for the simulator's tests, written from
// the format rules and kept apart from the encoders.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "sim/simulation.h"

namespace tl::sim::test {

struct Planes {
    int type = 0;
    int n = 0;
    uint8_t header[9] = {};
    std::vector<uint8_t> data;  // 8 * n, plane 1 first
    int At(int frame, int vector) const {
        return data[static_cast<size_t>(vector - 1) * n + frame];
    }
};

inline int32_t I32(const std::vector<uint8_t>& b, size_t at) {
    return static_cast<int32_t>(b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) |
                                (static_cast<uint32_t>(b[at + 3]) << 24));
}

// A .run file of a plane family, read by its layout.
inline bool ReadPlanes(const std::vector<uint8_t>& file, Planes& p) {
    if (file.size() < 12 || I32(file, 0) != 7576) return false;
    p.type = I32(file, 4);
    p.n = I32(file, 8);
    if (p.n < 0 || file.size() != 12 + 8 * static_cast<size_t>(p.n + 1)) return false;
    p.data.resize(static_cast<size_t>(8) * p.n);
    for (int v = 1; v <= 8; ++v) {
        const size_t base = 12 + static_cast<size_t>(v - 1) * (p.n + 1);
        p.header[v] = file[base];
        std::memcpy(p.data.data() + static_cast<size_t>(v - 1) * p.n, file.data() + base + 1, p.n);
    }
    return true;
}

// Row counting of a first run (RawStart 0), HX40: every frame is a row except
// the seven of a GPS block (bit 0 of vector 3 set in the frame before, clear
// eight back), inside the margin 9 < i < RawEnd - 8.
inline int CountRowsHX40(const Planes& p) {
    const int rawEnd = p.n - 1;
    int rows = 0;
    for (int i = 0; i <= rawEnd; ++i) {
        ++rows;
        if (i > 9 && i < rawEnd - 8 && (p.At(i - 1, 3) & 1) && !(p.At(i - 8, 3) & 1)) i += 7;
    }
    return rows;
}

inline int CountRowsSV63(const Planes& p) {
    int step = p.header[1];
    if (step == 0 || step >= 21) step = 1;
    const int rawEnd = p.n - 1;
    int rows = 0;
    for (int i = 1 + 1; i < rawEnd - 3; ++i) {
        rows += step;
        if (p.At(i - 1, 1) & 4) i += 3;
    }
    return rows;
}

struct Record {
    size_t pos = 0;
    int id = 0;
    std::vector<uint8_t> payload;
};

inline int StreamRecordLength(int id) {
    switch (id) {
        case 6:
        case 7:
        case 8:
            return 6;
        case 9:
        case 14:
        case 15:
        case 16:
        case 17:
        case 18:
        case 30:
            return 5;
        case 10:
            return 14;
        case 11:
            return 10;
        case 12:
        case 13:
            return 3;
        default:
            return id >= 20 && id <= 27 ? 4 : 0;
    }
}

struct StreamWalk {
    std::vector<Record> records;
    int badBytes = 0;  // bytes stepped over: unknown ids or failed checksums
    int rows = 0;      // rows by the time-index rule
};

// Walks the stream as a first run in memory: the loader keeps one zero byte
// past the file's bytes, and a record may end on it.
inline StreamWalk WalkStream(const std::vector<uint8_t>& file) {
    StreamWalk w;
    std::vector<uint8_t> s = file;
    s.push_back(0);
    const size_t end = file.size();
    size_t pos = 0;
    bool first = true;
    long base = 0, count = -1, sample = -1;
    while (pos < end) {
        const int len = StreamRecordLength(s[pos]);
        bool ok = len > 0 && pos + len <= s.size();
        if (ok) {
            unsigned sum = 0;
            for (int i = 0; i < len - 1; ++i) sum += s[pos + i];
            ok = (sum & 255) == s[pos + len - 1];
        }
        if (!ok) {
            ++w.badBytes;
            ++pos;
            continue;
        }
        Record r;
        r.pos = pos;
        r.id = s[pos];
        r.payload.assign(s.begin() + pos + 1, s.begin() + pos + len - 1);
        if (r.id == 9) {
            const long t = (r.payload[0] << 16) | (r.payload[1] << 8) | r.payload[2];
            if (first) {
                first = false;
                base = t;
            }
            ++count;
            const long d = t - base;
            if (d == count || d >= count + 10)
                sample = count;
            else if (d < count && d - count > -10)
                sample = count = d;
            else if (d > count)
                sample = count = d;
        }
        w.records.push_back(std::move(r));
        pos += len;
    }
    w.rows = static_cast<int>(sample + 1);
    return w;
}

inline uint32_t BE(const std::vector<uint8_t>& p, size_t at, int bytes) {
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i) v = (v << 8) | p[at + i];
    return v;
}

inline std::vector<std::string> SplitFields(const std::string& s) {
    std::vector<std::string> f(1);
    for (char c : s) {
        if (c == ',' && f.size() < 9)
            f.emplace_back();
        else
            f.back() += c;
    }
    return f;
}

// A quiet configuration: no noise and no bias, so that decoded values can be
// held to the truth.
inline SimConfig QuietConfig(Family family, const std::string& circuit, int laps, uint64_t seed) {
    SimConfig c;
    c.family = family;
    c.circuit = circuit;
    c.vehicle = circuit == "kart" ? "kart" : "car";
    c.seed = seed;
    c.drive.laps = laps;
    c.encode.sensors.gpsNoise = 0.0;
    c.encode.sensors.gpsSpeedNoise = 0.0;
    c.encode.sensors.accelNoise = 0.0;
    c.encode.sensors.accelBiasLong = 0.0;
    c.encode.sensors.accelBiasLat = 0.0;
    return c;
}

}  // namespace tl::sim::test
