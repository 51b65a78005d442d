// The MQ7/SW63 record stream, built record by record as the logger writes it.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>
#include <vector>

#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "convert/mq7_stream.h"
#include "convert_helpers.h"
#include "road/convert_driver.h"
#include "store/stream_scan.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::Row;

struct StreamBuilder {
    std::vector<uint8_t> b;
    void Rec(int id, std::vector<uint8_t> payload) {
        uint32_t sum = static_cast<uint8_t>(id);
        b.push_back(static_cast<uint8_t>(id));
        for (uint8_t x : payload) {
            b.push_back(x);
            sum += x;
        }
        b.push_back(static_cast<uint8_t>(sum & 255));
    }
    static std::vector<uint8_t> U32(uint32_t v) {
        return {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)};
    }
    static std::vector<uint8_t> U24(uint32_t v) {
        return {uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)};
    }
    void Tick(uint32_t t) { Rec(9, U24(t)); }
    // Sign-magnitude words with the top bit meaning positive.
    void Accel(double lat, double lon) {
        auto w = [](double g, std::vector<uint8_t>& out) {
            const double a = std::fabs(g);
            const int whole = static_cast<int>(a);
            out.push_back(static_cast<uint8_t>((whole & 127) | (g >= 0 ? 128 : 0)));
            out.push_back(static_cast<uint8_t>(std::lround((a - whole) * 256)));
        };
        std::vector<uint8_t> p;
        w(lat, p);
        w(lon, p);
        Rec(8, p);
    }
    void Position(double lonDeg, double latDeg, uint32_t accCm) {
        std::vector<uint8_t> p =
            U32(static_cast<uint32_t>(static_cast<int32_t>(std::lround(lonDeg * 1e7))));
        const auto la = U32(static_cast<uint32_t>(static_cast<int32_t>(std::lround(latDeg * 1e7))));
        p.insert(p.end(), la.begin(), la.end());
        const auto a = U32(accCm);
        p.insert(p.end(), a.begin(), a.end());
        Rec(10, p);
    }
    void Speed(uint32_t cmPerS, uint32_t accCm) {
        std::vector<uint8_t> p = U32(cmPerS);
        const auto a = U32(accCm);
        p.insert(p.end(), a.begin(), a.end());
        Rec(11, p);
    }
    void Pulse(bool on) { Rec(13, {uint8_t(on ? 1 : 0)}); }
};

class Stream : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableAllVariables();
        SetConfig(Paths().CarCfgPath, "IgntionPulsesRev", 2);
        ui.secondsSinceMidnight = 15 * 3600.0;  // afternoon: T(r) reads Time [s]
    }
    // ticks 1 to n with accelerations, every 10th an analogue, the pulse on
    // the ticks in pulses, a fix `delay` ticks later.
    StreamBuilder Build(int n, const std::vector<int>& pulses, int delay, uint32_t posAcc,
                        uint32_t speedAcc) {
        StreamBuilder s;
        s.Rec(6, {0x12, 0x67, 2, 7});
        for (int k = 0; k < n; ++k) {
            s.Tick(1 + k);
            s.Accel(0.5, -0.25 - k * 0.001);
            if (k % 10 == 0) s.Rec(27, {0x0B, 0xB8});  // 3.000 V to Analogue 1
            s.Rec(18, StreamBuilder::U24(60000));      // 100 Hz
            bool on = false;
            for (int p : pulses) {
                if (k == p) on = true;
                if (k == p + delay) {
                    s.Position(-46.7 + k * 1e-5, -23.7, posAcc);
                    s.Speed(2000, speedAcc);
                    s.Rec(7, StreamBuilder::U32(100000 + k));
                }
            }
            s.Pulse(on);
        }
        return s;
    }
};

