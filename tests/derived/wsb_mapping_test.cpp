// The wheel-speed track map and the beacons (mapping modes 1 and 2). End to
// end: a simulated car lapping the kart circuit with trackside beacons,
// recorded as raw MQ7 runs (some with a missed or a false beacon pulse),
// loaded and processed; the beacon table, the reference lap and the overlaid
// positions are compared with the simulation's ground truth. The search's
// edge cases run on hand-made beacon and distance columns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "derived/beacons.h"
#include "derived/lap_stages.h"
#include "derived/reference_lap.h"
#include "derived_helpers.h"
#include "files/raw_run_files.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::V;

constexpr int kBeaconSlot = 42;

struct TrueCrossing {
    int beacon = 0;  // 0 the line, 1.. the extra beacons
    int row = 0;     // rows from the run's first row
};

struct SimRun {
    std::string path;
    std::vector<TrueCrossing> crossings;
    std::vector<double> x, y;  // truth per row
    double lapLength = 0;      // metres between line crossings
};

std::vector<std::string> Cells(const std::string& line) {
    std::vector<std::string> out;
    std::stringstream ss(line);
    std::string cell;
    while (std::getline(ss, cell, ',')) out.push_back(cell);
    return out;
}

// Runs tracelab-sim on the kart circuit with three beacons besides the line.
bool Simulate(const test::TempDir& root, const std::string& name, const std::string& extra,
              SimRun& out) {
    const std::string sim = std::string(TRACELAB_BIN_DIR) + "/tracelab-sim";
    if (!std::filesystem::exists(sim)) return false;
    out.path = root.file(name + ".run");
    const std::string cmd =
        sim + " --family mq7 --circuit kart --beacons 3 --quiet " + extra + " -o " + out.path;
    if (std::system(cmd.c_str()) != 0) return false;
    const std::string stem = root.file(name);
    std::ifstream laps(stem + ".laps.csv");
    std::string line;
    std::getline(laps, line);
    std::vector<double> lineDistance;
    while (std::getline(laps, line)) {
        const auto c = Cells(line);
        if (c.size() < 6) continue;
        out.crossings.push_back({std::atoi(c[1].c_str()), std::atoi(c[3].c_str())});
        if (c[0] == "line") lineDistance.push_back(std::strtod(c[5].c_str(), nullptr));
    }
    if (lineDistance.size() >= 2) out.lapLength = lineDistance[1] - lineDistance[0];
    std::ifstream truth(stem + ".truth.csv");
    std::getline(truth, line);
    while (std::getline(truth, line)) {
        const auto c = Cells(line);
        if (c.size() < 5) continue;
        out.x.push_back(std::strtod(c[3].c_str(), nullptr));
        out.y.push_back(std::strtod(c[4].c_str(), nullptr));
    }
    return !out.crossings.empty() && !out.x.empty();
}

// The rotation and shift that lay one set of points best over another.
struct Rigid {
    double c = 1, s = 0, tx = 0, ty = 0;
    void Apply(double x, double y, double& ox, double& oy) const {
        ox = c * x - s * y + tx;
        oy = s * x + c * y + ty;
    }
};

Rigid FitRigid(const std::vector<double>& px, const std::vector<double>& py,
               const std::vector<double>& qx, const std::vector<double>& qy) {
    const double n = static_cast<double>(px.size());
    double mpx = 0, mpy = 0, mqx = 0, mqy = 0;
    for (size_t i = 0; i < px.size(); ++i) {
        mpx += px[i] / n;
        mpy += py[i] / n;
        mqx += qx[i] / n;
        mqy += qy[i] / n;
    }
    double dot = 0, cross = 0;
    for (size_t i = 0; i < px.size(); ++i) {
        const double ax = px[i] - mpx, ay = py[i] - mpy, bx = qx[i] - mqx, by = qy[i] - mqy;
        dot += ax * bx + ay * by;
        cross += ax * by - ay * bx;
    }
    const double a = std::atan2(cross, dot);
    Rigid r;
    r.c = std::cos(a);
    r.s = std::sin(a);
    r.tx = mqx - (r.c * mpx - r.s * mpy);
    r.ty = mqy - (r.s * mpx + r.c * mpy);
    return r;
}

