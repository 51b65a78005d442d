// The vehicle: a speed profile limited by lateral grip, longitudinal grip and
// power, and top speed, driven from a standing start over several laps; gears,
// final drive and tyre circumference give wheel and engine rates. The result
// is the ground truth at 100 rows a second.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/circuit.h"

namespace tl::sim {

struct VehicleParams {
    std::string kind = "car";
    double latGrip = 1.3 * kGravity;   // m/s^2, lateral limit
    double accelMax = 0.7 * kGravity;  // m/s^2, traction limit
    double brakeMax = 1.2 * kGravity;  // m/s^2
    double powerPerMass = 180.0;       // W/kg at the wheels
    double topSpeed = 72.0;            // m/s
    int gears = 6;
    std::array<double, 7> gearRatios{3.2, 2.2, 1.65, 1.3, 1.05, 0.87, 0.0};
    double finalDrive = 3.9;
    double tyreCircumference = 1.95;  // m per wheel revolution
    double idleRpm = 1000.0;
    double shiftRpm = 6800.0;
    double wheelPulsesRev = 2.0;
    double ignitionPulsesRev = 2.0;
    double mass = 1100.0;
    double cda = 0.65;
    double rolling = 0.015;
};

// "car", "kart", "bike" or "boat".
bool VehicleFor(const std::string& kind, VehicleParams& out);

struct DriveOptions {
    int laps = 3;
    uint64_t seed = 1;
    double lapVariation = 0.015;  // standard deviation of the per-lap grip factor
    int pitStopLap = 0;           // 0: none; else stop in the pits at the end of that lap
    double pitStopSeconds = 8.0;
    double pitSpeedLimit = 60.0 / 3.6;  // m/s in the pit lane
    double startWait = 3.0;             // seconds still on the grid before the start
    double endWait = 2.0;               // seconds still after stopping
    int extraBeacons = 0;               // beacons spread evenly round the lap besides the line
    double beaconRows = 3;              // rows a beacon pulse stays high
};

// One row of ground truth (0.01 s).
struct TruthRow {
    double time = 0.0;            // s from the first row
    int lap = 0;                  // start/finish crossings completed so far
    double distance = 0.0;        // m travelled since the first row
    double x = 0.0, y = 0.0;      // m east and north of the start/finish line
    double lat = 0.0, lon = 0.0;  // degrees
    double speed = 0.0;           // m/s
    double accelLong = 0.0;       // m/s^2, positive when speeding up
    double accelLat = 0.0;        // m/s^2, positive in a right-hand bend
    double heading = 0.0;         // rad clockwise from north
    int gear = 0;                 // 0 while standing
    double rpm = 0.0;
    bool beacon = false;  // trackside beacon receiver output
};

struct Crossing {
    double time = 0.0;  // s, exact
    int row = 0;        // first row at or after the time
    int beacon = 0;     // 0 is the start/finish line, 1.. the extra beacons
    int lap = 0;        // lap completed (for the line) or lap in progress
    double distance = 0.0;
};

struct Trajectory {
    std::vector<TruthRow> rows;
    std::vector<Crossing> crossings;  // in time order
    std::vector<double> lapGrip;      // the grip factor of each lap, lap 0 the out lap
    double startDistance = 0.0;       // arc length of the car at the first row
    std::vector<double> beaconS;      // arc length of each beacon, [0] = 0 (the line)
};

bool Simulate(const Circuit& circuit, const VehicleParams& vehicle, const DriveOptions& options,
              Trajectory& out, std::string& error);

}  // namespace tl::sim
