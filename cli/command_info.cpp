// tracelab-cli info: loads run files through the same engine call as the
// load menu, one LoadDataFromFile(path) per file, answering No to the
// process question, and prints one line per run in memory:
//   run <n> name=<Name> raw=<RawStart>..<RawEnd> rows=<RunStart>..<RunEnd>
//       length=<RunLength> header=<h1>,...,<h8>            (one line)
// and, for SV63 summary run files, one line per summary run:
//   summary <n> name=<Name> bytes=<count>
// A refused file leaves its message on stderr; the others are still loaded,
// and the exit status is then 1.
#include <iostream>
#include <sstream>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "files/raw_run_files.h"
#include "files/summary_run_list.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::cli {

namespace {

std::string RunLine(int32_t n, const RunRecord& r) {
    std::ostringstream line;
    line << "run " << n << " name=" << r.Name << " raw=" << r.RawStart << ".." << r.RawEnd
         << " rows=" << r.RunStart << ".." << r.RunEnd << " length=" << r.RunLength << " header=";
    for (size_t v = 0; v < r.HeaderBytes.size(); ++v)
        line << (v ? "," : "") << static_cast<int>(r.HeaderBytes[v]);
    return line.str();
}

}  // namespace

int RunInfo(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(args);
    if (parsed.help) {
        PrintUsage(std::cout, "info");
        return kExitOk;
    }
    if (parsed.error.empty() && parsed.positional.empty()) parsed.error = "no run file given";
    if (!parsed.error.empty()) {
        std::cerr << "tracelab-cli info: " << parsed.error << "\n\n";
        PrintUsage(std::cerr, "info");
        return kExitUsage;
    }

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;

    bool refused = false;
    for (const std::string& file : parsed.positional) {
        if (!RunFileThere("info", file)) {
            refused = true;
            continue;
        }
        const int32_t runsBefore = Store().RunCount;
        const size_t summariesBefore = SummaryRuns().Runs.size();
        LoadDataFromFile(file);
        // A refusal brings the dialog back, which the scripted platform
        // cancels: the run count has then not risen.
        if (Store().RunCount == runsBefore && SummaryRuns().Runs.size() == summariesBefore) {
            refused = true;
            std::cerr << "tracelab-cli info: " << file << " was not loaded\n";
        }
    }
    // As the load menu does after a load.
    CheckInternalDataStillValid();

    const RunStore& s = Store();
    for (int32_t n = 1; n <= s.RunCount; ++n) std::cout << RunLine(n, s.RunInfo[n]) << '\n';
    const auto& summaries = SummaryRuns().Runs;
    for (size_t i = 0; i < summaries.size(); ++i)
        std::cout << "summary " << i + 1 << " name=" << summaries[i].Name
                  << " bytes=" << summaries[i].Bytes.size() << '\n';
    std::cout.flush();
    return refused ? kExitFailed : kExitOk;
}

}  // namespace tl::cli
