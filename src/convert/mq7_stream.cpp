#include "convert/mq7_stream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "formats/stream_records.h"
#include "store/slot_columns.h"
#include "store/stream_scan.h"

namespace tl {

namespace {

constexpr const std::array<uint8_t, 256>& kLengths = stream_detail::kRecordLengths;

// Slots the stream writes.
constexpr int kAnalogueSlotOfId[8] = {36, 34, 35, 33, 32, 30, 31, 29};  // ids 20 to 27
constexpr int kFrequencySlot1 = 38;
constexpr int kBeaconSlot = 42;
constexpr int kSpeedAccSlot = 43;
constexpr int kPosAccSlot = 44;
constexpr int kTimeOfWeekSlot = 46;
constexpr int kSerialBytesSlot = 51;

constexpr int kGpsWindow = 39;      // rows after the pulse within which a fix belongs to it
constexpr int kAccuracyHold = 250;  // rows the accuracy figures are carried forward

// The clock ManageTimeStep keeps between calls.
StreamClock g_clock;

// The sample-and-hold of the conversion pass, a column at a time. Walking
// the rows one at a time across some forty columns touches every column on
// every tick, and most of them see no record for long stretches. The held
// rows are queued instead, as one run of consecutive rows, and a column is
// brought up to date only when something is about to read or write it (a
// record of its channel, a GPS record, the end of the pass), so each column
// is held in one forward sweep. Every column is brought up to date before
// any access, so each row still takes the value its column had when its
// tick came.
class RowHold {
  public:
    void Reset(std::vector<float*> columns) {
        columns_ = std::move(columns);
        done_.assign(columns_.size(), -1);
        from_ = 0;
        to_ = -1;
    }
    // The index of a column among the held ones, -1 for one never held.
    int IndexOf(const float* column) const {
        const auto it = std::find(columns_.begin(), columns_.end(), column);
        return it == columns_.end() ? -1 : static_cast<int>(it - columns_.begin());
    }
    // Queues the hold of a row; a row that does not follow the queued ones
    // (the clock stepped) first brings every column up to date.
    void Add(int32_t row) {
        if (to_ >= from_ && row == to_ + 1) {
            to_ = row;
            return;
        }
        FlushAll();
        from_ = to_ = row;
        std::fill(done_.begin(), done_.end(), row - 1);
    }
    void Flush(int index) {
        if (index < 0 || done_[index] >= to_) return;
        float* col = columns_[index];
        // A row still at zero takes the value of the row before, as that
        // row stands after its own hold. A zero that already has the bits of
        // that value is left alone, and after a +0 eight rows of +0 are
        // passed over in one test: a column the stream never writes is read
        // quickly and not written at all.
        float prev = col[done_[index]];
        for (int32_t row = done_[index] + 1; row <= to_;) {
            if (std::bit_cast<uint32_t>(prev) == 0 && row + 8 <= to_ + 1) {
                uint32_t bits = 0;
                for (int k = 0; k < 8; ++k) bits |= std::bit_cast<uint32_t>(col[row + k]);
                if (bits == 0) {
                    row += 8;
                    continue;
                }
            }
            const float v = col[row];
            if (v != 0.0f)
                prev = v;
            else if (std::bit_cast<uint32_t>(v) != std::bit_cast<uint32_t>(prev))
                col[row] = prev;
            ++row;
        }
        done_[index] = to_;
    }
    void FlushAll() {
        for (size_t i = 0; i < columns_.size(); ++i) Flush(static_cast<int>(i));
    }

