// Raw runs for the store tests: a vehicle driven round a circular track,
// encoded frame by frame as the HX40 logger and the SV63 meter write them,
// and placed in the store the way the raw-file loader does.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::test {

// Eight planes of frames, as a plane-family .run file holds them.
struct PlaneRun {
    std::array<std::vector<uint8_t>, 8> planes;
    std::array<uint8_t, 8> header{};
    int32_t frames() const { return static_cast<int32_t>(planes[0].size()); }
    // Rows the frame rules give (ground truth of the generator).
    int32_t expectedRows = 0;
    // First frame of every GPS block.
    std::vector<int32_t> gpsBlocks;
    // HX40: the frame each row comes from (a GPS block's row is its first
    // frame; the normal frame after the block belongs to that row).
    std::vector<int32_t> rowFrame;
};

// The vehicle: 20 m/s plus a slow surge, on a circle of 150 m radius.
struct CircuitVehicle {
    double speed(double t) const { return 20.0 + 5.0 * std::sin(t * 0.2); }
    double longAccelG(double t) const { return 5.0 * 0.2 * std::cos(t * 0.2) / 9.80665; }
    double latAccelG(double t) const { return speed(t) * speed(t) / 150.0 / 9.80665; }
};

// An acceleration in g to the byte of vector 4 or 5 and the +1 g and sign bits
// of vector 8.
inline void EncodeAccel(double g, uint8_t& fraction, uint8_t& v8, int oneGBit, int signBit) {
    if (g < 0) v8 |= uint8_t(1 << signBit);
    double a = std::fabs(g);
    if (a >= 1.0) {
        v8 |= uint8_t(1 << oneGBit);
        a -= 1.0;
    }
    fraction = static_cast<uint8_t>(std::min(255.0, a * 256.0));
}

