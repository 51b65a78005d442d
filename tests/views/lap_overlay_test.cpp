// The graph of laps laid over each other, on the HX40 demo road run with a
// lap marker on its start line: each lap's slot shows only the rows between
// its two crossings, along its own distance axis from zero, and the crossings
// agree with the simulation's own lap times and lap length.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/lap_overlay.h"

namespace tl {
namespace {

const std::string kDemo = test::DemoPath("demo_hx40_road");

// The simulation's line crossings: time [s] and distance [m].
struct TrueCrossing {
    double time, distance;
};
std::vector<TrueCrossing> TrueCrossings() {
    std::ifstream in(kDemo + ".laps.csv");
    std::vector<TrueCrossing> crossings;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("line,", 0) != 0) continue;
        // event,beacon,time_s,row,lap,distance_m,lap_time_s
        std::vector<std::string> f;
        size_t at = 0;
        for (size_t comma; (comma = line.find(',', at)) != std::string::npos; at = comma + 1)
            f.push_back(line.substr(at, comma - at));
        crossings.push_back({std::stod(f[2]), std::stod(f[5])});
    }
    return crossings;
}

class LapOverlay : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        // The lap marker across the track where the simulated car first
        // crosses its line, as a user places it on the map.
        const std::vector<TrueCrossing> truth = TrueCrossings();
        ASSERT_FALSE(truth.empty());
        const auto row = Store().RunInfo[1].RunStart +
                         static_cast<int32_t>(std::lround(truth[0].time * 100.0)) + 2;
        int index = 0;
        std::string name = "Start Line#";
        ASSERT_TRUE(FindFreeMarkerName(index, name));
        AutoPlaceMarker(index, row, 10.0f, name);
        SetLapMarker(index);
        CheckInternalDataStillValid();
        laps = LapsOfRun(1);
        ASSERT_GE(laps.laps.size(), 2u);
    }
    static float Time(int32_t row) { return RunData(row, ColumnOf(slot::Time)); }
    static float Distance(int32_t row) { return RunData(row, ColumnOf(slot::DistanceKm)); }
    RunLaps laps;
};

TEST_F(LapOverlay, TwoLapsOverDistanceEachShowOnlyTheirStretch) {
    const std::vector<TrueCrossing> truth = TrueCrossings();
    ASSERT_GE(truth.size(), 3u);
    std::vector<OverlayCell> cells;
    for (int i = 0; i < 2; ++i) {
        const LapInfo& lap = laps.laps[i];
        cells.push_back({1, lap.startRow, lap.endRow, "Lap " + std::to_string(lap.number)});
        // The table's crossings are the simulation's line crossings.
        EXPECT_NEAR(Time(lap.startRow), truth[i].time, 0.1) << i;
        EXPECT_NEAR(Time(lap.endRow), truth[i + 1].time, 0.1) << i;
    }

    GraphModel g;
    g.Load(1);
    g.settings.FastPlot = 0;
    SetUpLapOverlay(g, cells, AxesOfSectorGraph(SectorGraphType::Speed, "", ""));
    EXPECT_EQ(g.settings.MultipleXAxis, 1);
    EXPECT_EQ(g.settings.LimitVariables, 1);
    EXPECT_EQ(g.ActiveSlotCount(), 2);
    g.ReGenerateGraph();

    for (int k = 0; k < 2; ++k) {
        const GraphSlotSettings& s = g.settings.Slots[k];
        const LapInfo& lap = laps.laps[k];
        EXPECT_EQ(s.SelYAxis, Catalogue().RunVars[slot::SpeedKph].Name);
        EXPECT_EQ(s.SelXAxis, Catalogue().RunVars[slot::DistanceKm].Name);
        EXPECT_EQ(s.LimitVar, Catalogue().RunVars[slot::Time].Name);
        EXPECT_EQ(s.DisplayIf, 1);
        // The condition's bounds read back as the crossing rows' times, the
        // typed X range as their distances.
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMin)), Time(lap.startRow));
        EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMax)), Time(lap.endRow));
        EXPECT_EQ(s.AutoMinX, 1);
        EXPECT_EQ(s.AutoMaxX, 1);
        EXPECT_EQ(s.ZeroBaseXAxis, 1);
        EXPECT_EQ(g.axis[k].XMin, Distance(lap.startRow));
        EXPECT_EQ(g.axis[k].XMax, Distance(lap.endRow));
        EXPECT_EQ(g.axis[k].AxisColour, k);
        // A lap's length along its axis is the simulated track's (4.29 km).
        const double length = truth[k + 1].distance - truth[k].distance;
        EXPECT_NEAR((g.axis[k].XMax - g.axis[k].XMin) * 1000.0, length, length * 0.02) << k;
        EXPECT_NE(g.axis[k].XTitle.find("Lap " + std::to_string(lap.number)), std::string::npos);

        // Every point drawn (inside the ranges) lies between the lap's
        // crossings. The array's first point is the run's first row, stored
        // whatever its value; it lies before the lap, outside the X range.
        const GraphPoints& p = g.data[k];
        int plotted = 0;
        for (int32_t i = 1; i <= g.axis[k].PointCount; ++i) {
            if (p.X[i] < g.axis[k].XMin || p.X[i] > g.axis[k].XMax) continue;
            ++plotted;
            const auto row = static_cast<int32_t>(p.Row[i]);
            EXPECT_GT(row, lap.startRow);
            EXPECT_LT(row, lap.endRow);
        }
        // Nearly every row of the lap is there (no point limit).
        EXPECT_GT(plotted, (lap.endRow - lap.startRow) * 9 / 10) << k;
    }
}

