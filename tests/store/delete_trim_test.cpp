// Removing runs and trimming a run to a time window.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "raw_runs.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

class DeleteTrimTest : public EngineTest {
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
    // Marks every row of every run in the time column: run * 1e6 + row within
    // the run, so moved rows can be recognised.
    static void MarkRows() {
        RunStore& s = Store();
        for (int32_t n = 1; n <= s.RunCount; ++n)
            for (int32_t row = s.RunInfo[n].RunStart; row <= s.RunInfo[n].RunEnd; ++row)
                s.RunData(row, ColumnOf(slot::Time)) =
                    float(n * 1000000 + (row - s.RunInfo[n].RunStart));
    }
    static void ExpectRawEquals(int32_t run, const PlaneRun& raw, int32_t firstFrame,
                                int32_t count) {
        const RunStore& s = Store();
        const RunRecord& r = s.RunInfo[run];
        ASSERT_EQ(r.RawEnd - r.RawStart + 1, count);
        // Index 0 of the store is lost with every resize (never carried).
        for (int v = 1; v <= 8; ++v)
            for (int32_t i = 0; i < count; ++i)
                ASSERT_EQ(s.RawData(r.RawStart + i, v),
                          r.RawStart + i == 0 ? 0 : raw.planes[v - 1][firstFrame + i])
                    << "run " << run << " vector " << v << " index " << i;
    }
};

TEST_F(DeleteTrimTest, DeletingTheMiddleRunMovesTheLaterOnesDown) {
    const PlaneRun a = MakeHx40Run(6), b = MakeHx40Run(9, 20), c = MakeHx40Run(5, 70);
    AddPlaneRun("a", a);
    AddPlaneRun("b", b);
    AddPlaneRun("c", c);
    MarkRows();
    const RunRecord ra = Store().RunInfo[1], rc = Store().RunInfo[3];
    DeleteRun(2);
    const RunStore& s = Store();
    ASSERT_EQ(s.RunCount, 2);
    const RunRecord& moved = s.RunInfo[2];
    EXPECT_EQ(moved.Name, "c");
    EXPECT_EQ(moved.RawStart, ra.RawEnd + 1);
    EXPECT_EQ(moved.RunStart, ra.RunEnd + 1);
    EXPECT_EQ(moved.RunLength, rc.RunLength);
    EXPECT_EQ(moved.RunEnd - moved.RunStart + 1, rc.RunLength);
    ExpectRawEquals(1, a, 0, a.frames());
    ExpectRawEquals(2, c, 0, c.frames());
    EXPECT_EQ(s.RawData.UpperIndex(), moved.RawEnd);
    EXPECT_EQ(s.RunData.UpperRow(), moved.RunEnd);
    EXPECT_EQ(s.RunData(moved.RunStart, ColumnOf(slot::Time)), 3000000.0f);
    EXPECT_EQ(s.RunData(moved.RunEnd, ColumnOf(slot::Time)), float(3000000 + rc.RunLength - 1));
    EXPECT_EQ(s.RunData(ra.RunEnd, ColumnOf(slot::Time)), float(1000000 + ra.RunLength - 1));
    EXPECT_TRUE(s.RunInfo[3].Name.empty());
    EXPECT_EQ(s.RunInfo[3].RawEnd, 0);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::WaitShown, "Delete Run"));
}

TEST_F(DeleteTrimTest, DeletingTheLastRunMovesNothingAndClearsItsRecord) {
    const PlaneRun a = MakeHx40Run(6), b = MakeHx40Run(4, 30);
    AddPlaneRun("a", a);
    AddPlaneRun("b", b);
    MarkRows();
    const RunRecord ra = Store().RunInfo[1];
    DeleteRun(2);
    const RunStore& s = Store();
    EXPECT_EQ(s.RunCount, 1);
    EXPECT_EQ(s.RunInfo[1].RunEnd, ra.RunEnd);
    EXPECT_TRUE(s.RunInfo[2].Name.empty());
    EXPECT_EQ(s.RawData.UpperIndex(), ra.RawEnd);
    EXPECT_EQ(s.RunData.UpperRow(), ra.RunEnd);
    ExpectRawEquals(1, a, 0, a.frames());
    EXPECT_EQ(s.RunData(ra.RunEnd, ColumnOf(slot::Time)), float(1000000 + ra.RunLength - 1));
}

