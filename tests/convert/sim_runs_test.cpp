// End to end: a simulated vehicle on a circuit, recorded by tracelab-sim as
// a raw run of each family, loaded as a user would load it and converted;
// the converted channels are compared with the simulation's ground truth.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "convert_helpers.h"
#include "core/config_store.h"
#include "files/raw_run_files.h"
#include "road/run_road.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::Row;

struct Truth {
    std::vector<double> speed, longG, latG, lat, lon, rpm;
};

Truth ReadTruth(const std::string& path) {
    Truth t;
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
        std::vector<double> f;
        std::stringstream ss(line);
        std::string cell;
        while (std::getline(ss, cell, ',')) f.push_back(std::strtod(cell.c_str(), nullptr));
        if (f.size() < 14) continue;
        t.lat.push_back(f[5]);
        t.lon.push_back(f[6]);
        t.speed.push_back(f[7]);
        t.longG.push_back(f[8]);
        t.latG.push_back(f[9]);
        t.rpm.push_back(f[12]);
    }
    return t;
}

struct Stats {
    double sum = 0, sumSq = 0, maxAbs = 0;
    int n = 0;
    void Add(double e) {
        sum += e;
        sumSq += e * e;
        maxAbs = std::max(maxAbs, std::fabs(e));
        ++n;
    }
    double Mean() const { return n ? sum / n : 0; }
    double Rms() const { return n ? std::sqrt(sumSq / n) : 0; }
};

struct Case {
    const char* name;
    const char* family;
    Family profile;
    const char* extra;
};

// Named in test output by its name (the printer would otherwise dump the
// struct's bytes, padding included).
void PrintTo(const Case& c, std::ostream* os) {
    *os << c.name;
}

class SimulatedRuns : public test::EngineTest, public ::testing::WithParamInterface<Case> {};

