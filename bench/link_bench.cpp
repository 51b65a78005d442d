// Download efficiency of the logger link: a five-minute simulated HX40 run
// (the road circuit, two laps) brought in by AdaptiveDownloadRun from
// tracelab-logger-emu's core on a pseudo-terminal, served on a thread of its
// own at the true line rate of 115200 baud, through the POSIX port on the
// system clock. Efficiency is the run's payload bytes a second over 11,520
// (115200 baud at ten bits a byte). Cases: a clean line, and bit errors at
// 1e-6 and 1e-5 on the transfers. The packet size after every transfer is
// the trace, printed on stderr in runs ("255x12 245x3 ...").
//
// One iteration each, manual time; it takes about a minute and a half.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "link/download.h"
#include "link/posix_serial_port.h"
#include "link/serial_link.h"
#include "sim/logger_emu.h"
#include "sim/simulation.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace {

const tl::sim::EmuRun& SimulatedRun() {
    static const tl::sim::EmuRun run = [] {
        tl::sim::SimConfig config;  // HX40, road, car
        config.drive.laps = 2;
        config.drive.endWait = 31.5;  // standing still to five minutes
        tl::sim::SimOutput out;
        std::string error;
        if (!tl::sim::RunSimulation(config, out, error))
            std::fprintf(stderr, "%s\n", error.c_str());
        return tl::sim::EmuRunFromRaw(out.raw);
    }();
    return run;
}

// The packet count of a progress line ("... (245 ppt)"), 0 when none.
int PacketCountOf(const std::string& progress) {
    const size_t open = progress.rfind('(');
    return open == std::string::npos ? 0 : std::atoi(progress.c_str() + open + 1);
}

std::string TraceText(const std::vector<int>& trace) {
    std::string text;
    for (size_t i = 0; i < trace.size();) {
        size_t j = i;
        while (j < trace.size() && trace[j] == trace[i]) ++j;
        text += std::to_string(trace[i]) + "x" + std::to_string(j - i) + " ";
        i = j;
    }
    return text;
}

void BM_DownloadEfficiency(benchmark::State& state) {
    const double bitErrors = state.range(0) == 0 ? 0.0 : 1.0 / double(state.range(0));
    tl::test::TempDir root;
    tl::ScriptedPlatform ui;
    tl::test::StartEngine(root, ui, tl::Family::HX40, tl::Vehicle::Car);
    tl::SystemClock clock;
    tl::Platform platform = ui.AsPlatform();
    platform.clock = &clock;
    tl::SetPlatform(platform);
    tl::PosixSerialPort port;
    tl::SetSerialPort(&port);

    for (auto _ : state) {
        tl::sim::EmuOptions options;
        options.baud = 115200;
        options.faults.bitErrors = bitErrors;
        options.seed = 7;
        tl::sim::LoggerEmu emu(options, {SimulatedRun()});
        std::string error;
        if (!emu.Open(error)) {
            state.SkipWithError(error.c_str());
            break;
        }
        std::thread serving([&emu] { emu.Run(); });
        tl::Link().deviceOverride = emu.DevicePath();
        tl::Link().AbortFlag = false;
        // Every download starts from the stored default size.
        tl::SetConfig(tl::Paths().TracelabCfgPath, "PacketCount", 255.0f);

        tl::DownloadControl form;
        std::vector<int> trace;
        bool ok = tl::LoadDownloadForm(form) && !form.runs.empty();
        if (ok) {
            form.onRefresh = [&] {
                const int ppt = PacketCountOf(form.DownloadProgressLbl);
                if (ppt > 0) trace.push_back(ppt);
            };
            const double start = clock.SecondsSinceMidnight();
            ok = tl::AdaptiveDownloadRun(form, 1);
            const double seconds = clock.SecondsSinceMidnight() - start;
            state.SetIterationTime(seconds);
            const double bytes = double(form.runs[0].RunByteLength) * 8.0;
            state.counters["payload_bytes"] = bytes;
            state.counters["run_seconds"] = double(form.runs[0].RunByteLength) / 100.0;
            state.counters["seconds"] = seconds;
            state.counters["efficiency_pct"] = bytes / seconds / 11520.0 * 100.0;
            state.counters["transfers"] = double(trace.size());
            state.counters["min_ppt"] =
                trace.empty() ? 0 : *std::min_element(trace.begin(), trace.end());
            state.counters["final_ppt"] = tl::GetConfig(tl::Paths().TracelabCfgPath, "PacketCount");
            std::fprintf(stderr, "bit errors %g: %s\n", bitErrors, TraceText(trace).c_str());
            if (ok) tl::DeleteRun(tl::Store().RunCount);
        }
        emu.Stop();
        serving.join();
        tl::DisconnectFromLogger();
        if (!ok) state.SkipWithError("the run did not come in whole");
    }
    tl::SetSerialPort(nullptr);
    tl::Link().deviceOverride.clear();
    tl::test::StopEngine();
}

}  // namespace

// The argument is 1 / the bit error rate, 0 a clean line.
BENCHMARK(BM_DownloadEfficiency)
    ->Arg(0)
    ->Arg(1000000)
    ->Arg(100000)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kSecond);

BENCHMARK_MAIN();
