// The plane families: HX40 frames with ASCII GPS blocks and SV63 frames with
// binary GPS blocks, built byte by byte as the loggers write them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "convert/accel_channels.h"
#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "convert_helpers.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::Frame;
using test::Row;

// A normal frame with accelerations (g) and the beacon bit.
Frame NormFrame(double longG, double latG, bool beacon = false) {
    Frame f{};
    auto mag = [](double g, uint8_t& byte, bool& over) {
        double a = std::fabs(g);
        over = a >= 1.0;
        if (over) a -= 1.0;
        byte = static_cast<uint8_t>(std::lround(a * 256.0) > 255 ? 255 : std::lround(a * 256.0));
    };
    bool overLong = false, overLat = false;
    mag(longG, f[3], overLong);
    mag(latG, f[4], overLat);
    f[7] = static_cast<uint8_t>((overLong ? 16 : 0) | (longG < 0 ? 32 : 0) | (overLat ? 64 : 0) |
                                (latG > 0 ? 128 : 0));
    if (beacon) f[2] |= 128;
    return f;
}

std::string Sentence(const std::string& body) {
    std::string s = body;
    s.resize(56, ' ');
    return s;
}

// Appends a GPS block: the frame before it carries the marker; the sentence
// reads from the last of the seven frames to the first.
void AppendBlock(std::vector<Frame>& frames, const std::string& sentence) {
    frames.back()[2] |= 1;
    std::vector<Frame> block(7);
    for (int k = 0; k < 7; ++k)
        for (int v = 0; v < 8; ++v) block[6 - k][v] = static_cast<uint8_t>(sentence[k * 8 + v]);
    frames.insert(frames.end(), block.begin(), block.end());
}

class Hx40Frames : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::HX40, Vehicle::Car);
        test::EnableAllVariables();
        Conversion().ResetStartValues();
        SetTimeZoneBiasMinutes(0);
    }
    void TearDown() override {
        UseSystemTimeZoneBias();
        EngineTest::TearDown();
    }
};

// Five blocks, 100 normal frames apart: the first two never count, the third
// sets the origin 90 rows back, the fourth has three satellites, the fifth a
// lower-case hemisphere.
// The satellite count of a block fills the 220 rows from 89 before to 130
// after the row the block is met at, only while that row lies above
// RunStart + 90 and below RunEnd - 311: a block of three satellites after
// `before` normal frames, with `after` normal frames behind it, is met at
// row before + 1 of a run of before + after rows.
TEST_F(Hx40Frames, SatelliteCountFillsOnlyInsideItsMargins) {
    struct Case {
        int before, after;
        bool fills;
    };
    for (const Case c :
         {Case{90, 400, false}, Case{91, 400, true}, Case{200, 312, false}, Case{200, 313, true}}) {
        std::vector<Frame> frames;
        for (int i = 0; i < c.before; ++i) frames.push_back(NormFrame(0.1, 0.1));
        AppendBlock(frames, Sentence(",123400,3,5130.0000,N,00010.0000,W,20.0,123.4"));
        for (int i = 0; i < c.after; ++i) frames.push_back(NormFrame(0.1, 0.1));
        test::LoadPlaneRun(frames);
        ConvertRawToRunData_HX40(1);
        const RunRecord& r = test::Run1();
        ASSERT_EQ(r.RunEnd, c.before + c.after) << c.before << "/" << c.after;
        const int32_t met = c.before + 1;
        const float count = c.fills ? 3.0f : 0.0f;
        EXPECT_EQ(Row(45, met - 89), count) << c.before << "/" << c.after;
        EXPECT_EQ(Row(45, met), count) << c.before << "/" << c.after;
        EXPECT_EQ(Row(45, met + 130), count) << c.before << "/" << c.after;
        EXPECT_EQ(Row(45, met - 90), 0.0f) << c.before << "/" << c.after;
        if (met + 131 <= r.RunEnd) {
            EXPECT_EQ(Row(45, met + 131), 0.0f);
        }
    }
}