  private:
    std::vector<float*> columns_;
    std::vector<int32_t> done_;  // per column, the last row held
    int32_t from_ = 0, to_ = -1;
};

// Where a time step writes: the run's rows, the time column and every
// column of RunData for the sample-and-hold. With a RowHold the holds are
// queued there; without, each tick holds every column at once.
struct TimeTarget {
    int32_t runStart = 0;
    int32_t rowLimit = -1;
    float* time = nullptr;
    std::vector<float*> holdColumns;  // columns 1 to the last
    RowHold* hold = nullptr;
    int timeHoldIndex = -1;
};

TimeTarget MakeTimeTarget(const RunRecord& r) {
    TimeTarget t;
    RunArray& rd = Store().RunData;
    t.runStart = r.RunStart;
    t.rowLimit = std::min(r.RunEnd, rd.UpperRow());
    t.time = SlotColumn(slot::Time);
    if (!t.time) t.rowLimit = -1;
    for (int32_t c = 1; c < rd.Columns(); ++c)
        if (!rd.Column(c).empty()) t.holdColumns.push_back(rd.Column(c).data());
    return t;
}

void TimeStep(std::span<const uint8_t> raw, int64_t position, const TimeTarget& tt,
              int32_t& sampleIndex, int32_t& firstCall, bool writeTime) {
    const int32_t t = DecodeU24(raw, position + 1);
    const StreamClock::Step step = g_clock.Advance(t, firstCall, position);
    const int32_t count = g_clock.Count();
    auto rowOk = [&](int64_t row) { return row >= tt.runStart && row <= tt.rowLimit; };
    if (step == StreamClock::Step::InTurn) {
        sampleIndex = tt.runStart + count;
        if (writeTime && rowOk(sampleIndex)) {
            const int32_t si = sampleIndex;
            if (tt.hold) {
                tt.hold->Flush(tt.timeHoldIndex);
                tt.time[si] = SecondsOfTicks(count);
                if (si > tt.runStart) tt.hold->Add(si);
                return;
            }
            tt.time[si] = SecondsOfTicks(count);
            // The sample-and-hold of the whole format: before this tick's
            // channels arrive, every column still at zero takes the value of
            // the row before; the channels then overwrite it.
            // Rows are walked one at a time across some fifty columns, more
            // streams than a cache prefetcher follows: each column's line a
            // few rows ahead is asked for here.
            if (si > tt.runStart) {
                const bool ahead = si + 48 <= tt.rowLimit;
                for (float* col : tt.holdColumns) {
                    if (ahead) __builtin_prefetch(col + si + 48, 1);
                    if (col[si] == 0.0f) col[si] = col[si - 1];
                }
            }
        }
        return;
    }
    // The rare steps below write the time column out of turn: the queued
    // holds go first.
    if (writeTime && tt.hold) tt.hold->FlushAll();
    switch (step) {
        case StreamClock::Step::BackIgnored:
            break;
        case StreamClock::Step::BackRepaired:
            sampleIndex = tt.runStart + count;
            break;
        case StreamClock::Step::TooFar:
            // Too much missing: the gap stays for the rest of the run.
            sampleIndex = tt.runStart + count;
            if (writeTime && rowOk(sampleIndex)) tt.time[sampleIndex] = SecondsOfTicks(count);
            break;
        case StreamClock::Step::Filled:
            // The missing rows are addressed by the time index itself, so
            // they land in the right place only when the time base equals
            // RunStart. Rows outside the run are not written.
            if (writeTime)
                for (int64_t j = g_clock.FillFrom(); j <= t; ++j)
                    if (rowOk(j)) tt.time[j] = static_cast<float>((j - tt.runStart) / 100.0);
            sampleIndex = tt.runStart + count;
            break;
        case StreamClock::Step::InTurn:
            break;
    }
}

}  // namespace

float ExtractU32(std::span<const uint8_t> raw, int64_t pos) {
    const uint32_t u = (uint32_t(raw[pos]) << 24) | (uint32_t(raw[pos + 1]) << 16) |
                       (uint32_t(raw[pos + 2]) << 8) | raw[pos + 3];
    return static_cast<float>(u);  // low bits of large values are lost, as accepted
}

double ExtractI32(std::span<const uint8_t> raw, int64_t pos) {
    const uint32_t u = (uint32_t(raw[pos]) << 24) | (uint32_t(raw[pos + 1]) << 16) |
                       (uint32_t(raw[pos + 2]) << 8) | raw[pos + 3];
    return static_cast<double>(static_cast<int32_t>(u));
}

float DecodeAdc(std::span<const uint8_t> raw, int64_t pos) {
    return static_cast<float>((int32_t(raw[pos]) * 256 + raw[pos + 1]) / 1000.0);
}

void DecodeAccelerometer(std::span<const uint8_t> raw, int64_t pos, float& lateral,
                         float& longitudinal) {
    // A set top bit means positive: the reverse of the usual habit.
    auto word = [&](int64_t p) {
        const uint8_t hi = raw[p], lo = raw[p + 1];
        const float v = static_cast<float>(hi & 127) + static_cast<float>(lo) / 256.0f;
        return (hi & 128) ? v : -v;
    };
    lateral = word(pos);
    longitudinal = word(pos + 2);
}

void DecodeGpsPosition(std::span<const uint8_t> raw, int64_t pos, double& lon, double& lat,
                       float& accuracy) {
    lon = ExtractI32(raw, pos) * 1e-7;
    lat = ExtractI32(raw, pos + 4) * 1e-7;
    accuracy = ExtractU32(raw, pos + 8) / 100.0f;
}

void DecodeGpsSpeed(std::span<const uint8_t> raw, int64_t pos, float& speed, float& accuracy) {
    speed = ExtractU32(raw, pos) / 100.0f;
    accuracy = ExtractU32(raw, pos + 4) / 100.0f;
}

int DecodeDigital(std::span<const uint8_t> raw, int64_t pos) {
    return raw[pos] == 1 ? 1 : 0;
}

float DecodeFreq(std::span<const uint8_t> raw, int64_t pos) {
    // One tick of a 6 MHz timer.
    const float period = static_cast<float>(DecodeU24(raw, pos)) * 1.6666667e-7f;
    return period > 0 ? 1.0f / period : 0.0f;
}

float DecodeFreqLinear(std::span<const uint8_t> raw, int64_t pos) {
    return static_cast<float>(DecodeU24(raw, pos) * 0.001379060159);
}

bool CheckCheckSumMQ7(std::span<const uint8_t> raw, int64_t position, int64_t length) {
    return ChecksumHolds(raw, position, length);
}

void ManageTimeStep(std::span<const uint8_t> raw, int64_t position, int32_t run,
                    int32_t& sampleIndex, int32_t& firstCall, bool writeTime) {
    if (run < 1 || run > 11) return;
    if (position < 0 || position + 3 >= static_cast<int64_t>(raw.size())) return;
    TimeTarget tt;
    if (writeTime)
        tt = MakeTimeTarget(Store().RunInfo[run]);
    else
        tt.runStart = Store().RunInfo[run].RunStart;
    TimeStep(raw, position, tt, sampleIndex, firstCall, writeTime);
}

// --- the conversion pass ---

namespace {

std::span<const uint8_t> StreamOf() {
    const RawArray& raw = Store().RawData;
    if (raw.planes() || raw.UpperIndex() < 0) return {};
    return raw.Vector(1).first(static_cast<size_t>(raw.UpperIndex()) + 1);
}

}  // namespace

namespace {

class StreamConversion {
  public:
    explicit StreamConversion(int32_t run) : run_(run), r_(Store().RunInfo[run]) {}
    void Run();

