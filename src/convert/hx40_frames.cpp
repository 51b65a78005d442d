// HX40 frame conversion. The logger writes one eight-byte frame every 0.01 s
// and, about once a second, hands seven consecutive frames to an ASCII GPS
// sentence. A fix describes the vehicle 90 rows (0.9 s) before the frames
// around it: that is the logger's fixed GPS latency.
#include <algorithm>
#include <array>
#include <string>

#include "convert/accel_channels.h"
#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "store/slot_columns.h"

namespace tl {
namespace {

constexpr int kGpsLatency = 90;  // rows between a fix and the frames that carry it
constexpr int kSatFillBefore = 89;
constexpr int kSatFillAfter = 130;
constexpr int kSatTailRows = 311;

// Slots this family writes.
constexpr int kAnalogue1 = 25;
constexpr int kAnalogue2 = 27;
constexpr int kDigital1 = 37;
constexpr int kBeacon = 42;
constexpr int kSatCount = 45;

// The columns and constants of the normal-frame loop, copied into a value so
// that the loop keeps them in registers.
struct NormContext {
    const uint8_t* v1;
    const uint8_t* v2;
    const uint8_t* v3;
    const uint8_t* v4;
    const uint8_t* v5;
    const uint8_t* v6;
    const uint8_t* v7;
    const uint8_t* v8;
    float* time;
    float* dig;
    float* beacon;
    float* an1;
    float* an2;
    float* lat;
    float* lon;
    float* rpm;
    float* wheel;
    bool digOn, an1On, an2On, accelOn, rpmOn, wheelOn;
    // Every value a byte can give, looked up instead of computed per frame:
    // analogue by byte, accelerations by byte and the two bits of vector 8.
    const float* an1Table;
    const float* an2Table;
    const float* longTable;
    const float* latTable;
    float wheelScale;
    int useWheelForRpm;
    float ignitionPulses;
    int32_t runStart;
    int32_t rowLimit;
};

// ProcessNorm over `count` consecutive normal frames from frame fp and row si
// (all inside the run's rows).
void NormFrames(const NormContext c, int32_t fp, int32_t si, int32_t count,
                PulseTimerState& state) {
    PulseTimerState st = state;
    for (int32_t k = 0; k < count; ++k, ++fp, ++si) {
        if ((si & 15) == 0 && si + 64 <= c.rowLimit) {
            // A dozen columns are written side by side: their lines are
            // asked for a few rows ahead, once per line.
            for (float* col : {c.time, c.beacon, c.dig, c.an1, c.an2, c.lat, c.lon, c.rpm, c.wheel})
                __builtin_prefetch(col + si + 64, 1);
        }
        const uint8_t v3 = c.v3[fp], v8 = c.v8[fp];
        c.time[si] = SecondsOfTicks(si - c.runStart);
        const float digital = (v3 & 128) ? 1.0f : 0.0f;
        if (c.digOn) c.dig[si] = digital;
        c.beacon[si] = digital;
        if (c.an1On) c.an1[si] = c.an1Table[c.v1[fp]];
        if (c.an2On) c.an2[si] = c.an2Table[c.v2[fp]];
        if (c.accelOn) {
            c.lat[si] = c.latTable[c.v5[fp] | ((v8 >> 6) << 8)];
            c.lon[si] = c.longTable[c.v4[fp] | (((v8 >> 4) & 3) << 8)];
        }
        if (c.rpmOn)
            c.rpm[si] =
                RpmOfFrame(st, fp, v3, c.v6[fp], c.v7[fp], v8, c.useWheelForRpm, c.ignitionPulses);
        if (c.wheelOn) c.wheel[si] = WheelSpeedOfFrame(st, fp, v3, c.v6[fp], v8) * c.wheelScale;
    }
    state = st;
}

class Hx40Conversion {
  public:
    explicit Hx40Conversion(int32_t run) : r_(Store().RunInfo[run]) {}
    void Run();

  private:
    void ProcessNorm();
    void ProcessGps();
    void Progress();
    void WriteSatCount(int32_t lastRow);
    bool Writable(int64_t row) const { return row >= 0 && row <= rowLimit_; }