struct Stats {
    double sumSq = 0, maxAbs = 0;
    int n = 0;
    void Add(double e) {
        sumSq += e * e;
        maxAbs = std::max(maxAbs, std::fabs(e));
        ++n;
    }
    double Rms() const { return n ? std::sqrt(sumSq / n) : 0; }
};

class WsbMapping : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
    }

    void Load(const SimRun& run) {
        ui.yesNoAnswers.push_back(false);
        LoadDataFromFile(run.path);
    }

    // As the options dialogs leave things: the mapping mode (the catalogue
    // rebuild reset it), laps laid on the reference, the reference run and
    // the beacons per lap. Then every run is processed.
    void ProcessAll(int mode, int32_t refRun = 1, int beacons = 4) {
        const std::string& cfg = Paths().TracelabCfgPath;
        SetConfig(cfg, "MappingMode", static_cast<float>(mode));
        SetConfig(cfg, "OverLayLaps", 1);
        SetConfig(cfg, "AllDataOntoTrack", 1);
        SetConfig(cfg, "DistanceMode", 0);
        // Wheel speed from the wheel pulses: Hz / 2 pulses * 1.95 m * 3.6.
        SetConfigString(Paths().CarCfgPath, "WheelSpeedFormula", "VAR_38 * 3.51");
        RefLap().RefRun = refRun;
        RefLap().NumOfBeacons = beacons;
        for (int32_t run = 1; run <= Store().RunCount; ++run) ConvertRawToRunData(run, true);
    }

    int32_t Start(int32_t run) const { return Store().RunInfo[run].RunStart; }

    // Every table entry is a true beacon (within two rows), the same column
    // is always the same beacon, and lap * 4 + column runs in step with the
    // true crossings, so a missed beacon leaves its own hole.
    void ExpectTableMatchesTruth(const BeaconTable& table, int32_t run, const SimRun& sim,
                                 int missedIndex = -1) {
        int entries = 0, shift = -1, step = 0;
        bool first = true;
        for (int32_t lap = 0; lap < table.laps; ++lap)
            for (int c = 0; c < table.beacons; ++c) {
                const int32_t r = table.At(lap, c);
                if (r == 0) continue;
                ++entries;
                int k = -1;
                for (size_t i = 0; i < sim.crossings.size(); ++i)
                    if (std::abs(Start(run) + sim.crossings[i].row - r) <= 2)
                        k = static_cast<int>(i);
                ASSERT_GE(k, 0) << "row " << r << " at lap " << lap << " beacon " << c;
                EXPECT_NE(k, missedIndex);
                const int s = ((sim.crossings[k].beacon - c) % 4 + 4) % 4;
                const int order = lap * table.beacons + c - k;
                if (first) {
                    shift = s;
                    step = order;
                    first = false;
                }
                EXPECT_EQ(s, shift) << "lap " << lap << " beacon " << c;
                EXPECT_EQ(order, step) << "lap " << lap << " beacon " << c;
            }
        const int logged = static_cast<int>(sim.crossings.size()) - (missedIndex >= 0 ? 1 : 0);
        EXPECT_EQ(entries, logged);
    }

    // Positions of rows from the first to the last true crossing laid over
    // the truth by the rigid fit given (or fitted here when none).
    Stats PositionError(int32_t run, const SimRun& sim, Rigid* fit, bool refit) {
        std::vector<double> px, py, qx, qy;
        const int from = sim.crossings.front().row, to = sim.crossings.back().row;
        for (int i = from; i <= to && i < static_cast<int>(sim.x.size()); ++i) {
            px.push_back(V(Start(run) + i, slot::PositionX));
            py.push_back(V(Start(run) + i, slot::PositionY));
            qx.push_back(sim.x[i]);
            qy.push_back(sim.y[i]);
        }
        if (refit) *fit = FitRigid(px, py, qx, qy);
        Stats e;
        for (size_t i = 0; i < px.size(); ++i) {
            double x, y;
            fit->Apply(px[i], py[i], x, y);
            e.Add(std::hypot(x - qx[i], y - qy[i]));
        }
        return e;
    }
};

