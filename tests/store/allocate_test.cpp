// Counting rows with the frame rules, and growing the two arrays.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "files/summary_run_list.h"
#include "raw_runs.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/stream_scan.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

class AllocateTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        WriteAll(Paths().TracelabCfgPath, "");
        ClearCurrentRun(true);
    }
    void Use(Family f) {
        UseProfile(f, Vehicle::Car);
        WriteAll(Paths().TracelabCfgPath, "");
        ClearCurrentRun(true);
    }
};

TEST_F(AllocateTest, Hx40GpsBlocksCountAsOneRowAndRunsFollowEachOther) {
    const PlaneRun a = MakeHx40Run(30);
    const PlaneRun b = MakeHx40Run(12, 20);
    ASSERT_GE(a.gpsBlocks.size(), 25u);
    const int32_t n1 = AddPlaneRun("lap1", a);
    const int32_t n2 = AddPlaneRun("lap2", b);
    const RunStore& s = Store();
    const RunRecord& r1 = s.RunInfo[n1];
    const RunRecord& r2 = s.RunInfo[n2];
    EXPECT_EQ(r1.RunStart, 1);
    EXPECT_EQ(r1.RunLength, a.expectedRows);
    EXPECT_EQ(r1.RunEnd, a.expectedRows);
    EXPECT_EQ(r2.RawStart, r1.RawEnd + 1);
    EXPECT_EQ(r2.RunStart, r1.RunEnd + 1);
    EXPECT_EQ(r2.RunLength, b.expectedRows);
    EXPECT_EQ(s.RunData.UpperRow(), r2.RunEnd);
    EXPECT_EQ(s.RunData.Columns(), Catalogue().NumVars);
    EXPECT_EQ(s.RawData.UpperIndex(), r2.RawEnd);
    // The raw stretch of run 2 is byte for byte what was placed there.
    for (int v = 1; v <= 8; ++v)
        for (int32_t i = 0; i < b.frames(); ++i)
            ASSERT_EQ(s.RawData(r2.RawStart + i, v), b.planes[v - 1][i]);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::WaitShown, "Scanning Raw Data..."));
}

TEST_F(AllocateTest, Hx40MarginsAreAbsoluteAtTheStartAndRelativeAtTheEnd) {
    // A marker bit in frame 3: a block would start at frame 4, but indices up
    // to 9 are outside the margin, so nothing collapses in the first run.
    PlaneRun early = MakeHx40Run(2, 80);
    early.planes[2][3] |= 1;
    AddPlaneRun("early", early);
    EXPECT_EQ(Store().RunInfo[1].RunLength, early.expectedRows);
    // The same bytes as a second run: the margin is absolute (i > 9), not
    // RawStart + 9, so the allocation collapses the block.
    AddPlaneRun("early2", early);
    EXPECT_EQ(Store().RunInfo[2].RunLength, early.expectedRows - 7);

    // A marker nine frames from the end: the block would start at RawEnd - 8,
    // which i < RawEnd - 8 excludes.
    ClearCurrentRun(true);
    PlaneRun tail = MakeHx40Run(2, 30);
    const int32_t F = tail.frames();
    ASSERT_LT(tail.gpsBlocks.back() + 7, F - 20);
    tail.planes[2][F - 10] |= 1;
    AddPlaneRun("tail", tail);
    EXPECT_EQ(Store().RunInfo[1].RunLength, tail.expectedRows);
    // One frame earlier the block starts at RawEnd - 9 and collapses.
    tail.planes[2][F - 10] &= uint8_t(~1);
    tail.planes[2][F - 11] |= 1;
    ClearCurrentRun(true);
    AddPlaneRun("tail2", tail);
    EXPECT_EQ(Store().RunInfo[1].RunLength, tail.expectedRows - 7);
}

