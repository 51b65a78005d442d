// The track map over ten one-hour runs (360,000 rows each) coloured by speed
// on a 1600 x 900 raster surface: a full ReDraw (draws from the compressed
// index; the colour range scan is kept per data, so a redraw of unchanged data
// reads every fiftieth row of the colour and position columns only, and the
// paths' screen points are kept per view), and the
// map's playback step with ten dots and their g vectors. The runs go round a
// 3 km track of straights and bends at a speed that swings through each lap.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_runs.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "platform/render/painter_surface.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "views/track_map.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;
constexpr int kRuns = 10;

struct Environment {
    bench::HourRuns runs{Family::HX40,
                         {slot::Time, slot::AccelLong, slot::AccelLat, slot::SpeedKph,
                          slot::DistanceKm, slot::PositionX, slot::PositionY},
                         kRuns,
                         kRows};
    Environment() {
        bench::NumberRunNames(kRuns);
        float* t = SlotColumn(slot::Time);
        float* v = SlotColumn(slot::SpeedKph);
        float* d = SlotColumn(slot::DistanceKm);
        float* x = SlotColumn(slot::PositionX);
        float* y = SlotColumn(slot::PositionY);
        float* lon = SlotColumn(slot::AccelLong);
        float* lat = SlotColumn(slot::AccelLat);
        constexpr double kLap = 3000;
        for (int n = 1; n <= kRuns; ++n) {
            const RunRecord& r = Store().RunInfo[n];
            double s = 0;
            for (int32_t k = 0; k < kRows; ++k) {
                const int32_t i = r.RunStart + k;
                const double a = 2 * M_PI * std::fmod(s, kLap) / kLap;
                const double kph = 120.0 + 60.0 * std::sin(5 * a) + n;
                // An oval with five wiggles, each run on its own line.
                const double rad = 450 + 40 * std::sin(5 * a) + n;
                t[i] = static_cast<float>(k / 100.0);
                v[i] = static_cast<float>(kph);
                d[i] = static_cast<float>(s / 1000.0);
                x[i] = static_cast<float>(1.4 * rad * std::sin(a));
                y[i] = static_cast<float>(rad * std::cos(a));
                lon[i] = static_cast<float>(0.5 * std::cos(5 * a));
                lat[i] = static_cast<float>(0.8 * std::sin(a));
                s += kph / 3.6 / 100.0;
            }
        }
    }
};

Environment& Env() {
    static Environment env;
    return env;
}

TrackMapSettings TenRuns() {
    TrackMapSettings s;
    s.MapColorVar = Catalogue().RunVars[slot::SpeedKph].Name;
    s.RunsDisplayed = "10";
    s.RunsInUse = kRuns;
    s.RunToDisplay.clear();
    for (int n = 1; n <= kRuns; ++n) s.RunToDisplay.push_back(std::to_string(n));
    s.AniRunNameTxt.assign(kRuns, std::string());
    s.ShowGVectors = 1;
    return s;
}

void BM_TrackMapReDraw(benchmark::State& state) {
    Env();
    const bool doubled = state.range(0) == 4;
    render::RasterSurface surface(doubled ? 3200 : 1600, doubled ? 1800 : 900,
                                  doubled ? 192.0 : 96.0);
    TrackMap map(surface);
    map.settings = TenRuns();
    if (state.range(0) == 2) map.settings.MapColorVar = kNoColorCoding;
    map.ReDraw();  // the first draw compresses and scans
    if (state.range(0) == 1) {
        // Zoomed in on a quarter of the track.
        map.ZoomIn_Click();
        map.ZoomIn_Click();
        map.ZoomIn_Click();
    }
    float nudge = 1;
    for (auto _ : state) {
        if (state.range(0) == 3) {
            // Scrolled by a metre and back: every point mapped again.
            map.settings.ViewCentreX += nudge;
            nudge = -nudge;
        }
        map.ReDraw();
    }
    state.counters["points"] = static_cast<double>(map.view.CompressedIndex.size());
}
// Arg 0 whole track, 1 zoomed in three times, 2 whole track uncoloured, 3
// whole track with the view moved at every redraw (a repaint of an unchanged
// view draws the points it mapped last time), 4 whole track at 200 % (3200 x
// 1800, a two-pixel path).
BENCHMARK(BM_TrackMapReDraw)
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Arg(3)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

void BM_TrackMapCompress(benchmark::State& state) {
    Env();
    for (auto _ : state) benchmark::DoNotOptimize(CompressData());
}
BENCHMARK(BM_TrackMapCompress)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// One playback step: ten dots and twenty g vectors erased and drawn.
void BM_TrackMapPlaybackStep(benchmark::State& state) {
    Env();
    render::RasterSurface surface(1600, 900);
    TrackMap map(surface);
    map.settings = TenRuns();
    map.ReDraw();
    std::vector<int32_t> rows(kRuns);
    int32_t k = 1000;
    for (auto _ : state) {
        for (int n = 1; n <= kRuns; ++n) rows[size_t(n - 1)] = Store().RunInfo[n].RunStart + k;
        map.AnimateStep(rows, false);
        k = k + 2 < kRows - 10 ? k + 2 : 1000;
    }
}
BENCHMARK(BM_TrackMapPlaybackStep)->Unit(benchmark::kMicrosecond)->MinTime(2.0);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
