// Rows that must be exact, not within one: the row of a marker crossing (lap
// times are differences of crossing times, so a shift by one row cancels and
// no lap time would show it), and the percentile of a column.
#include <gtest/gtest.h>

#include "core/config_store.h"
#include "derived/derived_helpers.h"
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
}

}  // namespace
}  // namespace tl