TEST_F(WsbMapping, CleanRunsMapOntoOneReferenceLap) {
    SimRun a, b;
    if (!Simulate(root, "a", "--laps 4 --seed 5", a) ||
        !Simulate(root, "b", "--laps 3 --seed 9", b))
        GTEST_SKIP() << "tracelab-sim is not built";
    Load(a);
    Load(b);
    ASSERT_EQ(Store().RunCount, 2);
    ProcessAll(2);
    const ReferenceLap& ref = RefLap();

    // Wheel speed gives the true lap length to within the wheel's pulse count.
    ASSERT_GT(ref.RefLapPoints, 10);
    EXPECT_EQ(ref.RefRun, 1);
    EXPECT_NEAR(ref.RefLapLength, a.lapLength, 0.005 * a.lapLength);
    ASSERT_EQ(ref.RefSections.size(), 4u);
    float sections = 0;
    for (float s : ref.RefSections) {
        EXPECT_NEAR(s, a.lapLength / 4, 0.01 * a.lapLength);
        sections += s;
    }
    EXPECT_NEAR(sections, ref.RefLapLength, 0.5);
    // The loop is closed: its last point lies next to its first.
    const int32_t P = ref.RefLapPoints;
    const double gap = std::hypot(ref.RefLapX[P] - ref.RefLapX[1], ref.RefLapY[P] - ref.RefLapY[1]);
    EXPECT_LT(gap, 0.5);

    // Beacon tables of both runs against the true crossings.
    for (int32_t run = 1; run <= 2; ++run) {
        BeaconTable table;
        std::vector<float> sectionsGiven = ref.RefSections;
        EXPECT_EQ(ExtractValidMarkers(run, table, sectionsGiven, true), 0);
        SCOPED_TRACE(run);
        ExpectTableMatchesTruth(table, run, run == 1 ? a : b);
    }

    // The map of the reference run against the truth, and the other run by the
    // same rotation and shift: both lie on the one reference lap.
    // The dead-reckoned lap carries the accelerometer's bias and scale error
    // (about -0.02 g and -5 % here), which no closure removes.
    Rigid fit, own;
    const Stats ea = PositionError(1, a, &fit, true);
    const Stats eb = PositionError(2, b, &fit, false);
    const Stats ebOwn = PositionError(2, b, &own, true);
    std::printf(
        "[ wsb mode 2 ] ref lap %.2f m (true %.2f m), closure %.3f m; position after a "
        "rigid fit: run 1 rms %.2f m (max %.2f), run 2 by run 1's fit rms %.2f m (max "
        "%.2f), by its own %.2f m\n",
        ref.RefLapLength, a.lapLength, gap, ea.Rms(), ea.maxAbs, eb.Rms(), eb.maxAbs, ebOwn.Rms());
    EXPECT_LT(ea.Rms(), 6.0);
    EXPECT_LT(ea.maxAbs, 10.0);
    EXPECT_LT(eb.Rms(), ebOwn.Rms() + 0.3);

    // The beacon markers lie across the track where the beacons are: the
    // crossing search finds each of them at the true beacon rows.
    CheckAllTrackMarkers();
    int found = 0;
    for (int i = 1; i <= kLastMarkerEntry; ++i) {
        const TrackMarker& m = Markers().Entries[i];
        if (WithoutHash(m.Name).rfind("Beacon ", 0) != 0) continue;
        ++found;
        ASSERT_GE(m.Crossings.size(), 2u);
        for (int32_t row : m.Crossings[1]) {
            int nearest = 1 << 30;
            for (const TrueCrossing& c : a.crossings)
                nearest = std::min(nearest, std::abs(Start(1) + c.row - row));
            EXPECT_LT(nearest, 30) << m.Name << " at row " << row;
        }
        EXPECT_GE(m.Crossings[1].size(), 4u) << m.Name;
    }
    EXPECT_EQ(found, 4);

    // The first beacon's marker, named with its "#", is the lap marker: the
    // laps between its crossings are the true laps at that beacon.
    const int lap = CheckForLapMarker();
    ASSERT_GT(lap, 0);
    EXPECT_EQ(WithoutHash(Markers().Entries[lap].Name).rfind("Beacon ", 0), 0u);
    const RunLaps laps = LapsOfRun(1);
    ASSERT_GE(laps.laps.size(), 3u);
    double worst = 0;
    for (const LapInfo& l : laps.laps) {
        // The true crossings of the same beacon nearest the lap's two ends.
        auto nearest = [&](int32_t row) {
            const TrueCrossing* best = nullptr;
            for (const TrueCrossing& c : a.crossings)
                if (!best ||
                    std::abs(Start(1) + c.row - row) < std::abs(Start(1) + best->row - row))
                    best = &c;
            return best;
        };
        const TrueCrossing* c0 = nearest(l.startRow);
        const TrueCrossing* c1 = nearest(l.endRow);
        ASSERT_TRUE(c0 && c1);
        EXPECT_EQ(c0->beacon, c1->beacon);
        worst = std::max(worst, std::fabs(l.time - (c1->row - c0->row) / 100.0));
    }
    std::printf("[ wsb mode 2 ] %zu laps at the beacon marker, worst lap time error %.3f s\n",
                laps.laps.size(), worst);
    EXPECT_LT(worst, 0.1);
}