// A GPS block is a block only from frame RawStart + 10 on: a block whose
// first frame is frame 9 of the run is read as seven normal rows, by the count
// and by the conversion alike, so the run's last row still holds its last
// frame; from frame 10 on the block and the frame after it make one row.
TEST_F(Hx40Frames, BlocksStartOnlyPastTheFirstTenFrames) {
    for (const int before : {9, 10}) {
        std::vector<Frame> frames;
        for (int i = 0; i < before; ++i) frames.push_back(NormFrame(0.25, -0.5));
        AppendBlock(frames, Sentence(",123400,8,5130.0000,N,00010.0000,W,20.0,123.4"));
        // The marker bit clear inside the block, so that only the frame
        // before it can start one.
        for (size_t f = frames.size() - 7; f < frames.size(); ++f) frames[f][2] &= 0xFE;
        for (int i = 0; i < 30; ++i) frames.push_back(NormFrame(0.25, -0.5));
        test::LoadPlaneRun(frames);
        ConvertRawToRunData_HX40(1);
        const RunRecord& r = test::Run1();
        const int32_t rows = before == 9 ? before + 7 + 30 : before + 30;
        ASSERT_EQ(r.RunEnd, rows) << before;
        EXPECT_FLOAT_EQ(Row(slot::AccelLong, r.RunEnd), 0.25f) << before;
        EXPECT_FLOAT_EQ(Row(slot::Time, r.RunEnd), (r.RunEnd - 1) / 100.0f) << before;
        if (before == 10) {
            EXPECT_FLOAT_EQ(Row(slot::AccelLong, 11), 0.25f);  // the frame after the block
        } else {
            EXPECT_NE(Row(slot::AccelLong, 10), 0.25f);  // the sentence's text read as a frame
        }
    }
}

