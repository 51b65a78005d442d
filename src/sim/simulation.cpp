#include "sim/simulation.h"

#include <cstdio>

#include "sim/run_file.h"

namespace tl::sim {

bool RunSimulation(const SimConfig& config, SimOutput& out, std::string& error) {
    if (!BuiltinCircuit(config.circuit, out.circuit, error)) return false;
    if (!VehicleFor(config.vehicle, out.vehicle)) {
        error = "unknown vehicle \"" + config.vehicle + "\" (car, kart, bike or boat)";
        return false;
    }
    DriveOptions drive = config.drive;
    drive.seed = config.seed;
    if (!Simulate(out.circuit, out.vehicle, drive, out.trajectory, error)) return false;
    EncodeOptions encode = config.encode;
    encode.seed = config.seed;
    out.raw = Encode(config.family, out.trajectory, out.circuit, out.vehicle, encode);
    return true;
}

bool WriteSimulation(const SimOutput& out, const std::string& runPath, std::string& error) {
    std::string base = runPath;
    if (base.size() > 4 && base.compare(base.size() - 4, 4, ".run") == 0)
        base.resize(base.size() - 4);
    return WriteRunFile(runPath, out.raw, error) &&
           WriteFileReplacing(base + ".truth.csv", TruthCsvText(out.trajectory, out.raw.rows),
                              error) &&
           WriteFileReplacing(base + ".laps.csv", LapsCsvText(out.trajectory, out.raw.rows),
                              error) &&
           WriteFileReplacing(base + ".car", CarFileText(out.vehicle), error);
}

std::string SummaryText(const SimOutput& out) {
    char buf[512];
    int laps = 0;
    for (const Crossing& c : out.trajectory.crossings)
        if (c.beacon == 0 && c.row < out.raw.rows) ++laps;
    std::snprintf(buf, sizeof buf,
                  "%s run (type %d): circuit %s %.1f m, vehicle %s, %d rows (%.2f s), %d line "
                  "crossings, %zu GPS fixes sent, %d dropped, %d malformed, %d time jumps, %zu "
                  "bytes corrupted, %zu raw bytes, rows counted by the frame rules %d\n",
                  FamilyName(out.raw.family), out.raw.fileType, out.circuit.name.c_str(),
                  out.circuit.length, out.vehicle.kind.c_str(), out.raw.rows, out.raw.rows * 0.01,
                  laps, out.raw.fixes.size(), out.raw.droppedFixes, out.raw.malformedSentences,
                  out.raw.timeJumps, out.raw.corruptedBytes, out.raw.bytes.size(),
                  out.raw.expectedRows);
    std::string s = buf;
    for (const std::string& n : out.raw.notes) s += "note: " + n + "\n";
    return s;
}

}  // namespace tl::sim
