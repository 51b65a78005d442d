// The whole derived pipeline on a one-hour run (360,000 rows) with every
// variable enabled and two user channels, and the reprocessing of ten such
// runs. The run is a vehicle lapping a 1.2 km circuit, put into the store as
// a family converter leaves it: accelerations at every row, GPS speed and
// position at the fixes (10 a second, MQ7) with the -1 / 0 marks between.
// Each iteration restores the converted columns first (not timed).
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "derived/pipeline.h"
#include "derived/user_channels.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;

struct Environment {
    test::TempDir root;
    ScriptedPlatform ui;
    std::vector<std::vector<float>> saved;  // converted columns of each run
    int runs;
    Environment(int runCount) : runs(runCount) {
        test::StartEngine(root, ui, Family::MQ7, Vehicle::Car);
        SaveUserChannels(Paths().UserVarsCfgPath,
                         {{"Power Ratio", "VAR_16 / (VAR_06 + 1)", -1},
                          {"Combined G", "sqrt(VAR_02^2 + VAR_04^2)", -1}});
        SetConfig(Paths().TracelabCfgPath, "U:Power Ratio", -1);
        SetConfig(Paths().TracelabCfgPath, "U:Combined G", -1);
        test::EnableEveryVariable();
        // Filters as a user sets them: a rate limit on the accelerations and
        // a time constant on power.
        SetConfig(Paths().TracelabCfgPath, "RateFilt_" + Catalogue().RunVars[2].Name, 50);
        SetConfig(Paths().TracelabCfgPath, "MinPos_" + Catalogue().RunVars[2].Name, -3);
        SetConfig(Paths().TracelabCfgPath, "MaxPos_" + Catalogue().RunVars[2].Name, 3);
        SetConfig(Paths().TracelabCfgPath, "TimeFilt_" + Catalogue().RunVars[16].Name, 0.5f);
        SetConfig(Paths().CarCfgPath, "DrivenRollingCircVal", 1.9f);
        SetConfig(Paths().CarCfgPath, "FinalDriveRat", 4.1f);
        for (int g = 1; g <= 5; ++g)
            SetConfig(Paths().CarCfgPath, "GearRatioVal" + std::to_string(g), 3.5f / g);
        SetConfig(Paths().CarCfgPath, "CarMass", 900);
        SetConfig(Paths().CarCfgPath, "CdaVal", 0.7f);
        SetConfig(Paths().CarCfgPath, "RollingVal", 0.015f);

        test::LayOutRuns(runs, kRows, "hour");
        Fill();
        RunStore& s = Store();
        saved.resize(s.RunData.Columns());
        for (int32_t c = 0; c < s.RunData.Columns(); ++c) {
            auto col = s.RunData.Column(c);
            saved[c].assign(col.begin(), col.end());
        }
    }
    // A 1.2 km circuit: two 300 m straights and two half circles of 95.5 m
    // radius, speed between 60 and 160 kph.
    void Fill() {
        std::mt19937 gen(7);
        std::normal_distribution<float> noise(0.0f, 0.01f);
        auto col = [](int slotNumber) { return Store().RunData.Column(ColumnOf(slotNumber)); };
        auto t = col(slot::Time), ax = col(slot::AccelLong), ay = col(slot::AccelLat),
             rpm = col(slot::EngineSpeed), kph = col(slot::SpeedKph),
             wheel = col(slot::WheelSpeedKph), px = col(slot::PositionX), py = col(slot::PositionY);
        const double radius = 95.5, straight = 300.0;
        const double lap = 2 * straight + 2 * M_PI * radius;
        for (int n = 1; n <= runs; ++n) {
            const RunRecord& r = Store().RunInfo[n];
            double s = 0, v = 20.0, heading = 0, x = 0, y = 0;
            for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) {
                const double pos = std::fmod(s, lap);
                const bool bend = !(pos < straight || (pos >= straight + M_PI * radius &&
                                                       pos < 2 * straight + M_PI * radius));
                const double target = bend ? 60 / 3.6 : 44.0;
                const double a = std::clamp((target - v) * 0.5, -8.0, 4.0);
                const double lat = bend ? v * v / radius : 0.0;
                t[i] = (i - r.RunStart) / 100.0f;
                ax[i] = static_cast<float>(a / 9.80665) + noise(gen);
                ay[i] = static_cast<float>(lat / 9.80665) + noise(gen);
                wheel[i] = static_cast<float>(v * 3.6);
                rpm[i] = static_cast<float>(v * 3.6 * 60);
                const bool fix = (i - r.RunStart) % 10 == 0;
                kph[i] = fix ? static_cast<float>(v * 3.6) : -1.0f;
                px[i] = fix ? static_cast<float>(x) + noise(gen) * 30 : 0.0f;
                py[i] = fix ? static_cast<float>(y) + noise(gen) * 30 : 0.0f;
                heading += (bend ? v / radius : 0.0) * 0.01;
                x += v * 0.01 * std::sin(heading);
                y += v * 0.01 * std::cos(heading);
                s += v * 0.01;
                v += a * 0.01;
            }
        }
    }
    void Restore() {
        RunStore& s = Store();
        for (size_t c = 0; c < saved.size(); ++c) {
            auto col = s.RunData.Column(static_cast<int32_t>(c));
            std::copy(saved[c].begin(), saved[c].end(), col.begin());
        }
    }
    ~Environment() { test::StopEngine(); }
};

void BM_PipelineOneHour(benchmark::State& state) {
    Environment env(1);
    for (auto _ : state) {
        state.PauseTiming();
        env.Restore();
        state.ResumeTiming();
        ProcessDerivedVariables(1);
    }
    state.counters["rows"] = kRows;
}
BENCHMARK(BM_PipelineOneHour)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_ReprocessTenHours(benchmark::State& state) {
    Environment env(10);
    for (auto _ : state) {
        state.PauseTiming();
        env.Restore();
        state.ResumeTiming();
        for (int n = 1; n <= 10; ++n) ProcessDerivedVariables(n);
    }
}
BENCHMARK(BM_ReprocessTenHours)->Unit(benchmark::kMillisecond)->Iterations(3);

// The stages one by one on the one-hour run, to see where the time goes.
void BM_Stage(benchmark::State& state) {
    Environment env(1);
    void (*stages[])(int32_t) = {SmartFilterVariables,
                                 CalcSpeedGPS,
                                 TrackMapGps,
                                 CalcDistances,
                                 CalcPower,
                                 CalcGearRatios,
                                 CalculateHeadingVariables,
                                 CalculateUserChannels,
                                 LinearFilterVariables};
    const auto stage = stages[state.range(0)];
    for (auto _ : state) {
        state.PauseTiming();
        env.Restore();
        if (state.range(0) >= 2) CalcSpeedGPS(1);
        state.ResumeTiming();
        stage(1);
    }
}
BENCHMARK(BM_Stage)->DenseRange(0, 8)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
