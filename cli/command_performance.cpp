// tracelab-cli performance: the calculated performance table of one run.
//
// The runs are loaded and processed as export processes them. Then, for run
// N (--run, default 1) between --start and --end seconds (default the whole
// run) with the launch trigger --trigger g (default 0.2), the two grids the
// performance window computes, each printed as its copy to the clipboard
// puts it (cells separated by tab, rows closed by CR LF) under the heading
// its printed page has:
//   Acceleration times from <run name>
//   <AccelGrid>
//   Acceleration distances from <run name>
//   <DistanceGrid>
// and last the summary text of the SummaryPerformance.cfg template. The
// speed unit, distance unit and assembly are the window's stored options;
// --mph, --feet and --assembled choose the other button of each (and are
// not stored).
#include <iostream>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "core/support.h"
#include "files/raw_run_files.h"
#include "results/performance.h"
#include "road/convert_driver.h"
#include "store/run_store.h"

namespace tl::cli {

namespace {

bool NumberOption(const ParsedArgs& parsed, const char* name, std::string& out) {
    if (!parsed.values.count(name)) return true;
    out = parsed.Value(name);
    return ValidNumber(out);
}

}  // namespace

int RunPerformance(const std::vector<std::string>& args) {
    ParsedArgs parsed =
        ParseArguments(args, {{"run", "start", "end", "trigger"}, {"mph", "feet", "assembled"}});
    if (parsed.help) {
        PrintUsage(std::cout, "performance");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("performance", parsed.error);
    if (parsed.positional.empty()) return UsageError("performance", "no run file given");
    int32_t run = 1;
    if (parsed.values.count("run")) {
        const std::string& text = parsed.values["run"];
        if (!ValidNumber(text) || GetVal_NI(text) < 1 || GetVal_NI(text) > kMaxRunsLoaded ||
            GetVal_NI(text) != static_cast<int32_t>(GetVal_NI(text)))
            return UsageError("performance", "--run must be a run number from 1 to 10");
        run = static_cast<int32_t>(GetVal_NI(text));
    }
    std::string start = "0", end, trigger;
    if (!NumberOption(parsed, "start", start) || !NumberOption(parsed, "end", end) ||
        !NumberOption(parsed, "trigger", trigger))
        return UsageError("performance", "--start, --end and --trigger take a number");

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    const bool allLoaded = LoadFiles("performance", parsed.positional);
    if (run > Store().RunCount) {
        std::cerr << "tracelab-cli performance: there is no run " << run << " (" << Store().RunCount
                  << " loaded)\n";
        return kExitFailed;
    }
    // As ReprocessAllRuns converts them: later runs take the first run's
    // origin.
    for (int32_t n = 1; n <= run; ++n) ConvertRawToRunData(n, true);
    if (!CheckPerformanceVariables()) return kExitFailed;

    PerformanceOptions options = LoadPerformanceOptions();
    if (parsed.flags.count("mph")) options.mph = true;
    if (parsed.flags.count("feet")) options.feet = true;
    if (parsed.flags.count("assembled")) options.assembled = true;
    if (!trigger.empty()) options.trigger = trigger;
    const RunRecord& r = Store().RunInfo[run];
    if (end.empty()) end = FormToSD((r.RunLength - 1) / 100.0, 10);
    const PerformanceTables tables = CalculatePerformance(run, start, end, options);
    if (!tables.ok) return kExitFailed;

    std::cout << "Acceleration times from " << r.Name << "\r\n"
              << PerformanceGridText(tables.accel) << "Acceleration distances from " << r.Name
              << "\r\n"
              << PerformanceGridText(tables.distance) << tables.summary;
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
