// The bar chart over a one-hour run (360,000 rows) with five conditions
// counted at once: what CalcFrequency costs, what a paint at 1600 x 900
// costs, and the two together (the "Bar Chart" tab's count and the repaint
// that follows). The speed swings through each lap; the conditions are
// five bands of lateral acceleration, so that most rows fail most of them
// and the walk within a bin is broken often.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cmath>
#include <cstdlib>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "platform/render/painter_surface.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/bar_chart.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;

struct Environment {
    test::TempDir root;
    ScriptedPlatform ui;
    Environment() {
        test::StartEngine(root, ui, Family::HX40, Vehicle::Car);
        for (int s : {slot::Time, slot::AccelLat, slot::SpeedKph})
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
        SetAvailableVars();
        test::LayOutRuns(1, kRows, "hour");
        float* t = SlotColumn(slot::Time);
        float* v = SlotColumn(slot::SpeedKph);
        float* g = SlotColumn(slot::AccelLat);
        const RunRecord& r = Store().RunInfo[1];
        for (int32_t k = 0; k < kRows; ++k) {
            const int32_t i = r.RunStart + k;
            const double lap = k / 9000.0 * 2 * 3.141592654;  // a 90 s lap
            t[i] = static_cast<float>(k / 100.0);
            v[i] = static_cast<float>(120.0 + 60.0 * std::sin(3 * lap) + 5.0 * std::sin(k * 0.37));
            g[i] = static_cast<float>(1.5 * std::sin(5 * lap) + 0.05 * std::sin(k * 1.3));
        }
    }
    ~Environment() { test::StopEngine(); }
};

BarChart FiveConditions(int bins) {
    BarChart c;
    c.Load(1);
    BarChartSettings& s = c.settings;
    s.DisplayVar = Catalogue().RunVars[slot::SpeedKph].Name;
    s.ConstrainVar = Catalogue().RunVars[slot::AccelLat].Name;
    s.Constrain = 1;
    s.MultiBar = 1;
    s.BinCount = std::to_string(bins);
    const char* bands[6] = {"-2", "-1", "-0.3", "0.3", "1", "2"};
    for (int k = 0; k < kBarChartAxes; ++k) {
        s.Axes[k].AxisEnabled = 1;
        s.Axes[k].ConstrainMin = bands[k];
        s.Axes[k].ConstrainMax = bands[k + 1];
    }
    return c;
}

void BM_CalcFrequencyFiveConditions(benchmark::State& state) {
    Environment env;
    BarChart c = FiveConditions(static_cast<int>(state.range(0)));
    for (auto _ : state) c.CalcFrequency();
    state.counters["peak"] = c.PeakCount;
}
BENCHMARK(BM_CalcFrequencyFiveConditions)
    ->Arg(10)
    ->Arg(100)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

void BM_ReDrawFiveConditions(benchmark::State& state) {
    Environment env;
    BarChart c = FiveConditions(static_cast<int>(state.range(0)));
    c.settings.ShowLines = 1;
    c.CalcFrequency();
    render::RasterSurface surface(1600, 900, 96.0);
    for (auto _ : state) GraphBox_Paint(c, surface);
}
BENCHMARK(BM_ReDrawFiveConditions)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The "Bar Chart" tab: count, then paint.
void BM_CountAndDrawFiveConditions(benchmark::State& state) {
    Environment env;
    BarChart c = FiveConditions(static_cast<int>(state.range(0)));
    c.settings.ShowLines = 1;
    render::RasterSurface surface(1600, 900, 96.0);
    for (auto _ : state) {
        c.ChartTab_Click(ChartTabs::BarChart);
        GraphBox_Paint(c, surface);
    }
}
BENCHMARK(BM_CountAndDrawFiveConditions)
    ->Arg(10)
    ->Arg(100)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);  // fonts for the labels
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
