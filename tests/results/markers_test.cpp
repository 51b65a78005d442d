// Track markers, laps, sectors, the table cells and time slip on hand-made
// paths whose crossings are known exactly: a vehicle circling at constant
// speed, two runs back to back, zigzags across a line.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "core/config_store.h"
#include "derived/derived_helpers.h"
#include "derived/time_slip.h"
#include "results/laps.h"
#include "results/measurement_table.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::V;

constexpr double kPi2 = 6.283185307179586;

class MarkersTest : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
    }

    // Runs of n rows each, back to back from row 1, every one circling the
    // origin clockwise from north at radius r metres and speed kph, starting
    // 5 m past north, with distance (km) and time running on within each run.
    void MakeCircleRuns(int runs, int32_t n, double r, double kph) {
        test::MakeRun(runs * n);
        RunStore& s = Store();
        s.RunCount = runs;
        for (int run = 1; run <= runs; ++run) {
            RunRecord& rec = s.RunInfo[run];
            rec.Name = "run " + std::to_string(run);
            rec.RunStart = (run - 1) * n + 1;
            rec.RunEnd = run * n;
            rec.RunLength = n;
            for (int32_t k = 0; k < n; ++k) {
                const int32_t i = rec.RunStart + k;
                const double d = kph / 3.6 * k / 100.0;
                V(i, slot::Time) = static_cast<float>(k / 100.0);
                V(i, slot::SpeedKph) = static_cast<float>(kph);
                V(i, slot::DistanceKm) = static_cast<float>(d / 1000.0);
                V(i, slot::PositionX) = static_cast<float>(r * std::sin((d + 5.0) / r));
                V(i, slot::PositionY) = static_cast<float>(r * std::cos((d + 5.0) / r));
            }
        }
        Markers().ResizeRuns(runs);
    }

    std::vector<std::string> Msgs() const { return ui.Texts(ScriptedEvent::Kind::Message); }

    int AddMarker(const std::string& name, float x1, float y1, float x2, float y2) {
        int index = 0;
        std::string n = name;
        EXPECT_TRUE(FindFreeMarkerName(index, n));
        TrackMarker& m = Markers().Entries[index];
        m.Name = n;
        m.X1 = x1;
        m.Y1 = y1;
        m.X2 = x2;
        m.Y2 = y2;
        return index;
    }
};

TEST_F(MarkersTest, CrossingsOfAVerticalMarkerAreSharedAmongRunsAcrossTheJoin) {
    // 50 m radius at 72 kph: a lap of 314.16 m every 15.708 s.
    MakeCircleRuns(2, 5000, 50.0, 72.0);
    const int north = AddMarker("North", 0.0f, 40.0f, 0.0f, 60.0f);  // x1 == x2
    CheckAllTrackMarkers();
    const auto& c = Markers().Entries[north].Crossings;
    // One crossing per lap, at the row before the path passes north; the
    // jump from the end of run 1 to the start of run 2 crosses nothing.
    for (int run = 1; run <= 2; ++run) {
        ASSERT_EQ(c[run].size(), 3u) << "run " << run;
        const int32_t start = Store().RunInfo[run].RunStart;
        for (size_t k = 0; k < c[run].size(); ++k) {
            const double row = ((k + 1) * kPi2 * 50.0 - 5.0) / 0.2;
            EXPECT_NEAR(c[run][k], start + std::floor(row), 1.0) << "run " << run << " lap " << k;
        }
    }
    // A marker that no run crosses any more goes, silently.
    const int away = AddMarker("Away", 500.0f, 500.0f, 510.0f, 510.0f);
    CheckAllTrackMarkers();
    EXPECT_TRUE(Markers().Entries[away].Name.empty());
    EXPECT_EQ(Markers().Entries[north].Name, "North");
    EXPECT_TRUE(Msgs().empty());
}