TEST_F(WsbMapping, GpsSpeedMapsInModeOne) {
    SimRun a;
    if (!Simulate(root, "g", "--laps 4 --seed 7", a)) GTEST_SKIP() << "tracelab-sim is not built";
    Load(a);
    ProcessAll(1);
    const ReferenceLap& ref = RefLap();
    ASSERT_GT(ref.RefLapPoints, 10);
    EXPECT_NEAR(ref.RefLapLength, a.lapLength, 0.01 * a.lapLength);
    Rigid fit;
    const Stats e = PositionError(1, a, &fit, true);
    std::printf("[ wsb mode 1 ] ref lap %.2f m (true %.2f m); position rms %.2f m (max %.2f)\n",
                ref.RefLapLength, a.lapLength, e.Rms(), e.maxAbs);
    EXPECT_LT(e.Rms(), 6.0);
    // The wheel speed the mapper borrowed GPS speed for is back in place.
    double wheel = 0;
    for (int32_t i = Start(1); i <= Store().RunInfo[1].RunEnd; ++i)
        wheel = std::max<double>(wheel, V(i, slot::WheelSpeedKph));
    EXPECT_GT(wheel, 10.0);
}

// A missed pulse and a false one each cost an error of 1, and the table
// still holds every real beacon in its place.
TEST_F(WsbMapping, MissedAndFalseBeaconsCostOneEach) {
    SimRun miss, fake, both;
    // Pulse 10 (crossing 9) is beacon 1 of the third lap; 70 s lies between
    // beacons 1 and 2 of the second lap.
    if (!Simulate(root, "miss", "--laps 4 --seed 5 --faults missbeacon=10", miss) ||
        !Simulate(root, "fake", "--laps 4 --seed 5 --faults falsebeacon=70", fake) ||
        !Simulate(root, "both", "--laps 4 --seed 5 --faults missbeacon=10,falsebeacon=70", both))
        GTEST_SKIP() << "tracelab-sim is not built";
    Load(miss);
    Load(fake);
    Load(both);
    ProcessAll(2);
    ASSERT_GT(RefLap().RefLapPoints, 10);
    const int expected[] = {1, 1, 2};
    const SimRun* sims[] = {&miss, &fake, &both};
    for (int32_t run = 1; run <= 3; ++run) {
        SCOPED_TRACE(run);
        const bool missed = run != 2;
        EXPECT_EQ(FindBeaconRows(run).size(),
                  sims[run - 1]->crossings.size() - (missed ? 1 : 0) + (run != 1 ? 1 : 0));
        for (bool given : {false, true}) {
            SCOPED_TRACE(given ? "given sections" : "own sections");
            BeaconTable table;
            std::vector<float> sections = RefLap().RefSections;
            EXPECT_EQ(ExtractValidMarkers(run, table, sections, given), expected[run - 1]);
            ExpectTableMatchesTruth(table, run, *sims[run - 1], missed ? 9 : -1);
        }
        Rigid fit;
        const Stats e = PositionError(run, *sims[run - 1], &fit, true);
        EXPECT_LT(e.Rms(), 6.0);
    }
}