TEST_F(Stream, ChannelsHoldAndGpsAtTheMark) {
    StreamBuilder s = Build(600, {100, 200, 300}, 5, 240, 50);
    s.Rec(19, {3, 1, 2, 3});  // serial data: L = 3, then the jump uses the byte 1
    s.Rec(30, StreamBuilder::U24(1000));
    test::LoadStreamRun(s.b);
    const RunRecord& r = test::Run1();
    ASSERT_EQ(r.RunEnd - r.RunStart, 599);
    ConvertRawToRunData_MQ7(1);
    EXPECT_EQ(r.RunEnd - r.RunStart, 599);
    EXPECT_NE(r.Details.find(" individual data samples, and 6 data formatting errors. Downloaded "
                             "from logger serial #4711, using firmware version 2-7."),
              std::string::npos)
        << r.Details;  // the 6 bytes of the serial record are unknown to the scan
    EXPECT_EQ(Conversion().LoggerSerialNumber, 4711);
    EXPECT_FLOAT_EQ(Row(slot::Time, 1), 0.0f);
    EXPECT_FLOAT_EQ(Row(slot::Time, 600), 5.99f);
    EXPECT_FLOAT_EQ(Row(slot::AccelLat, 50), 0.5f);
    EXPECT_NEAR(Row(slot::AccelLong, 50), -0.25 - 0.049, 1.0 / 256);
    // Analogue 1 comes every 10th tick; the rows between hold it.
    EXPECT_FLOAT_EQ(Row(29, 11), 3.0f);
    EXPECT_FLOAT_EQ(Row(29, 15), 3.0f);
    EXPECT_NEAR(Row(slot::EngineSpeed, 300), 100.0 * 60 / 2, 1e-3);
    // The fix of the pulse at tick 100 (row 101) lands on row 101.
    EXPECT_NEAR(Row(slot::SpeedKph, 101), 72.0, 1e-4);
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 102), -1.0f);  // no hold for the -1 marks
    EXPECT_FLOAT_EQ(Row(44, 101), 1.2f);               // half the accuracy
    EXPECT_FLOAT_EQ(Row(44, 350), 1.2f);               // carried forward
    EXPECT_FLOAT_EQ(Row(43, 120), 0.5f);
    EXPECT_FLOAT_EQ(Row(slot::PositionX, 101), 0.0f);  // origin
    EXPECT_NEAR(Conversion().GpsOriginLong, -46.7 + 105e-5, 1e-9);
    double x = 0, y = 0;
    GpsCoord_FractDegree(-23.7, -46.7 + 205e-5, -23.7, -46.7 + 105e-5, x, y);
    EXPECT_NEAR(Row(slot::PositionX, 201), x, 1e-3);
    // GPS time of week: written from the last written row (105, the rows
    // after it were held while still empty) to 4 rows past the mark, the
    // time read less ten times the time difference to that row.
    EXPECT_NEAR(Row(46, 201), 100205.0 - 0.96 * 10, 1e-2);
    EXPECT_NEAR(Row(46, 204), 100205.0 - 0.96 * 10 + 0.03 * 10, 1e-2);
    EXPECT_NEAR(Row(46, 150), 100205.0 - 0.96 * 10 - 0.51 * 10, 1e-2);
    // The serial record and the linear speed at the last row.
    EXPECT_FLOAT_EQ(Row(51, 600), 3.0f);
}

// Ids 20 to 27 go to the slots of the logger's analogue inputs in their own
// order (not a running sequence); id 30 is the linear speed input.
TEST_F(Stream, AnalogueIdsAndTheLinearSpeedLandInTheirSlots) {
    // id -> slot, as the logger's channel table has them.
    const std::pair<int, int> table[] = {{20, 36}, {21, 34}, {22, 35}, {23, 33},
                                         {24, 32}, {25, 30}, {26, 31}, {27, 29}};
    StreamBuilder s;
    s.Tick(1);
    s.Tick(2);
    for (const auto& [id, slotNumber] : table) {
        const int mv = 1000 + id * 10;  // 1.200 V for id 20 ... 1.270 V for id 27
        s.Rec(id, {uint8_t(mv >> 8), uint8_t(mv & 255)});
    }
    s.Rec(30, StreamBuilder::U24(50000));
    s.Tick(3);
    test::LoadStreamRun(s.b);
    ConvertRawToRunData_MQ7(1);
    const int32_t row = test::Run1().RunStart + 1;  // the second tick's row
    for (const auto& [id, slotNumber] : table)
        EXPECT_FLOAT_EQ(Row(slotNumber, row), (1000 + id * 10) / 1000.0f) << "id " << id;
    // 50000 x 0.001379060159 = 68.953 kph, and the miles beside it.
    EXPECT_NEAR(Row(slot::SpeedKph, row), 50000 * 0.001379060159, 1e-4);
    EXPECT_NEAR(Row(slot::SpeedMph, row), 50000 * 0.001379060159 * 0.621371192, 1e-4);
}