TEST_F(MarkersTest, ParallelPathsNoiseAndTheCrossingLimit) {
    test::MakeRun(120000);
    // Collinear with the marker: parallel, never a crossing.
    for (int32_t i = 1; i <= 1000; ++i) {
        V(i, slot::PositionX) = static_cast<float>(i) * 0.01f;
        V(i, slot::PositionY) = 0.0f;
    }
    EXPECT_TRUE(FindMarkerCrossings(2.0, 0.0, 8.0, 0.0, 1000).rows.empty());
    // Zigzag across y = 0 every 30 rows: crossings within a second count once.
    for (int32_t i = 1; i <= 1000; ++i) V(i, slot::PositionY) = (i / 30) % 2 ? 1.0f : -1.0f;
    const CrossingSearch near = FindMarkerCrossings(0.0, 0.0, 20.0, 0.0, 1000);
    ASSERT_FALSE(near.rows.empty());
    for (size_t k = 1; k < near.rows.size(); ++k) EXPECT_GT(near.rows[k] - near.rows[k - 1], 100);
    // A crossing every 110 rows all along: 1090 of them, too many.
    for (int32_t i = 1; i <= 120000; ++i) {
        V(i, slot::PositionX) = 5.0f;
        V(i, slot::PositionY) = (i / 110) % 2 ? 1.0f : -1.0f;
    }
    Markers().ResizeRuns(1);
    const int busy = AddMarker("Busy", 0.0f, 0.0f, 10.0f, 0.0f);
    const int later = AddMarker("Later", 0.0f, 0.5f, 10.0f, 0.5f);
    Markers().Entries[later].Crossings[1] = {7};
    CheckAllTrackMarkers();
    ASSERT_EQ(Msgs().size(), 1u);
    EXPECT_EQ(Msgs()[0], "Internal intersection count error");
    EXPECT_EQ(Markers().Entries[busy].Name, "Busy");
    // The search gave up before the later marker: its list is as it was.
    EXPECT_EQ(Markers().Entries[later].Crossings[1], std::vector<int32_t>{7});
}

TEST_F(MarkersTest, FindIndexFromDistanceLandsJustBelowTheDistance) {
    MakeCircleRuns(2, 20000, 50.0, 72.0);
    const RunRecord& r2 = Store().RunInfo[2];
    for (float km : {0.0005f, 0.1f, 0.3337f, 1.0f, 2.5f, 3.9f}) {
        const int32_t i = FindIndexFromDistance(km, r2.RunStart, 2);
        // The first row reaching the distance, and the result within two rows
        // below it.
        int32_t exact = r2.RunStart;
        while (V(exact, slot::DistanceKm) < km) ++exact;
        EXPECT_LE(i, exact) << km;
        EXPECT_GE(i, exact - 2) << km;
    }
    // A hint beyond the distance starts from the run's start; a hint that
    // already reaches it comes back unchanged.
    EXPECT_LE(FindIndexFromDistance(0.2f, r2.RunEnd, 2), r2.RunStart + 1000);
    const float there = V(r2.RunStart + 77, slot::DistanceKm);
    EXPECT_EQ(FindIndexFromDistance(there, r2.RunStart + 77, 2), r2.RunStart + 77);
}

TEST_F(MarkersTest, TheFastDistanceFinderAgreesWithTheWalk) {
    MakeCircleRuns(3, 30000, 50.0, 72.0);
    // Run 3's distance falls for a stretch, as with a speed of -1 between
    // fixes: the finder must fall back to the walk there.
    for (int32_t i = 70000; i < 70500; ++i) V(i, slot::DistanceKm) -= 0.001f * (i - 69999);
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> km(-0.01f, 6.2f);
    for (int32_t run = 1; run <= 3; ++run) {
        DistanceFinder finder(run);
        const RunRecord& r = Store().RunInfo[run];
        const int32_t hints[] = {0, 1, 5, r.RunStart, r.RunStart + 900, r.RunEnd, 95000};
        for (int32_t hint : hints) {
            // Rising targets, as along a passage, then random ones.
            for (float t = 0.0f; t < 6.1f; t += 0.00013f)
                ASSERT_EQ(finder.Find(t, hint), FindIndexFromDistance(t, hint, run))
                    << "run " << run << " hint " << hint << " km " << t;
            for (int k = 0; k < 2000; ++k) {
                const float t = km(rng);
                ASSERT_EQ(finder.Find(t, hint), FindIndexFromDistance(t, hint, run))
                    << "run " << run << " hint " << hint << " km " << t;
            }
        }
    }
}