TEST_F(AllocateTest, Sv63StepComesFromTheFirstHeaderByte) {
    Use(Family::SV63);
    struct Case {
        uint8_t period;
        int step;
    };
    for (const Case c :
         {Case{0, 1}, Case{1, 1}, Case{5, 5}, Case{20, 20}, Case{21, 1}, Case{255, 1}}) {
        SCOPED_TRACE(int(c.period));
        ClearCurrentRun(true);
        const PlaneRun raw = MakeSv63Run(400, c.period);
        ASSERT_GE(raw.gpsBlocks.size(), 10u);
        AddPlaneRun("meter", raw);
        const RunRecord& r = Store().RunInfo[1];
        EXPECT_EQ(r.RunLength, raw.expectedRows);
        EXPECT_EQ(r.RunLength % c.step, 0);
    }
}

TEST_F(AllocateTest, Sv63GpsBitSkipsThreeFrames) {
    Use(Family::SV63);
    PlaneRun plain = MakeSv63Run(200, 2, 100000);  // no GPS at all
    ASSERT_TRUE(plain.gpsBlocks.empty());
    AddPlaneRun("plain", plain);
    EXPECT_EQ(Store().RunInfo[1].RunLength, 2 * (200 - 6));
    ClearCurrentRun(true);
    plain.planes[0][50] |= 4;  // frames 52, 53, 54 are skipped
    AddPlaneRun("one", plain);
    EXPECT_EQ(Store().RunInfo[1].RunLength, 2 * (200 - 6 - 3));
}

TEST_F(AllocateTest, StreamFamiliesAskTheStreamScan) {
    Use(Family::MQ7);
    EXPECT_FALSE(Store().RawData.planes());
    const std::vector<uint8_t> bytes(1000, 0x09);
    AddStreamRun("stream", bytes);
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_EQ(r.RawEnd, 1000);
    EXPECT_EQ(Store().RawData.UpperIndex(), 1000);
    // The run's end lies the scan's sample count after its start.
    EXPECT_EQ(r.RunStart, 1);
    EXPECT_EQ(r.RunEnd, r.RunStart + CountStreamRows(1));
    EXPECT_EQ(Store().RunData.UpperRow(), std::max(r.RunEnd, 0));
}

TEST_F(AllocateTest, RawResizeLosesIndexZeroOnPlanesButKeepsTheRest) {
    RawArray& raw = Store().RawData;
    PreserveRawData(20);
    for (int v = 1; v <= 8; ++v)
        for (int32_t i = 0; i <= 20; ++i) raw(i, v) = static_cast<uint8_t>(i * 8 + v);
    PreserveRawData(40);
    EXPECT_EQ(raw.UpperIndex(), 40);
    for (int v = 1; v <= 8; ++v) {
        EXPECT_EQ(raw(0, v), 0) << "index 0 is never carried";
        for (int32_t i = 1; i <= 20; ++i) ASSERT_EQ(raw(i, v), i * 8 + v);
        for (int32_t i = 21; i <= 40; ++i) ASSERT_EQ(raw(i, v), 0);
    }
    PreserveRawData(10);  // planes shrink
    EXPECT_EQ(raw.UpperIndex(), 10);
    EXPECT_EQ(raw(10, 3), 10 * 8 + 3);
    PreserveRawData(-5);
    EXPECT_EQ(raw.UpperIndex(), 0);
}

TEST_F(AllocateTest, StreamNeverShrinksAndKeepsIndexZero) {
    Use(Family::MQ7);
    RawArray& raw = Store().RawData;
    PreserveRawData(100);
    for (int32_t i = 0; i <= 100; ++i) raw(i) = static_cast<uint8_t>(i);
    PreserveRawData(30);
    EXPECT_EQ(raw.UpperIndex(), 100);
    PreserveRawData(150);
    EXPECT_EQ(raw.UpperIndex(), 150);
    for (int32_t i = 0; i <= 100; ++i) ASSERT_EQ(raw(i), i);
    EXPECT_EQ(raw(150), 0);
}

