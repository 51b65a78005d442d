// The crossings of ten markers and the time slip of ten sectors over ten
// one-hour runs (3.6 million rows): what every check of the data costs once
// the laps are set up. The runs circle a 1.2 km track at a speed that swings
// through each lap, each run a little slower than the one before, so that
// every sector passage is compared with the reference point by point.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "bench_runs.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "derived/time_slip.h"
#include "results/laps.h"
#include "results/measurement_table.h"
#include "results/track_markers.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;
constexpr int kRuns = 10;
constexpr int kMarkers = 10;
constexpr double kRadius = 190.0;

struct Environment {
    bench::HourRuns runs{Family::MQ7, {1, 8, 11, 21, 22, 23, 24}, kRuns, kRows};
    Environment() {
        float* t = SlotColumn(slot::Time);
        float* v = SlotColumn(slot::SpeedKph);
        float* d = SlotColumn(slot::DistanceKm);
        float* x = SlotColumn(slot::PositionX);
        float* y = SlotColumn(slot::PositionY);
        for (int n = 1; n <= kRuns; ++n) {
            const RunRecord& r = Store().RunInfo[n];
            double s = 1.0;  // metres along the track
            for (int32_t k = 0; k < kRows; ++k) {
                const int32_t i = r.RunStart + k;
                const double theta = s / kRadius;
                const double kph =
                    (100.0 + 25.0 * std::sin(2 * theta) + 3.0 * std::sin(theta * 0.13)) *
                    (1.0 - 0.004 * n);
                t[i] = static_cast<float>(k / 100.0);
                v[i] = static_cast<float>(kph);
                d[i] = static_cast<float>(s / 1000.0);
                x[i] = static_cast<float>(kRadius * std::sin(theta));
                y[i] = static_cast<float>(kRadius * std::cos(theta));
                s += kph / 3.6 / 100.0;
            }
        }
        // Ten markers across the track at equal spacing; the first is the
        // lap marker and each pair of neighbours bounds a sector.
        Markers().ResizeRuns(kRuns);
        for (int m = 1; m <= kMarkers; ++m) {
            const double a = 2 * 3.141592653589793 * (m - 1) / kMarkers + 0.05;
            TrackMarker& e = Markers().Entries[m];
            e.Name = "M" + std::to_string(m);
            e.X1 = static_cast<float>((kRadius - 10) * std::sin(a));
            e.Y1 = static_cast<float>((kRadius - 10) * std::cos(a));
            e.X2 = static_cast<float>((kRadius + 10) * std::sin(a));
            e.Y2 = static_cast<float>((kRadius + 10) * std::cos(a));
        }
        SetLapMarker(1);
        for (int m = 1; m <= kMarkers; ++m) {
            MeasurementRow& row = Measurements().Rows[kFirstSectorRow + m - 1];
            row.Mode = "Sector " + std::to_string(m);
            row.VarName = "Time [s]";
            row.StartMarker = Markers().Entries[m].Name;
            row.EndMarker = Markers().Entries[m % kMarkers + 1].Name;
        }
    }
};

void BM_CrossingsAndTimeSlip(benchmark::State& state) {
    Environment env;
    for (auto _ : state) {
        CheckAllTrackMarkers();
        RecalcTimeSlip();
    }
    size_t crossings = 0;
    for (const TrackMarker& m : Markers().Entries)
        for (const auto& rows : m.Crossings) crossings += rows.size();
    state.counters["crossings"] = static_cast<double>(crossings);
    state.counters["slip_end_s"] =
        static_cast<double>(SlotColumn(slot::TimeSlip)[Store().RunInfo[kRuns].RunEnd - 5000]);
}
BENCHMARK(BM_CrossingsAndTimeSlip)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_CrossingsOnly(benchmark::State& state) {
    Environment env;
    for (auto _ : state) CheckAllTrackMarkers();
}
BENCHMARK(BM_CrossingsOnly)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The measurements table full: 89 rows over the same ten runs and all their
// laps, every mode in turn on speed between neighbouring markers (the
// "Value of" rows at one marker), the crossings already found.
void BM_RegenerateMeasurementsTable(benchmark::State& state) {
    Environment env;
    CheckAllTrackMarkers();
    const char* modes[] = {"Change in",  "Average of", "Maximum of",      "Minimum of",
                           "Std Dev of", "COV of",     "95th percentile", "Value of"};
    for (int m = 1; m <= 89; ++m) {
        MeasurementRow& row = Measurements().Rows[m];
        row.Mode = modes[(m - 1) % 8];
        row.VarName = Catalogue().RunVars[slot::SpeedKph].Name;
        row.StartMarker = Markers().Entries[(m - 1) % kMarkers + 1].Name;
        row.EndMarker = row.Mode == "Value of" ? "" : Markers().Entries[m % kMarkers + 1].Name;
    }
    TableGrid grid;
    for (auto _ : state) RegenerateTable(false, false, grid, 1, 89, false);
    size_t filled = 0;
    for (const std::string& t : grid.text) filled += !t.empty();
    state.counters["cells"] = static_cast<double>(filled);
}
BENCHMARK(BM_RegenerateMeasurementsTable)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