TEST_F(MarkersTest, NamesTheLapMarkerAndTheDialogRules) {
    MakeCircleRuns(1, 4000, 50.0, 72.0);
    const int a = AddMarker("Marker 1", 0, 40, 0, 60);
    std::string name = "Marker 1";
    int index = 0;
    ASSERT_TRUE(FindFreeMarkerName(index, name));
    EXPECT_EQ(name, "Marker 11");
    EXPECT_EQ(index, a + 1);

    // The dialog proposes the first free entry and the lap marker box is on
    // while there is no lap marker.
    NewMarkerProposal p = ProposeNewMarker();
    EXPECT_EQ(p.index, a + 1);
    EXPECT_EQ(p.name, "Marker 2");
    EXPECT_TRUE(p.useAsLap);
    EXPECT_FALSE(AcceptNewMarkerName(p.index, "Marker 1", false));
    EXPECT_EQ(Msgs().back(), "Track markers must have a unique name");
    EXPECT_TRUE(IsRefusedMarkerNameChar(U'#'));

    // Sector rows follow the lap marker's "#".
    Measurements().Rows[90] = {"Sector 1", "Time [s]", "Marker 1", "Line"};
    ASSERT_TRUE(AcceptNewMarkerName(p.index, "Line", true));
    EXPECT_EQ(CheckForLapMarker(), p.index);
    EXPECT_EQ(Markers().Entries[p.index].Name, "Line#");
    EXPECT_EQ(Measurements().Rows[90].EndMarker, "Line#");
    EXPECT_EQ(FindTrackMarkerIndex("Line"), 0);
    SetLapMarker(a);
    EXPECT_EQ(Markers().Entries[p.index].Name, "Line");
    EXPECT_EQ(Measurements().Rows[90].StartMarker, "Marker 1#");
    EXPECT_EQ(Measurements().Rows[90].EndMarker, "Line");
    EXPECT_FALSE(ProposeNewMarker().useAsLap);

    // Two marks, as from an old session: the first keeps it.
    Markers().Entries[p.index].Name = "Line#";
    EXPECT_EQ(CheckForLapMarker(), a);
    EXPECT_EQ(Markers().Entries[p.index].Name, "Line");

    // Full table.
    for (int i = 1; i <= kLastMarkerEntry; ++i)
        if (Markers().Entries[i].Name.empty()) Markers().Entries[i].Name = "X" + std::to_string(i);
    EXPECT_EQ(ProposeNewMarker().index, -1);
    EXPECT_EQ(Msgs().back(), "The maximum number of track markers has been exceeded");
}

TEST_F(MarkersTest, AutomaticMarkersAndSectorRows) {
    MakeCircleRuns(1, 400, 50.0, 72.0);
    AutoPlaceLapMarker(1, 10.0f);
    EXPECT_EQ(Msgs().back(), "The run is too short to add a lap marker to");
    EXPECT_EQ(CheckForLapMarker(), -1);

    // Less than three crossings: sectors along the whole run.
    MakeCircleRuns(1, 2500, 50.0, 72.0);
    AutoAddSectorMarkers(1, 9, 10.0f);
    EXPECT_GT(FindTrackMarkerIndex("Start of Run"), 0);
    EXPECT_GT(FindTrackMarkerIndex("End of Run"), 0);
    const auto& rows = Measurements().Rows;
    EXPECT_EQ(rows[90].StartMarker, "Start of Run");
    for (int m = 90; m <= 99; ++m) {
        EXPECT_EQ(rows[m].Mode, "Sector " + std::to_string(m - 89));
        EXPECT_EQ(rows[m].VarName, "Time [s]");
    }
    EXPECT_EQ(rows[99].EndMarker, "End of Run");
    EXPECT_TRUE(rows[100].Mode.empty());
    // The scratch score is not left in the shared "*No Data*" column.
    EXPECT_EQ(V(1000, slot::Scratch), 0.0f);
}

