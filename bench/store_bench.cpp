// Loading ten one-hour HX40 raw files (360,000 frames each) and allocating
// their rows with every variable enabled: wall time, and peak memory against
// the final RunData plus RawData.
#include <benchmark/benchmark.h>

#include <fstream>
#include <random>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "files/raw_run_files.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace {

using namespace tl;

constexpr int kRuns = 10;
constexpr int32_t kFrames = 360000;

// Resident set figures of this process, in bytes.
double StatusBytes(const char* key) {
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.rfind(key, 0) == 0)
            return std::stod(line.substr(std::string(key).size())) * 1024.0;
    return 0;
}

void ResetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

// An HX40 file whose frames carry a GPS block of eight frames once a second.
void WriteHx40File(const std::string& path, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<std::string> planes(8, std::string(kFrames + 1, '\0'));
    for (int v = 0; v < 8; ++v) {
        planes[v][0] = static_cast<char>(v == 0 ? 1 : 0);
        for (int32_t i = 1; i <= kFrames; ++i) planes[v][i] = static_cast<char>(rng() & 0xFE);
    }
    for (int32_t i = 50; i + 8 < kFrames; i += 100)
        for (int k = 0; k < 8; ++k) planes[2][i + 1 + k] |= 1;
    std::ofstream out(path, std::ios::binary);
    const int32_t head[3] = {kRunFileMagic, kFileTypeRawHX40, kFrames};
    out.write(reinterpret_cast<const char*>(head), sizeof head);
    for (const auto& p : planes) out.write(p.data(), static_cast<std::streamsize>(p.size()));
}

void BM_LoadTenHourLongHx40Runs(benchmark::State& state) {
    test::TempDir root;
    ScriptedPlatform ui;
    ui.defaultYesNo = false;  // do not process: load and allocate only
    test::StartEngine(root, ui, Family::HX40, Vehicle::Car);
    for (int s = 1; s <= 200; ++s)
        if (Catalogue().RunVars[s].Available)
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
    std::vector<std::string> files;
    for (int r = 0; r < kRuns; ++r) {
        files.push_back(root.file("hour" + std::to_string(r) + ".run"));
        WriteHx40File(files.back(), 1000 + r);
    }

    double peak = 0, final = 0;
    for (auto _ : state) {
        state.PauseTiming();
        ClearCurrentRun(true);
        const double base = StatusBytes("VmRSS:");
        ResetPeak();
        // One selection of ten files in the load dialog: a multi-selection
        // counts one fewer than it holds, which is how ten runs fit.
        ui.openAnswers.push_back(files);
        state.ResumeTiming();
        LoadDataFromFile("");
        state.PauseTiming();
        peak = StatusBytes("VmHWM:") - base;
        final = static_cast<double>(Store().RunData.Bytes() + Store().RawData.Bytes());
        if (Store().RunCount != kRuns) state.SkipWithError("not every run loaded");
        state.ResumeTiming();
    }
    state.counters["columns"] = Catalogue().NumVars;
    state.counters["rows"] = Store().RunData.UpperRow();
    state.counters["final_MB"] = final / 1e6;
    state.counters["peak_MB"] = peak / 1e6;
    state.counters["peak_ratio"] = final > 0 ? peak / final : 0;
    ClearCurrentRun(true);
    test::StopEngine();
}
BENCHMARK(BM_LoadTenHourLongHx40Runs)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
