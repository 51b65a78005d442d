// The variable catalogue: every processed channel is a numbered slot of
// RunVars (1 to 201). Only enabled slots own a column of RunData; all others
// point at the shared "*No Data*" column of slot 201, so a reader needs no test.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace tl {

struct RunVar {
    std::string Name;
    bool Enabled = false;
    int32_t Column = 0;
    bool Available = false;
};

inline constexpr int kNoDataSlot = 201;
inline constexpr int kFirstSerialSlot = 51;  // "Serial Bytes Rx [-]"; "S:" from 52
inline constexpr int kFirstUserSlot = 100;   // "U:" 100 to 199

// Slot numbers that stand as constants in the derived code.
namespace slot {
inline constexpr int Time = 1;
inline constexpr int AccelLong = 2;
inline constexpr int AccelBrakeFlag = 3;
inline constexpr int AccelLat = 4;
inline constexpr int AccelTotal = 5;
inline constexpr int EngineSpeed = 6;
inline constexpr int SpeedMph = 7;
inline constexpr int SpeedKph = 8;
inline constexpr int WheelSpeedMph = 9;
inline constexpr int WheelSpeedKph = 10;
inline constexpr int DistanceKm = 11;
inline constexpr int PositionX = 21;
inline constexpr int PositionY = 22;
inline constexpr int TimeSlip = 23;
inline constexpr int RateOfTimeSlip = 24;
inline constexpr int Scratch = 201;
}  // namespace slot

struct VariableCatalogue {
    // Index 0 unused; 1 to 201.
    std::array<RunVar, 202> RunVars;
    int32_t NumVars = 0;
};

VariableCatalogue& Catalogue();

// The slot's name as its selection key in the options file: slots 7 and 8
// may be shown as "GPS Speed [...]", but their key is always the plain
// "Speed [mph]" / "Speed [kph]".
std::string PlainVarName(int slotNumber);

inline int32_t ColumnOf(int slotNumber) {
    return Catalogue().RunVars[slotNumber].Column;
}

}  // namespace tl