TEST_P(SimulatedRuns, ConvertedChannelsAgreeWithTruth) {
    const Case c = GetParam();
    const std::string sim = std::string(TRACELAB_BIN_DIR) + "/tracelab-sim";
    if (!std::filesystem::exists(sim)) GTEST_SKIP() << "tracelab-sim is not built";
    const std::string out = root.file(std::string("sim_") + c.family + ".run");
    const std::string cmd = sim + " --family " + c.family +
                            " --circuit kart --laps 2 --seed 11 --quiet " + c.extra + " -o " + out;
    ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
    const std::string stem = out.substr(0, out.size() - 4);
    const Truth truth = ReadTruth(stem + ".truth.csv");
    ASSERT_GT(truth.speed.size(), 1000u);

    UseProfile(c.profile, Vehicle::Car);
    test::EnableAllVariables();
    ASSERT_TRUE(CopyFileReplacing(stem + ".car", Paths().CarCfgPath));
    ui.yesNoAnswers.push_back(false);  // not now: the test converts
    LoadDataFromFile(out);
    ASSERT_EQ(Store().RunCount, 1);
    const RunRecord& r = Store().RunInfo[1];
    const int32_t allocated = r.RunEnd;
    WipeRunData(1);
    if (c.profile == Family::HX40)
        ConvertRawToRunData_HX40(1);
    else if (c.profile == Family::SV63)
        ConvertRawToRunData_SV63(1);
    else
        ConvertRawToRunData_MQ7(1);
    EXPECT_EQ(r.RunEnd, allocated);
    const int32_t rows = std::min<int32_t>(r.RunEnd - r.RunStart + 1, int32_t(truth.speed.size()));
    EXPECT_GE(rows, static_cast<int32_t>(truth.speed.size()) - 2);

    const int32_t period = (c.profile == Family::SV63) ? std::max<int>(1, r.HeaderBytes[0]) : 1;
    Stats accLong, accLat, speed, pos, rpm, time, wheel;
    const ConversionState& cs = Conversion();
    // The origin in fractional degrees (HX40 keeps degrees and minutes).
    auto degrees = [&](double v) {
        if (c.profile != Family::HX40) return v;
        const double a = std::fabs(v), d = std::trunc(a / 100);
        return std::copysign(d + (a - d * 100) / 60, v);
    };
    const double oLat = degrees(cs.GpsOriginLat), oLon = degrees(cs.GpsOriginLong);
    for (int32_t i = 0; i < rows; ++i) {
        const int32_t row = r.RunStart + i;
        time.Add(Row(slot::Time, row) - i / 100.0);
        // A meter frame at a longer period fills its rows with one reading,
        // the one of its first row.
        const int32_t sampled = i - i % period;
        accLong.Add(Row(slot::AccelLong, row) - truth.longG[sampled]);
        accLat.Add(Row(slot::AccelLat, row) - truth.latG[sampled]);
        if (c.profile == Family::HX40 || c.profile == Family::MQ7)
            if (i > 200 && truth.rpm[i] > 1500)
                rpm.Add(Row(slot::EngineSpeed, row) / truth.rpm[i] - 1);
        if (c.profile == Family::HX40 && i > 200 && truth.speed[i] > 20)
            wheel.Add(Row(slot::WheelSpeedKph, row) / truth.speed[i] - 1);
        const float v = Row(slot::SpeedKph, row);
        // The SW63 meter's speed is its own 100 Hz record, not the fix's: its
        // fixes show as a position that differs from both neighbours (the
        // rows after the mark were held from the last fix before the record
        // arrived).
        auto differs = [&](int32_t other) {
            return Row(slot::PositionX, row) != Row(slot::PositionX, other) ||
                   Row(slot::PositionY, row) != Row(slot::PositionY, other);
        };
        const bool sw63Fix = c.profile == Family::SW63 && i > 0 && i + 1 < rows &&
                             differs(row - 1) && differs(row + 1);
        const bool fix = c.profile == Family::SW63 ? sw63Fix : v > 0;
        if (v > 0) speed.Add(v - truth.speed[i]);
        if (fix) {
            double x = 0, y = 0;
            GpsCoord_FractDegree(truth.lat[i], truth.lon[i], oLat, oLon, x, y);
            pos.Add(std::hypot(Row(slot::PositionX, row) - x, Row(slot::PositionY, row) - y));
        }
    }
    std::printf(
        "[ %s ] rows %d; time max err %.4f s; accel long mean %+.4f rms %.4f g; lat mean "
        "%+.4f rms %.4f g; speed at %d fixes (%d positions) mean %+.3f rms %.3f kph; position rms "
        "%.2f m "
        "max %.2f m; rpm rms %.2f%%; wheel speed rms %.2f%%\n",
        c.family, rows, time.maxAbs, accLong.Mean(), accLong.Rms(), accLat.Mean(), accLat.Rms(),
        speed.n, pos.n, speed.Mean(), speed.Rms(), pos.Rms(), pos.maxAbs, rpm.Rms() * 100,
        wheel.Rms() * 100);
    EXPECT_LT(time.maxAbs, 1e-4);
    // Sensor noise 0.01 g, bias 0.015 / -0.01 g, 1/256 g steps.
    EXPECT_LT(accLong.Rms(), 0.04);
    EXPECT_LT(accLat.Rms(), 0.04);
    EXPECT_GT(pos.n, rows / 150);
    EXPECT_GT(speed.n, rows / 150);
    EXPECT_LT(std::fabs(speed.Mean()), 0.5);
    EXPECT_LT(speed.Rms(), 1.5);
    // GPS noise 0.3 m per axis, wandering.
    EXPECT_LT(pos.Rms(), 2.0);
    if (wheel.n > 0) {
        EXPECT_LT(wheel.Rms(), 0.03);
    }
    if (rpm.n > 0) {
        EXPECT_LT(rpm.Rms(), 0.05);
    }
}

// A damaged MQ7 recording: corrupted bytes and clock jumps the reader can
// repair. The conversion counts the damage in Details and every row away
// from the damage still agrees with the truth.
class DamagedRecording : public test::EngineTest {};

