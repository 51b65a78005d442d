// The marks on a drawn XY graph of five one-hour slots (360,000 rows each,
// every row plotted) at 1600 x 900 pixels: one playback step of
// UpDateGraphAni (erase at the old row, draw at the new one, as playback does
// it each round) on one X axis and on five, and the nearest-point search of a
// click (draw and erase, each running the search over the five slots).
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cmath>
#include <cstdlib>
#include <string>

#include "bench_runs.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "platform/render/painter_surface.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "views/graph_cursors.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;
constexpr int kRuns = 5;

struct Environment {
    bench::HourRuns runs{Family::HX40, {1, 8, 11}, kRuns, kRows};
    GraphModel g;
    render::RasterSurface surface{1600, 900, 96.0};
    Environment(bool multipleX, bool multiNearest) {
        bench::FillSpeedTrace(kRuns, kRows);
        g.Load(1);
        g.settings.MultipleXAxis = multipleX ? 1 : 0;
        g.settings.SelectMultiNearestChk = multiNearest ? 1 : 0;
        g.settings.FastPlot = 0;
        for (int s = 0; s < kGraphSlots; ++s) {
            GraphSlotSettings& slot = g.settings.Slots[s];
            slot.SelYAxis = Catalogue().RunVars[slot::SpeedKph].Name;
            slot.SelXAxis = Catalogue().RunVars[slot::DistanceKm].Name;
            slot.AxisRun = std::to_string(s + 1);
            slot.ActivateYAxis = 1;
        }
        g.MultipleXAxis_Click();
        g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
        g.ReGenerateGraph();
        Graphbox_Paint(g, surface);
    }
};

// One playback step per iteration: the cursor of each run moves one row on,
// erased at its old row and drawn at the new one (mode 2, no texts).
void BM_PlaybackCursorStep(benchmark::State& state) {
    Environment env(state.range(0) != 0, false);
    GraphCursors cursors(env.g, env.surface);
    const int runs = state.range(0) != 0 ? kRuns : 1;
    int32_t k = 100000;
    for (int n = 1; n <= runs; ++n)
        cursors.UpDateGraphAni(Store().RunInfo[n].RunStart + k, n, n - 1, 2);
    for (auto _ : state) {
        for (int n = 1; n <= runs; ++n) {
            const int32_t start = Store().RunInfo[n].RunStart;
            cursors.UpDateGraphAni(start + k, n, n - 1, 2);
            cursors.UpDateGraphAni(start + k + 1, n, n - 1, 2);
        }
        ++k;
        if (k > kRows - 10) k = 100000;
    }
}
BENCHMARK(BM_PlaybackCursorStep)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond)->MinTime(1.0);

// A click's nearest-point cursor, drawn and erased (each a search over the
// five slots' 360,000 points): Arg 0 the crossing search, 1 the plane search.
void BM_NearestPointClick(benchmark::State& state) {
    Environment env(true, state.range(0) != 0);
    GraphCursors cursors(env.g, env.surface);
    const GraphFrame f = FrameOf(env.g, env.surface);
    double x = f.left + 0.37 * (0.95 * f.W - f.left);
    cursors.DragY = 0.5 * f.H;
    for (auto _ : state) {
        cursors.DragX = x;
        cursors.ShowNearestValueAxis(1);
        cursors.ShowNearestValueAxis(0);
        x += 1.0;
    }
    state.counters["searches/click"] = 2;
}
BENCHMARK(BM_NearestPointClick)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond)->MinTime(1.0);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);  // fonts for the read-outs
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
