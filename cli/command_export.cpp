// tracelab-cli export and export-raw: the comma-separated exports of the run
// manager, written to a named file instead of through the save dialog.
//
// export loads the run files as the load menu does (the process question
// answered No), converts every run in load order as the program's reprocess
// does, and writes the processed export of one run (--run, default 1) at the
// sample time --step (seconds, default 0.01, taken as the "Sample Time" box
// takes its text). --stage convert stops each conversion after the family
// converter; --stage all (the default) runs the whole processing.
// --all-vars first ticks every entry of the variable selection and presses
// Okay, as "Set All" would: the selection is stored in the configuration
// root like the program stores it.
//
// export-raw loads the files the same way, without converting, and writes
// the raw export of all of them.
#include <iostream>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "core/build_profile.h"
#include "core/support.h"
#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "road/active_variables.h"
#include "road/convert_driver.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::cli {

int RunExport(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(
        args, {{"stage", "step", "run", "o", "output", "auto-sectors"}, {"all-vars", "laps"}});
    if (parsed.help) {
        PrintUsage(std::cout, "export");
        return kExitOk;
    }
    const std::string output =
        parsed.Value("o").empty() ? parsed.Value("output") : parsed.Value("o");
    const std::vector<std::string>& files = parsed.positional;
    if (!parsed.error.empty()) return UsageError("export", parsed.error);
    const std::string stage = parsed.values.count("stage") ? parsed.Value("stage") : "all";
    if (stage != "convert" && stage != "all")
        return UsageError("export", "--stage must be convert or all");
    if (files.empty()) return UsageError("export", "no run file given");
    if (output.empty()) return UsageError("export", "no output file given (-o OUT.csv)");
    int32_t run = 1;
    if (parsed.values.count("run")) {
        const std::string& text = parsed.values["run"];
        if (!ValidNumber(text) || GetVal_NI(text) < 1 || GetVal_NI(text) > kMaxRunsLoaded ||
            GetVal_NI(text) != static_cast<int32_t>(GetVal_NI(text)))
            return UsageError("export", "--run must be a run number from 1 to 10");
        run = static_cast<int32_t>(GetVal_NI(text));
    }
    const std::string stepText = parsed.values.count("step") ? parsed.Value("step") : "0.01";
    const int32_t step = ExportStepFromText(stepText);

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;

    if (parsed.flags.count("all-vars")) {
        // Before any run is loaded, so that Okay asks nothing and has
        // nothing to reprocess.
        ActiveVariablesList list;
        list.Activate();
        list.SetAll();
        list.Okay();
    }
    const bool allLoaded = LoadFiles("export", files);
    if (run > Store().RunCount) {
        std::cerr << "tracelab-cli export: there is no run " << run << " (" << Store().RunCount
                  << " loaded)\n";
        return kExitFailed;
    }
    // As ReprocessAllRuns converts them: every run, in order, since later
    // runs take the first run's origin.
    for (int32_t n = 1; n <= Store().RunCount; ++n) ConvertRawToRunData(n, stage == "all");
    if (stage == "all" && (parsed.flags.count("laps") || parsed.values.count("auto-sectors")) &&
        !PrepareLapsAndSectors("export", parsed))
        return kExitUsage;

    if (step < 1)
        std::cerr << "tracelab-cli export: a sample time of " << stepText
                  << " is below 0.01 s: the file is left empty, as the program leaves it\n";
    std::string error;
    if (!WriteProcessedCsv(run, output, step, Profile().TimeStampExport, error)) {
        std::cerr << "tracelab-cli export: " << output << ": " << error << '\n';
        return kExitFailed;
    }
    return allLoaded ? kExitOk : kExitFailed;
}

int RunExportRaw(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(args, {{"o", "output"}, {}});
    if (parsed.help) {
        PrintUsage(std::cout, "export-raw");
        return kExitOk;
    }
    const std::string output =
        parsed.Value("o").empty() ? parsed.Value("output") : parsed.Value("o");
    const std::vector<std::string>& files = parsed.positional;
    if (!parsed.error.empty()) return UsageError("export-raw", parsed.error);
    if (files.empty()) return UsageError("export-raw", "no run file given");
    if (output.empty()) return UsageError("export-raw", "no output file given (-o OUT.csv)");

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    const bool allLoaded = LoadFiles("export-raw", files);
    if (Store().RunCount == 0) return kExitFailed;
    std::string error;
    if (!WriteRawCsv(output, error)) {
        std::cerr << "tracelab-cli export-raw: " << output << ": " << error << '\n';
        return kExitFailed;
    }
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