TEST_F(MarkersTest, StatisticsAndTheLapTable) {
    MakeCircleRuns(1, 5000, 50.0, 72.0);
    const int32_t col = ColumnOf(slot::SpeedKph);
    V(10, slot::SpeedKph) = 2.0f;
    V(11, slot::SpeedKph) = 4.0f;
    // The divisor is one less than the number of rows.
    EXPECT_FLOAT_EQ(CalcRunStat(10, 11, "Average of", col), 6.0f);
    EXPECT_FLOAT_EQ(CalcRunStat(10, 11, "Std Dev of", col), 20.0f);  // (2-6)^2 + (4-6)^2
    EXPECT_FLOAT_EQ(CalcRunStat(10, 11, "Maximum of", col), 4.0f);
    EXPECT_FLOAT_EQ(CalcRunStat(10, 11, "Sector 3", col), 2.0f);
    EXPECT_FLOAT_EQ(CalcRunStat(10, 10, "Maximum of", col), 0.0f);

    const int line = AddMarker("Line", 0, 40, 0, 60);
    SetLapMarker(line);
    AddMarker("East", 40, 0, 60, 0);
    CheckAllTrackMarkers();
    Measurements().Rows[90] = {"Sector 1", "Time [s]", "Line#", "East"};
    Measurements().Rows[91] = {"Sector 2", "Time [s]", "East", "Line#"};
    TableGrid grid;
    RegenerateTable(false, false, grid, 90, 100, true);
    EXPECT_EQ(grid.Text(1, 0), "Run \"run 1\"");
    EXPECT_EQ(grid.Text(2, 0).rfind("Lap 1, 15.7", 0), 0u) << grid.Text(2, 0);
    EXPECT_EQ(grid.Text(0, 1), "Sector 1");
    // A quarter lap, then three quarters.
    EXPECT_EQ(grid.Text(2, 1), "3.930");  // rows 1546 to 1939
    EXPECT_EQ(grid.Text(2, 2), "11.78");
    int fastest = 0;
    for (int r = 2; r < grid.rows; ++r)
        fastest += grid.Text(r, 0).find(" (f)") != std::string::npos;
    EXPECT_EQ(fastest, 1);
}

TEST_F(MarkersTest, TimeSlipAgainstTheBestPassage) {
    // A sector with one passage only: nothing to compare.
    MakeCircleRuns(1, 1200, 50.0, 72.0);
    AddMarker("East", 40, 0, 60, 0);
    AddMarker("South", 0, -40, 0, -60);
    CheckAllTrackMarkers();
    Measurements().Rows[90] = {"Once", "Time [s]", "East", "South"};
    RecalcTimeSlip();
    for (int32_t i = 1; i <= 1200; ++i) ASSERT_EQ(V(i, slot::RateOfTimeSlip), 0.0f);

    Markers().Reset();
    Measurements().Reset();
    MakeCircleRuns(1, 8000, 50.0, 72.0);
    const int line = AddMarker("Line", 0, 40, 0, 60);
    CheckAllTrackMarkers();
    Measurements().Rows[90] = {"Lap", "Time [s]", "Line", "Line"};

    // Slow the third lap down by a tenth for a stretch: its rate reads the
    // time lost, limited to 100, and the total restarts at each lap.
    const auto& c = Markers().Entries[line].Crossings[1];
    ASSERT_GE(c.size(), 4u);
    for (int32_t i = c[2] + 1; i <= c[3]; ++i) V(i, slot::Time) += 0.001f * (i - c[2]);
    for (int32_t i = c[3] + 1; i <= 8000; ++i) V(i, slot::Time) += 0.001f * (c[3] - c[2]);
    RecalcTimeSlip();
    EXPECT_NEAR(V(c[2] + 500, slot::RateOfTimeSlip), -10.0f, 0.5f);
    const float total = V(c[3] - 1, slot::TimeSlip);
    EXPECT_NEAR(total, -0.001f * (c[3] - c[2]), 0.02f);
    // Without a lap marker the total runs on through the run.
    EXPECT_NEAR(V(7990, slot::TimeSlip), V(c[3], slot::TimeSlip), 0.02f);
    SetLapMarker(line);
    Measurements().Rows[90].StartMarker = Measurements().Rows[90].EndMarker = "Line#";
    RecalcTimeSlip();
    EXPECT_EQ(V(c[3], slot::TimeSlip), 0.0f);
    EXPECT_NEAR(V(7990, slot::TimeSlip), 0.0f, 0.02f);
}

}  // namespace
}  // namespace tl
