// GPS speed at 100 rows a second: the sparse fixes of slot 8 (or 7) joined by
// integrating the long acceleration between them, the drift of the
// accelerometer taken out by looking ahead to a later fix.
#include <algorithm>
#include <string>
#include <vector>

#include "core/build_profile.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "derived/derived_common.h"
#include "derived/pipeline.h"

namespace tl {

namespace {

// One row's change of speed in kph from an acceleration in g, evaluated in
// the documented order with the 0.01 s row built in.
inline float Step(float a) {
    return a * 9.80665f / 100.0f / 1000.0f * 3600.0f;
}

}  // namespace

void CalcSpeedGPS(int32_t run) {
    Procedure("CalcSpeedGPS", [&] {
        const auto rows = derived::RowsOf(run);
        if (!rows.ok) return;
        const bool log = LogOn();
        const int32_t start = rows.first, end = rows.last;
        const int lookAhead = Profile().HardwareHX40 ? 8 : 10;
        const float* acc = derived::Col(slot::AccelLong);
        float* kph = derived::Col(slot::SpeedKph);
        float* mph = derived::Col(slot::SpeedMph);
        if (!acc || !kph || !mph) return;

        // The working rows are indexed as the table's; only the run's rows
        // are read or written, so only those are set.
        thread_local std::vector<float> spdBuf, stepBuf;
        thread_local std::vector<int32_t> nextBuf;
        if (spdBuf.size() < static_cast<size_t>(end) + 1) {
            spdBuf.resize(static_cast<size_t>(end) + 1);
            stepBuf.resize(static_cast<size_t>(end) + 1);
            nextBuf.resize(static_cast<size_t>(end) + 1);
        }
        float* spd = spdBuf.data();
        // Each row's change of speed is read by several sections' look-ahead
        // sums: it is worked out once per row (the loop runs several rows at
        // a time).
        float* const dv = stepBuf.data();
        for (int32_t i = start; i <= end; ++i) dv[i] = Step(acc[i]);
        if (SlotEnabled(slot::SpeedKph)) {
            std::copy(kph + start, kph + end + 1, spd + start);
        } else if (SlotEnabled(slot::SpeedMph)) {
            std::copy(mph + start, mph + end + 1, spd + start);  // mph taken as it is
        } else {
            std::fill(spd + start, spd + end + 1, 0.0f);
            LogDebug("can't calculate GPS speed as there is no speed vector enabled");
        }

        // The searches for the next fix and for the fix LookAhead fixes on
        // only ever read rows after the settled row p, which the sections
        // have not written yet: they can be answered from the speeds as
        // loaded. next[i] is the first row from i on that holds a fix, or the
        // last row when none before it does -- where "step forward while no
        // fix and before the end" stops.
        int32_t* const next = nextBuf.data();
        next[end] = end;
        for (int32_t i = end - 1; i >= start; --i) next[i] = spd[i] != -1.0f ? i : next[i + 1];

        int32_t p = start;
        while (p < end) {
            const int32_t q = next[p + 1];
            if (log)
                LogDebug("next GPS speed sample found at " + std::to_string(q) + " of " +
                         std::to_string(spd[q]) + " kph");
            int32_t f = q;
            if (q < end) {
                for (int n = 0; n < lookAhead; ++n)
                    if (f < end) f = next[f + 1];
                if (log) LogDebug("Future sample: " + std::to_string(f));
                if (f == end) {
                    while (spd[f] == -1.0f && f > start) --f;
                    if (log) LogDebug("back tracked to sample: " + std::to_string(f));
                }
            }
            if (q == end) {
                LogDebug("Do the last section of data using accelerations only");
                if (spd[p] == -1.0f) spd[p] = 0.0f;
                for (int32_t i = p; i <= end - 1; ++i) spd[i + 1] = spd[i] + dv[i];
                p = end;
            } else if (p == start) {
                LogDebug("first sample period so work backwards using accelerations only");
                for (int32_t i = q; i >= p + 1; --i) spd[i - 1] = spd[i] - dv[i];
                p = q;
            } else if (f >= q) {
                float t = spd[p];
                for (int32_t i = p; i <= f; ++i) t += dv[i];
                float c = f > p ? (t - spd[f]) / static_cast<float>(f - p) : 0.0f;
                if (log) LogDebug("Correction Accel=" + std::to_string(c));
                c = FindMax(FindMin(c, 10.0f), -10.0f);
                bool negative = false;
                for (int32_t i = p; i <= q - 1; ++i) {
                    spd[i + 1] = spd[i] + dv[i] - c;
                    if (spd[i + 1] < 0.0f) negative = true;
                }
                if (negative) {
                    for (int32_t i = p; i <= q - 1; ++i) {
                        spd[i + 1] = spd[i] + dv[i];
                        if (spd[i + 1] < 0.0f) spd[i + 1] = 0.0f;
                    }
                }
                p = q;
            } else {
                // Cannot happen (f starts at q and only moves back to a fix at
                // or after q); leaving p unchanged would loop for ever, so the
                // section is taken as settled.
                LogDebug("Unhandleds set of conditions the CalcSpeedGPS");
                p = q;
            }
        }
        LogDebug("Clip any negitive speeds");
        for (int32_t i = start; i <= end; ++i)
            if (spd[i] < 0.0f) spd[i] = 0.0f;
        if (SlotEnabled(slot::SpeedMph))
            for (int32_t i = start; i <= end; ++i) mph[i] = spd[i] * 0.621371192f;
        if (SlotEnabled(slot::SpeedKph)) std::copy(spd + start, spd + end + 1, kph + start);
    });
}

}  // namespace tl