// HX40: one frame per 0.01 s; once a second, after `firstGpsAfter` frames, the
// logger sets the GPS marker bit in a frame and hands the next seven frames to
// a 56-character sentence. The frame after the block is a normal frame with
// the marker clear.
inline PlaneRun MakeHx40Run(int seconds, int firstGpsAfter = 50) {
    CircuitVehicle car;
    PlaneRun run;
    run.header = {0x10, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    auto push = [&](const std::array<uint8_t, 8>& f) {
        for (int v = 0; v < 8; ++v) run.planes[v].push_back(f[v]);
    };
    const int total = seconds * 100;
    int sinceGps = 100 - firstGpsAfter;
    bool afterBlock = false;
    double t = 0;
    while (run.frames() < total) {
        std::array<uint8_t, 8> f{};
        f[0] = static_cast<uint8_t>(100 + 50 * std::sin(t));  // analogue 1
        f[1] = static_cast<uint8_t>(80);                      // analogue 2
        EncodeAccel(car.longAccelG(t), f[3], f[7], 4, 5);
        EncodeAccel(car.latAccelG(t), f[4], f[7], 6, 7);
        f[7] |= 1;  // one wheel pulse
        f[5] = 0x80;
        f[6] = 0x40;
        const bool gpsNow = ++sinceGps >= 100 && run.frames() + 20 < total;
        if (gpsNow) f[2] |= 1;  // marker: a block follows
        if (afterBlock)
            afterBlock = false;
        else
            run.rowFrame.push_back(run.frames());
        push(f);
        t += 0.01;
        if (gpsNow) {
            sinceGps = 0;
            char sentence[64];
            const double lat = 5130.1234 + t * 0.001;
            std::snprintf(sentence, sizeof sentence, ",%06d,8,%09.4f,N,%010.4f,W,%05.1f,M,00000",
                          120000 + int(t), lat, 112.5678, car.speed(t) / 0.5144444);
            std::string s(sentence);
            s.resize(56, '0');
            run.gpsBlocks.push_back(run.frames());
            run.rowFrame.push_back(run.frames());
            afterBlock = true;
            // The sentence reads from the last of the seven frames to the first.
            for (int k = 0; k < 7; ++k) {
                std::array<uint8_t, 8> g{};
                const int part = 6 - k;
                for (int v = 0; v < 8; ++v) g[v] = static_cast<uint8_t>(s[part * 8 + v]);
                push(g);
            }
            t += 0.07;
        }
    }
    // Blocks lie well inside the margins, so each takes seven frames off the
    // row count: the block and the frame after it make one row.
    run.expectedRows = run.frames() - 7 * static_cast<int32_t>(run.gpsBlocks.size());
    return run;
}

// SV63: frames every `period` hundredths; a GPS group is a frame with bit
// value 4 of vector 1 set, then three binary GPS frames, then a normal frame.
inline PlaneRun MakeSv63Run(int frames, uint8_t period, int gpsEvery = 25) {
    CircuitVehicle car;
    PlaneRun run;
    run.header = {period, 0, 0, 0, 0, 0, 0, 0};
    int sinceGps = 0;
    double t = 0;
    int blocks = 0;
    while (run.frames() < frames) {
        std::array<uint8_t, 8> f{};
        EncodeAccel(car.longAccelG(t), f[3], f[7], 4, 5);
        EncodeAccel(car.latAccelG(t), f[4], f[7], 6, 7);
        const int p = run.frames();
        const bool gpsNow = ++sinceGps >= gpsEvery && p > 10 && p + 12 < frames;
        if (gpsNow) f[0] |= 4;
        for (int v = 0; v < 8; ++v) run.planes[v].push_back(f[v]);
        if (gpsNow) {
            sinceGps = 0;
            ++blocks;
            run.gpsBlocks.push_back(run.frames());
            const int32_t lat = 514000000 + p, lon = -11000000 - p;
            const uint8_t speed = static_cast<uint8_t>(car.speed(t) * 2.23694 / 0.8);
            std::array<std::array<uint8_t, 8>, 3> g{};
            g[0][0] = speed >> 4;
            g[0][1] = speed & 15;
            g[0][4] = uint8_t(lat >> 24);
            g[0][3] = uint8_t(lat >> 16);
            g[1][4] = uint8_t(lat >> 8);
            g[1][3] = uint8_t(lat);
            g[1][0] = uint8_t(lon >> 28) & 15;
            g[1][1] = uint8_t(lon >> 24) & 15;
            g[2][4] = uint8_t(lon >> 16);
            g[2][3] = uint8_t(lon >> 8);
            g[2][0] = uint8_t(lon >> 4) & 15;
            g[2][1] = uint8_t(lon) & 15;
            for (auto& gf : g)
                for (int v = 0; v < 8; ++v) run.planes[v].push_back(gf[v]);
        }
        t += 0.01 * (period == 0 || period >= 21 ? 1 : period);
    }
    const int step = (period == 0 || period >= 21) ? 1 : period;
    // Frames strictly inside the margins (all but two at the start and four at
    // the end) give a step each; the three GPS frames of a group give none.
    run.expectedRows = step * (run.frames() - 6 - 3 * blocks);
    return run;
}

// Adds a run as the raw-file loader does: the count rises, the markers grow,
// the raw stretch is placed behind the last run and the bytes copied in, then
// the rows are allocated.
inline int32_t AddPlaneRun(const std::string& name, const PlaneRun& raw) {
    RunStore& s = Store();
    s.RunCount += 1;
    const int32_t n = s.RunCount;
    Markers().ResizeRuns(n);
    RunRecord& r = s.RunInfo[n];
    r.Name = name;
    r.RawStart = n == 1 ? 0 : s.RunInfo[n - 1].RawEnd + 1;
    r.RawEnd = r.RawStart + raw.frames() - 1;
    r.HeaderBytes = raw.header;
    PreserveRawData(r.RawEnd);
    for (int v = 1; v <= 8; ++v)
        for (int32_t i = 0; i < raw.frames(); ++i)
            s.RawData(r.RawStart + i, v) = raw.planes[v - 1][i];
    AllocateRunArray(n);
    return n;
}

// A stream-family run: the bytes behind the last run, one index more than
// the file holds (the last byte stays 0).
inline int32_t AddStreamRun(const std::string& name, const std::vector<uint8_t>& bytes) {
    RunStore& s = Store();
    s.RunCount += 1;
    const int32_t n = s.RunCount;
    Markers().ResizeRuns(n);
    RunRecord& r = s.RunInfo[n];
    r.Name = name;
    r.RawStart = n == 1 ? 0 : s.RunInfo[n - 1].RawEnd + 1;
    r.RawEnd = r.RawStart + static_cast<int32_t>(bytes.size());
    PreserveRawData(r.RawEnd);
    for (size_t i = 0; i < bytes.size(); ++i)
        s.RawData(r.RawStart + static_cast<int32_t>(i)) = bytes[i];
    AllocateRunArray(n);
    return n;
}

}  // namespace tl::test
