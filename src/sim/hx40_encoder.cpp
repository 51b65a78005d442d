// HX40: one eight-byte frame every 0.01 s, and now and then seven frames of an
// ASCII GPS sentence between two of them.
//
// Normal frame, vector by vector:
//   1, 2  analogue channels 1 and 2, 0 to 255 across the span. Channel 1
//         carries the throttle position (0.5 to 4.5 V on a 5 V span), channel
//         2 the brake pressure sender (0.5 to 10.5 V on a 12 V span: bit value
//         64 of header byte 5 selects the 12 V span).
//   3     bit 0 GPS marker, bits 1-3 engine timer low bits, bits 4-6 wheel
//         timer low bits, bit 7 the beacon receiver.
//   4, 5  longitudinal and lateral acceleration, 1/256 g; with the top four
//         bits of vector 8 (add 1 g, sign) as EncodeFrameAccel writes them.
//   6, 7  wheel and engine timer high bits.
//   8     bits 0-1 wheel pulses in the frame, bits 2-3 engine pulses.
//
// Pulse timers: a frame spans timer values 19487 to 65535; the value is where
// the last pulse of the frame fell, stored as (high * 8 + low) * 32. A frame
// without a pulse reports the timer at the frame's end (65504), so that a
// reader's bound on a slowing rate reaches to the end of the frame. At most
// three pulses can be counted in a frame; the vehicles stay below that.
//
// GPS: the frame before a block has bit 0 of vector 3 set, no other normal
// frame has it. The block is seven frames of ASCII, read from the last of the
// seven to the first and within a frame from vector 1 to 8. The frames of a
// block take no time: the normal frame after the block is the next row. The
// receiver's fix is 90 rows (0.9 s) old when its sentence is written, so the
// block before row r carries the fix of row r - 90. Blocks keep out of the
// first ten and the last sixteen frames, where readers treat every frame as a
// normal one.
//
// Sentence, 56 characters, comma separated:
//   ,hhmmss,S,ddmm.mmmm,N,dddmm.mmmm,W,knots,ddd.d    *XX
// field 0 empty; UTC time; the satellite character ("1" to "9", then ":" for
// 10 up to "@" for 16); latitude in degrees and minutes; N or S; longitude;
// E or W; speed over ground in knots; then the course in degrees, blanks to
// fill, and an NMEA-style checksum (XOR of every character before the '*',
// two upper-case hex digits). The reader does not look past the speed.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "sim/encoders.h"
#include "sim/rng.h"

namespace tl::sim {

namespace {

constexpr int kBlockFrames = 7;

uint16_t TimerCode(const FramePulses& p) {
    if (p.count == 0) return 2047;
    const double t = 19487.0 + p.lastFraction * 46048.0;
    return static_cast<uint16_t>(std::clamp(std::lround(t / 32.0), 609l, 2047l));
}

std::string DegMin(double deg, int degreeDigits) {
    const long long total = std::llround(std::fabs(deg) * 600000.0);  // 1e-4 minute
    const long long d = total / 600000, rem = total % 600000;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%0*lld%02lld.%04lld", degreeDigits, d, rem / 10000,
                  rem % 10000);
    return buf;
}

// The walk of the frame rule over the bytes as written: rows of the run.
int CountRows(const RawRun& run) {
    const int rawEnd = run.frames - 1;
    int counter = 0;
    for (int i = 0; i <= rawEnd; ++i) {
        ++counter;
        if (i > 9 && i < rawEnd - 8 && (run.Plane(3, i - 1) & 1) && !(run.Plane(3, i - 8) & 1))
            i += kBlockFrames;
    }
    return counter;
}

std::string Malform(std::string s, int kind) {
    switch (kind) {
        case 0: {  // hemisphere in lower case
            const size_t p = s.find_first_of("NS", 1);
            if (p != std::string::npos) s[p] = static_cast<char>(s[p] + 32);
            break;
        }
        case 1: {  // a letter among the latitude digits
            const size_t p = s.find(',', s.find(',', s.find(',', 1) + 1) + 1);
            if (p != std::string::npos && p + 2 < s.size()) s[p + 2] = 'O';
            break;
        }
        case 2:  // fields run together: too few commas
            for (size_t i = 20; i < s.size(); ++i)
                if (s[i] == ',') s[i] = ';';
            break;
        default:  // garbage where the leading comma belongs
            s[0] = 'G';
            break;
    }
    return s;
}

}  // namespace

