// tracelab-cli laps: the lap and sector table of processed runs.
//
// The runs are loaded and processed as export processes them. The lap marker
// is placed automatically on run 1 when none exists, and --auto-sectors N
// places the automatic sectors as the laps form's button does with N in its
// "number of sectors" box (N sectors, limited to 2 to 10, so N - 1 markers
// inside the lap). Then one line per lap:
//   run <n> lap <k> time=<s> s1=<s> s2=<s> ...
// with a sector's time only where the lap holds it, and per run
//   run <n> fastest lap <k> time=<s>
//   run <n> ideal lap time=<s>
// the ideal lap (the best time of each sector added up) only where the
// sectors tile the lap and each has a time in some lap.
// Times are in seconds with two decimals, as the rows are 0.01 s apart.
#include <cstdio>
#include <iostream>
#include <map>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "results/ideal_lap.h"
#include "results/laps.h"
#include "results/measurement_table.h"
#include "results/track_markers.h"
#include "road/convert_driver.h"
#include "store/run_store.h"

namespace tl::cli {

namespace {

std::string Seconds(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.2f", value);
    return buf;
}

}  // namespace

int RunLapTable(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(args, {{"auto-sectors"}, {}});
    if (parsed.help) {
        PrintUsage(std::cout, "laps");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("laps", parsed.error);
    if (parsed.positional.empty()) return UsageError("laps", "no run file given");

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    const bool allLoaded = LoadFiles("laps", parsed.positional);
    if (Store().RunCount == 0) return kExitFailed;
    for (int32_t n = 1; n <= Store().RunCount; ++n) ConvertRawToRunData(n, true);
    if (!PrepareLapsAndSectors("laps", parsed)) return kExitUsage;

    if (CheckForLapMarker() == -1)
        std::cerr << "tracelab-cli laps: no lap marker could be placed\n";
    for (int32_t run = 1; run <= Store().RunCount; ++run) {
        const RunLaps laps = LapsOfRun(run);
        // Sector j's time of each lap, by lap number.
        std::map<int, std::map<int, float>> sectorTimes;
        for (int m = kFirstSectorRow; m <= kLastSectorRow; ++m)
            for (const MeasurementCell& cell : MeasurementCells(m, run))
                sectorTimes[cell.offset + 1][m - kFirstSectorRow + 1] = cell.value;
        for (const LapInfo& lap : laps.laps) {
            std::cout << "run " << run << " lap " << lap.number << " time=" << Seconds(lap.time);
            for (const auto& [sector, time] : sectorTimes[lap.number])
                std::cout << " s" << sector << '=' << Seconds(time);
            std::cout << '\n';
        }
        if (laps.fastest > 0)
            std::cout << "run " << run << " fastest lap " << laps.fastest
                      << " time=" << Seconds(laps.laps[laps.fastest - 1].time) << '\n';
        else
            std::cerr << "tracelab-cli laps: run " << run << " has no complete lap\n";
        const IdealLap ideal = IdealLapOfRun(run);
        if (ideal.valid)
            std::cout << "run " << run << " ideal lap time=" << Seconds(ideal.time) << '\n';
    }
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
