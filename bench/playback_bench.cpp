// One playback step (Playback::Step: the ten panels' times and rows, the value
// table's columns, UpdateRunAnimation's round) over ten one-hour runs
// (360,000 rows each), with three graphs of five one-hour slots each (every
// row plotted, five X axes, 1600 x 900 pixels), two dashboards and the value
// table open. The track map is a stand-in that does nothing: its part is
// measured with the map. Arg 0 is the whole step; 1, 2 and 3 keep only the
// graphs, the dashboards or the value table open.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench_runs.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "platform/render/painter_surface.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "views/dashboard.h"
#include "views/graph_cursors.h"
#include "views/graph_model.h"
#include "views/graph_paint.h"
#include "views/playback.h"
#include "views/value_table.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;
constexpr int kRuns = 10;
constexpr int kGraphs = 3;

struct Graph {
    GraphModel g;
    render::RasterSurface surface{1600, 900, 96.0};
    GraphCursors cursors{g, surface};
    explicit Graph(int firstRun) {
        g.Load(1);
        g.settings.MultipleXAxis = 1;
        g.settings.FastPlot = 0;
        for (int s = 0; s < kGraphSlots; ++s) {
            GraphSlotSettings& slot = g.settings.Slots[s];
            slot.SelYAxis = Catalogue().RunVars[slot::SpeedKph].Name;
            slot.SelXAxis = Catalogue().RunVars[slot::DistanceKm].Name;
            slot.AxisRun = std::to_string((firstRun + s - 1) % kRuns + 1);
            slot.ActivateYAxis = 1;
        }
        g.MultipleXAxis_Click();
        g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
        g.ReGenerateGraph();
        cursors.Paint();
    }
};

struct Views : PlaybackViews {
    std::vector<GraphCursors*> graphs;
    std::vector<Dashboard*> dashboards;
    ValueTable* table = nullptr;
    std::vector<GraphCursors*> Graphs() override { return graphs; }
    Dashboard* DashboardOf(int panel) override {
        return panel < static_cast<int>(dashboards.size()) ? dashboards[panel] : nullptr;
    }
    ValueTable* OpenValueTable() override { return table; }
};

struct Environment {
    bench::HourRuns runs{Family::HX40,
                         {slot::Time, slot::AccelLong, slot::AccelLat, slot::EngineSpeed,
                          slot::SpeedKph, slot::DistanceKm},
                         kRuns,
                         kRows};
    std::vector<std::unique_ptr<Graph>> graphs;
    std::vector<std::unique_ptr<render::RasterSurface>> dashSurfaces;
    std::vector<std::unique_ptr<Dashboard>> dashboards;
    ValueTable table;
    Environment() {
        float* rpm = SlotColumn(slot::EngineSpeed);
        float* lon = SlotColumn(slot::AccelLong);
        float* lat = SlotColumn(slot::AccelLat);
        bench::FillSpeedTrace(kRuns, kRows, [&](int32_t i, double s, double kph) {
            rpm[i] = static_cast<float>(kph * 40);
            lon[i] = static_cast<float>(0.8 * std::cos(s / 300.0));
            lat[i] = static_cast<float>(1.2 * std::sin(s / 150.0));
        });
        for (int k = 0; k < kGraphs; ++k) graphs.push_back(std::make_unique<Graph>(1 + 3 * k));
        const auto& vars = Catalogue().RunVars;
        for (int p = 0; p < 2; ++p) {
            dashSurfaces.push_back(std::make_unique<render::RasterSurface>(467, 200, 96.0));
            auto dash = std::make_unique<Dashboard>(*dashSurfaces.back(), p);
            dash->DashVar = {vars[slot::SpeedKph].Name, vars[slot::EngineSpeed].Name,
                             vars[slot::AccelLong].Name, vars[slot::AccelLat].Name};
            dash->FindDialLimits();
            dash->ReDrawDash();
            dashboards.push_back(std::move(dash));
        }
        table.Load();
        table.Resize(4000, 6000);
    }
};

// Built once for all the variants (ten hours of rows and three graphs of
// five hours each), let go at the end of main.
std::unique_ptr<Environment> shared;

void BM_PlaybackStep(benchmark::State& state) {
    if (!shared) shared = std::make_unique<Environment>();
    Environment* env = shared.get();
    const int keep = static_cast<int>(state.range(0));
    Views views;
    if (keep == 0 || keep == 1)
        for (auto& g : env->graphs) {
            g->cursors.Paint();
            views.graphs.push_back(&g->cursors);
        }
    if (keep == 0 || keep == 2)
        for (auto& d : env->dashboards) {
            d->ReDrawDash();
            views.dashboards.push_back(d.get());
        }
    if (keep == 0 || keep == 3) views.table = &env->table;
    double clock = 40000;
    Playback pb(views, [&] { return clock; });
    pb.RunsDisplayed = "10";
    pb.RunsDisplayed_Change();
    for (int i = 0; i < kRuns; ++i) {
        pb.Panel(i).RunToDisplay = std::to_string(i + 1);
        pb.RunToDisplay_Change(i);
        pb.Panel(i).JumpToTime = std::to_string(600 + 60 * i);
        pb.JumpButton_Click(i);
    }
    pb.PlayButton_Click(kRuns);
    for (auto _ : state) {
        clock += 0.02;
        const PlayStep s = pb.Step(clock);
        benchmark::DoNotOptimize(s);
        if (pb.Panel(0).PlayTimes > 3000) {
            state.PauseTiming();
            pb.JumpButton_Click(kRuns);  // all back to 0 s
            pb.PlayButton_Click(kRuns);
            state.ResumeTiming();
        }
    }
    pb.StopButton_Click(kRuns);
}
BENCHMARK(BM_PlaybackStep)
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Arg(3)
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(1.0);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);  // fonts for the dashboards' faces
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    shared.reset();
    return 0;
}