// A serial record is checked over its length byte L plus 3, but the reader
// then moves on by 3 plus the first byte of the serial data: with L = 2 and
// a first data byte of 5 it steps 8 bytes, over the beacon record that
// follows the 5-byte serial record.
TEST_F(Stream, SerialRecordJumpsByItsFirstDataByte) {
    StreamBuilder s;
    s.Tick(1);
    s.Tick(2);
    s.Rec(19, {2, 5, 0});  // L = 2, data 5 and 0
    s.Rec(12, {1});        // beacon on: skipped by the jump
    s.Tick(3);
    s.Rec(12, {0});
    s.Tick(4);
    test::LoadStreamRun(s.b);
    ConvertRawToRunData_MQ7(1);
    const int32_t first = test::Run1().RunStart;
    EXPECT_FLOAT_EQ(Row(51, first + 1), 2.0f);  // slot 51 gets L
    for (int32_t row = first; row <= first + 3; ++row)
        EXPECT_FLOAT_EQ(Row(slot::Time, row), (row - first) / 100.0f);
    EXPECT_FLOAT_EQ(Row(42, first + 1), 0.0f);  // the beacon was jumped over
    EXPECT_FLOAT_EQ(Row(42, first + 2), 0.0f);
}

// Before noon the GPS time of week cannot be placed by the row times (the
// time slot it would read does not exist): the difference counts as zero,
// so every row from the last written one to 4 past the mark gets the time
// as read.
TEST_F(Stream, GpsTimeBeforeNoonTakesTheTimeAsRead) {
    ui.secondsSinceMidnight = 9 * 3600.0;
    StreamBuilder s = Build(300, {100, 200}, 5, 240, 50);
    test::LoadStreamRun(s.b);
    ConvertRawToRunData_MQ7(1);
    for (int32_t row : {150, 190, 201, 205}) EXPECT_FLOAT_EQ(Row(46, row), 100205.0f) << row;
    EXPECT_FLOAT_EQ(Row(46, 101), 100105.0f);
}

// The wheel speed of the vehicle options' formula belongs to the MQ7: an
// SW63 conversion never evaluates it, a bad formula included.
TEST_F(Stream, OnlyTheMq7RunsTheWheelSpeedFormula) {
    const std::string bad = "There is an error in the definition of user defined wheel speed ";
    for (const Family family : {Family::MQ7, Family::SW63}) {
        UseProfile(family, Vehicle::Car);
        test::EnableAllVariables();
        SetConfigString(Paths().CarCfgPath, "WheelSpeedFormula", "VAR_06 * ");
        StreamBuilder s = Build(50, {}, 5, 240, 50);
        test::LoadStreamRun(s.b);
        ui.ClearRecords();
        ConvertRawToRunData(1, false);
        EXPECT_EQ(ui.Saw(ScriptedEvent::Kind::Message, bad), family == Family::MQ7)
            << (family == Family::MQ7 ? "MQ7" : "SW63");
    }
}

TEST_F(Stream, GpsWindowAndAccuracyLimits) {
    // Pulse at tick 100 with its fix 39 ticks later: used; at 200 with 40: dropped.
    {
        StreamBuilder s = Build(400, {100}, 39, 14999, 179);
        test::LoadStreamRun(s.b);
        ConvertRawToRunData_MQ7(1);
        EXPECT_TRUE(Conversion().OriginSet);  // 149.99 sets the origin
        EXPECT_NEAR(Row(slot::SpeedKph, 101), 72.0, 1e-4);
    }
    {
        StreamBuilder s = Build(400, {100}, 40, 240, 50);
        test::LoadStreamRun(s.b);
        ConvertRawToRunData_MQ7(1);
        EXPECT_FALSE(Conversion().OriginSet);
        EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 101), -1.0f);
        EXPECT_FLOAT_EQ(Row(44, 101), 0.0f);
    }
    {
        // Accuracy 150: only slot 44 at the mark; speed accuracy 1.8: no speed.
        StreamBuilder s = Build(400, {100}, 5, 15000, 180);
        test::LoadStreamRun(s.b);
        ConvertRawToRunData_MQ7(1);
        EXPECT_FALSE(Conversion().OriginSet);
        EXPECT_FLOAT_EQ(Row(44, 101), 150.0f);
        EXPECT_FLOAT_EQ(Row(44, 102), 0.0f);  // not carried forward
        EXPECT_FLOAT_EQ(Row(slot::PositionX, 101), 0.0f);
        EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 101), -1.0f);
        EXPECT_FLOAT_EQ(Row(43, 101), 1.8f);
    }
}