    RunRecord& r_;
    ConversionState& cs_ = Conversion();
    const uint8_t* v_[9] = {};
    float* time_ = nullptr;
    float* dig_ = nullptr;
    float* beacon_ = nullptr;
    float* an1_ = nullptr;
    float* an2_ = nullptr;
    float* lat_ = nullptr;
    float* long_ = nullptr;
    float* rpm_ = nullptr;
    float* wheel_ = nullptr;
    float* posX_ = nullptr;
    float* posY_ = nullptr;
    float* kph_ = nullptr;
    float* mph_ = nullptr;
    float* sats_ = nullptr;
    bool digOn_ = false, an1On_ = false, an2On_ = false, accelOn_ = false, rpmOn_ = false;
    bool kphOn_ = false, mphOn_ = false, posXOn_ = false, posYOn_ = false, satsOn_ = false;
    float analogue1Span_ = 5, analogue2Span_ = 5;
    int useWheelForRpm_ = 0;
    float ignitionPulses_ = 1;
    int wheelPulses_ = 1;
    float rollingCirc_ = 0;
    float wheelScale_ = 0;
    int32_t framePosition_ = 0;
    int32_t sampleIndex_ = 0;
    int32_t rowLimit_ = -1;
    int gpsStringCount_ = 0;
    int32_t onePercent_ = 0, fivePercent_ = 0, tenth_ = 1, nextTenth_ = 0;
    double analogue1Scale_ = 0, analogue2Scale_ = 0;
    // A working copy of the pulse timer state for the walk, written back at
    // its end: the state still carries from run to run.
    PulseTimerState timers_;
    std::array<float, 256> an1Table_{}, an2Table_{};
    std::array<float, 1024> longTable_{}, latTable_{};
    std::string sentence_;
    std::array<std::string, 9> fields_;
    // The satellite count of the last block, over rows not yet written. Each
    // block's 220 rows overlap the next block's by more than half, and the
    // later block wins; writing a block's rows only once the next block shows
    // where it starts writes every row once.
    int32_t satFrom_ = 0, satTo_ = -1;
    float satValue_ = 0;
    bool satOwnColumn_ = true;
};

void Hx40Conversion::WriteSatCount(int32_t lastRow) {
    const int32_t to = std::min(satTo_, lastRow);
    for (int32_t i = satFrom_; i <= to; ++i) sats_[i] = satValue_;
    satTo_ = -1;
}

void Hx40Conversion::Progress() {
    const int32_t i = framePosition_ - r_.RawStart;
    // The texts come at 1 %, at 5 % and at every tenth; a run shorter than 10
    // samples would divide by zero, so the tenth is held to at least 1. The
    // next tenth is kept instead of a remainder per frame; frames inside a
    // GPS block are stepped over and show nothing, as before.
    while (nextTenth_ < i) nextTenth_ += tenth_;
    if (i == onePercent_)
        DispProg("1%");
    else if (i == fivePercent_)
        DispProg("5%");
    else if (i == nextTenth_)
        DispProg(std::to_string(i / tenth_ * 10) + "%");
}

void Hx40Conversion::ProcessNorm() {
    const int32_t si = sampleIndex_;
    if (!Writable(si)) return;
    const int32_t fp = framePosition_;
    const uint8_t v3 = v_[3][fp], v8 = v_[8][fp];
    time_[si] = SecondsOfTicks(si - r_.RunStart);
    const float digital = (v3 & 128) ? 1.0f : 0.0f;
    if (digOn_) dig_[si] = digital;
    beacon_[si] = digital;
    if (an1On_) an1_[si] = static_cast<float>(v_[1][fp] * analogue1Scale_);
    if (an2On_) an2_[si] = static_cast<float>(v_[2][fp] * analogue2Scale_);
    if (accelOn_) {
        lat_[si] = LatAccelOf(v_[5][fp], v8);
        long_[si] = LongAccelOf(v_[4][fp], v8);
    }
    PulseTimerState& st = timers_;
    if (rpmOn_)
        rpm_[si] =
            RpmOfFrame(st, fp, v3, v_[6][fp], v_[7][fp], v8, useWheelForRpm_, ignitionPulses_);
    if (wheelPulses_ > 0) wheel_[si] = WheelSpeedOfFrame(st, fp, v3, v_[6][fp], v8) * wheelScale_;
}

void Hx40Conversion::ProcessGps() {
    const int32_t p = framePosition_;
    // The sentence reads from the last of the seven frames to the first, and
    // within a frame from vector 1 to vector 8.
    char text[56];
    for (int32_t f = p + 6, k = 0; f >= p; --f)
        for (int v = 1; v <= 8; ++v) text[k++] = static_cast<char>(v_[v][f]);
    sentence_.assign(text, sizeof text);
    const bool log = LogOn();
    if (log) LogDebug("S=" + std::to_string(sampleIndex_) + "   " + sentence_);

    // At most nine fields; the last holds the rest of the text.
    size_t count = 0, start = 0;
    for (; count < 8; ++count) {
        const size_t comma = sentence_.find(',', start);
        if (comma == std::string::npos) break;
        fields_[count].assign(sentence_, start, comma - start);
        start = comma + 1;
    }
    fields_[count].assign(sentence_, start, std::string::npos);
    ++count;
    auto blank = [&] {
        for (auto& f : fields_) f.clear();
        fields_[2] = "-1";
    };
    if (count < 9) blank();
    const bool valid = fields_[0].empty() && ValidNumber(fields_[1]) && ValidNumber(fields_[3]) &&
                       ValidNumber(fields_[5]) && ValidNumber(fields_[7]) &&
                       (fields_[4] == "N" || fields_[4] == "S") &&
                       (fields_[6] == "E" || fields_[6] == "W");
    if (valid) {
        if (log) LogDebug("GPS string okay: " + sentence_);
    } else {
        if (log) LogDebug("Illegal GPS string: " + sentence_);
        blank();
    }
    int sats = -1;
    bool flag = false;
    ExtractSatCount(fields_[2], sats, flag);
    if (log) LogDebug("Sat Count: " + std::to_string(sats) + " S=" + std::to_string(sampleIndex_));

    // The first two sentences of a run never count.
    const bool use = !fields_[3].empty() && !fields_[4].empty() && !fields_[5].empty() &&
                     !fields_[6].empty() && sats >= 4 && gpsStringCount_ >= 3;
    if (use) {
        double lat = GetVal_NI(fields_[3]);
        double lon = GetVal_NI(fields_[5]);
        // Validation wants upper case; the hemisphere test is made in upper
        // case all the same.
        if (fields_[4] == "S" || fields_[4] == "s") lat = -lat;
        if (fields_[6] == "W" || fields_[6] == "w") lon = -lon;
        if (sampleIndex_ > r_.RunStart + kGpsLatency) {
            if (!cs_.OriginSet) {
                cs_.SetOrigin(lat, lon);
                LogDebug("First Sample Found, Origin set");
                r_.Details += " and was logged at " + ExtractGPSTime(fields_[1]) +
                              ". The run origin is " + NumberText(lat) + " latitude and " +
                              NumberText(lon) + " longitude";
            }
            const int32_t row = sampleIndex_ - kGpsLatency;
            const auto speed = static_cast<float>(GetVal_NI(fields_[7]) * 0.5144444 * 3600 / 1000);
            double x = 0, y = 0;
            GpsCoord(lat, lon, cs_.GpsOriginLat, cs_.GpsOriginLong, x, y);
            if (Writable(row)) {
                if (kphOn_) kph_[row] = speed;
                // The miles slot gets the same figure; the pipeline settles it.
                if (mphOn_) mph_[row] = speed;
                if (posXOn_) posX_[row] = static_cast<float>(x);
                if (posYOn_) posY_[row] = static_cast<float>(y);
            }
            if (log)
                LogDebug("Calculated X: " + NumberText(x) + "   Calculated Y: " + NumberText(y) +
                         "   Speed: " + NumberText(speed));
        }
    }
    // Whether the fix was used or not, the count fills 220 rows; each block
    // overwrites the tail of the last.
    if (sampleIndex_ > r_.RunStart + kGpsLatency && sampleIndex_ < r_.RunEnd - kSatTailRows &&
        satsOn_) {
        const int32_t a = std::max(sampleIndex_ - kSatFillBefore, 0);
        WriteSatCount(a - 1);
        satFrom_ = a;
        satTo_ = std::min(sampleIndex_ + kSatFillAfter, rowLimit_);
        satValue_ = static_cast<float>(sats);
        // A count without a column of its own shares the "*No Data*" column
        // with the walk's other writes, and is written at once.
        if (!satOwnColumn_) WriteSatCount(rowLimit_);
    }
    const double sq = double(sats) * double(sats);
    if (gpsStringCount_ < 2) {
        cs_.SatScore = sq;
    } else {
        const double n = gpsStringCount_;
        cs_.SatScore = (n - 1) / n * cs_.SatScore + 1 / n * sq;
    }
}

void Hx40Conversion::Run() {
    RunStore& s = Store();
    r_.Details.clear();
    cs_.KeepPreviousOrigin();
    if (cs_.LoggerSerialNumber > 0)
        r_.Details += "Data was downloaded from device number " +
                      std::to_string(cs_.LoggerSerialNumber) + ".";
    r_.Details += "The run is " + NumberText(r_.RunLength / 100.0) + " seconds long. ";

    const std::string& car = Paths().CarCfgPath;
    analogue1Span_ = (r_.HeaderBytes[4] & 32) ? 12.0f : 5.0f;
    analogue2Span_ = (r_.HeaderBytes[4] & 64) ? 12.0f : 5.0f;
    useWheelForRpm_ = GetConfigInt(car, "UseWheelForRpm");
    // Pulses per revolution may be a fraction (a wasted-spark coil on a
    // single gives one pulse every two turns, 0.5); the wheel keys are whole.
    ignitionPulses_ = GetConfig(car, "IgntionPulsesRev");
    if (!(ignitionPulses_ > 0)) ignitionPulses_ = 1;
    wheelPulses_ = GetConfigInt(car, "WheelPulsesRev");
    if (wheelPulses_ < 1) wheelPulses_ = 1;
    rollingCirc_ = GetConfig(car, "DrivenRollingCircVal");
    wheelScale_ = static_cast<float>(1.0 / wheelPulses_ * rollingCirc_ * 3600 / 1000);

    const RawArray& raw = s.RawData;
    if (!raw.planes()) {
        LogDebug("HX40 conversion of a run without frame data");
        return;
    }
    for (int v = 1; v <= 8; ++v) v_[v] = raw.Vector(v).data();
    // The walk never reads past the raw data, whatever the run record claims;
    // and it writes no row past the run's end: where the two passes' margins
    // differ for a later run, the rows beyond are left alone.
    const int32_t rawEnd = std::min(r_.RawEnd, raw.UpperIndex());
    const int32_t rawStart = std::max(r_.RawStart, 0);
    rowLimit_ = std::min(r_.RunEnd, s.RunData.UpperRow());

    float* sink = SlotColumn(kNoDataSlot);
    auto col = [&](int slotNumber) {
        float* c = SlotColumn(slotNumber);
        return c ? c : sink;
    };
    if (!sink || rowLimit_ < 0) {
        LogDebug("HX40 conversion: no rows allocated");
        return;
    }
    time_ = col(slot::Time);
    dig_ = col(kDigital1);
    beacon_ = col(kBeacon);
    an1_ = col(kAnalogue1);
    an2_ = col(kAnalogue2);
    lat_ = col(slot::AccelLat);
    long_ = col(slot::AccelLong);
    rpm_ = col(slot::EngineSpeed);
    wheel_ = col(slot::WheelSpeedKph);
    posX_ = col(slot::PositionX);
    posY_ = col(slot::PositionY);
    kph_ = col(slot::SpeedKph);
    mph_ = col(slot::SpeedMph);
    sats_ = col(kSatCount);
    satOwnColumn_ = sats_ != sink;
    digOn_ = SlotEnabled(kDigital1);
    an1On_ = SlotEnabled(kAnalogue1);
    an2On_ = SlotEnabled(kAnalogue2);
    accelOn_ = SlotEnabled(slot::AccelLat);
    rpmOn_ = SlotEnabled(slot::EngineSpeed);
    kphOn_ = SlotEnabled(slot::SpeedKph);
    mphOn_ = SlotEnabled(slot::SpeedMph);
    posXOn_ = SlotEnabled(slot::PositionX);
    posYOn_ = SlotEnabled(slot::PositionY);
    satsOn_ = SlotEnabled(kSatCount);

    framePosition_ = rawStart;
    sampleIndex_ = r_.RunStart;
    gpsStringCount_ = 0;
    cs_.OriginSet = false;
    onePercent_ = r_.RunLength / 100;
    fivePercent_ = r_.RunLength / 20;
    tenth_ = std::max(r_.RunLength / 10, 1);
    nextTenth_ = 0;
    analogue1Scale_ = analogue1Span_ / 255.0;
    analogue2Scale_ = analogue2Span_ / 255.0;
    for (int b = 0; b < 256; ++b) {
        an1Table_[b] = static_cast<float>(b * analogue1Scale_);
        an2Table_[b] = static_cast<float>(b * analogue2Scale_);
        for (int bits = 0; bits < 4; ++bits) {
            longTable_[b | (bits << 8)] =
                LongAccelOf(static_cast<uint8_t>(b), static_cast<uint8_t>(bits << 4));
            latTable_[b | (bits << 8)] =
                LatAccelOf(static_cast<uint8_t>(b), static_cast<uint8_t>(bits << 6));
        }
    }
    sentence_.reserve(64);
    for (auto& f : fields_) f.reserve(64);

    const uint8_t* v3 = v_[3];
    timers_ = PulseTimers();
    NormContext ctx{};
    ctx.v1 = v_[1];
    ctx.v2 = v_[2];
    ctx.v3 = v_[3];
    ctx.v4 = v_[4];
    ctx.v5 = v_[5];
    ctx.v6 = v_[6];
    ctx.v7 = v_[7];
    ctx.v8 = v_[8];
    ctx.time = time_;
    ctx.dig = dig_;
    ctx.beacon = beacon_;
    ctx.an1 = an1_;
    ctx.an2 = an2_;
    ctx.lat = lat_;
    ctx.lon = long_;
    ctx.rpm = rpm_;
    ctx.wheel = wheel_;
    ctx.digOn = digOn_;
    ctx.an1On = an1On_;
    ctx.an2On = an2On_;
    ctx.accelOn = accelOn_;
    ctx.rpmOn = rpmOn_;
    ctx.wheelOn = wheelPulses_ > 0;
    ctx.an1Table = an1Table_.data();
    ctx.an2Table = an2Table_.data();
    ctx.longTable = longTable_.data();
    ctx.latTable = latTable_.data();
    ctx.wheelScale = wheelScale_;
    ctx.useWheelForRpm = useWheelForRpm_;
    ctx.ignitionPulses = ignitionPulses_;
    ctx.runStart = r_.RunStart;
    ctx.rowLimit = rowLimit_;
    auto blockStarts = [&](int32_t p) { return (v3[p - 1] & 1) && !(v3[p - 8] & 1); };
    while (framePosition_ <= rawEnd) {
        Progress();
        const int32_t p = framePosition_;
        const bool inMargin = p > rawStart + 9 && p < rawEnd - 8;
        if (inMargin && blockStarts(p)) {
            ++gpsStringCount_;
            ProcessGps();
            framePosition_ += 7;
        } else if (!inMargin) {
            const int32_t si = sampleIndex_;
            if (si > r_.RunStart && Writable(si)) {
                posX_[si] = posX_[si - 1];
                posY_[si] = posY_[si - 1];
            }
        } else {
            // A stretch of normal frames inside the margin, up to the next
            // block, progress text or the end of the rows, in one tight loop.
            // The progress frames and the ends are bounds taken once, so the
            // scan for the next block reads only vector 3.
            const int32_t i = p - r_.RawStart;
            int32_t limit = std::min({rawEnd - 9 - p, rowLimit_ - sampleIndex_, nextTenth_ - i});
            if (onePercent_ - i >= 1) limit = std::min(limit, onePercent_ - i);
            if (fivePercent_ - i >= 1) limit = std::min(limit, fivePercent_ - i);
            int32_t count = 1;
            while (count < limit && !blockStarts(p + count)) ++count;
            if (sampleIndex_ >= 0 && count > 1) {
                NormFrames(ctx, p, sampleIndex_, count - 1, timers_);
                framePosition_ += count - 1;
                sampleIndex_ += count - 1;
            }
        }
        ProcessNorm();
        ++framePosition_;
        ++sampleIndex_;
    }
    PulseTimers() = timers_;
    WriteSatCount(rowLimit_);
    if (sampleIndex_ - 1 != r_.RunEnd)
        LogDebug("HX40 conversion ended at row " + std::to_string(sampleIndex_ - 1) +
                 ", the run ends at " + std::to_string(r_.RunEnd));
    r_.Details += SatCountText(static_cast<int>(cs_.SatScore));
}

}  // namespace

void ConvertRawToRunData_HX40(int32_t run) {
    Procedure("ConvertRawToRunData_HX40", [&] {
        if (run < 1 || run > 11) return;
        Hx40Conversion(run).Run();
    });
}

}  // namespace tl