TEST_F(DeleteTrimTest, DeletingTheOnlyRunLeavesAnEmptyStore) {
    AddPlaneRun("only", MakeHx40Run(3));
    DeleteRun(1);
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_LE(Store().RawData.UpperIndex(), 1);
    EXPECT_EQ(Store().RunData.UpperRow(), 0);
    EXPECT_TRUE(Store().RunInfo[1].Name.empty());
    DeleteRun(1);  // nothing left: refused quietly
    EXPECT_EQ(Store().RunCount, 0);
}

TEST_F(DeleteTrimTest, StreamKeepsItsLengthAfterADeletion) {
    Use(Family::MQ7);
    AddStreamRun("s1", std::vector<uint8_t>(500, 1));
    AddStreamRun("s2", std::vector<uint8_t>(300, 2));
    const int32_t upper = Store().RawData.UpperIndex();
    DeleteRun(1);
    EXPECT_EQ(Store().RawData.UpperIndex(), upper);
    EXPECT_EQ(Store().RunInfo[1].Name, "s2");
    EXPECT_EQ(Store().RunInfo[1].RawStart, 0);
    EXPECT_EQ(Store().RawData(0), 2);
    EXPECT_EQ(Store().RawData(299), 2);
}

TEST_F(DeleteTrimTest, TrimDefaultsCoverTheWholeRunAndAreAccepted) {
    const PlaneRun a = MakeHx40Run(12);
    AddPlaneRun("a", a);
    const RunRecord before = Store().RunInfo[1];
    const TrimDefaults d = TrimRunDefaults(1);
    EXPECT_EQ(d.title, "Trim Run Number: 1");
    EXPECT_EQ(d.startTime, "0.00");
    EXPECT_DOUBLE_EQ(std::stod(d.endTime), before.RunLength / 100.0 - 0.01);
    EXPECT_EQ(TrimRun(1, d.startTime, d.endTime), TrimResult::Done);
    EXPECT_EQ(ui.Count(ScriptedEvent::Kind::Message), 0);
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_EQ(r.RunLength, before.RunLength);
    EXPECT_EQ(r.RawEnd, before.RawEnd);
    ExpectRawEquals(1, a, 0, a.frames());
}

TEST_F(DeleteTrimTest, TrimRefusalsLeaveTheRunAlone) {
    AddPlaneRun("a", MakeHx40Run(10));
    const RunRecord before = Store().RunInfo[1];
    EXPECT_EQ(TrimRun(1, "5", "5"), TrimResult::EndNotAfterStart);
    EXPECT_EQ(TrimRun(1, "-1", "3"), TrimResult::NegativeTime);
    const std::string past = std::to_string(before.RunLength / 100.0 + 0.02);
    EXPECT_EQ(TrimRun(1, "0", past), TrimResult::EndAfterRunEnd);
    EXPECT_EQ(
        ui.Texts(ScriptedEvent::Kind::Message),
        (std::vector<std::string>{"The end time must be after start time", "Times must be positive",
                                  "End time is after the end of the run"}));
    EXPECT_EQ(Store().RunInfo[1].RunLength, before.RunLength);
    EXPECT_EQ(Store().RunInfo[1].RawEnd, before.RawEnd);
}

