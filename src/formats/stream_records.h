// The record stream of the MQ7 and SW63 families as bytes: self-describing
// records, one channel sample each, closed by a sum checksum, and a time
// record at every 0.01 s tick. The stream is read twice: the counting pass
// here (ScanStream) sizes a run, the conversion pass fills its rows by the
// same clock (StreamClock). This file knows bytes only; the run store and the
// conversion bring the run's place in the raw data.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/log.h"

namespace tl {

// Record ids of the stream.
namespace mq7 {
inline constexpr int LoggerInfo = 6;
inline constexpr int GpsTimeOfWeek = 7;
inline constexpr int Accelerometer = 8;
inline constexpr int TimeIndex = 9;
inline constexpr int GpsPosition = 10;
inline constexpr int GpsSpeed = 11;
inline constexpr int Beacon = 12;
inline constexpr int GpsPulse = 13;
inline constexpr int Frequency1 = 14;
inline constexpr int EngineFreq = 18;
inline constexpr int SerialData = 19;
inline constexpr int PowerSupply = 20;
inline constexpr int Analogue1 = 27;
inline constexpr int SpeedLinear = 30;
}  // namespace mq7

namespace stream_detail {
constexpr std::array<uint8_t, 256> MakeLengths() {
    std::array<uint8_t, 256> len{};
    len[6] = 6;
    len[7] = 6;
    len[8] = 6;
    len[9] = 5;
    len[10] = 14;
    len[11] = 10;
    len[12] = 3;
    len[13] = 3;
    for (int id = 14; id <= 18; ++id) len[id] = 5;
    for (int id = 20; id <= 27; ++id) len[id] = 4;
    len[30] = 5;
    return len;
}
// Whole record lengths (id and checksum included) by id; 0 for the variable
// serial record (19) and unknown ids.
inline constexpr std::array<uint8_t, 256> kRecordLengths = MakeLengths();

[[gnu::noinline]] void LogCheckError(int64_t position);
}  // namespace stream_detail

// Length of the whole record (id and checksum included) of a fixed-length
// channel, 0 for ids that are not (19 is variable; unknown ids).
inline int Mq7RecordLength(int id) {
    return (id >= 0 && id < 256) ? stream_detail::kRecordLengths[size_t(id)] : 0;
}

// Big-endian 24-bit value at pos. The caller has checked that it lies inside.
inline int32_t DecodeU24(std::span<const uint8_t> raw, int64_t pos) {
    return int32_t(raw[size_t(pos)]) * 65536 + int32_t(raw[size_t(pos + 1)]) * 256 +
           raw[size_t(pos + 2)];
}

// True when the record of the given length at position lies inside the
// stream and its last byte is the sum of the others modulo 256; a failed
// check is logged ("check error @"). Both passes call it on every record.
inline bool ChecksumHolds(std::span<const uint8_t> raw, int64_t position, int64_t length) {
    const int64_t upper = static_cast<int64_t>(raw.size()) - 1;
    if (position < 0 || length < 2 || !(position + length - 2 < upper)) return false;
    const uint8_t* const record = raw.data() + position;
    uint32_t sum = 0;
    for (int64_t i = 0; i <= length - 2; ++i) sum += record[i];
    if ((sum & 255) == record[length - 1]) return true;
    stream_detail::LogCheckError(position);
    return false;
}

// The logger's tick clock as the time records tell it. The first record
// sets the base; every later one is one tick on, or the clock stepped: back
// (repaired when less than ten ticks back), forward by less than ten ticks
// (the missing ticks are filled), or forward by ten or more (the gap stays
// for the rest of the run). Each step outside the plain one is logged with
// the record's position.
class StreamClock {
  public:
    enum class Step {
        InTurn,        // one tick on
        BackRepaired,  // stepped back or repeated: the count follows the record
        BackIgnored,   // ten or more back: the count goes on, the row stays
        TooFar,        // ten or more missing: the row follows the count
        Filled,        // a few missing: rows FillFrom() to the record's tick are filled
    };
    // firstCall is the caller's flag (non-zero: first call), cleared here.
    Step Advance(int32_t t, int32_t& firstCall, int64_t position) {
        if (firstCall != 0) {
            firstCall = 0;
            count_ = -1;
            base_ = t;
        }
        ++count_;
        const int32_t d = t - base_;
        if (d == count_) return Step::InTurn;
        return Stepped(d, position);
    }
    int32_t Count() const { return count_; }
    int32_t Base() const { return base_; }
    // With Filled: the first row (as base + ticks) the fill writes; the last
    // is the record's tick.
    int64_t FillFrom() const { return fillFrom_; }

  private:
    Step Stepped(int32_t d, int64_t position);
    int32_t base_ = 0;
    int32_t count_ = 0;
    int64_t fillFrom_ = 0;
};

// What the counting pass found.
struct StreamScan {
    int32_t sampleCount = -1;
    int32_t rawMark = -1;     // the sample count at the raw position looked up
    int32_t sampleMark = -1;  // the raw position of the sample looked up
    int32_t errorCount = 0;
    int32_t recordCount = 0;
    bool waitShown = false;  // the wait box was opened with an error count
};

// The counting pass over raw[rawStart .. rawEnd] of a run whose first row is
// runStart. rawMarkIn and sampleMarkIn are the look-ups (-1: none). Past 50
// errors the wait form tells the count every 25.
StreamScan ScanStream(std::span<const uint8_t> raw, int64_t rawStart, int64_t rawEnd,
                      int32_t runStart, int32_t rawMarkIn = -1, int32_t sampleMarkIn = -1);

}  // namespace tl