char SatChar(int sats) {
    return static_cast<char>('0' + std::clamp(sats, 1, 16));
}

std::string Hx40Sentence(const GpsFix& fix) {
    const long secs = static_cast<long>(std::floor(fix.utc)) % 86400;
    char head[64];
    std::snprintf(head, sizeof head, ",%02ld%02ld%02ld,%c,", secs / 3600, secs / 60 % 60, secs % 60,
                  SatChar(fix.sats));
    const double knots = std::clamp(fix.speed / 0.5144444, 0.0, 999.99);
    double course = fix.heading * 180.0 / 3.14159265358979323846;
    course = std::fmod(course, 360.0);
    if (course < 0.0) course += 360.0;
    char tail[32];
    std::snprintf(tail, sizeof tail, ",%.2f,%05.1f", knots, course);
    std::string s = std::string(head) + DegMin(fix.lat, 2) + (fix.lat < 0.0 ? ",S," : ",N,") +
                    DegMin(fix.lon, 3) + (fix.lon < 0.0 ? ",W" : ",E") + tail;
    s.resize(53, ' ');
    uint8_t sum = 0;
    for (char c : s) sum ^= static_cast<uint8_t>(c);
    char cs[8];
    std::snprintf(cs, sizeof cs, "*%02X", sum);
    return s + cs;
}

AccelBytes EncodeFrameAccel(double longG, double latG) {
    // Magnitude in 1/256 g up to 511/256; vector 8 bit 4 adds 1 g to the
    // longitudinal value and bit 5 makes it negative; bit 6 adds 1 g to the
    // lateral value and bit 7 makes it positive (the sensor's own sense).
    AccelBytes a;
    const long lon = std::min(511l, std::lround(std::fabs(longG) * 256.0));
    const long lat = std::min(511l, std::lround(std::fabs(latG) * 256.0));
    a.v4 = static_cast<uint8_t>(lon & 255);
    a.v5 = static_cast<uint8_t>(lat & 255);
    if (lon > 255) a.v8 |= 16;
    if (longG < 0.0 && lon > 0) a.v8 |= 32;
    if (lat > 255) a.v8 |= 64;
    if (latG > 0.0) a.v8 |= 128;
    return a;
}

