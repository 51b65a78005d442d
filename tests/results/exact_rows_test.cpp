// Rows that must be exact, not within one: the row of a marker crossing (lap
// times are differences of crossing times, so a shift by one row cancels and
// no lap time would show it), and the percentile of a column.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/config_store.h"
#include "derived/derived_helpers.h"
#include "derived/time_slip.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::V;

class ExactRows : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
    }
};

// Straight east at a metre a row, then back west: a marker across the road at
// x = 100.5 m is crossed between rows 100 and 101 on the way out (the row
// before the crossing counts: 100) and between rows 300 and 301 on the way
// back (x 100.5 lies between 101 and 100 there: row 300).
TEST_F(ExactRows, MarkerCrossingIsTheRowBeforeTheLine) {
    test::MakeRun(400);
    for (int32_t i = 1; i <= 400; ++i) {
        V(i, slot::PositionX) = static_cast<float>(i <= 200 ? i : 401 - i);
        V(i, slot::PositionY) = 0.0f;
        V(i, slot::Time) = (i - 1) / 100.0f;
    }
    TrackMarker& m = Markers().Entries[1];
    m.Name = "Line";
    m.X1 = m.X2 = 100.5f;  // a vertical line: the slope of 1e9
    m.Y1 = -5.0f;
    m.Y2 = 5.0f;
    CheckAllTrackMarkers();
    EXPECT_EQ(MarkerCrossings(1, 1), (std::vector<int32_t>{100, 300}));
    // Moved by half a metre, the out crossing moves by a row.
    m.X1 = m.X2 = 101.0f;  // on a row's point: between 100 and 101 at its end
    CheckAllTrackMarkers();
    EXPECT_EQ(MarkerCrossings(1, 1).front(), 100);
    m.X1 = m.X2 = 101.25f;
    CheckAllTrackMarkers();
    EXPECT_EQ(MarkerCrossings(1, 1).front(), 101);
}

// The value at a fraction of the sorted rows: element int((last - first) x
// fraction), truncated, of the rows sorted ascending.
TEST_F(ExactRows, PercentileIsTheTruncatedElement) {
    test::MakeRun(100);
    const int32_t column = ColumnOf(slot::SpeedKph);
    for (int32_t i = 1; i <= 100; ++i) V(i, slot::SpeedKph) = static_cast<float>(101 - i);
    EXPECT_EQ(FindPercentileOfData(1, 100, column, 0.5f), 50.0f);    // element 49
    EXPECT_EQ(FindPercentileOfData(1, 100, column, 0.999f), 99.0f);  // 98.9 -> 98
    EXPECT_EQ(FindPercentileOfData(1, 100, column, 1.0f), 100.0f);
    EXPECT_EQ(FindPercentileOfData(1, 100, column, 7.0f), 100.0f);  // held to 1
    EXPECT_EQ(FindPercentileOfData(1, 100, column, -2.0f), 1.0f);   // held to 0
    EXPECT_EQ(FindPercentileOfData(11, 20, column, 0.0f), 81.0f);   // rows 11..20: 90..81
    EXPECT_EQ(FindPercentileOfData(11, 20, column, 0.5f), 85.0f);   // element 4 of 81..90
    EXPECT_EQ(FindPercentileOfData(20, 20, column, 0.5f), 0.0f);    // last not above first
    EXPECT_EQ(FindPercentileOfData(20, 10, column, 0.5f), 0.0f);
    EXPECT_EQ(FindPercentileOfData(50, 150, column, 0.5f), 0.0f);  // past the run
    // Values with many repeats, in a jumbled order: every fraction gives the
    // element a full sort puts at its place.
    std::vector<float> values;
    for (int32_t i = 1; i <= 100; ++i) {
        V(i, slot::SpeedKph) = static_cast<float>((i * 37) % 23) * 0.5f - 3.0f;
        values.push_back(V(i, slot::SpeedKph));
    }
    std::sort(values.begin(), values.end());
    for (float f = 0.0f; f <= 1.0f; f += 0.013f) {
        const auto k = static_cast<size_t>(99.0 * static_cast<double>(f));
        EXPECT_EQ(FindPercentileOfData(1, 100, column, f), values[k]) << f;
    }
}

