// MQ7 and SW63: a stream of self-describing records, one channel sample per
// record: id byte, big-endian payload, and a checksum byte that is the sum of
// every byte before it, modulo 256.
//
// Each 0.01 s tick begins with a time record (id 9, u24 tick counter); the
// records after it belong to that tick. What a tick carries:
//   id 6   logger info (serial u16, firmware major, minor), once, in the first tick
//   id 8   accelerometer, lateral then longitudinal, each a sign-magnitude word:
//          (hi AND 127) + lo / 256 g, bit 7 of hi SET for a positive value
//   id 12  the beacon receiver, 1 on, 0 off, every tick
//   id 13  GPS pulse: 1 in the tick of a fix, 0 in the tick after it
//   id 10, 11, 7  the fix's position (longitude, latitude in 1e-7 degree,
//          accuracy in cm), speed and speed accuracy (cm/s), and GPS time of
//          week (ms): sent together 2 to 8 ticks after the pulse, since the
//          receiver needs time to compute them; they describe the pulse tick
//   id 20  supply voltage in mV, every tenth tick
// SW63 only: the meter's own 100 Hz speed, id 30, a u24 count of
// 0.001379060159 kph, every tick (the meter's GPS speed record, id 11, is not
// read on that family, so this is its only speed).
// MQ7 only (the SW63 meter has no such inputs):
//   id 18  engine: period of the ignition pulses in ticks of the 6 MHz timer
//   id 14  Frequency 1: period of the wheel pulses, same timer (0: standing)
//   id 27  Analogue 1 [V] in mV: throttle position, 0.5 to 4.5 V
//   id 25  Analogue 2 [V] in mV: brake pressure sender, 0.5 to 4.5 V
// A time jump drops whole ticks: the counter in the next time record leaps.
#include <algorithm>
#include <cmath>
#include <utility>

#include "sim/encoders.h"
#include "sim/rng.h"

namespace tl::sim {

namespace {

class StreamWriter {
  public:
    explicit StreamWriter(std::vector<uint8_t>& out) : out_(out) {}
    void Begin(uint8_t id) {
        start_ = out_.size();
        out_.push_back(id);
    }
    void U8(uint32_t v) { out_.push_back(static_cast<uint8_t>(v & 255)); }
    void U16(uint32_t v) {
        U8(v >> 8);
        U8(v);
    }
    void U24(uint32_t v) {
        U8(v >> 16);
        U16(v);
    }
    void U32(uint32_t v) {
        U16(v >> 16);
        U16(v);
    }
    void SignMagnitude(double g) {
        const double mag = std::min(std::fabs(g), 127.99);
        long units = std::lround(mag * 256.0);
        U8(static_cast<uint32_t>((units >> 8) & 127) | (g >= 0.0 ? 128u : 0u));
        U8(static_cast<uint32_t>(units & 255));
    }
    void End() {
        uint32_t sum = 0;
        for (size_t i = start_; i < out_.size(); ++i) sum += out_[i];
        out_.push_back(static_cast<uint8_t>(sum & 255));
    }