  private:
    void Progress();
    void GpsPosition(int64_t pos);
    void GpsSpeed(int64_t pos);
    void GpsTime(int64_t pos);
    bool InGpsWindow() const {
        // The mark must also lie in this run's rows: a stream whose clock
        // stepped back can put it before them.
        return gpsMark_ >= 1 && si_ - gpsMark_ >= 1 && si_ - gpsMark_ <= kGpsWindow &&
               gpsMark_ >= r_.RunStart && gpsMark_ <= rowLimit_;
    }
    // Each row after the mark takes the value of the row before, so every
    // one of them ends with the mark's value: they are filled with it, eight
    // rows a step so that the compiler writes a few wide stores (a fix comes
    // ten times a second and fills 250 rows twice).
    void CarryForward(float* col) {
        const int32_t last = std::min(gpsMark_ + kAccuracyHold, rowLimit_);
        const float v = col[gpsMark_];
        int32_t i = gpsMark_ + 1;
        for (; i + 8 <= last + 1; i += 8)
            for (int k = 0; k < 8; ++k) col[i + k] = v;
        for (; i <= last; ++i) col[i] = v;
    }

    int32_t run_;
    RunRecord& r_;
    ConversionState& cs_ = Conversion();
    std::span<const uint8_t> raw_;
    float* col_[202] = {};
    // The slot's column, brought up to date with the queued holds first:
    // every access of the pass goes through here or through the time step.
    float* Col(int slotNumber) {
        hold_.Flush(holdIndex_[slotNumber]);
        return col_[slotNumber];
    }
    RowHold hold_;
    int holdIndex_[202] = {};
    int32_t si_ = 0;
    int32_t rowLimit_ = -1;
    int32_t gpsMark_ = -1;
    int gpsPulseWasOn_ = 0;
    float pulsesPerRev_ = 1;
    bool mq7_ = true;
};

void StreamConversion::Progress() {
    const int32_t i = si_ - r_.RunStart;
    const int32_t n = r_.RunLength;
    const int32_t s = std::max(n / 10, 1);
    if (i == n / 100)
        DispProg("1%");
    else if (i == n / 20)
        DispProg("5%");
    else if (i % s == 0)
        DispProg(std::to_string(i / s * 10) + "%");
}

void StreamConversion::GpsPosition(int64_t pos) {
    double lon = 0, lat = 0;
    float acc = 0;
    DecodeGpsPosition(raw_, pos, lon, lat, acc);
    Col(kPosAccSlot);
    Col(slot::PositionX);
    Col(slot::PositionY);
    const int32_t m = gpsMark_;
    col_[kPosAccSlot][m] = acc;
    if (acc >= 150) return;
    if (!cs_.OriginSet) {
        cs_.SetOrigin(lat, lon);
        LogDebug("First Sample Found, Origin set");
    }
    double x = 0, y = 0;
    GpsCoord_FractDegree(lat, lon, cs_.GpsOriginLat, cs_.GpsOriginLong, x, y);
    if (m > 0) {
        if (LogOn())
            LogDebug(std::to_string(m) + "," + NumberText(lat) + "," + NumberText(lon) + "," +
                     NumberText(x) + "," + NumberText(y));
        col_[kPosAccSlot][m] = std::min(acc / 2.0f, 1000.0f);
        col_[slot::PositionX][m] = static_cast<float>(x);
        col_[slot::PositionY][m] = static_cast<float>(y);
        CarryForward(col_[kPosAccSlot]);
    }
}

void StreamConversion::GpsSpeed(int64_t pos) {
    float speed = 0, acc = 0;
    DecodeGpsSpeed(raw_, pos, speed, acc);
    Col(kSpeedAccSlot);
    Col(slot::SpeedKph);
    Col(slot::SpeedMph);
    const int32_t m = gpsMark_;
    col_[kSpeedAccSlot][m] = std::min(acc, 1000.0f);
    if (mq7_ && acc < 1.8f) {
        // km/h stands in both speed slots; the pipeline settles the miles.
        const auto kph = static_cast<float>(speed * 3600.0 / 1000.0);
        col_[slot::SpeedKph][m] = kph;
        col_[slot::SpeedMph][m] = kph;
    }
    CarryForward(col_[kSpeedAccSlot]);
}

void StreamConversion::GpsTime(int64_t pos) {
    double t = ExtractU32(raw_, pos);
    Col(slot::Time);
    const float* tow = Col(kTimeOfWeekSlot);
    int32_t k = gpsMark_;
    while (k > r_.RunStart && tow[k] == 0) --k;
    // The rows' times are read from the slot whose number is the local time
    // of day as a fraction of a day, rounded: from noon that is slot 1, Time
    // [s]. Before noon it is slot 0, which does not exist: the difference is
    // taken as zero then. The factor 10 stays, though the time is in seconds
    // and the result in milliseconds.
    const bool afternoon = std::lround(Timer() / 86400.0) == 1;
    const float* time = col_[slot::Time];
    auto T = [&](int32_t row) { return afternoon ? double(time[row]) : 0.0; };
    t = t - (T(gpsMark_) - T(k)) * 10;
    const int32_t last = std::min(gpsMark_ + 4, rowLimit_);
    float* out = col_[kTimeOfWeekSlot];
    for (int32_t row = std::max(k, r_.RunStart); row <= last; ++row)
        out[row] = static_cast<float>(t - (T(gpsMark_) - T(row)) * 10);
}

void StreamConversion::Run() {
    RunStore& s = Store();
    r_.Details.clear();
    cs_.KeepPreviousOrigin();
    const StreamScan sc = ScanRawStream(run_);
    // The scan's error count may have opened the wait box; the conversion's
    // own progress window takes over from it.
    if (sc.waitShown) HidePleaseWait();
    r_.Details = "Run Contains " + std::to_string(sc.recordCount) +
                 " individual data samples, and " + std::to_string(sc.errorCount) +
                 " data formatting errors.";
    raw_ = StreamOf();
    if (raw_.empty()) return;
    rowLimit_ = std::min(r_.RunEnd, s.RunData.UpperRow());
    float* sink = SlotColumn(kNoDataSlot);
    if (!sink || rowLimit_ < 0) {
        LogDebug("stream conversion: no rows allocated");
        return;
    }
    for (int slotNumber = 1; slotNumber <= kNoDataSlot; ++slotNumber) {
        float* c = SlotColumn(slotNumber);
        col_[slotNumber] = c ? c : sink;
    }
    TimeTarget tt = MakeTimeTarget(r_);
    hold_.Reset(tt.holdColumns);
    tt.hold = &hold_;
    tt.timeHoldIndex = hold_.IndexOf(tt.time);
    for (int slotNumber = 1; slotNumber <= kNoDataSlot; ++slotNumber)
        holdIndex_[slotNumber] = hold_.IndexOf(col_[slotNumber]);
    mq7_ = Profile().HardwareMQ7;
    pulsesPerRev_ = FindClip(0.1f, GetConfig(Paths().CarCfgPath, "IgntionPulsesRev"), 20.0f);
    gpsMark_ = -1;
    gpsPulseWasOn_ = 0;
    cs_.OriginSet = false;
    si_ = r_.RunStart;
    int32_t firstCall = -1;
    const int64_t rawEnd = std::min<int64_t>(r_.RawEnd, int64_t(raw_.size()) - 1);
    int64_t position = std::max<int64_t>(r_.RawStart, 0);
    const bool log = LogOn();
    while (position < rawEnd) {
        const int id = raw_[position];
        int64_t len = kLengths[id];
        if (id == mq7::SerialData)
            len = (position + 1 < int64_t(raw_.size())) ? int64_t(raw_[position + 1]) + 3 : 0;
        if (len == 0) {
            if (log) LogDebug("No match for channel: " + std::to_string(id));
            ++position;
            continue;
        }
        if (!ChecksumHolds(raw_, position, len)) {
            ++position;
            continue;
        }
        const int64_t p = position + 1;
        // Values go to the current row, whatever the slot's flag; a row past
        // the run's end (a stream the scan read differently) is not written.
        const bool rowOk = si_ >= r_.RunStart && si_ <= rowLimit_;
        switch (id) {
            case mq7::TimeIndex:
                TimeStep(raw_, position, tt, si_, firstCall, true);
                Progress();
                break;
            case mq7::LoggerInfo:
                cs_.LoggerSerialNumber = int32_t(raw_[p]) * 256 + raw_[p + 1];
                cs_.FirmwareMajor = raw_[p + 2];
                cs_.FirmwareMinor = raw_[p + 3];
                r_.Details += " Downloaded from logger serial #" +
                              std::to_string(cs_.LoggerSerialNumber) + ", using firmware version " +
                              std::to_string(cs_.FirmwareMajor) + "-" +
                              std::to_string(cs_.FirmwareMinor) + ".";
                break;
            case mq7::Accelerometer:
                if (rowOk)
                    DecodeAccelerometer(raw_, p, Col(slot::AccelLat)[si_],
                                        Col(slot::AccelLong)[si_]);
                break;
            case mq7::GpsTimeOfWeek:
                if (InGpsWindow()) GpsTime(p);
                break;
            case mq7::GpsPosition:
                if (InGpsWindow()) GpsPosition(p);
                break;
            case mq7::GpsSpeed:
                if (InGpsWindow()) GpsSpeed(p);
                break;
            case mq7::Beacon:
                if (rowOk) Col(kBeaconSlot)[si_] = static_cast<float>(DecodeDigital(raw_, p));
                break;
            case mq7::GpsPulse: {
                const int on = DecodeDigital(raw_, p);
                if (gpsPulseWasOn_ == 0 && on == 1 && si_ >= 2) gpsMark_ = si_;
                gpsPulseWasOn_ = on;
                break;
            }
            case mq7::EngineFreq:
                if (rowOk)
                    Col(slot::EngineSpeed)[si_] = DecodeFreq(raw_, p) * 60.0f / pulsesPerRev_;
                break;
            case mq7::SerialData:
                if (rowOk) Col(kSerialBytesSlot)[si_] = static_cast<float>(raw_[p]);
                // The jump uses the first serial byte, not the length: logged
                // files rely on it, and the checksums bring a reader that
                // lands inside the stream back into step.
                position += 3 + int64_t(raw_[p + 1]);
                continue;
            case mq7::SpeedLinear:
                if (rowOk) {
                    const float kph = DecodeFreqLinear(raw_, p);
                    Col(slot::SpeedKph)[si_] = kph;
                    Col(slot::SpeedMph)[si_] = static_cast<float>(kph * 0.621371192);
                }
                break;
            default:
                if (id >= 14 && id <= 17) {
                    if (rowOk) Col(kFrequencySlot1 + id - 14)[si_] = DecodeFreq(raw_, p);
                } else if (id >= 20 && id <= 27) {
                    if (rowOk) Col(kAnalogueSlotOfId[id - 20])[si_] = DecodeAdc(raw_, p);
                }
                break;
        }
        position += len;
    }
    hold_.FlushAll();
    if (si_ < r_.RunEnd) {
        LogDebug("the run array hasn't been filed to the end.. so extending time vector " +
                 std::to_string(si_) + "  to  " + std::to_string(r_.RunEnd));
        // One tick behind the rows before it: intended.
        for (int32_t i = std::max(si_ + 1, r_.RunStart); i <= rowLimit_; ++i)
            col_[slot::Time][i] = static_cast<float>((i - r_.RunStart - 1) / 100.0);
    }
}

}  // namespace

void ConvertRawToRunData_MQ7(int32_t run) {
    Procedure("ConvertRawToRunData_MQ7", [&] {
        if (run < 1 || run > 11) return;
        StreamConversion(run).Run();
    });
}

}  // namespace tl
