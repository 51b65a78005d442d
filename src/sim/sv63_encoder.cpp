// SV63: eight-byte frames every SamplePeriod * 0.01 s (the period stands in
// header byte 1), with the acceleration in vectors 4, 5 and 8 as the HX40
// writes it, and binary GPS blocks of three frames.
//
// Normal frame: bit value 4 of vector 1 says that a GPS block follows; bit
// value 4 of vector 2 is the receiver's time pulse, set in the same frame (the
// fix is taken at the pulse and the block is ready by the next frame). The
// block describes the row of the normal frame that follows it: the meter has
// no GPS delay.
//
// Block at frames p, p+1, p+2 (nibbles of vectors 1 and 2, whole vectors 4
// and 5): speed in 0.8 mph steps as p.v1 low nibble * 16 + p.v2 low nibble;
// latitude, 32-bit two's complement in 1e-7 degree, top byte to bottom byte:
// p.v5, p.v4, p+1.v5, p+1.v4; longitude: p+1 nibbles, p+2.v5, p+2.v4, p+2
// nibbles. Every other byte of a block is 0.
//
// Frames at the two ends give no rows to a reader: two lead frames and four
// trailing frames carry the acceleration of the first and last rows. The
// simulated run is trimmed to a whole number of frames.
#include <algorithm>
#include <cmath>

#include "sim/encoders.h"

namespace tl::sim {

namespace {

int CountRows(const RawRun& run, int period) {
    const int rawEnd = run.frames - 1;
    int counter = 0;
    for (int i = 0; i <= rawEnd; ++i) {
        if (i > 1 && i < rawEnd - 3) {
            counter += period;
            if (run.Plane(1, i - 1) & 4) i += 3;
        }
    }
    return counter;
}

}  // namespace

RawRun EncodeSV63(const Trajectory& traj, const Circuit& circuit, const EncodeOptions& options) {
    RawRun run;
    run.family = Family::SV63;
    run.fileType = 202;
    run.planes = true;
    const int P = std::clamp(options.sv63Period, 1, 20);
    run.header[0] = static_cast<uint8_t>(P);
    const int groups = static_cast<int>(traj.rows.size()) / P;
    const int R = groups * P;
    int interval = options.gpsIntervalRows > 0 ? options.gpsIntervalRows : 20;
    interval = (interval + P - 1) / P * P;
    const int firstFix = (20 + P - 1) / P * P;

    std::vector<GpsFix> fixes =
        MakeGpsFixes(traj, circuit, options.sensors, firstFix, interval, options.faults.dropGps,
                     SubSeed(options.seed, 30), run.droppedFixes);
    std::vector<int> fixAtGroup(groups + 1, -1);
    for (size_t i = 0; i < fixes.size(); ++i) {
        if (fixes[i].row >= R || fixes[i].row / P < 1) continue;
        fixAtGroup[fixes[i].row / P] = static_cast<int>(run.fixes.size());
        run.fixes.push_back(fixes[i]);
        run.fixSentAtRow.push_back(fixes[i].row);
    }
    const int total = 2 + groups + 3 * static_cast<int>(run.fixes.size()) + 4;
    const int keepFrames = std::max(1, static_cast<int>(std::lround(total * options.faults.keep)));
    run.frames = keepFrames;
    run.bytes.assign(static_cast<size_t>(8) * keepFrames, 0);

    AccelSensor accel(options.sensors, SubSeed(options.seed, 31));
    int frame = 0;
    auto put = [&](int v, uint8_t value) {
        if (frame < keepFrames) run.Plane(v, frame) = value;
    };
    auto normal = [&](const AccelReading& a, bool gpsFollows) {
        const AccelBytes ab = EncodeFrameAccel(a.longG, a.latG);
        put(1, gpsFollows ? 4 : 0);
        put(2, gpsFollows ? 4 : 0);
        put(4, ab.v4);
        put(5, ab.v5);
        put(8, ab.v8);
        ++frame;
    };
    if (R > 0) {
        const AccelReading a0 = accel.Read(traj.rows[0]);
        normal(a0, false);
        normal(a0, fixAtGroup[0] >= 0);
    }
    AccelReading last;
    for (int g = 0; g < groups; ++g) {
        if (fixAtGroup[g] >= 0) {
            const GpsFix& f = run.fixes[fixAtGroup[g]];
            const uint32_t lat =
                static_cast<uint32_t>(static_cast<int32_t>(std::llround(f.lat * 1e7)));
            const uint32_t lon =
                static_cast<uint32_t>(static_cast<int32_t>(std::llround(f.lon * 1e7)));
            const long mph = std::lround(f.speed * 3600.0 / 1609.344 / 0.8);
            const uint8_t speed = static_cast<uint8_t>(std::clamp(mph, 0l, 255l));
            const uint8_t lon3 = static_cast<uint8_t>(lon >> 24), lon0 = static_cast<uint8_t>(lon);
            put(1, speed >> 4);
            put(2, speed & 15);
            put(5, static_cast<uint8_t>(lat >> 24));
            put(4, static_cast<uint8_t>(lat >> 16));
            ++frame;
            put(5, static_cast<uint8_t>(lat >> 8));
            put(4, static_cast<uint8_t>(lat));
            put(1, lon3 >> 4);
            put(2, lon3 & 15);
            ++frame;
            put(5, static_cast<uint8_t>(lon >> 16));
            put(4, static_cast<uint8_t>(lon >> 8));
            put(1, lon0 >> 4);
            put(2, lon0 & 15);
            ++frame;
        }
        last = accel.Read(traj.rows[g * P]);
        normal(last, g + 1 < groups && fixAtGroup[g + 1] >= 0);
    }
    for (int k = 0; k < 4; ++k) normal(last, false);
    const int clean = CountRows(run, P);
    run.rows = std::min(R, clean);
    if (keepFrames < total)
        run.notes.push_back("run cut short after " + std::to_string(keepFrames) + " of " +
                            std::to_string(total) + " frames");
    run.corruptedBytes =
        CorruptBytes(run.bytes, 0, options.faults.corruptRate, SubSeed(options.seed, 33));
    run.expectedRows = CountRows(run, P);
    return run;
}

}  // namespace tl::sim
