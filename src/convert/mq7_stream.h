// The MQ7 and SW63 record stream: self-describing records, one channel
// sample each, closed by a sum checksum; a time record at every 0.01 s tick.
// The stream is read twice: a counting pass (ScanRawStream) sizes the run,
// the conversion pass fills its rows.
#pragma once

#include <cstdint>
#include <span>

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

// Length of the whole record (id and checksum included) of a fixed-length
// channel, 0 for ids that are not (19 is variable; unknown ids).
int Mq7RecordLength(int id);

// Decoders, given the stream and the position of the byte after the id. The
// caller has checked that the record lies inside the stream.
int32_t DecodeU24(std::span<const uint8_t> raw, int64_t pos);
float ExtractU32(std::span<const uint8_t> raw, int64_t pos);
double ExtractI32(std::span<const uint8_t> raw, int64_t pos);
float DecodeAdc(std::span<const uint8_t> raw, int64_t pos);
void DecodeAccelerometer(std::span<const uint8_t> raw, int64_t pos, float& lateral,
                         float& longitudinal);
void DecodeGpsPosition(std::span<const uint8_t> raw, int64_t pos, double& lon, double& lat,
                       float& accuracy);
void DecodeGpsSpeed(std::span<const uint8_t> raw, int64_t pos, float& speed, float& accuracy);
int DecodeDigital(std::span<const uint8_t> raw, int64_t pos);
float DecodeFreq(std::span<const uint8_t> raw, int64_t pos);
float DecodeFreqLinear(std::span<const uint8_t> raw, int64_t pos);

// True when the record of the given length at position is inside the stream
// and its last byte is the sum of the others modulo 256.
bool CheckCheckSumMQ7(std::span<const uint8_t> raw, int64_t position, int64_t length);

struct StreamScan {
    int32_t sampleCount = -1;
    int32_t rawMark = -1;     // the sample count at the raw position looked up
    int32_t sampleMark = -1;  // the raw position of the sample looked up
    int32_t errorCount = 0;
    int32_t recordCount = 0;
    bool waitShown = false;  // the wait box was opened with an error count
};

// The counting pass. rawMarkIn and sampleMarkIn are the look-ups (-1: none).
StreamScan ScanRawStream(int32_t run, int32_t rawMarkIn = -1, int32_t sampleMarkIn = -1);

// The time step of a time record at position: moves sampleIndex; with
// writeTime it writes Time [s] and holds the row's zero columns. firstCall
// is the caller's flag (non-zero: first call).
void ManageTimeStep(std::span<const uint8_t> raw, int64_t position, int32_t run,
                    int32_t& sampleIndex, int32_t& firstCall, bool writeTime);

}  // namespace tl
