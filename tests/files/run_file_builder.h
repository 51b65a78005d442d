// Builds .run files for the tests: the head, plane files from frames, stream
// files from bytes, and a simulated HX40 run of a car lapping a circuit with
// its GPS sentences, so that the row count of a load can be checked against
// what the simulation knows.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tl::test {

using Frame = std::array<uint8_t, 8>;

inline void PutInt32(std::string& out, int32_t v) {
    const uint32_t u = static_cast<uint32_t>(v);
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((u >> (8 * i)) & 0xFF));
}

inline std::string Head(int32_t magic, int32_t type) {
    std::string out;
    PutInt32(out, magic);
    PutInt32(out, type);
    return out;
}

// A plane file: head, N, then eight planes of the header byte and N samples.
inline std::string PlaneFile(int32_t type, const Frame& header, const std::vector<Frame>& frames) {
    std::string out = Head(7576, type);
    PutInt32(out, static_cast<int32_t>(frames.size()));
    for (int v = 0; v < 8; ++v) {
        out.push_back(static_cast<char>(header[v]));
        for (const Frame& f : frames) out.push_back(static_cast<char>(f[v]));
    }
    return out;
}

// Byte-for-byte comparison that reports the first difference, not the bytes.
inline ::testing::AssertionResult SameBytes(const std::string& actual,
                                            const std::string& expected) {
    if (actual == expected) return ::testing::AssertionSuccess();
    size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
    auto byteAt = [](const std::string& s, size_t i) {
        return i < s.size() ? std::to_string(static_cast<uint8_t>(s[i])) : std::string("end");
    };
    return ::testing::AssertionFailure()
           << "sizes " << actual.size() << " and " << expected.size()
           << ", first difference at offset " << at << ": " << byteAt(actual, at) << " instead of "
           << byteAt(expected, at);
}

inline std::string StreamFile(int32_t type, const std::string& bytes) {
    return Head(7576, type) + bytes;
}

// Plain frames with a recognisable pattern and no GPS marker (vector 3 bit 0
// clear), so every frame is one row.
inline std::vector<Frame> PatternFrames(int count, int seed) {
    std::vector<Frame> frames(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        for (int v = 0; v < 8; ++v)
            frames[static_cast<size_t>(i)][static_cast<size_t>(v)] =
                static_cast<uint8_t>((i * 7 + v * 31 + seed * 13) & 0xFF);
    for (Frame& f : frames) f[2] &= 0xFE;
    return frames;
}

// A car lapping a circle of 120 m radius, speeding up and slowing down, as the
// HX40 records it: one frame every 0.01 s with the accelerations, wheel and
// engine pulses, and once a second a GPS sentence in seven frames behind a
// frame that carries the GPS marker.
struct SimulatedHX40Run {
    Frame header{};
    std::vector<Frame> frames;
    int gpsBlocks = 0;
    // Rows the run has: one per normal frame. A GPS block has no row of its
    // own: its fix is written back in time, and the frame behind it makes
    // the block's one row.
    int32_t trueRows = 0;
};

inline SimulatedHX40Run SimulateHX40(double seconds, double startClock = 43200.0) {
    SimulatedHX40Run run;
    // Header byte 5: bit 32 chooses the 12 V span of analogue 1.
    run.header = {1, 0, 0, 0, 32, 0, 0, 0};
    const double radius = 120.0, g = 9.80665, dt = 0.01;
    const double lat0 = 52.0, lon0 = -1.0;
    double angle = 0.0, t = 0.0;
    int sinceGps = 0;
    auto encodeAccel = [](double accelG, uint8_t& fraction, bool& addOne, bool& negative) {
        negative = accelG < 0;
        double a = std::fabs(accelG);
        addOne = a >= 1.0;
        if (addOne) a -= 1.0;
        fraction = static_cast<uint8_t>(std::min(255.0, a * 256.0));
    };
    while (t < seconds) {
        const double speed = 25.0 + 8.0 * std::sin(t * 0.3);  // m/s
        const double dv = 8.0 * 0.3 * std::cos(t * 0.3);
        if (sinceGps >= 100 && t + 0.1 < seconds) {
            // The frame before the block carries the marker.
            run.frames.back()[2] |= 0x01;
            const double lat = lat0 + (radius * std::cos(angle)) / 111320.0;
            const double lon =
                lon0 + (radius * std::sin(angle)) / (111320.0 * std::cos(lat0 * M_PI / 180));
            const int clock = static_cast<int>(startClock + t);
            char sentence[80];
            std::snprintf(sentence, sizeof sentence, ",%02d%02d%02d,8,%09.4f,N,%010.4f,W,%05.1f,A*",
                          clock / 3600, clock / 60 % 60, clock % 60,
                          std::floor(lat) * 100 + (lat - std::floor(lat)) * 60,
                          std::floor(-lon) * 100 + (-lon - std::floor(-lon)) * 60,
                          speed * 1.943844);
            std::string text(sentence);
            text.resize(56, ' ');
            // The sentence reads from the last frame of the block to the first.
            std::vector<Frame> block(7);
            for (int c = 0; c < 56; ++c) block[6 - c / 8][c % 8] = static_cast<uint8_t>(text[c]);
            run.frames.insert(run.frames.end(), block.begin(), block.end());
            ++run.gpsBlocks;
            sinceGps = 0;
        }
        Frame f{};
        const double analogue = 2.5 + 2.0 * std::sin(t);
        f[0] = static_cast<uint8_t>(analogue / 12.0 * 255.0);
        f[1] = static_cast<uint8_t>(100 + 50 * std::sin(t * 0.7));
        uint8_t longFrac, latFrac;
        bool longOne, longNeg, latOne, latNeg;
        encodeAccel(dv / g, longFrac, longOne, longNeg);
        encodeAccel(speed * speed / radius / g, latFrac, latOne, latNeg);
        f[3] = longFrac;
        f[4] = latFrac;
        const int wheelPulses = static_cast<int>(speed * dt / 0.5) & 3;
        const int enginePulses = 2;
        f[7] = static_cast<uint8_t>(wheelPulses | (enginePulses << 2) | (longOne ? 16 : 0) |
                                    (longNeg ? 32 : 0) | (latOne ? 64 : 0) | (latNeg ? 128 : 0));
        f[5] = static_cast<uint8_t>(speed * 3);
        f[6] = static_cast<uint8_t>(200 - speed);
        f[2] = static_cast<uint8_t>((static_cast<int>(t * 100) & 0x7E) | (t > 5 ? 0x80 : 0));
        run.frames.push_back(f);
        angle += speed * dt / radius;
        t += dt;
        ++sinceGps;
    }
    run.trueRows = static_cast<int32_t>(run.frames.size()) - 7 * run.gpsBlocks;
    return run;
}

}  // namespace tl::test