TEST_F(Stream, TimeIndexSteps) {
    // At tick jumpAt the index is off the expected one by `step`.
    auto run = [&](int jumpAt, int step) {
        StreamBuilder s;
        uint32_t t = 1;
        for (int k = 0; k < 100; ++k) {
            if (k == jumpAt) t = static_cast<uint32_t>(static_cast<int>(t) + step);
            s.Tick(t++);
            s.Rec(20, {0x30, 0x39});  // 12.345 V
        }
        test::LoadStreamRun(s.b);
        ConvertRawToRunData_MQ7(1);
        return test::Run1().RunEnd - test::Run1().RunStart;
    };
    EXPECT_EQ(run(50, 9), 99 + 9);  // +9 repairs: the rows in between are added
    EXPECT_FLOAT_EQ(Row(slot::Time, 55), 0.54f);
    EXPECT_FLOAT_EQ(Row(slot::Time, 109), 1.08f);
    EXPECT_EQ(run(50, 10), 99);  // +10 does not: the gap stays for the run
    EXPECT_FLOAT_EQ(Row(slot::Time, 100), 0.99f);
    EXPECT_EQ(run(50, -9), 99 - 9);  // -9 resets the count
    // -10 does not: the count and the row stay, and as the index keeps the
    // same distance every later tick lands on the same row.
    EXPECT_EQ(run(50, -10), 49);
}

TEST_F(Stream, DecodersAndChecksums) {
    const std::vector<uint8_t> freq0 = {14, 0, 0, 0, 14};
    EXPECT_EQ(DecodeFreq(freq0, 1), 0.0f);
    const std::vector<uint8_t> acc = {8, 0x81, 0x80, 0x00, 0x40};
    float lat = 0, lon = 0;
    DecodeAccelerometer(acc, 1, lat, lon);
    EXPECT_FLOAT_EQ(lat, 1.5f);
    EXPECT_FLOAT_EQ(lon, -0.25f);
    const std::vector<uint8_t> neg = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(ExtractI32(neg, 0), -1.0);
    EXPECT_EQ(ExtractU32(neg, 0), 4294967296.0f);
    // A record whose checksum is the array's last byte passes; one cut off
    // at the end fails without reading past it.
    const std::vector<uint8_t> rec = {9, 0, 0, 1, 10};
    EXPECT_TRUE(CheckCheckSumMQ7(rec, 0, 5));
    EXPECT_FALSE(CheckCheckSumMQ7(std::span<const uint8_t>(rec).first(4), 0, 5));
    EXPECT_FALSE(CheckCheckSumMQ7(rec, 3, 5));
    const std::vector<uint8_t> bad = {9, 0, 0, 1, 11};
    EXPECT_FALSE(CheckCheckSumMQ7(bad, 0, 5));
}