TEST_F(DeleteTrimTest, Hx40TrimKeepsTheWindowAndShiftsLaterRuns) {
    const PlaneRun a = MakeHx40Run(10), b = MakeHx40Run(6, 30);
    AddPlaneRun("a", a);
    AddPlaneRun("b", b);
    MarkRows();
    const RunRecord rb = Store().RunInfo[2];
    // "2,50" with the decimal comma is read as 2.5 s.
    ASSERT_EQ(TrimRun(1, "2,50", "7.00"), TrimResult::Done);
    const RunStore& s = Store();
    const RunRecord& r = s.RunInfo[1];
    EXPECT_EQ(r.RunStart, 1);
    // Row 250 is a GPS block (blocks every 100 rows from row 50). At the start
    // of a raw stretch the row count cannot see a block, and would read its
    // eight frames as eight rows, so the window gives the block row up and
    // starts at row 251.
    ASSERT_EQ(a.rowFrame[251] - a.rowFrame[250], 8);
    EXPECT_EQ(r.RunLength, 700 - 251 + 1);
    const int32_t firstFrame = a.rowFrame[251], lastFrame = a.rowFrame[700];
    ExpectRawEquals(1, a, firstFrame, lastFrame - firstFrame + 1);
    EXPECT_EQ(s.RunData(1, ColumnOf(slot::Time)), 1000251.0f);
    EXPECT_EQ(s.RunData(r.RunEnd, ColumnOf(slot::Time)), 1000700.0f);
    // Run 2 follows at once, unchanged.
    const RunRecord& r2 = s.RunInfo[2];
    EXPECT_EQ(r2.RawStart, r.RawEnd + 1);
    EXPECT_EQ(r2.RunStart, r.RunEnd + 1);
    EXPECT_EQ(r2.RunLength, rb.RunLength);
    ExpectRawEquals(2, b, 0, b.frames());
    EXPECT_EQ(s.RunData(r2.RunStart, ColumnOf(slot::Time)), 2000000.0f);
    EXPECT_EQ(s.RunData(r2.RunEnd, ColumnOf(slot::Time)), float(2000000 + rb.RunLength - 1));
    EXPECT_EQ(s.RawData.UpperIndex(), r2.RawEnd);
    EXPECT_EQ(s.RunData.UpperRow(), r2.RunEnd);
    // Reprocessing recounts the rows of the trimmed raw stretch and finds the
    // trimmed length.
    ReprocessAllRuns();
    EXPECT_EQ(s.RunInfo[1].RunLength, 700 - 251 + 1);
    EXPECT_EQ(s.RunInfo[2].RawStart, r.RawEnd + 1);
    EXPECT_EQ(s.RunInfo[2].RunLength, rb.RunLength);
}

// The form's default end time, RunLength / 100 - 0.01, names the run's last
// row for every length: "1.15" of a 116-row run is 114.99999... hundredths in
// binary and must still count as 115, or the trim would cut the last row.
TEST_F(DeleteTrimTest, DefaultEndTimeKeepsTheLastRowForEveryLength) {
    int affected = 0;
    for (int32_t length = 2; length <= 400; ++length) {
        ClearCurrentRun(true);
        PlaneRun m;  // HX40 frames without GPS: a row each
        for (int32_t f = 0; f < length; ++f)
            for (auto& plane : m.planes) plane.push_back(static_cast<uint8_t>(f));
        for (auto& plane : m.planes) plane[plane.size() - 1] &= 0xFE;
        for (int32_t f = 0; f < length; ++f) m.planes[2][f] = 0;  // no GPS marker
        AddPlaneRun("m", m);
        ASSERT_EQ(Store().RunInfo[1].RunLength, length);
        const TrimDefaults d = TrimRunDefaults(1);
        const double end = std::stod(d.endTime);
        if (static_cast<int64_t>(end * 100) != length - 1) ++affected;
        ASSERT_EQ(TrimRun(1, d.startTime, d.endTime), TrimResult::Done) << length;
        EXPECT_EQ(Store().RunInfo[1].RunLength, length) << d.endTime;
    }
    // Some of these lengths are the ones a plain truncation gets wrong.
    EXPECT_GT(affected, 10);
}

TEST_F(DeleteTrimTest, Sv63TrimFindsTheTrueEndRowFromTheSteps) {
    Use(Family::SV63);
    const PlaneRun m = MakeSv63Run(400, 2, 100000);  // no GPS: frame = 2 + row / 2
    AddPlaneRun("m", m);
    ASSERT_EQ(TrimRun(1, "1.00", "3.00"), TrimResult::Done);
    const RunRecord& r = Store().RunInfo[1];
    // The first frame whose counted step reaches past the start row is frame
    // 51 (rows 98 and 99); the end is frame 151; 101 frames of two rows each,
    // kept with the two frames before and the four after that the row count
    // passes over.
    ExpectRawEquals(1, m, 49, 107);
    EXPECT_EQ(r.RunLength, 202);
    EXPECT_EQ(Store().RunData.UpperRow(), r.RunEnd);
}

}  // namespace
}  // namespace tl::test
