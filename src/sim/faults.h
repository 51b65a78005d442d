// Faults on request: corrupted bytes at a rate, dropped GPS fixes, malformed
// GPS sentences, time-index jumps, a run cut short, and a beacon receiver that
// misses a pulse or sees a false one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/vehicle.h"

namespace tl::sim {

struct Faults {
    double corruptRate = 0.0;   // share of raw bytes changed (head and header bytes excepted)
    double dropGps = 0.0;       // share of GPS fixes never sent
    double badSentences = 0.0;  // share of HX40 sentences made malformed
    int timeJumps = 0;          // MQ7/SW63: number of gaps in the time index
    int jumpTicks = 5;          // size of each jump in ticks (below 10 the reader repairs it)
    double keep = 1.0;          // share of the run written before it is cut short
    int missBeacon = 0;         // the K-th beacon pulse of the run is not logged (0: none)
    double falseBeacon = -1.0;  // a spurious beacon pulse at this time in s (< 0: none)
};

// "corrupt=0.001,dropgps=0.1,badnmea=0.05,timejumps=3,jumpticks=12,cut=0.8,
// missbeacon=4,falsebeacon=61.5";
// "none" or an empty text gives no faults.
bool ParseFaults(const std::string& text, Faults& faults, std::string& error);

// Changes bytes [from, end) at the given rate, each to a different value.
// Positions are drawn by geometric skips, so the cost follows the number of
// faults, not the length. Returns the number of bytes changed.
// The beacon receiver's output row by row as the logger records it: the
// true pulses, less the missed one, plus the false one (kFalseBeaconRows rows
// high).
inline constexpr int kFalseBeaconRows = 3;
std::vector<uint8_t> LoggedBeacon(const Trajectory& traj, const Faults& faults);

size_t CorruptBytes(std::vector<uint8_t>& bytes, size_t from, double rate, uint64_t seed);

}  // namespace tl::sim