TEST_F(Stream, CorruptedStreamRecovers) {
    StreamBuilder s = Build(2000, {100, 600, 1100, 1600}, 5, 240, 50);
    std::vector<uint8_t> bytes = s.b;
    std::mt19937 rng(7);
    // Damage a stretch in the middle, and sprinkle single bytes.
    for (size_t i = bytes.size() / 2; i < bytes.size() / 2 + 300; ++i)
        bytes[i] = static_cast<uint8_t>(rng());
    for (int k = 0; k < 40; ++k) bytes[rng() % bytes.size()] ^= 0x5A;
    test::LoadStreamRun(bytes);
    const RunRecord& r = test::Run1();
    const int32_t rows = r.RunEnd - r.RunStart;
    ConvertRawToRunData_MQ7(1);
    EXPECT_EQ(r.RunEnd - r.RunStart, rows);
    const size_t at = r.Details.find(" individual data samples, and ");
    ASSERT_NE(at, std::string::npos);
    const int errors = std::stoi(r.Details.substr(at + 30));
    EXPECT_GT(errors, 40);
    // The records after the damage are read again.
    EXPECT_FLOAT_EQ(Row(slot::AccelLat, r.RunEnd), 0.5f);
    EXPECT_NEAR(Row(slot::EngineSpeed, r.RunEnd), 3000.0, 1e-2);
    EXPECT_NEAR(Row(slot::Time, r.RunEnd - 1), (r.RunEnd - 2) / 100.0, 1e-4);
    // Random streams never crash either.
    for (int trial = 0; trial < 20; ++trial) {
        std::vector<uint8_t> junk(5000 + trial * 37);
        for (auto& x : junk) x = static_cast<uint8_t>(rng() % 32);
        test::LoadStreamRun(junk);
        ConvertRawToRunData_MQ7(1);
        EXPECT_NE(test::Run1().Details.find("data formatting errors."), std::string::npos);
    }
}

TEST_F(Stream, TrimLookupAndSw63) {
    StreamBuilder s = Build(300, {100}, 5, 240, 50);
    test::LoadStreamRun(s.b);
    EXPECT_TRUE(StreamScanAvailable());
    const int32_t at = StreamRawIndexOfTime(1, 150);
    ASSERT_GT(at, 0);
    EXPECT_EQ(s.b[at], 9);
    EXPECT_EQ(DecodeU24(s.b, at + 1), 151);    // tick 151 starts row 150
    EXPECT_EQ(StreamRawIndexOfTime(1, 0), 6);  // after the logger record

    UseProfile(Family::SW63, Vehicle::Car);
    test::EnableAllVariables();
    test::LoadStreamRun(s.b);
    ConvertRawToRunData_MQ7(1);
    EXPECT_FLOAT_EQ(Row(slot::SpeedKph, 101), -1.0f);  // no GPS speed on this family
    EXPECT_TRUE(Conversion().OriginSet);
}