// Hand-made runs: one metre of distance per row and beacon pulses placed by
// distance.
class BeaconSearch : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
    }
    void MakeTrack(int32_t rows, const std::vector<int32_t>& pulses, int width = 3) {
        test::MakeRun(rows);
        for (int32_t i = 1; i <= rows; ++i) V(i, slot::DistanceKm) = (i - 1) / 1000.0f;
        for (int32_t p : pulses)
            for (int k = 0; k < width && p + k <= rows; ++k) V(p + k, kBeaconSlot) = 1;
    }
    // Beacons every lap at 0, 300 and 800 m of a 1000 m lap, from 100 m on.
    static std::vector<int32_t> Laps(int laps) {
        std::vector<int32_t> rows;
        for (int l = 0; l < laps; ++l)
            for (int at : {100, 400, 900}) rows.push_back(l * 1000 + at);
        return rows;
    }
};

TEST_F(BeaconSearch, UnevenSectionsFindTheirPlaces) {
    RefLap().NumOfBeacons = 3;
    std::vector<int32_t> pulses = Laps(6);
    // Miss lap 2's second beacon and add a false one on lap 4.
    pulses.erase(std::find(pulses.begin(), pulses.end(), 2400));
    pulses.push_back(4650);
    std::sort(pulses.begin(), pulses.end());
    MakeTrack(6100, pulses);

    BeaconTable table;
    std::vector<float> sections;
    EXPECT_EQ(ExtractValidMarkers(1, table, sections, false), 2);
    // The earliest of the equally good starts: the lap from the first beacon.
    ASSERT_EQ(sections.size(), 3u);
    EXPECT_NEAR(sections[0], 300, 0.1);
    EXPECT_NEAR(sections[1], 500, 0.1);
    EXPECT_NEAR(sections[2], 200, 0.1);
    for (int lap = 0; lap < 6; ++lap)
        for (int c = 0; c < 3; ++c) {
            const int32_t want = lap * 1000 + std::vector<int>{100, 400, 900}[c];
            EXPECT_EQ(table.At(lap, c), want == 2400 ? 0 : want) << lap << " " << c;
        }
    // The given sections give the same table.
    BeaconTable given;
    std::vector<float> ref = {300, 500, 200};
    EXPECT_EQ(ExtractValidMarkers(1, given, ref, true), 2);
    EXPECT_EQ(given.rows, table.rows);
    EXPECT_EQ(ref, (std::vector<float>{300, 500, 200}));
}

TEST_F(BeaconSearch, ShortOrMergedPulseTrainsGiveNoTable) {
    RefLap().NumOfBeacons = 3;
    // Two beacons: nothing to align.
    MakeTrack(3000, {100, 400});
    BeaconTable table;
    std::vector<float> sections = {1, 2, 3};
    EXPECT_EQ(ExtractValidMarkers(1, table, sections, false), -1);
    EXPECT_TRUE(table.Empty());
    EXPECT_TRUE(sections.empty());
    // Pulses that never drop below 1 between them are one beacon.
    MakeTrack(3000, {100, 103, 106, 109}, 3);
    EXPECT_EQ(FindBeaconRows(1).size(), 1u);
    MakeTrack(3000, {100, 104, 108}, 3);
    EXPECT_EQ(FindBeaconRows(1).size(), 3u);
}

TEST_F(BeaconSearch, OneBeaconMakesEveryGapALap) {
    RefLap().NumOfBeacons = 1;
    std::vector<int32_t> pulses;
    for (int l = 0; l < 6; ++l) pulses.push_back(50 + l * 1000);
    MakeTrack(6000, pulses);
    BeaconTable table;
    std::vector<float> sections;
    EXPECT_EQ(ExtractValidMarkers(1, table, sections, false), 0);
    ASSERT_EQ(sections.size(), 1u);
    EXPECT_NEAR(sections[0], 1000, 0.1);
    for (int l = 0; l < 6; ++l) EXPECT_EQ(table.At(l, 0), 50 + l * 1000);
}

