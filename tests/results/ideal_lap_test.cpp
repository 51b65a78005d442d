// The ideal lap on a run whose crossings are laid by hand, so that every
// sector time is known: the best sector times added up, a lap that misses a
// marker, the sector chains that do not tile a lap.
#include <gtest/gtest.h>

#include "core/config_store.h"
#include "results/ideal_lap.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

class IdealLapTest : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
        test::LayOutRuns(1, 5000, "laps");
        float* t = SlotColumn(slot::Time);
        const RunRecord& r = Store().RunInfo[1];
        for (int32_t i = r.RunStart; i <= r.RunEnd; ++i)
            t[i] = static_cast<float>((i - r.RunStart) / 100.0);
        Markers().ResizeRuns(1);
        // Laps of 10.00, 9.00 and 10.50 s.
        AddMarker(1, "Line", {101, 1101, 2001, 3051});
        SetLapMarker(1);
    }
    void AddMarker(int index, const std::string& name, std::vector<int32_t> rows) {
        Markers().Entries[index].Name = name;
        Markers().Entries[index].Crossings.assign(2, {});
        Markers().Entries[index].Crossings[1] = std::move(rows);
    }
    void Sector(int m, const std::string& name, const std::string& from, const std::string& to) {
        Measurements().Rows[m] = {name, "Time [s]", from, to};
    }
};

TEST_F(IdealLapTest, BestSectorsAddUpAndAMissedMarkerLeavesTheLapOut) {
    // A at 3.00, 4.00 and 2.50 s into the laps; B at 6.00, 5.00 and 7.00 s.
    AddMarker(2, "A", {401, 1501, 2251});
    AddMarker(3, "B", {701, 1601, 2751});
    Sector(90, "S1", "Line#", "A");
    Sector(91, "S2", "A", "B");
    Sector(92, "S3", "B", "Line#");
    IdealLap ideal = IdealLapOfRun(1);
    ASSERT_TRUE(ideal.valid);
    // S1 3.00 / 4.00 / 2.50, S2 3.00 / 1.00 / 5.00, S3 4.00 / 4.00 / 3.00.
    EXPECT_NEAR(ideal.time, 2.50 + 1.00 + 3.00, 1e-4);
    EXPECT_EQ(ideal.bestLap, (std::vector<int>{3, 2, 3}));
    EXPECT_NEAR(ideal.gapToFastest, 9.00 - 6.50, 1e-4);

    // B missed on lap 2 (the marker's crossing there is lost): S2 and S3 have
    // no time in lap 2, but S1 does, and lap 2's S1 still counts.
    AddMarker(2, "A", {401, 1151, 2251});  // lap 2's S1 is now 0.50 s
    AddMarker(3, "B", {701, 2751});
    ideal = IdealLapOfRun(1);
    ASSERT_TRUE(ideal.valid);
    EXPECT_EQ(ideal.bestLap, (std::vector<int>{2, 1, 3}));
    EXPECT_NEAR(ideal.time, 0.50 + 3.00 + 3.00, 1e-4);
    // The gap is still to the fastest lap, which gave only S1.
    EXPECT_NEAR(ideal.gapToFastest, 9.00 - 6.50, 1e-4);

    // A sector with no time in any lap: no ideal lap.
    AddMarker(3, "B", {4501});
    EXPECT_FALSE(IdealLapOfRun(1).valid);
}

TEST_F(IdealLapTest, OnlySectorsThatTileTheLapGiveOne) {
    AddMarker(2, "A", {401, 1501, 2251});
    AddMarker(3, "B", {701, 1601, 2751});
    std::vector<int> rows;
    // Free rows between sectors are passed over.
    Sector(90, "S1", "Line#", "A");
    Sector(93, "S2", "A", "Line#");
    EXPECT_TRUE(SectorsTileLap(rows));
    EXPECT_EQ(rows, (std::vector<int>{90, 93}));
    EXPECT_NEAR(IdealLapOfRun(1).time, 2.50 + 5.00, 1e-4);

    // A gap (B to the line leaves A to B out).
    Sector(93, "S2", "B", "Line#");
    EXPECT_FALSE(SectorsTileLap(rows));
    EXPECT_FALSE(IdealLapOfRun(1).valid);
    // Stopping short of the line.
    Sector(93, "S2", "A", "B");
    EXPECT_FALSE(SectorsTileLap(rows));
    // A row after the lap is closed.
    Sector(94, "S3", "B", "Line#");
    EXPECT_TRUE(SectorsTileLap(rows));
    Sector(95, "S4", "Line#", "A");
    EXPECT_FALSE(SectorsTileLap(rows));
    // The lap marker changed: the sector rows follow its "#", and a chain
    // from the old line no longer starts at the lap marker.
    Measurements().Rows[95] = {};
    SetLapMarker(2);
    EXPECT_FALSE(SectorsTileLap(rows));
    // No sectors at all.
    for (int m = kFirstSectorRow; m <= kLastSectorRow; ++m) Measurements().Rows[m] = {};
    EXPECT_FALSE(IdealLapOfRun(1).valid);
}

}  // namespace
}  // namespace tl