// The conversion brings each column up to date with the sample-and-hold only
// when it is next used; the result must be what holding every column at every
// tick gives. The reference walks the same stream with ManageTimeStep (which
// holds at once) and writes the channels itself. The stream has what makes
// the hold subtle: channels at irregular ticks, zeros and negative zeros
// among the values, a clock that steps back, repairs a gap and finally jumps
// too far, disabled slots sharing the "*No Data*" column, and rows that hold
// values from before the conversion.
TEST_F(Stream, DeferredHoldMatchesHoldingEveryTick) {
    UseProfile(Family::SW63, Vehicle::Car);  // no formula wheel speed after the walk
    test::EnableAllVariables();
    for (int slotNumber : {30, 33, 39})
        SetConfig(Paths().TracelabCfgPath, PlainVarName(slotNumber), 0);
    SetAvailableVars();
    ASSERT_EQ(ColumnOf(30), ColumnOf(kNoDataSlot));
    ASSERT_EQ(ColumnOf(39), ColumnOf(kNoDataSlot));

    std::mt19937 rng(11);
    StreamBuilder s;
    uint32_t t = 1;
    for (int k = 0; k < 3000; ++k) {
        if (k == 700 || k == 1500) t -= 4;  // steps back: rows are held again
        if (k == 1100) t += 5;              // repaired: rows added without a hold
        if (k == 2900) t += 12;             // too far: no hold for the rest
        s.Tick(t++);
        if (rng() % 3 != 0) {
            // 0x00 0x00 reads as -0 g.
            const uint8_t hi = (rng() % 4 == 0) ? 0 : static_cast<uint8_t>(rng());
            s.Rec(8, {hi, static_cast<uint8_t>(hi ? rng() : 0), static_cast<uint8_t>(rng()), 0});
        }
        if (rng() % 5 == 0) {
            const uint8_t mv = (rng() % 3 == 0) ? 0 : static_cast<uint8_t>(rng());
            s.Rec(20 + static_cast<int>(rng() % 8), {0, mv});
        }
        if (rng() % 7 == 0)
            s.Rec(14 + static_cast<int>(rng() % 4),
                  StreamBuilder::U24((rng() % 4 == 0) ? 0 : 1000 + rng() % 60000));
    }
    test::LoadStreamRun(s.b);
    const RunRecord& r = test::Run1();
    RunArray& rd = Store().RunData;
    const int32_t rowLimit = std::min(r.RunEnd, rd.UpperRow());
    ASSERT_GT(rowLimit - r.RunStart, 2000);

    // Values left in the rows before the conversion: mostly zero.
    auto prefill = [&] {
        std::mt19937 fill(5);
        for (int32_t c = 0; c < rd.Columns(); ++c) {
            auto col = rd.Column(c);
            for (int32_t i = r.RunStart; i <= rowLimit && i < int32_t(col.size()); ++i) {
                const uint32_t x = fill() % 40;
                col[i] = x == 0 ? 2.5f : x == 1 ? -0.0f : 0.0f;
            }
        }
    };
    auto snapshot = [&] {
        std::vector<std::vector<uint32_t>> bits;
        for (int32_t c = 0; c < rd.Columns(); ++c) {
            bits.emplace_back();
            for (float v : rd.Column(c)) bits.back().push_back(std::bit_cast<uint32_t>(v));
        }
        return bits;
    };

    prefill();
    const std::span<const uint8_t> raw(s.b);
    int32_t si = r.RunStart, firstCall = -1;
    for (int64_t pos = 0; pos < r.RawEnd;) {
        const int id = raw[pos];
        const bool rowOk = si >= r.RunStart && si <= rowLimit;
        auto at = [&](int slotNumber) -> float& { return rd(si, ColumnOf(slotNumber)); };
        if (id == mq7::TimeIndex) {
            ManageTimeStep(raw, pos, 1, si, firstCall, true);
        } else if (rowOk && id == mq7::Accelerometer) {
            DecodeAccelerometer(raw, pos + 1, at(slot::AccelLat), at(slot::AccelLong));
        } else if (rowOk && id >= 14 && id <= 17) {
            at(38 + id - 14) = DecodeFreq(raw, pos + 1);
        } else if (rowOk && id >= 20 && id <= 27) {
            constexpr int kAnalogueSlot[8] = {36, 34, 35, 33, 32, 30, 31, 29};
            at(kAnalogueSlot[id - 20]) = DecodeAdc(raw, pos + 1);
        }
        pos += Mq7RecordLength(id);
    }
    for (int32_t i = std::max(si + 1, r.RunStart); i <= rowLimit; ++i)
        rd(i, ColumnOf(slot::Time)) = static_cast<float>((i - r.RunStart - 1) / 100.0);
    const auto expected = snapshot();

    prefill();
    ConvertRawToRunData_MQ7(1);
    const auto got = snapshot();
    for (int32_t c = 0; c < rd.Columns(); ++c)
        for (size_t i = 0; i < got[c].size(); ++i)
            ASSERT_EQ(got[c][i], expected[c][i]) << "column " << c << " row " << i;
}

// The trim finds a stream run's window through the scan: the rows kept are
// those of the times asked for, and a new scan of the trimmed bytes counts
// exactly those rows.
TEST_F(Stream, TrimKeepsTheWindowOfTheTimes) {
    StreamBuilder s = Build(300, {}, 5, 240, 50);
    test::LoadStreamRun(s.b);
    ConvertRawToRunData_MQ7(1);
    ASSERT_EQ(TrimRun(1, "1.00", "2.00"), TrimResult::Done);
    const RunRecord& r = test::Run1();
    EXPECT_EQ(r.RunEnd - r.RunStart, 100);
    EXPECT_EQ(CountStreamRows(1), 100);
    WipeRunData(1);
    ConvertRawToRunData_MQ7(1);
    // Tick k carries a longitudinal -0.25 - k / 1000 g: row 1 is now tick 100.
    EXPECT_NEAR(Row(slot::AccelLong, 1), -0.25 - 0.100, 1.0 / 256);
    EXPECT_NEAR(Row(slot::AccelLong, 101), -0.25 - 0.200, 1.0 / 256);
    EXPECT_FLOAT_EQ(Row(slot::Time, 101), 1.0f);
}

}  // namespace
}  // namespace tl