TEST_F(Hx40Frames, GpsBlocksLatencyOriginAndScore) {
    std::vector<Frame> frames;
    for (int i = 0; i < 100; ++i) frames.push_back(NormFrame(0.25, -0.5, i == 50));
    const char* sats[5] = {"8", "8", "8", "3", "8"};
    for (int k = 0; k < 5; ++k) {
        char body[80];
        std::snprintf(body, sizeof body, ",1234%02d,%s,5130.%04d,%s,00010.%04d,W,%d.0,123.4", k,
                      sats[k], k * 100, k == 4 ? "n" : "N", k * 100, 20 + k);
        AppendBlock(frames, Sentence(body));
        for (int i = 0; i < 100; ++i) frames.push_back(NormFrame(0.25, -0.5));
    }
    test::LoadPlaneRun(frames);
    const RunRecord& r = test::Run1();
    ASSERT_EQ(r.RunStart, 1);
    ASSERT_EQ(r.RunEnd, static_cast<int32_t>(frames.size()) - 35);  // the blocks take no rows
    const int32_t allocatedEnd = r.RunEnd;
    ConvertRawToRunData_HX40(1);
    EXPECT_EQ(r.RunEnd, allocatedEnd);

    EXPECT_FLOAT_EQ(Row(slot::Time, 1), 0.0f);
    EXPECT_FLOAT_EQ(Row(slot::Time, r.RunEnd), (r.RunEnd - 1) / 100.0f);
    EXPECT_FLOAT_EQ(Row(slot::AccelLong, 300), 0.25f);
    EXPECT_FLOAT_EQ(Row(slot::AccelLat, 300), -0.5f);
    EXPECT_FLOAT_EQ(Row(42, 51), 1.0f);  // the beacon of frame 50
    EXPECT_FLOAT_EQ(Row(42, 52), 0.0f);

    // Block k is met at row 101 + 100 k; its fix belongs 90 rows earlier.
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 11), -1.0f);   // first sentence ignored
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 111), -1.0f);  // second ignored
    EXPECT_NEAR(Row(slot::SpeedKph, 211), 22 * 0.5144444 * 3.6, 1e-4);
    EXPECT_NEAR(Row(slot::SpeedMph, 211), 22 * 0.5144444 * 3.6, 1e-4);
    EXPECT_FLOAT_EQ(Row(slot::PositionX, 211), 0.0f);  // the origin itself
    EXPECT_NEAR(Conversion().GpsOriginLat, 5130.02, 1e-9);
    EXPECT_NEAR(Conversion().GpsOriginLong, -10.02, 1e-9);
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 311), -1.0f);  // three satellites: no fix
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 411), -1.0f);  // "n" fails validation
    // Satellite count: 220 rows per block, none in the last 311 rows.
    EXPECT_FLOAT_EQ(Row(45, 11), 0.0f);
    EXPECT_FLOAT_EQ(Row(45, 12), 8.0f);
    // The run has 600 rows: blocks from row 289 on fill nothing.
    EXPECT_FLOAT_EQ(Row(45, 331), 8.0f);
    EXPECT_FLOAT_EQ(Row(45, 332), 0.0f);
    // Score: 64, 64, 64, then 3/4 of 64 plus 9/4, then 4/5 of that plus 1/5.
    EXPECT_NEAR(Conversion().SatScore, 40.4, 1e-9);
    EXPECT_EQ(r.Details.rfind("The run is 6 seconds long. ", 0), 0u) << r.Details;
    EXPECT_NE(r.Details.find(" and was logged at 12:34:02 local time (12:34:02 gmt) . The run "
                             "origin is 5130.02 latitude and -10.02 longitude"),
              std::string::npos)
        << r.Details;
    EXPECT_NE(r.Details.find("lock score for this run is 40 ,the GPS data is therefore classified "
                             "as satisfactory, but could be improved."),
              std::string::npos);

    // A run with no GPS block reports the score of the run before.
    std::vector<Frame> plain(400, NormFrame(0, 0));
    test::LoadPlaneRun(plain);
    Conversion().LoggerSerialNumber = 77;
    ConvertRawToRunData_HX40(1);
    EXPECT_EQ(
        test::Run1().Details.rfind("Data was downloaded from device number 77.The run is 4 "
                                   "seconds long.  The satelite lock score for this run is 40",
                                   0),
        0u)
        << test::Run1().Details;
}

TEST_F(Hx40Frames, FixTooEarlyInTheRunIsDropped) {
    std::vector<Frame> frames;
    auto block = [&](int minutes) {
        char body[80];
        std::snprintf(body, sizeof body, ",120000,9,4800.%04d,N,00200.0000,E,10.0,", minutes);
        AppendBlock(frames, Sentence(body));
    };
    for (int i = 0; i < 12; ++i) frames.push_back(NormFrame(0, 0));
    block(1);
    for (int i = 0; i < 20; ++i) frames.push_back(NormFrame(0, 0));
    block(2);
    for (int i = 0; i < 20; ++i) frames.push_back(NormFrame(0, 0));
    block(3);  // third sentence, but at row 53: too early
    for (int i = 0; i < 60; ++i) frames.push_back(NormFrame(0, 0));
    block(4);  // row 113: the first that can set the origin
    for (int i = 0; i < 100; ++i) frames.push_back(NormFrame(0, 0));
    test::LoadPlaneRun(frames);
    ConvertRawToRunData_HX40(1);
    EXPECT_NEAR(Conversion().GpsOriginLat, 4800.0004, 1e-9);
    EXPECT_NEAR(Row(slot::SpeedKph, 113 - 90), 10 * 0.5144444 * 3.6, 1e-4);
    for (int32_t row = 1; row <= test::Run1().RunEnd; ++row)
        if (row != 23) {
            EXPECT_FLOAT_EQ(Row(slot::SpeedKph, row), -1.0f) << row;
        }
}