TEST_F(LapOverlay, OneCellSharesTheGraphsAxisAndTheChoicesOfTheSelector) {
    const LapInfo& lap = laps.laps[1];
    GraphModel g;
    g.Load(1);
    SetUpLapOverlay(g, {{1, lap.startRow, lap.endRow, "Lap 2"}},
                    AxesOfSectorGraph(SectorGraphType::GCircle, "", ""));
    EXPECT_EQ(g.settings.MultipleXAxis, 0);
    EXPECT_EQ(g.ActiveSlotCount(), 1);
    const GraphSlotSettings& s = g.settings.Slots[0];
    // Not along distance: only the condition, no typed X range.
    EXPECT_EQ(s.SelXAxis, Catalogue().RunVars[slot::AccelLat].Name);
    EXPECT_EQ(s.SelYAxis, Catalogue().RunVars[slot::AccelLong].Name);
    EXPECT_EQ(s.AutoMinX, 0);
    EXPECT_EQ(s.ZeroBaseXAxis, 0);
    EXPECT_EQ(static_cast<float>(GetVal(s.LimitVarMin)), Time(lap.startRow));
    EXPECT_EQ(g.AxisRunName[0], Store().RunInfo[1].Name);

    const auto& vars = Catalogue().RunVars;
    SectorGraphAxes a = AxesOfSectorGraph(SectorGraphType::LateralAcceleration, "", "");
    EXPECT_EQ(a.y, vars[slot::AccelLat].Name);
    a = AxesOfSectorGraph(SectorGraphType::TimeSlipRate, "", "");
    EXPECT_EQ(a.y, vars[slot::RateOfTimeSlip].Name);
    // The other option keeps enabled names and puts unknown ones back to
    // distance and speed.
    a = AxesOfSectorGraph(SectorGraphType::Other, vars[slot::Time].Name,
                          vars[slot::EngineSpeed].Name);
    EXPECT_EQ(a.x, vars[slot::Time].Name);
    EXPECT_EQ(a.y, vars[slot::EngineSpeed].Name);
    a = AxesOfSectorGraph(SectorGraphType::Other, "Gone [x]", "");
    EXPECT_EQ(a.x, vars[slot::DistanceKm].Name);
    EXPECT_EQ(a.y, vars[slot::SpeedKph].Name);
}

}  // namespace
}  // namespace tl