TEST_F(AllocateTest, RunDataGrowsColumnByColumnKeepingContent) {
    RunArray& data = Store().RunData;
    const int32_t numVars = Catalogue().NumVars;
    PreserveRunData(50);
    ASSERT_EQ(data.Columns(), numVars);
    for (int32_t c = 0; c < numVars; ++c)
        for (int32_t r = 0; r <= 50; ++r) data(r, c) = float(c * 1000 + r);
    ui.ClearRecords();
    PreserveRunData(80);
    EXPECT_EQ(data.UpperRow(), 80);
    for (int32_t c = 0; c < numVars; ++c) {
        EXPECT_EQ(data(0, c), 0.0f);
        for (int32_t r = 1; r <= 50; ++r) ASSERT_EQ(data(r, c), float(c * 1000 + r));
        for (int32_t r = 51; r <= 80; ++r) ASSERT_EQ(data(r, c), 0.0f);
    }
    // The wait form: two texts per column, plus the two allocation texts.
    const auto waits = ui.Texts(ScriptedEvent::Kind::WaitShown);
    EXPECT_EQ(static_cast<int32_t>(waits.size()), 2 * numVars + 2);
    const std::string last = "/" + std::to_string(numVars - 1);
    EXPECT_EQ(waits.front(), "Allocating Temporary Memory");
    EXPECT_EQ(waits[1], "Copy Data To Temporary Memory 0" + last);
    EXPECT_EQ(waits[numVars + 1], "Allocating Memory");
    EXPECT_EQ(waits.back(), "Copy Data To Memory " + std::to_string(numVars - 1) + last);
    PreserveRunData(20);
    EXPECT_EQ(data.UpperRow(), 20);
    EXPECT_EQ(data(20, 1), 1020.0f);
}

TEST_F(AllocateTest, MemoryWarningsFollowTheFigures) {
    ui.memoryFigures.availablePhysical = 1e6;
    ui.memoryFigures.availableVirtual = 2e6;
    const std::string second =
        "To increase program performance, reduce the number of variables selected, trim the run "
        "length, reduce the number of runs loaded, close other Windows programs or upgrade the PCs "
        "memory";
    struct Case {
        double bytes;
        std::string first;
    };
    const Case cases[] = {
        {3e6,
         "The memory required for the operation in more than that available, you may not be able "
         "to continue"},
        {1.97e6,
         "The memory required for the operation will use nearly all the virtual memory on the PC, "
         "the program may run excessively slowly"},
        {1.5e6,
         "The memory required for the operation requires more memory than the PC has installed, "
         "the program may run excessively slowly"},
        {0.99e6,
         "The memory requires nearly all the remaining physical memory on the PC, the program may "
         "start to run slowly"},
    };
    for (const Case& c : cases) {
        ui.ClearRecords();
        CheckMemoryAvailable(c.bytes);
        EXPECT_EQ(ui.Texts(ScriptedEvent::Kind::Message),
                  (std::vector<std::string>{c.first, second}));
    }
    ui.ClearRecords();
    CheckMemoryAvailable(0.5e6);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
}