// Wheel and engine pulses: one pulse in every frame at the same point of the
// frame is one pulse per 46048 ticks; when they stop, the wheel rate decays
// as 1 over the time since the last pulse and the engine rate holds.
TEST_F(Hx40Frames, PulseTimersGiveRatesAndDecay) {
    SetConfig(Paths().CarCfgPath, "WheelPulsesRev", 2);
    SetConfig(Paths().CarCfgPath, "DrivenRollingCircVal", 1.9f);
    SetConfig(Paths().CarCfgPath, "IgntionPulsesRev", 2);
    const int timer = 48000 / 32;  // high 8 bits and low 3 bits
    auto pulsed = [&](int wheelCount, int engineCount, int engineTimer) {
        Frame f = NormFrame(0, 0);
        // Without a pulse the timer reads the end of the frame.
        const int wheelTimer = wheelCount > 0 ? timer : 2047;
        f[5] = static_cast<uint8_t>(wheelTimer >> 3);
        f[2] |= static_cast<uint8_t>((wheelTimer & 7) << 4);
        f[6] = static_cast<uint8_t>(engineTimer >> 3);
        f[2] |= static_cast<uint8_t>((engineTimer & 7) << 1);
        f[7] |= static_cast<uint8_t>(wheelCount | (engineCount << 2));
        return f;
    };
    std::vector<Frame> frames;
    for (int i = 0; i < 200; ++i) frames.push_back(pulsed(1, 1, timer));
    for (int i = 0; i < 50; ++i) frames.push_back(pulsed(0, 1, 100));  // engine timer out of frame
    for (int i = 0; i < 50; ++i) frames.push_back(pulsed(0, 0, 2047));
    test::LoadPlaneRun(frames);
    ConvertRawToRunData_HX40(1);
    const double hz = 1.0 / (46048 * 2.1701389e-7);
    EXPECT_NEAR(Row(slot::WheelSpeedKph, 150), hz / 2 * 1.9 * 3.6, 1e-2);
    EXPECT_NEAR(Row(slot::EngineSpeed, 150), hz * 60 / 2, 0.05);
    // Wheel: no pulses from row 201 on; the rate falls, never rises.
    float last = Row(slot::WheelSpeedKph, 200);
    for (int32_t row = 201; row <= 300; ++row) {
        EXPECT_LT(Row(slot::WheelSpeedKph, row), last) << row;
        last = Row(slot::WheelSpeedKph, row);
    }
    // 100 frames after the last pulse: about one hundredth of the rate.
    EXPECT_NEAR(last, hz / 2 * 1.9 * 3.6 * 46048 / (17535 + 46017 + 99 * 46048.0), 0.01);
    // Engine: a timer value below 19487 is no pulse; the last rate holds.
    EXPECT_NEAR(Row(slot::EngineSpeed, 300), hz * 60 / 2, 0.05);
}

TEST(PulseTimers, WheelTimerOutsideFrameKeepsCount) {
    PulseTimerState st;
    // Timer value 3 * 32 with one pulse: partial and rest are 0, the count
    // stands, so the rate comes from the elapsed time alone.
    WheelSpeedOfFrame(st, 1, 0, 0, 0);  // raw position 1 clears; 46048 elapsed
    const float f = WheelSpeedOfFrame(st, 2, 3 << 4, 0, 1);
    EXPECT_NEAR(f, 1.0 / (2 * 46048 * 2.1701389e-7), 1e-3);
    // Engine routine: the same frame counts as no pulse.
    PulseTimerState e;
    EXPECT_EQ(RpmOfFrame(e, 1, 0, 0, 0, 4, 0, 1), 0.0f);
    EXPECT_FALSE(e.EngineValid);
    EXPECT_EQ(RpmOfFrame(e, 2, 0, 0, 0, 4, 0, 0), 0.0f);  // pulses per rev 0 gives 0
}

class Sv63Frames : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::SV63, Vehicle::Car);
        test::EnableAllVariables();
    }
};