TEST_F(BeaconSearch, TooFewBeaconsMapAsOneOpenSection) {
    RefLap().NumOfBeacons = 3;
    MakeTrack(2000, {100, 1100});
    // A straight at 36 kph: 0.1 m a row, heading north.
    for (int32_t i = 1; i <= 2000; ++i) V(i, slot::WheelSpeedKph) = 36;
    ReferenceLap& ref = RefLap();
    ref.RefLapPoints = 100;
    ref.RefLapX.assign(101, 7.0f);
    ref.RefLapY.assign(101, 7.0f);
    ref.RefSections = {300, 500, 200};
    SetConfig(Paths().TracelabCfgPath, "OverLayLaps", 1);
    SetConfig(Paths().TracelabCfgPath, "AllDataOntoTrack", 0);
    OverlayWSBTrackMap(1);
    EXPECT_FLOAT_EQ(V(1, slot::PositionX), 0.0f);
    EXPECT_NEAR(V(1, slot::PositionY), 0.1, 1e-4);
    EXPECT_NEAR(V(2000, slot::PositionY), 200.0, 0.05);
    EXPECT_NEAR(V(2000, slot::PositionX), 0.0, 1e-3);
}

TEST_F(BeaconSearch, BeaconsPlaceTheSectionsBetweenThem) {
    // A reference lap of 100 m laid on a line along x; beacon 1 at 30 m.
    RefLap().NumOfBeacons = 2;
    ReferenceLap& ref = RefLap();
    ref.RefLapLength = 100;
    ref.RefLapPoints = 1001;
    ref.RefLapX.resize(1002);
    ref.RefLapY.assign(1002, 0.0f);
    for (int j = 1; j <= 1001; ++j) ref.RefLapX[j] = (j - 1) * 0.1f;
    ref.RefLapX[0] = ref.RefLapX[1001];
    ref.RefSections = {30, 70};
    // The run covers each section 10 % long, as a wheel of the wrong size
    // would measure it: beacons at rows 11 (0 m), 44 and 121.
    MakeTrack(300, {11, 44, 121, 154, 231, 264});
    SetConfig(Paths().TracelabCfgPath, "OverLayLaps", 1);
    SetConfig(Paths().TracelabCfgPath, "AllDataOntoTrack", 1);
    OverlayWSBTrackMap(1);
    // Half way between beacons 0 and 1 lies 15 m on the reference, and half
    // way between beacons 1 and 0 of the next lap 65 m.
    EXPECT_NEAR(V(11, slot::PositionX), 0.0, 0.11);
    EXPECT_NEAR(V(27, slot::PositionX) + V(28, slot::PositionX), 30.0, 0.3);
    EXPECT_NEAR(V(44, slot::PositionX), 30.0, 0.11);
    EXPECT_NEAR(V(82, slot::PositionX) + V(83, slot::PositionX), 130.0, 0.3);
    EXPECT_NEAR(V(121, slot::PositionX), 0.0, 0.11);
    // Before the first beacon the data runs back along the lap's end.
    EXPECT_NEAR(V(1, slot::PositionX), 90.0, 0.11);

    // Without AllDataOntoTrack the two ends are dead-reckoned from their
    // beacon's place with heading 0 (north at 0.1 m a row); backwards the
    // speed is negative and the rows hold the beacon's place.
    SetConfig(Paths().TracelabCfgPath, "AllDataOntoTrack", 0);
    for (int32_t i = 1; i <= 300; ++i) {
        V(i, slot::WheelSpeedKph) = 36;
        V(i, slot::PositionX) = V(i, slot::PositionY) = 0;
    }
    OverlayWSBTrackMap(1);
    EXPECT_NEAR(V(1, slot::PositionX), 0.0, 0.11);
    EXPECT_NEAR(V(1, slot::PositionY), 0.0, 1e-4);
    EXPECT_NEAR(V(300, slot::PositionX), 30.0, 0.11);
    EXPECT_NEAR(V(300, slot::PositionY), 3.7, 0.01);
}

