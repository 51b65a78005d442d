// The .run file of a raw run and the files written beside it.
//
// Head: magic 7576 and the file type, each a little-endian signed 32-bit
// number. Plane families (types 1 and 202) follow with N, the number of
// frames, and eight planes of N + 1 bytes, vector 1 first, each beginning
// with that vector's header byte. Stream families (200, 201) follow with the
// byte stream to the end of the file.
#pragma once

#include <string>
#include <vector>

#include "sim/encoders.h"
#include "sim/vehicle.h"

namespace tl::sim {

std::vector<uint8_t> RunFileBytes(const RawRun& run);
// Written through a temporary file and a rename: a failed write never leaves
// a damaged file in place of a good one.
bool WriteFileReplacing(const std::string& path, const std::string& bytes, std::string& error);
bool WriteRunFile(const std::string& path, const RawRun& run, std::string& error);
// The vehicle's options in the configuration-store form ("key","value" CR LF),
// so that a reader of the run can convert it with the simulated vehicle.
std::string CarFileText(const VehicleParams& vehicle);
// Ground truth, one line per row (the first `rows` rows), and the list of
// true crossings of the line and the beacons.
std::string TruthCsvText(const Trajectory& traj, int rows);
std::string LapsCsvText(const Trajectory& traj, int rows);

}  // namespace tl::sim
