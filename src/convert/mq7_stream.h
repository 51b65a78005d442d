// The MQ7 and SW63 record stream: self-describing records, one channel
// sample each, closed by a sum checksum; a time record at every 0.01 s tick.
// The stream is read twice: the counting pass (ScanRawStream, in the run
// store, over the scan of formats/stream_records.h) sizes the run, the
// conversion pass here fills its rows. After the records, the MQ7 (not SW63)
// conversion is followed by the vehicle's wheel speed formula: the
// conversion driver runs that stage.
#pragma once

#include <cstdint>
#include <span>

#include "formats/stream_records.h"

namespace tl {

// Decoders, given the stream and the position of the byte after the id. The
// caller has checked that the record lies inside the stream.
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

// The time step of a time record at position: moves sampleIndex; with
// writeTime it writes Time [s] and holds the row's zero columns. firstCall
// is the caller's flag (non-zero: first call).
void ManageTimeStep(std::span<const uint8_t> raw, int64_t position, int32_t run,
                    int32_t& sampleIndex, int32_t& firstCall, bool writeTime);

}  // namespace tl