TEST_F(AllocateTest, WipeSetsGpsSpeedToMinusOneAndVariableHelpersRespectFlags) {
    const PlaneRun raw = MakeHx40Run(5);
    AddPlaneRun("r", raw);
    RunStore& s = Store();
    for (int32_t c = 0; c < s.RunData.Columns(); ++c)
        for (int32_t r = 1; r <= s.RunData.UpperRow(); ++r) s.RunData(r, c) = 7.0f;
    WipeRunData(1);
    const RunRecord& r = s.RunInfo[1];
    EXPECT_EQ(s.RunData(r.RunStart, ColumnOf(slot::SpeedKph)), -1.0f);
    EXPECT_EQ(s.RunData(r.RunEnd, ColumnOf(slot::SpeedKph)), -1.0f);
    EXPECT_EQ(s.RunData(r.RunEnd, ColumnOf(slot::Time)), 0.0f);
    // Slot 7 is not enabled on a fresh file: its -1 lands in the shared column.
    EXPECT_EQ(ColumnOf(slot::SpeedMph), ColumnOf(slot::Scratch));
    EXPECT_EQ(s.RunData(r.RunStart, ColumnOf(slot::Scratch)), -1.0f);

    for (int32_t row = 1; row <= 10; ++row) s.RunData(row, ColumnOf(slot::AccelLat)) = float(row);
    CopyVariableData(1, 10, slot::AccelLat, slot::AccelLong);
    EXPECT_EQ(s.RunData(10, ColumnOf(slot::AccelLong)), 10.0f);
    EXPECT_FLOAT_EQ(AvVar(-5, 10, ColumnOf(slot::AccelLong)), 5.5f);
    CopyVariableData(1, 10, slot::AccelLat, 15);  // slot 15 not enabled
    EXPECT_EQ(s.RunData(5, ColumnOf(slot::Scratch)), -1.0f);
    DeleteVariableData(1, 5, slot::AccelLong);
    EXPECT_EQ(s.RunData(5, ColumnOf(slot::AccelLong)), 0.0f);
    EXPECT_EQ(s.RunData(6, ColumnOf(slot::AccelLong)), 6.0f);
    DeleteVariableData(1, 5, 15);  // slot 15 not enabled: nothing is written
    EXPECT_EQ(s.RunData(5, ColumnOf(slot::Scratch)), -1.0f);
    DeleteVariableData(1, 5, kNoDataSlot);  // the scratch slot is always written
    EXPECT_EQ(s.RunData(5, ColumnOf(slot::Scratch)), 0.0f);
    EXPECT_EQ(s.RunData(6, ColumnOf(slot::Scratch)), -1.0f);

    EXPECT_EQ(FindRunIndex("r"), 1);
    EXPECT_EQ(FindRunIndex("nope"), 1);
    EXPECT_EQ(FindRunOfRow(r.RunEnd), 1);
    EXPECT_EQ(FindRunOfRow(r.RunEnd + 1), 0);
}

TEST_F(AllocateTest, ClearKeepsRawDataWhenNotAll) {
    const PlaneRun raw = MakeHx40Run(4);
    AddPlaneRun("keep", raw);
    const RunRecord before = Store().RunInfo[1];
    ClearCurrentRun(false);
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_EQ(Store().RunCount, 1);
    EXPECT_EQ(r.Name, "keep");
    EXPECT_EQ(r.RawStart, before.RawStart);
    EXPECT_EQ(r.RawEnd, before.RawEnd);
    EXPECT_EQ(r.RunEnd, 0);
    EXPECT_EQ(r.RunLength, 0);
    EXPECT_EQ(Store().RunData.UpperRow(), 1);
    EXPECT_EQ(Store().RunData.Columns(), 202);
    EXPECT_EQ(Store().RawData(100, 4), raw.planes[3][100]);
    SummaryRuns().Add(SummaryRunRecord{true, "summary", std::vector<uint8_t>(1024, 0), ""});
    ClearCurrentRun(true);
    EXPECT_TRUE(SummaryRuns().Runs.empty());
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_EQ(Store().RawData.UpperIndex(), 1);
    EXPECT_TRUE(Store().RunInfo[1].Name.empty());
}

}  // namespace
}  // namespace tl::test

namespace tl::test {
namespace {

TEST_F(AllocateTest, DamagedRecordsNeverReadPastTheArrays) {
    const PlaneRun raw = MakeHx40Run(3);
    AddPlaneRun("r", raw);
    RunRecord& r = Store().RunInfo[1];
    const int32_t rows = r.RunLength;
    r.RawEnd += 5000;  // claims more than the array holds
    AllocateRunArray(1);
    EXPECT_EQ(r.RunLength, rows);
    EXPECT_EQ(TrimRun(1, "0", "1"), TrimResult::Done);
    EXPECT_EQ(r.RunLength, rows);  // nothing trimmed on a damaged record
    r.RawEnd -= 5000;
    DeleteRun(7);  // no such run
    EXPECT_EQ(Store().RunCount, 1);
}

TEST_F(AllocateTest, UserChannelFileWithAStrayQuoteIsReadWithoutHarm) {
    WriteAll(Paths().UserVarsCfgPath,
             "\"Ratio\",\"VAR_06/VAR_08\",0\r\n\"Bad \"name\",\"x\",0\r\n\"Open");
    SetAvailableVars();
    EXPECT_EQ(Catalogue().RunVars[100].Name, "U:Ratio");
    EXPECT_EQ(Catalogue().RunVars[101].Name, "U:Bad ");
}

}  // namespace
}  // namespace tl::test