TEST_F(DamagedRecording, Mq7RecoversAndCountsTheDamage) {
    const std::string sim = std::string(TRACELAB_BIN_DIR) + "/tracelab-sim";
    if (!std::filesystem::exists(sim)) GTEST_SKIP() << "tracelab-sim is not built";
    const std::string out = root.file("damaged.run");
    const std::string cmd = sim + " --family mq7 --circuit kart --laps 2 --seed 5 --quiet " +
                            "--faults corrupt=0.0005,timejumps=3 -o " + out;
    ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
    const std::string stem = out.substr(0, out.size() - 4);
    const Truth truth = ReadTruth(stem + ".truth.csv");
    UseProfile(Family::MQ7, Vehicle::Car);
    test::EnableAllVariables();
    ASSERT_TRUE(CopyFileReplacing(stem + ".car", Paths().CarCfgPath));
    ui.yesNoAnswers.push_back(false);
    LoadDataFromFile(out);
    ASSERT_EQ(Store().RunCount, 1);
    const RunRecord& r = Store().RunInfo[1];
    const int32_t allocated = r.RunEnd;
    WipeRunData(1);
    ConvertRawToRunData_MQ7(1);
    EXPECT_EQ(r.RunEnd, allocated);
    const size_t at = r.Details.find(" individual data samples, and ");
    ASSERT_NE(at, std::string::npos) << r.Details;
    const int errors = std::atoi(r.Details.c_str() + at + 30);
    EXPECT_GT(errors, 100);  // some 200 bytes were damaged
    // Most rows keep their true lateral acceleration; a damaged record costs
    // its own row (held from the row before).
    const int32_t rows = std::min<int32_t>(r.RunEnd - r.RunStart + 1, int32_t(truth.latG.size()));
    int good = 0;
    for (int32_t i = 0; i < rows; ++i)
        if (std::fabs(Row(slot::AccelLat, r.RunStart + i) - truth.latG[i]) < 0.08) ++good;
    std::printf("[ damaged mq7 ] %d errors counted; %d of %d rows within 0.08 g of the truth\n",
                errors, good, rows);
    EXPECT_GT(good, rows * 95 / 100);
    EXPECT_GT(rows, static_cast<int32_t>(truth.latG.size()) - 5);
}

// Two runs in memory: the second lies behind the first in RawData and
// RunData, its time base is not its RunStart, and its rows still agree.
TEST_P(SimulatedRuns, SecondRunInMemoryConvertsAlike) {
    const Case c = GetParam();
    const std::string sim = std::string(TRACELAB_BIN_DIR) + "/tracelab-sim";
    if (!std::filesystem::exists(sim)) GTEST_SKIP() << "tracelab-sim is not built";
    UseProfile(c.profile, Vehicle::Car);
    test::EnableAllVariables();
    std::vector<std::string> stems;
    for (int seed : {21, 22}) {
        const std::string out =
            root.file(std::string("two_") + c.name + std::to_string(seed) + ".run");
        const std::string cmd = sim + " --family " + c.family + " --circuit kart --laps 1 --seed " +
                                std::to_string(seed) + " --quiet " + c.extra + " -o " + out;
        ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
        stems.push_back(out.substr(0, out.size() - 4));
        ASSERT_TRUE(CopyFileReplacing(stems.back() + ".car", Paths().CarCfgPath));
        ui.yesNoAnswers.push_back(false);
        LoadDataFromFile(out);
    }
    ASSERT_EQ(Store().RunCount, 2);
    for (int run : {1, 2}) {
        const RunRecord& r = Store().RunInfo[run];
        const int32_t allocated = r.RunEnd;
        WipeRunData(run);
        if (c.profile == Family::HX40)
            ConvertRawToRunData_HX40(run);
        else if (c.profile == Family::SV63)
            ConvertRawToRunData_SV63(run);
        else
            ConvertRawToRunData_MQ7(run);
        EXPECT_EQ(r.RunEnd, allocated);
        const Truth truth = ReadTruth(stems[run - 1] + ".truth.csv");
        const int32_t period = (c.profile == Family::SV63) ? std::max<int>(1, r.HeaderBytes[0]) : 1;
        const int32_t rows =
            std::min<int32_t>(r.RunEnd - r.RunStart + 1, int32_t(truth.latG.size()));
        Stats lat, time;
        for (int32_t i = 0; i < rows; ++i) {
            lat.Add(Row(slot::AccelLat, r.RunStart + i) - truth.latG[i - i % period]);
            time.Add(Row(slot::Time, r.RunStart + i) - i / 100.0);
        }
        EXPECT_LT(lat.Rms(), 0.04) << run;
        EXPECT_LT(time.maxAbs, 1e-4) << run;
        EXPECT_GT(rows, 1000);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Families, SimulatedRuns,
    ::testing::Values(Case{"hx40", "hx40", Family::HX40, ""}, Case{"mq7", "mq7", Family::MQ7, ""},
                      Case{"sw63", "sw63", Family::SW63, ""},
                      Case{"sv63", "sv63", Family::SV63, ""},
                      Case{"sv63_period2", "sv63", Family::SV63, "--period 2"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tl
