#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sim/run_file.h"
#include "sim_readers.h"

namespace tl::sim {
namespace {

SimOutput Simulated(const SimConfig& c) {
    SimOutput out;
    std::string error;
    EXPECT_TRUE(RunSimulation(c, out, error)) << error;
    return out;
}

SimConfig Noisy(Family family, uint64_t seed) {
    SimConfig c;
    c.family = family;
    c.circuit = "kart";
    c.vehicle = "kart";
    c.seed = seed;
    c.drive.laps = 1;
    return c;
}

TEST(SimFaults, SameSeedGivesTheSameBytesAnotherSeedDoesNot) {
    for (Family f : {Family::HX40, Family::MQ7, Family::SW63, Family::SV63}) {
        const SimOutput a = Simulated(Noisy(f, 77)), b = Simulated(Noisy(f, 77)),
                        c = Simulated(Noisy(f, 78));
        EXPECT_EQ(RunFileBytes(a.raw), RunFileBytes(b.raw)) << FamilyName(f);
        EXPECT_NE(RunFileBytes(a.raw), RunFileBytes(c.raw)) << FamilyName(f);
        EXPECT_EQ(TruthCsvText(a.trajectory, a.raw.rows), TruthCsvText(b.trajectory, b.raw.rows));
    }
}

TEST(SimFaults, CorruptionChangesBytesAtTheRequestedRate) {
    for (Family f : {Family::HX40, Family::MQ7}) {
        SimConfig c = Noisy(f, 5);
        const SimOutput clean = Simulated(c);
        c.encode.faults.corruptRate = 0.002;
        const SimOutput bad = Simulated(c);
        ASSERT_EQ(clean.raw.bytes.size(), bad.raw.bytes.size());
        size_t differ = 0;
        for (size_t i = 0; i < clean.raw.bytes.size(); ++i)
            differ += clean.raw.bytes[i] != bad.raw.bytes[i];
        EXPECT_EQ(differ, bad.raw.corruptedBytes);
        const double n = static_cast<double>(clean.raw.bytes.size());
        const double mean = n * 0.002, sd = std::sqrt(mean);
        EXPECT_NEAR(static_cast<double>(differ), mean, 5.0 * sd) << FamilyName(f);
    }
    // In the stream, each damaged record is lost and the reader steps over its bytes.
    SimConfig c = Noisy(Family::MQ7, 6);
    c.encode.faults.corruptRate = 0.001;
    const SimOutput bad = Simulated(c);
    const test::StreamWalk w = test::WalkStream(bad.raw.bytes);
    EXPECT_GT(w.badBytes, 0);
    EXPECT_EQ(w.rows, bad.raw.expectedRows);
    std::vector<uint8_t> none(1000, 0);
    EXPECT_EQ(CorruptBytes(none, 0, 0.0, 1), 0u);
    EXPECT_EQ(CorruptBytes(none, 10, 1.0, 1), 990u);
    for (size_t i = 10; i < none.size(); ++i) ASSERT_NE(none[i], 0);
}

TEST(SimFaults, DroppedFixesAreMissingFromEveryFamily) {
    for (Family f : {Family::HX40, Family::MQ7, Family::SV63}) {
        SimConfig c = Noisy(f, 8);
        const size_t all = Simulated(c).raw.fixes.size();
        c.encode.faults.dropGps = 0.25;
        const SimOutput out = Simulated(c);
        EXPECT_NEAR(static_cast<double>(out.raw.droppedFixes), 0.25 * all,
                    5.0 * std::sqrt(0.19 * all))
            << FamilyName(f);
        EXPECT_NEAR(static_cast<double>(out.raw.fixes.size() + out.raw.droppedFixes),
                    static_cast<double>(all), 2.0);
    }
}

TEST(SimFaults, ACutRunEndsEarlyAndItsTruthWithIt) {
    SimConfig c = Noisy(Family::HX40, 9);
    const SimOutput whole = Simulated(c);
    c.encode.faults.keep = 0.5;
    SimOutput cut = Simulated(c);
    EXPECT_NEAR(cut.raw.frames, whole.raw.frames / 2, 1);
    EXPECT_NEAR(cut.raw.rows, whole.raw.rows / 2, 8);
    test::Planes p;
    ASSERT_TRUE(test::ReadPlanes(RunFileBytes(cut.raw), p));
    const int counted = test::CountRowsHX40(p);
    EXPECT_EQ(counted, cut.raw.expectedRows);
    EXPECT_GE(counted, cut.raw.rows);
    EXPECT_LE(counted, cut.raw.rows + 7);  // a block in the closing frames reads as rows
    const std::string truth = TruthCsvText(cut.trajectory, cut.raw.rows);
    EXPECT_EQ(std::count(truth.begin(), truth.end(), '\n'), cut.raw.rows + 1);

    SimConfig s = Noisy(Family::SW63, 9);
    const SimOutput sw = Simulated(s);
    s.encode.faults.keep = 0.3;
    const SimOutput swCut = Simulated(s);
    EXPECT_NEAR(static_cast<double>(swCut.raw.bytes.size()), 0.3 * sw.raw.bytes.size(), 1.0);
    const test::StreamWalk w = test::WalkStream(swCut.raw.bytes);
    EXPECT_EQ(w.rows, swCut.raw.rows);
    EXPECT_LE(w.badBytes, 13);  // at most the record cut in two
}

TEST(SimFaults, ParseFaultsAcceptsTheListAndRefusesNonsense) {
    Faults f;
    std::string error;
    ASSERT_TRUE(ParseFaults(
        "corrupt=0.001,dropgps=0.1,badnmea=0.05,timejumps=3,jumpticks=12,cut=0.8", f, error));
    EXPECT_DOUBLE_EQ(f.corruptRate, 0.001);
    EXPECT_DOUBLE_EQ(f.dropGps, 0.1);
    EXPECT_DOUBLE_EQ(f.badSentences, 0.05);
    EXPECT_EQ(f.timeJumps, 3);
    EXPECT_EQ(f.jumpTicks, 12);
    EXPECT_DOUBLE_EQ(f.keep, 0.8);
    EXPECT_TRUE(ParseFaults("none", f, error));
    EXPECT_EQ(f.keep, 1.0);
    for (const char* bad :
         {"corrupt", "corrupt=2", "cut=0", "dropgps=x", "speed=1", "jumpticks=1", "corrupt=-1"}) {
        EXPECT_FALSE(ParseFaults(bad, f, error)) << bad;
        EXPECT_FALSE(error.empty());
    }
}

// The receiver loses the K-th pulse whole and sees a false one of three
// rows; with neither fault the output is the truth.
TEST(SimFaults, BeaconFaultsChangeOnlyTheirPulses) {
    Trajectory traj;
    traj.rows.resize(60);
    for (int r : {10, 11, 12, 30, 31, 32, 50, 51, 52}) traj.rows[r].beacon = true;
    Faults f;
    std::string error;
    ASSERT_TRUE(ParseFaults("missbeacon=2,falsebeacon=0.2", f, error));
    EXPECT_EQ(f.missBeacon, 2);
    EXPECT_DOUBLE_EQ(f.falseBeacon, 0.2);
    const std::vector<uint8_t> faulty = LoggedBeacon(traj, f);
    const std::vector<uint8_t> clean = LoggedBeacon(traj, Faults{});
    for (int r = 0; r < 60; ++r) {
        EXPECT_EQ(clean[r], traj.rows[r].beacon ? 1 : 0) << r;
        const bool on = (r >= 10 && r <= 12) || (r >= 20 && r <= 22) || (r >= 50 && r <= 52);
        EXPECT_EQ(faulty[r], on ? 1 : 0) << r;
    }
    EXPECT_FALSE(ParseFaults("missbeacon=0", f, error));
    EXPECT_FALSE(ParseFaults("falsebeacon=-1", f, error));
}

TEST(SimFiles, WriterLaysOutHeadPlanesAndSideFiles) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / "tracelab_sim_files_test";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const SimOutput out = Simulated(test::QuietConfig(Family::SV63, "oval", 1, 4));
    std::string error;
    const std::string path = (dir / "oval.run").string();
    ASSERT_TRUE(WriteSimulation(out, path, error)) << error;
    std::ifstream f(path, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(f)),
                                     std::istreambuf_iterator<char>());
    ASSERT_EQ(bytes.size(), 12 + 8 * static_cast<size_t>(out.raw.frames + 1));
    EXPECT_EQ(bytes[0], 0x98);
    EXPECT_EQ(bytes[1], 0x1D);
    EXPECT_EQ(test::I32(bytes, 4), 202);
    EXPECT_EQ(test::I32(bytes, 8), out.raw.frames);
    // Byte k of plane v at 12 + (v - 1) * (N + 1) + k; byte 0 the header byte.
    const size_t n1 = out.raw.frames + 1;
    EXPECT_EQ(bytes[12], out.raw.header[0]);
    EXPECT_EQ(bytes[12 + 4 * n1 + 1 + 100], out.raw.Plane(5, 100));
    EXPECT_TRUE(std::filesystem::exists(dir / "oval.truth.csv"));
    EXPECT_TRUE(std::filesystem::exists(dir / "oval.laps.csv"));
    std::ifstream car(dir / "oval.car");
    std::string first;
    std::getline(car, first);
    EXPECT_EQ(first, "\"GearRatioVal1\",\"3.2\"\r");
    EXPECT_FALSE(std::filesystem::exists(dir / "oval.run.part"));
    // A directory that cannot be written leaves no file behind and says why.
    EXPECT_FALSE(WriteSimulation(out, (dir / "missing" / "x.run").string(), error));
    EXPECT_NE(error.find("x.run"), std::string::npos);
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace tl::sim
