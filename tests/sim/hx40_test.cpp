#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "sim/run_file.h"
#include "sim_readers.h"

namespace tl::sim {
namespace {

using test::Planes;

bool ValidNumber(const std::string& s) {
    if (s.empty()) return false;
    char* end = nullptr;
    std::strtod(s.c_str(), &end);
    return *end == '\0';
}

double DegMinToDeg(double v) {
    const double d = std::trunc(v / 100.0);
    return d + (v - d * 100.0) / 60.0;
}

struct Hx40Fixture : ::testing::Test {
    void Build(SimConfig config) {
        std::string error;
        ASSERT_TRUE(RunSimulation(config, out, error)) << error;
        ASSERT_TRUE(test::ReadPlanes(RunFileBytes(out.raw), planes));
    }
    // Sentences in frame order, with the row of the normal frame after each.
    void Sentences(std::vector<std::string>& text, std::vector<int>& rowAfter) const {
        const int rawEnd = planes.n - 1;
        int row = 0;
        for (int i = 0; i <= rawEnd; ++i) {
            if (i > 9 && i < rawEnd - 8 && (planes.At(i - 1, 3) & 1) &&
                !(planes.At(i - 8, 3) & 1)) {
                std::string s;
                for (int k = 0; k < 56; ++k)
                    s += static_cast<char>(planes.At(i + 6 - k / 8, k % 8 + 1));
                text.push_back(s);
                rowAfter.push_back(row);
                i += 7;
            }
            ++row;
        }
    }
    SimOutput out;
    Planes planes;
};

TEST_F(Hx40Fixture, FileLayoutAndRowCountMatchTheSimulation) {
    Build(test::QuietConfig(Family::HX40, "road", 2, 11));
    EXPECT_EQ(planes.type, 1);
    EXPECT_EQ(planes.n, out.raw.frames);
    EXPECT_EQ(planes.header[5], 64);  // analogue 2 on the 12 V span
    EXPECT_EQ(test::CountRowsHX40(planes), static_cast<int>(out.trajectory.rows.size()));
    EXPECT_EQ(out.raw.rows, static_cast<int>(out.trajectory.rows.size()));
    EXPECT_EQ(out.raw.expectedRows, out.raw.rows);
    // Only the frame before a block carries the GPS marker.
    std::vector<std::string> text;
    std::vector<int> rowAfter;
    Sentences(text, rowAfter);
    int markers = 0;
    for (int i = 0; i < planes.n; ++i) {
        const bool block =
            i > 9 && i < planes.n - 9 && (planes.At(i - 1, 3) & 1) && !(planes.At(i - 8, 3) & 1);
        if (block) i += 7;
        if (i < planes.n) markers += planes.At(i, 3) & 1;
    }
    EXPECT_EQ(static_cast<size_t>(markers), out.raw.fixes.size());
    EXPECT_EQ(text.size(), out.raw.fixes.size());
    EXPECT_EQ(planes.n, out.raw.rows + 7 * static_cast<int>(text.size()));
}

TEST_F(Hx40Fixture, SentencesSplitIntoValidFieldsAndRecoverTheFixOfNinetyRowsBefore) {
    Build(test::QuietConfig(Family::HX40, "road", 1, 12));
    std::vector<std::string> text;
    std::vector<int> rowAfter;
    Sentences(text, rowAfter);
    ASSERT_GT(text.size(), 50u);
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string& s = text[i];
        ASSERT_EQ(s.size(), 56u);
        const std::vector<std::string> f = test::SplitFields(s);
        ASSERT_EQ(f.size(), 9u) << s;
        EXPECT_TRUE(f[0].empty());
        for (int k : {1, 3, 5, 7}) EXPECT_TRUE(ValidNumber(f[k])) << s;
        EXPECT_TRUE(f[4] == "N" || f[4] == "S") << s;
        EXPECT_TRUE(f[6] == "E" || f[6] == "W") << s;
        ASSERT_EQ(f[2].size(), 1u);
        EXPECT_GE(f[2][0], '5');
        EXPECT_LE(f[2][0], '<');  // 5 to 12 satellites
        // NMEA-style checksum at the end.
        const size_t star = s.rfind('*');
        ASSERT_EQ(star, 53u);
        unsigned x = 0;
        for (size_t k = 0; k < star; ++k) x ^= static_cast<unsigned char>(s[k]);
        EXPECT_EQ(std::strtoul(s.substr(star + 1).c_str(), nullptr, 16), x);
        // The road circuit lies south and west: the signs come from the letters.
        EXPECT_EQ(f[4], "S");
        EXPECT_EQ(f[6], "W");
        const double lat = -DegMinToDeg(std::atof(f[3].c_str()));
        const double lon = -DegMinToDeg(std::atof(f[5].c_str()));
        const int row = rowAfter[i] - 90;
        ASSERT_GE(row, 0);
        const TruthRow& t = out.trajectory.rows[row];
        double x0, y0;
        LatLonToPlane(lat, lon, out.circuit.originLat, out.circuit.originLon, x0, y0);
        EXPECT_NEAR(x0, t.x, 0.2) << "sentence " << i;
        EXPECT_NEAR(y0, t.y, 0.2) << "sentence " << i;
        EXPECT_NEAR(std::atof(f[7].c_str()) * 0.5144444, t.speed, 0.006);
        // Once a second, UTC time in step with the run.
        const long hhmmss = std::atol(f[1].c_str());
        const long secs = hhmmss / 10000 * 3600 + hhmmss / 100 % 100 * 60 + hhmmss % 100;
        EXPECT_EQ(secs, static_cast<long>(std::floor(13 * 3600 + 5 * 60 + t.time)));
    }
}

TEST_F(Hx40Fixture, NormalFramesCarryAccelerationPulsesAndBeacon) {
    Build(test::QuietConfig(Family::HX40, "kart", 2, 13));
    std::vector<std::string> text;
    std::vector<int> rowAfter;
    Sentences(text, rowAfter);
    // Walk the normal frames with their rows.
    const VehicleParams& v = out.vehicle;
    const int rawEnd = planes.n - 1;
    int row = 0;
    double wheelPulses = 0.0, wheelTruth = 0.0, enginePulses = 0.0, engineTruth = 0.0;
    int beaconRows = 0, ratesChecked = 0;
    double lastWheelAt = -1.0, rateSum = 0.0;
    int rateFrames = 0;
    for (int i = 0; i <= rawEnd; ++i) {
        if (i > 9 && i < rawEnd - 8 && (planes.At(i - 1, 3) & 1) && !(planes.At(i - 8, 3) & 1))
            i += 7;
        const TruthRow& t = out.trajectory.rows[row];
        const int v8 = planes.At(i, 8);
        double lon = (planes.At(i, 4) + ((v8 & 16) ? 256 : 0)) / 256.0;
        if (v8 & 32) lon = -lon;
        double lat = (planes.At(i, 5) + ((v8 & 64) ? 256 : 0)) / 256.0;
        if (!(v8 & 128)) lat = -lat;
        ASSERT_NEAR(lon, t.accelLong / kGravity, 0.5 / 256 + 1e-9) << "row " << row;
        ASSERT_NEAR(lat, t.accelLat / kGravity, 0.5 / 256 + 1e-9) << "row " << row;
        const int wc = v8 & 3, ec = (v8 >> 2) & 3;
        const int wheelT = (planes.At(i, 6) * 8 + ((planes.At(i, 3) >> 4) & 7)) * 32;
        const int engineT = (planes.At(i, 7) * 8 + ((planes.At(i, 3) >> 1) & 7)) * 32;
        ASSERT_GE(wheelT, 19487);
        ASSERT_GE(engineT, 19487);
        if (wc == 0) {
            ASSERT_EQ(wheelT, 65504);
        }
        // The rate from the timers: pulses over the ticks between the last
        // pulses of two frames, a frame being 46048 ticks of 0.01 s, against
        // the mean true rate over the frames between.
        const double trueHz = t.speed / v.tyreCircumference * v.wheelPulsesRev;
        rateSum += trueHz;
        ++rateFrames;
        if (wc > 0) {
            const double at = row * 46048.0 + (wheelT - 19487);
            if (lastWheelAt >= 0.0 && t.speed > 3.0) {
                const double hz = wc / ((at - lastWheelAt) * 0.01 / 46048.0);
                ASSERT_NEAR(hz, rateSum / rateFrames, 0.03 * hz) << "row " << row;
                ++ratesChecked;
            }
            lastWheelAt = at;
            rateSum = 0.0;
            rateFrames = 0;
        }
        wheelPulses += wc;
        enginePulses += ec;
        wheelTruth += t.speed / v.tyreCircumference * v.wheelPulsesRev * 0.01;
        engineTruth += t.rpm / 60.0 * v.ignitionPulsesRev * 0.01;
        beaconRows += (planes.At(i, 3) & 128) ? 1 : 0;
        ASSERT_EQ((planes.At(i, 3) & 128) != 0, t.beacon);
        ++row;
    }
    EXPECT_EQ(row, static_cast<int>(out.trajectory.rows.size()));
    EXPECT_NEAR(wheelPulses, wheelTruth, 1.0);
    EXPECT_NEAR(enginePulses, engineTruth, 1.0);
    EXPECT_GT(wheelPulses, 1000);
    EXPECT_GT(ratesChecked, 1000);
    EXPECT_EQ(beaconRows, 3 * 3);  // three crossings of the line, three rows each
}

TEST_F(Hx40Fixture, MalformedSentencesFailValidationAndDroppedFixesLeaveNoBlock) {
    SimConfig c = test::QuietConfig(Family::HX40, "oval", 2, 14);
    c.encode.faults.badSentences = 0.3;
    c.encode.faults.dropGps = 0.2;
    Build(c);
    std::vector<std::string> text;
    std::vector<int> rowAfter;
    Sentences(text, rowAfter);
    ASSERT_EQ(text.size(), out.raw.fixes.size());
    int bad = 0;
    for (const std::string& s : text) {
        const std::vector<std::string> f = test::SplitFields(s);
        const bool valid = f.size() == 9 && f[0].empty() && ValidNumber(f[1]) &&
                           ValidNumber(f[3]) && ValidNumber(f[5]) && ValidNumber(f[7]) &&
                           (f[4] == "N" || f[4] == "S") && (f[6] == "E" || f[6] == "W");
        bad += valid ? 0 : 1;
    }
    EXPECT_EQ(bad, out.raw.malformedSentences);
    EXPECT_GT(bad, 10);
    EXPECT_GT(out.raw.droppedFixes, 10);
    // Fixes come every 100 rows; dropped ones leave longer gaps but no rows go missing.
    EXPECT_EQ(test::CountRowsHX40(planes), static_cast<int>(out.trajectory.rows.size()));
    for (size_t i = 1; i < rowAfter.size(); ++i)
        EXPECT_EQ((rowAfter[i] - rowAfter[i - 1]) % 100, 0);
}

}  // namespace
}  // namespace tl::sim