RawRun EncodeHX40(const Trajectory& traj, const Circuit& circuit, const VehicleParams& vehicle,
                  const EncodeOptions& options) {
    RawRun run;
    run.family = Family::HX40;
    run.fileType = 1;
    run.planes = true;
    run.header[4] = 64;  // analogue channel 2 on the 12 V span
    const int R = static_cast<int>(traj.rows.size());
    // A block needs the frame eight back to be a normal one: fixes at least
    // ten rows apart.
    const int interval = options.gpsIntervalRows > 0 ? std::max(10, options.gpsIntervalRows) : 100;
    const int latency = 90;

    std::vector<GpsFix> fixes =
        MakeGpsFixes(traj, circuit, options.sensors, 10, interval, options.faults.dropGps,
                     SubSeed(options.seed, 10), run.droppedFixes);
    std::vector<int> sentenceAt(R, -1);
    std::vector<std::string> sentences;
    Rng faultRng(SubSeed(options.seed, 11));
    for (const GpsFix& f : fixes) {
        const int sendRow = f.row + latency;
        if (sendRow < 10 || sendRow > R - 10) continue;
        std::string s = Hx40Sentence(f);
        if (faultRng.Chance(options.faults.badSentences)) {
            s = Malform(s, faultRng.UniformInt(0, 3));
            ++run.malformedSentences;
        }
        sentenceAt[sendRow] = static_cast<int>(sentences.size());
        sentences.push_back(s);
        run.fixes.push_back(f);
        run.fixSentAtRow.push_back(sendRow);
    }

    const int total = R + kBlockFrames * static_cast<int>(sentences.size());
    const int keepFrames = std::max(1, static_cast<int>(std::lround(total * options.faults.keep)));
    run.frames = keepFrames;
    run.bytes.assign(static_cast<size_t>(8) * keepFrames, 0);

    AccelSensor accel(options.sensors, SubSeed(options.seed, 12));
    PulseInput wheel(0.37), engine(0.61);
    int frame = 0;
    int rowsWritten = 0;
    const std::vector<uint8_t> beacon = LoggedBeacon(traj, options.faults);
    for (int r = 0; r < R && frame < keepFrames; ++r) {
        if (sentenceAt[r] >= 0) {
            const std::string& s = sentences[sentenceAt[r]];
            for (int k = 0; k < 56; ++k) {
                const int f = frame + kBlockFrames - 1 - k / 8;
                if (f < keepFrames) run.Plane(k % 8 + 1, f) = static_cast<uint8_t>(s[k]);
            }
            frame += kBlockFrames;
            if (frame >= keepFrames) break;
        }
        const TruthRow& t = traj.rows[r];
        const AccelReading a = accel.Read(t);
        const AccelBytes ab = EncodeFrameAccel(a.longG, a.latG);
        const FramePulses wp =
            wheel.Step(t.speed / vehicle.tyreCircumference * vehicle.wheelPulsesRev);
        const FramePulses ep = engine.Step(t.rpm / 60.0 * vehicle.ignitionPulsesRev);
        const uint16_t wc = TimerCode(wp), ec = TimerCode(ep);
        double throttle = 0.0, brake = 0.0;
        if (t.accelLong < -0.5)
            brake = std::min(1.0, -t.accelLong / vehicle.brakeMax);
        else if (t.speed > 0.0)
            throttle =
                std::clamp(0.1 + std::max(0.0, t.accelLong) / vehicle.accelMax +
                               0.6 * (t.speed / vehicle.topSpeed) * (t.speed / vehicle.topSpeed),
                           0.0, 1.0);
        const double v1 = 0.5 + 4.0 * throttle, v2 = 0.5 + 10.0 * brake;
        run.Plane(1, frame) = static_cast<uint8_t>(std::lround(v1 / 5.0 * 255.0));
        run.Plane(2, frame) = static_cast<uint8_t>(std::lround(v2 / 12.0 * 255.0));
        uint8_t v3 =
            static_cast<uint8_t>(((ec & 7) << 1) | ((wc & 7) << 4) | (beacon[r] ? 128 : 0));
        if (r + 1 < R && sentenceAt[r + 1] >= 0) v3 |= 1;
        run.Plane(3, frame) = v3;
        run.Plane(4, frame) = ab.v4;
        run.Plane(5, frame) = ab.v5;
        run.Plane(6, frame) = static_cast<uint8_t>(wc >> 3);
        run.Plane(7, frame) = static_cast<uint8_t>(ec >> 3);
        run.Plane(8, frame) =
            static_cast<uint8_t>(ab.v8 | std::min(wp.count, 3) | (std::min(ep.count, 3) << 2));
        ++frame;
        ++rowsWritten;
    }
    run.rows = rowsWritten;
    if (keepFrames < total)
        run.notes.push_back("run cut short after " + std::to_string(keepFrames) + " of " +
                            std::to_string(total) + " frames");
    run.corruptedBytes =
        CorruptBytes(run.bytes, 0, options.faults.corruptRate, SubSeed(options.seed, 13));
    run.expectedRows = CountRows(run);
    return run;
}

}  // namespace tl::sim