// Three frames of binary GPS after a frame with bit value 4 of vector 1.
void AppendSv63Block(std::vector<Frame>& frames, int32_t lat, int32_t lon, uint8_t speed) {
    frames.back()[0] |= 4;
    const auto la = static_cast<uint32_t>(lat), lo = static_cast<uint32_t>(lon);
    auto hiLo = [](Frame& f, uint8_t b) {
        f[0] = static_cast<uint8_t>((f[0] & 0xF0) | (b >> 4));
        f[1] = static_cast<uint8_t>((f[1] & 0xF0) | (b & 15));
    };
    Frame a{}, b{}, c{};
    hiLo(a, speed);
    a[4] = static_cast<uint8_t>(la >> 24);
    a[3] = static_cast<uint8_t>(la >> 16);
    b[4] = static_cast<uint8_t>(la >> 8);
    b[3] = static_cast<uint8_t>(la);
    hiLo(b, static_cast<uint8_t>(lo >> 24));
    c[4] = static_cast<uint8_t>(lo >> 16);
    c[3] = static_cast<uint8_t>(lo >> 8);
    hiLo(c, static_cast<uint8_t>(lo));
    frames.push_back(a);
    frames.push_back(b);
    frames.push_back(c);
}

TEST_F(Sv63Frames, PeriodRowsAndBinaryFixes) {
    std::vector<Frame> frames;
    for (int i = 0; i < 20; ++i) frames.push_back(NormFrame(-0.75, 1.25));
    AppendSv63Block(frames, 515000000, -1000000, 255);  // 51.5 N, 0.1 W, 204 mph
    for (int i = 0; i < 20; ++i) frames.push_back(NormFrame(-0.75, 1.25));
    AppendSv63Block(frames, 515000000 + 1000, -1, 10);  // 11 m north; 0xFF... east
    for (int i = 0; i < 20; ++i) frames.push_back(NormFrame(-0.75, 1.25));
    // Frames 2 to n - 5 give rows, but none of the three of each block.
    const int32_t normal = static_cast<int32_t>(frames.size()) - 6 - 6;
    for (int period : {4, 21, 0, 1}) {
        test::LoadPlaneRun(frames, {static_cast<uint8_t>(period), 0, 0, 0, 0, 0, 0, 0});
        const int32_t step = (period == 0 || period >= 21) ? 1 : period;
        const RunRecord& r = test::Run1();
        ASSERT_EQ(r.RunEnd - r.RunStart + 1, normal * step) << period;
        ConvertRawToRunData_SV63(1);
        EXPECT_EQ(r.Details, "Data Downloaded from Velquor's Performance Meter");
        EXPECT_FLOAT_EQ(Row(slot::Time, r.RunEnd), (r.RunEnd - 1) / 100.0f);
        EXPECT_FLOAT_EQ(Row(slot::AccelLong, r.RunEnd), -0.75f);
        EXPECT_FLOAT_EQ(Row(slot::AccelLat, r.RunEnd), 1.25f);
        // Frame 19 (the 18th that gives rows) announced the block: the fix
        // is the first row of the frame after the block.
        const int32_t fixRow = 1 + 18 * step;
        EXPECT_NEAR(Row(slot::SpeedKph, fixRow), 328.306176, 1e-3) << period;
        EXPECT_FLOAT_EQ(Row(slot::SpeedKph, fixRow - 1), -1.0f);
        EXPECT_FLOAT_EQ(Row(slot::PositionX, fixRow), 0.0f);
        EXPECT_NEAR(Conversion().GpsOriginLat, 51.5, 1e-12);
        const int32_t fix2 = 1 + 38 * step;
        EXPECT_NEAR(Row(slot::SpeedKph, fix2), 10 * 0.8 * 1.609344, 1e-4);
        double x = 0, y = 0;
        GpsCoord_FractDegree(51.5001, -1e-7, 51.5, -0.1, x, y);
        EXPECT_NEAR(Row(slot::PositionY, fix2), y, 1e-2);
        EXPECT_NEAR(Row(slot::PositionX, fix2), x, 1e-1);
        EXPECT_NEAR(Row(slot::PositionY, fix2), 11.13, 0.01);
    }
}

}  // namespace
}  // namespace tl