// Garbage in the beacon, distance, speed and acceleration columns, and beacon
// counts from 1 to absurd: every stage keeps to its rows and returns.
TEST_F(BeaconSearch, HostileColumnsDoNoHarm) {
    test::MakeRun(4000);
    uint32_t seed = 12345;
    auto rnd = [&] {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    const float odd[] = {NAN, -1e30f, INFINITY, 0.0f};
    int references = 0;
    for (int trial = 0; trial < 12; ++trial) {
        for (int32_t i = 1; i <= 4000; ++i) {
            V(i, kBeaconSlot) = rnd() % (2 + trial % 5) == 0 ? 1.0f : 0.0f;
            const uint32_t r = rnd() % 200;
            V(i, slot::DistanceKm) = r < 4 && trial % 3 == 0
                                         ? odd[r]
                                         : (i + static_cast<int>(rnd() % 60) - 30) / 1000.0f;
            V(i, slot::WheelSpeedKph) = static_cast<float>(rnd() % 250) - 20.0f;
            V(i, slot::AccelLat) = static_cast<float>(rnd() % 100) / 10.0f - 5.0f;
        }
        RefLap().Reset();
        RefLap().RefRun = 1;
        RefLap().NumOfBeacons = trial == 11 ? 1000000000 : 1 + trial % 6;
        SetConfig(Paths().TracelabCfgPath, "OverLayLaps", 1);
        SetConfig(Paths().TracelabCfgPath, "AllDataOntoTrack", trial % 2);
        GenerateWSBReferenceLap(1);
        OverlayWSBTrackMap(1);
        AddBeaconTrackMarkers();
        EXPECT_LE(RefLap().RefLapPoints, 2000001);
        if (RefLap().RefLapPoints > 10) ++references;
    }
    // The garbage made reference laps too, so every stage ran on it.
    EXPECT_GT(references, 0);
}

// The lap can't close: at 10 kph a turn of 5 g is held to a 3 m radius, so
// neither the heading nor the two parameters move the path (the equations
// are singular, both parameters come back -1). The closure gives up after
// 50 rounds.
TEST_F(BeaconSearch, ClosureGivesUpAfterFiftyRounds) {
    test::MakeRun(200);
    for (int32_t i = 1; i <= 200; ++i) {
        V(i, slot::WheelSpeedKph) = 10;
        V(i, slot::AccelLat) = 5;
    }
    Profile().DebugFlag = true;
    EXPECT_EQ(CloseTrackMap(1, 150), 50);
    Profile().DebugFlag = false;
    const std::string log = test::ReadAll(Paths().LogPath);
    EXPECT_NE(log.find("iteration #50\r\n"), std::string::npos);
    EXPECT_EQ(log.find("iteration #51"), std::string::npos);
    EXPECT_NE(log.find("Threoretical Parameter 1 is-1\r\n"), std::string::npos);
    EXPECT_NE(log.find("Limited Parameter 2 is-0.003\r\n"), std::string::npos);
    EXPECT_NE(log.find("__________________________completed loop closure___________________"),
              std::string::npos);
    // The stored path is the 3 m circle it could not change.
    const double r = std::hypot(V(150, slot::PositionX), V(150, slot::PositionY));
    EXPECT_GT(r, 1.0);
    EXPECT_LT(r, 6.1);
}

// An almost-closed circle (a lateral acceleration a few per cent off) closes
// in a few rounds.
TEST_F(BeaconSearch, ClosureClosesACircle) {
    // 72 kph on a 100 m radius: 0.408 g; one lap is 3141.6 rows.
    test::MakeRun(4000);
    for (int32_t i = 1; i <= 4000; ++i) {
        V(i, slot::WheelSpeedKph) = 72;
        V(i, slot::AccelLat) = (i < 2000 ? 0.43f : 0.39f) * -1.0f;
    }
    const int rounds = CloseTrackMap(1, 3142);
    EXPECT_GT(rounds, 0);
    EXPECT_LT(rounds, 50);
    EXPECT_LT(std::hypot(V(3142, slot::PositionX), V(3142, slot::PositionY)), 0.2);
    // Counter-clockwise: the circle lies to the west of the start.
    EXPECT_LT(V(1571, slot::PositionX), -150.0f);
}

}  // namespace
}  // namespace tl