// Time slip on a straight: the reference passage of the sector covers 500 m
// at a metre a row (100 m/s). Other passages are compared row by row while
// their length is within 10 per cent of it, their rate is limited to 100 per
// cent either way, and a row whose reference speed is 0 is left alone.
TEST_F(ExactRows, TimeSlipLimitsAndScaleBounds) {
    // Four runs of 3000 rows; the sector runs from each run's row 101 to the
    // row where it has covered `metres` metres.
    test::MakeRun(12000);
    Store().RunCount = 4;
    for (int n = 1; n <= 4; ++n) {
        RunRecord& r = Store().RunInfo[n];
        r.RunStart = (n - 1) * 3000 + 1;
        r.RunEnd = n * 3000;
        r.RunLength = 3000;
    }
    Markers().ResizeRuns(4);
    TrackMarker& a = Markers().Entries[1];
    TrackMarker& b = Markers().Entries[2];
    a.Name = "A";
    b.Name = "B";
    Measurements().Rows[90] = {"S", "Time [s]", "A", "B"};
    // run, metres of its passage, metres a row within the first half of it
    // (the second half at 0.3 m a row, so that every other passage is slower
    // than the reference's 5 s)
    struct Pass {
        int run;
        double metres, fastPerRow;
    };
    const Pass passes[] = {{1, 500.0, 1.0},         // the reference: 5 s
                           {2, 555.5, 0.5},         // scale 0.90009: 0.9 within 0.0001
                           {3, 500.0 / 0.89, 0.5},  // 0.89: not compared
                           {4, 500.0, 3.0}};        // 3 m a row: +200 %, held to +100
    for (const Pass& p : passes) {
        const RunRecord& r = Store().RunInfo[p.run];
        double metres = 0, t = 0;
        int32_t end = 0;
        for (int32_t i = r.RunStart; i <= r.RunEnd; ++i) {
            const int32_t k = i - r.RunStart;
            double perRow = 1.0;
            if (p.run != 1 && k > 100 && end == 0)
                perRow = metres - 100.0 < p.metres / 2 ? p.fastPerRow : 0.3;
            if (k > 0) {
                metres += perRow;
                t += 0.01;
            }
            V(i, slot::DistanceKm) = static_cast<float>(metres / 1000.0);
            V(i, slot::Time) = static_cast<float>(t);
            V(i, slot::SpeedKph) = static_cast<float>(perRow * 100 * 3.6);
            if (k > 100 && end == 0 && metres - 100.0 >= p.metres - 1e-9) end = i;
        }
        a.Crossings[p.run] = {r.RunStart + 100};
        b.Crossings[p.run] = {end};
    }
    // The reference's speed is 0 over its rows 301 to 310 (200 to 209 m in).
    for (int32_t i = 301; i <= 310; ++i) V(i, slot::SpeedKph) = 0.0f;
    RecalcTimeSlip();
    const RunRecord& r2 = Store().RunInfo[2];
    const RunRecord& r3 = Store().RunInfo[3];
    const RunRecord& r4 = Store().RunInfo[4];
    // Run 2, in its fast half: half a metre a row where the reference made a
    // metre: (0.5 / 100 - 0.01) x 10000 = -50.
    EXPECT_NEAR(V(r2.RunStart + 150, slot::RateOfTimeSlip), -50.0f, 1e-3);
    // Run 3 lies outside the 10 per cent: nothing written.
    for (int32_t i = r3.RunStart; i <= r3.RunEnd; ++i)
        ASSERT_EQ(V(i, slot::RateOfTimeSlip), 0.0f) << i;
    // Run 4: +200 held to +100; rows that meet the reference's stopped rows
    // (200 to 209 m into the sector, rows 167 to 169 of run 4's fast half)
    // stay 0.
    EXPECT_EQ(V(r4.RunStart + 110, slot::RateOfTimeSlip), 100.0f);
    EXPECT_EQ(V(r4.RunStart + 168, slot::RateOfTimeSlip), 0.0f);
    // The reference passage itself is never written.
    for (int32_t i = 101; i <= 601; ++i) ASSERT_EQ(V(i, slot::RateOfTimeSlip), 0.0f) << i;
}

}  // namespace
}  // namespace tl
