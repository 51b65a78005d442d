// One simulation from circuit to raw run, and the files it writes.
#pragma once

#include <string>

#include "sim/circuit.h"
#include "sim/encoders.h"
#include "sim/vehicle.h"

namespace tl::sim {

struct SimConfig {
    Family family = Family::HX40;
    std::string circuit = "road";
    std::string vehicle = "car";
    uint64_t seed = 1;
    DriveOptions drive;    // its seed is set from `seed`
    EncodeOptions encode;  // its seed is set from `seed`
};

struct SimOutput {
    Circuit circuit;
    VehicleParams vehicle;
    Trajectory trajectory;
    RawRun raw;
};

bool RunSimulation(const SimConfig& config, SimOutput& out, std::string& error);
// OUT.run, and beside it OUT.truth.csv, OUT.laps.csv and OUT.car, where OUT
// is the path less its ".run".
bool WriteSimulation(const SimOutput& out, const std::string& runPath, std::string& error);
std::string SummaryText(const SimOutput& out);

}  // namespace tl::sim
