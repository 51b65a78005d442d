// One encoder per logger family: the simulated motion recorded as the logger
// records it, byte for byte.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/circuit.h"
#include "sim/faults.h"
#include "sim/sensors.h"
#include "sim/vehicle.h"

namespace tl::sim {

enum class Family { HX40, MQ7, SW63, SV63 };

bool FamilyFromName(const std::string& name, Family& family);
const char* FamilyName(Family family);
// The .run file type: HX40 1, MQ7 200, SW63 201, SV63 202.
int FileType(Family family);
bool IsPlaneFamily(Family family);

struct EncodeOptions {
    uint64_t seed = 1;
    SensorOptions sensors;
    Faults faults;
    int gpsIntervalRows = 0;  // 0: the family's own rate (HX40 100, MQ7 and SW63 10, SV63 20)
    int sv63Period = 1;       // SV63 sample period in 0.01 s, 1 to 20
    uint16_t serialNumber = 4711;
    uint8_t firmwareMajor = 2;
    uint8_t firmwareMinor = 7;
    uint32_t timeIndexStart = 1;  // MQ7/SW63: the logger's tick counter at the first row
};

struct RawRun {
    Family family = Family::HX40;
    int fileType = 1;
    bool planes = true;
    int frames = 0;                   // plane families: N, frames per plane
    std::array<uint8_t, 8> header{};  // plane families: HeaderBytes(1..8)
    std::vector<uint8_t> bytes;       // planes: 8 * frames, plane 1 first; streams: the stream
    int rows = 0;                     // truth rows recorded (all of them unless cut short)
    int expectedRows = 0;             // rows the frame rules count in these bytes
    std::vector<GpsFix> fixes;        // fixes as sent
    std::vector<int> fixSentAtRow;    // for each fix, the row whose frame or tick carried it
    int droppedFixes = 0;
    int malformedSentences = 0;
    int timeJumps = 0;
    size_t corruptedBytes = 0;
    std::vector<std::string> notes;  // what the encoder did that the user should know

    uint8_t& Plane(int vector, int frame) {
        return bytes[static_cast<size_t>(vector - 1) * frames + frame];
    }
    uint8_t Plane(int vector, int frame) const {
        return bytes[static_cast<size_t>(vector - 1) * frames + frame];
    }
};

RawRun EncodeHX40(const Trajectory& traj, const Circuit& circuit, const VehicleParams& vehicle,
                  const EncodeOptions& options);
// MQ7 and SW63 share the record stream; SW63 (a performance meter) records
// no engine, frequency or analogue channels.
RawRun EncodeStream(Family family, const Trajectory& traj, const Circuit& circuit,
                    const VehicleParams& vehicle, const EncodeOptions& options);
RawRun EncodeSV63(const Trajectory& traj, const Circuit& circuit, const EncodeOptions& options);

RawRun Encode(Family family, const Trajectory& traj, const Circuit& circuit,
              const VehicleParams& vehicle, const EncodeOptions& options);

// Helpers shared by the encoders and useful to tests.
// HX40/SV63 acceleration bytes: vector 4 (longitudinal), 5 (lateral) and the
// four high bits of vector 8.
struct AccelBytes {
    uint8_t v4 = 0, v5 = 0, v8 = 0;
};
AccelBytes EncodeFrameAccel(double longG, double latG);
// The HX40 sentence of a fix: 56 characters.
std::string Hx40Sentence(const GpsFix& fix);
char SatChar(int sats);

}  // namespace tl::sim
