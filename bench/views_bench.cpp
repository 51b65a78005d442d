// The XY graph over five one-hour runs (360,000 rows each), one slot a run:
// what ReGenerateGraph and a paint cost with FastPlot on (2000 points) and
// off (every row). The runs hold a speed trace swinging through each lap.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cstdlib>

#include <cmath>
#include <string>

#include "bench_runs.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "platform/render/painter_surface.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;
constexpr int kRuns = 5;

struct Environment {
    bench::HourRuns runs{Family::HX40, {1, 8, 11}, kRuns, kRows};
    Environment() {
        bench::NumberRunNames(kRuns);
        bench::FillSpeedTrace(kRuns, kRows);
    }
};

GraphModel FiveSlots(bool fastPlot) {
    GraphModel g;
    g.Load(1);
    g.settings.MultipleXAxis = 1;
    g.settings.FastPlot = fastPlot ? 1 : 0;
    for (int s = 0; s < kGraphSlots; ++s) {
        GraphSlotSettings& slot = g.settings.Slots[s];
        slot.SelYAxis = Catalogue().RunVars[slot::SpeedKph].Name;
        slot.SelXAxis = Catalogue().RunVars[slot::DistanceKm].Name;
        slot.AxisRun = std::to_string(s + 1);
        slot.ActivateYAxis = 1;
    }
    return g;
}

void BM_ReGenerateGraph(benchmark::State& state) {
    Environment env;
    GraphModel g = FiveSlots(state.range(0) != 0);
    for (auto _ : state) g.ReGenerateGraph();
    state.counters["points"] = g.axis[4].PointCount;
}
BENCHMARK(BM_ReGenerateGraph)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// A paint of the five slots at 1600 x 900 pixels on the window's raster
// surface, FastPlot on (2000 points a slot) and off (every row).
void BM_PaintFiveSlots(benchmark::State& state) {
    Environment env;
    GraphModel g = FiveSlots(state.range(0) != 0);
    render::RasterSurface surface(1600, 900, 96.0);
    g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
    g.ReGenerateGraph();
    for (auto _ : state) Graphbox_Paint(g, surface);
}
BENCHMARK(BM_PaintFiveSlots)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The same paint on a screen at 200 %: 3200 x 1800 pixels at 192 dpi, where
// the data line is two pixels wide.
void BM_PaintFiveSlotsAt200(benchmark::State& state) {
    Environment env;
    GraphModel g = FiveSlots(state.range(0) != 0);
    render::RasterSurface surface(3200, 1800, 192.0);
    g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
    g.ReGenerateGraph();
    for (auto _ : state) Graphbox_Paint(g, surface);
}
BENCHMARK(BM_PaintFiveSlotsAt200)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The first paint after a regeneration: each slot's line is made again from
// its points (the per-column envelope from every row with FastPlot off).
void BM_FirstPaintFiveSlots(benchmark::State& state) {
    Environment env;
    GraphModel g = FiveSlots(state.range(0) != 0);
    render::RasterSurface surface(1600, 900, 96.0);
    g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
    g.ReGenerateGraph();
    for (auto _ : state) {
        state.PauseTiming();
        g.lineCache = {};
        state.ResumeTiming();
        Graphbox_Paint(g, surface);
    }
}
BENCHMARK(BM_FirstPaintFiveSlots)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);  // fonts for the axes' labels
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
