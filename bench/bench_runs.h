// What the benchmarks over hours of rows share: the engine started headless
// with a few variables ticked and the store laid out as `runs` runs of
// `rows` rows, and the speed trace most of them fill it with.
#pragma once

#include <cmath>
#include <initializer_list>
#include <string>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/scripted_platform.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"

namespace tl::bench {

// The engine on a fresh configuration root, the variables of the slots
// `ticked` enabled, and RunData laid out as `runs` runs of `rows` rows named
// "hour"; stopped at destruction.
struct HourRuns {
    test::TempDir root;
    ScriptedPlatform ui;
    HourRuns(Family family, std::initializer_list<int> ticked, int runs, int32_t rows) {
        test::StartEngine(root, ui, family, Vehicle::Car);
        for (int s : ticked) SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
        SetAvailableVars();
        test::LayOutRuns(runs, rows, "hour");
    }
    ~HourRuns() { test::StopEngine(); }
    HourRuns(const HourRuns&) = delete;
    HourRuns& operator=(const HourRuns&) = delete;
};

// Time at 100 rows a second, and a speed that swings between 40 and 160 kph
// with the distance covered (one kph more on each run), with that distance
// in km: each row of every run. `more(i, s, kph)` fills further columns of
// row i from the distance s [m] and the speed.
template <typename More>
void FillSpeedTrace(int runs, int32_t rows, More more) {
    float* t = SlotColumn(slot::Time);
    float* v = SlotColumn(slot::SpeedKph);
    float* d = SlotColumn(slot::DistanceKm);
    for (int n = 1; n <= runs; ++n) {
        const RunRecord& r = Store().RunInfo[n];
        double s = 0;
        for (int32_t k = 0; k < rows; ++k) {
            const int32_t i = r.RunStart + k;
            const double kph = 100.0 + 60.0 * std::sin(s / 300.0) + n;
            t[i] = static_cast<float>(k / 100.0);
            v[i] = static_cast<float>(kph);
            d[i] = static_cast<float>(s / 1000.0);
            more(i, s, kph);
            s += kph / 3.6 / 100.0;
        }
    }
}

inline void FillSpeedTrace(int runs, int32_t rows) {
    FillSpeedTrace(runs, rows, [](int32_t, double, double) {});
}

// Each run named "hour1", "hour2", ...
inline void NumberRunNames(int runs) {
    for (int n = 1; n <= runs; ++n) Store().RunInfo[n].Name = "hour" + std::to_string(n);
}

}  // namespace tl::bench