  private:
    std::vector<uint8_t>& out_;
    size_t start_ = 0;
};

uint32_t PeriodTicks(double hz) {
    if (hz <= 0.0) return 0;
    const double ticks = 6.0e6 / hz;
    return ticks > 16777215.0 ? 0u : static_cast<uint32_t>(std::lround(ticks));
}

int RecordLength(const std::vector<uint8_t>& b, size_t pos, bool countingPass) {
    static const int kLen[31] = {0, 0, 0, 0, 0, 0, 6, 6, 6, 5, 14, 10, 3, 3, 5, 5,
                                 5, 5, 5, 0, 4, 4, 4, 4, 4, 4, 4,  4,  0, 0, 5};
    const uint8_t id = b[pos];
    if (id == 19 && !countingPass && pos + 1 < b.size()) return b[pos + 1] + 3;
    return id <= 30 ? kLen[id] : 0;
}

// The counting walk over the stream: rows of the run as the frame rules of
// the reader count them (one per time record, the time index repairing small
// gaps).
int CountRows(const std::vector<uint8_t>& b) {
    const size_t end = b.size();  // the loader keeps one zero byte past the file
    size_t pos = 0;
    bool first = true;
    long base = 0, count = 0, sample = 0, sampleCount = -1;
    while (pos < end) {
        const int len = RecordLength(b, pos, true);
        bool ok = false;
        if (len > 0 && pos + len - 2 < end) {
            uint32_t sum = 0;
            for (size_t i = pos; i < pos + len - 1 && i < end; ++i) sum += b[i];
            const uint8_t check = pos + len - 1 < end ? b[pos + len - 1] : 0;
            ok = static_cast<uint8_t>(sum & 255) == check;
        }
        if (!ok) {
            ++pos;
            continue;
        }
        if (b[pos] == 9) {
            const long t = (b[pos + 1] << 16) | (b[pos + 2] << 8) | b[pos + 3];
            if (first) {
                first = false;
                count = -1;
                base = t;
            }
            ++count;
            const long d = t - base;
            if (d == count || d >= count + 10) {
                sample = count;
            } else if (d < count) {
                if (d - count > -10) {
                    count = d;
                    sample = count;
                }
            } else {
                count = d;
                sample = count;
            }
            sampleCount = sample;
        }
        pos += len;
    }
    return static_cast<int>(sampleCount + 1);
}

}  // namespace

RawRun EncodeStream(Family family, const Trajectory& traj, const Circuit& circuit,
                    const VehicleParams& vehicle, const EncodeOptions& options) {
    RawRun run;
    run.family = family;
    run.fileType = FileType(family);
    run.planes = false;
    const bool mq7 = family == Family::MQ7;
    const int R = static_cast<int>(traj.rows.size());
    // The pulse must fall between fixes, and the late records come before the
    // next pulse: fixes at least two ticks apart.
    const int interval = options.gpsIntervalRows > 0 ? std::max(2, options.gpsIntervalRows) : 10;

    run.fixes = MakeGpsFixes(traj, circuit, options.sensors, 20, interval, options.faults.dropGps,
                             SubSeed(options.seed, 20), run.droppedFixes);
    Rng rng(SubSeed(options.seed, 21));
    std::vector<int> sendRow;
    const int maxLatency = std::max(1, std::min(8, interval - 1));
    size_t kept = 0;
    for (size_t i = 0; i < run.fixes.size(); ++i) {
        const int at = run.fixes[i].row + rng.UniformInt(std::min(2, maxLatency), maxLatency);
        if (at >= R) continue;  // the run ends before the fix is complete
        run.fixes[kept++] = run.fixes[i];
        sendRow.push_back(at);
    }
    run.fixes.resize(kept);

    // Gaps in the time index: whole ticks lost.
    std::vector<uint8_t> lost(R, 0);
    for (int g = 0; g < options.faults.timeJumps; ++g) {
        const int at =
            static_cast<int>(static_cast<long long>(R) * (g + 1) / (options.faults.timeJumps + 1)) +
            rng.UniformInt(-50, 50);
        for (int k = std::max(1, at); k < std::min(R - 1, at + options.faults.jumpTicks - 1); ++k)
            lost[k] = 1;
        ++run.timeJumps;
    }

    run.bytes.reserve(static_cast<size_t>(R) * (mq7 ? 38 : 27));
    StreamWriter w(run.bytes);
    AccelSensor accel(options.sensors, SubSeed(options.seed, 22));
    Rng supplyRng(SubSeed(options.seed, 23));
    Rng meterSpeedRng(SubSeed(options.seed, 25));
    std::vector<std::pair<size_t, int>> ticks;  // offset of each time record and its row
    ticks.reserve(R);
    size_t nextFix = 0, nextSend = 0;
    bool pulseOn = false;
    const std::vector<uint8_t> beacon = LoggedBeacon(traj, options.faults);
    for (int r = 0; r < R; ++r) {
        const TruthRow& t = traj.rows[r];
        const AccelReading a = accel.Read(t);  // the sensor runs whether or not the tick is kept
        if (lost[r]) {
            // A fix whose pulse is lost is never completed.
            for (; nextFix < run.fixes.size() && run.fixes[nextFix].row <= r; ++nextFix)
                if (run.fixes[nextFix].row == r) sendRow[nextFix] = -1;
            while (nextSend < run.fixes.size() && sendRow[nextSend] <= r) ++nextSend;
            continue;
        }
        ticks.emplace_back(run.bytes.size(), r);
        w.Begin(9);
        w.U24(options.timeIndexStart + static_cast<uint32_t>(r));
        w.End();
        if (r == 0) {
            w.Begin(6);
            w.U16(options.serialNumber);
            w.U8(options.firmwareMajor);
            w.U8(options.firmwareMinor);
            w.End();
        }
        w.Begin(8);
        w.SignMagnitude(a.latG);
        w.SignMagnitude(a.longG);
        w.End();
        w.Begin(12);
        w.U8(beacon[r]);
        w.End();
        const bool fixHere = nextFix < run.fixes.size() && run.fixes[nextFix].row == r;
        if (fixHere || pulseOn) {
            w.Begin(13);
            w.U8(fixHere ? 1 : 0);
            w.End();
            pulseOn = fixHere;
        }
        while (nextFix < run.fixes.size() && run.fixes[nextFix].row <= r) ++nextFix;
        while (nextSend < run.fixes.size() && sendRow[nextSend] <= r) {
            if (sendRow[nextSend] == r) {
                const GpsFix& f = run.fixes[nextSend];
                w.Begin(10);
                w.U32(static_cast<uint32_t>(static_cast<int32_t>(std::llround(f.lon * 1e7))));
                w.U32(static_cast<uint32_t>(static_cast<int32_t>(std::llround(f.lat * 1e7))));
                w.U32(static_cast<uint32_t>(std::lround(f.posAccuracy * 100.0)));
                w.End();
                w.Begin(11);
                w.U32(static_cast<uint32_t>(std::lround(f.speed * 100.0)));
                w.U32(static_cast<uint32_t>(std::lround(f.speedAccuracy * 100.0)));
                w.End();
                // Time of week: the run starts on a Tuesday.
                w.Begin(7);
                w.U32(static_cast<uint32_t>(std::llround((2.0 * 86400.0 + f.utc) * 1000.0)));
                w.End();
            }
            ++nextSend;
        }
        if (mq7) {
            w.Begin(18);
            w.U24(PeriodTicks(t.rpm / 60.0 * vehicle.ignitionPulsesRev));
            w.End();
            w.Begin(14);
            w.U24(PeriodTicks(t.speed / vehicle.tyreCircumference * vehicle.wheelPulsesRev));
            w.End();
            double throttle = 0.0, brake = 0.0;
            if (t.accelLong < -0.5)
                brake = std::min(1.0, -t.accelLong / vehicle.brakeMax);
            else if (t.speed > 0.0)
                throttle =
                    std::clamp(0.1 + std::max(0.0, t.accelLong) / vehicle.accelMax, 0.0, 1.0);
            w.Begin(27);
            w.U16(static_cast<uint32_t>(std::lround(500.0 + 4000.0 * throttle)));
            w.End();
            w.Begin(25);
            w.U16(static_cast<uint32_t>(std::lround(500.0 + 4000.0 * brake)));
            w.End();
        }
        if (!mq7) {
            const double kph =
                std::max(0.0, t.speed + options.sensors.gpsSpeedNoise * meterSpeedRng.Gauss()) *
                3.6;
            w.Begin(30);
            w.U24(static_cast<uint32_t>(std::lround(kph / 0.001379060159)));
            w.End();
        }
        if (r % 10 == 0) {
            w.Begin(20);
            w.U16(static_cast<uint32_t>(std::lround(13800.0 + 60.0 * supplyRng.Gauss())));
            w.End();
        }
    }
    run.fixSentAtRow = sendRow;
    run.rows = R;
    if (options.faults.keep < 1.0) {
        const size_t keep = std::max<size_t>(
            1, static_cast<size_t>(std::llround(run.bytes.size() * options.faults.keep)));
        run.bytes.resize(keep);
        int lastRow = -1;
        for (const auto& [offset, row] : ticks)
            if (offset + 5 <= keep) lastRow = row;
        run.rows = lastRow + 1;
        run.notes.push_back("stream cut short after " + std::to_string(keep) + " bytes");
    }
    run.corruptedBytes =
        CorruptBytes(run.bytes, 0, options.faults.corruptRate, SubSeed(options.seed, 24));
    run.expectedRows = CountRows(run.bytes);
    return run;
}

}  // namespace tl::sim
