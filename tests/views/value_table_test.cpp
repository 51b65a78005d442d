// The value table on the demo road run: a row of every enabled variable with
// the run's values at the row, grown by the columns playback asks for, rebuilt
// when a variable is enabled, the out-of-range column logged and skipped, its
// place kept in the options file; playback gives it each panel's row.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/playback.h"
#include "views/value_table.h"

namespace tl {
namespace {

class ValueTableTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        const std::string demo = test::DemoPath("demo_hx40_road");
        ASSERT_EQ(LoadDemoRun(), 1);
        std::ifstream truth(demo + ".truth.csv");
        std::string line;
        std::getline(truth, line);
        while (std::getline(truth, line)) {
            std::stringstream fields(line);
            std::string f[8];
            for (std::string& x : f) std::getline(fields, x, ',');
            trueKph.push_back(std::stod(f[7]));
        }
    }
    int32_t GridRowOf(const ValueTable& t, int slotNumber) const {
        for (int32_t r = 1; r < t.Rows(); ++r)
            if (t.SlotOfRow(r) == slotNumber) return r;
        return -1;
    }
    std::vector<double> trueKph;
};

TEST_F(ValueTableTest, TheRowsValuesInTheRunsColumn) {
    ValueTable table;
    const int32_t start = Store().RunInfo[1].RunStart;
    const int32_t k = 6000;  // a minute into the run, at speed
    table.UpDateMultiVarTable(start + k, 1, 1, 0);
    // One row per enabled slot, in slot order, under the heading row.
    std::vector<int> enabled;
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (Catalogue().RunVars[s].Enabled) enabled.push_back(s);
    ASSERT_EQ(table.Rows(), static_cast<int32_t>(enabled.size()) + 1);
    EXPECT_EQ(table.Cols(), 2);
    // The heading row names the column's run.
    EXPECT_EQ(table.At(0, 1).text, Store().RunInfo[1].Name);
    EXPECT_FALSE(table.At(0, 1).text.empty());
    for (size_t r = 0; r < enabled.size(); ++r) {
        const int s = enabled[r];
        const int32_t row = static_cast<int32_t>(r) + 1;
        EXPECT_EQ(table.SlotOfRow(row), s);
        EXPECT_EQ(table.At(row, 0).text, Catalogue().RunVars[s].Name);
        EXPECT_EQ(table.At(row, 1).text, FormToSD(RunData(start + k, ColumnOf(s)), 4));
        EXPECT_EQ(table.At(row, 1).colour, VqColorIndex(0, false));
    }
    // The time reads 60 s, and the speed is the simulation's.
    EXPECT_EQ(table.At(GridRowOf(table, slot::Time), 1).text, "60.00");
    const int32_t speed = GridRowOf(table, slot::SpeedKph);
    ASSERT_GT(speed, 0);
    EXPECT_NEAR(GetVal(table.At(speed, 1).text), trueKph[k], 2.0);
}

TEST_F(ValueTableTest, ColumnsGrowAndAnOutOfRangeColumnIsSkipped) {
    ValueTable table;
    table.Resize(4000, 100000);
    const int32_t start = Store().RunInfo[1].RunStart;
    table.UpDateMultiVarTable(start + 100, 3, 3, 2);
    EXPECT_EQ(table.Cols(), 4);
    const int32_t t = GridRowOf(table, slot::Time);
    EXPECT_EQ(table.At(t, 3).text, "1.000");
    EXPECT_EQ(table.At(t, 3).colour, VqColorIndex(2, false));
    EXPECT_EQ(table.At(t, 1).text, "");
    // The grid's height is clipped to its rows; the run columns share the
    // width left by the names.
    double rows = 0;
    for (int32_t r = 0; r < table.Rows(); ++r) rows += table.RowHeight(r);
    EXPECT_DOUBLE_EQ(table.GridHeight(), rows);
    EXPECT_GT(table.ColumnWidth(0), 0);
    EXPECT_DOUBLE_EQ(table.ColumnWidth(1), (4000 - table.ColumnWidth(0)) / 3);
    EXPECT_DOUBLE_EQ(table.ColumnWidth(3), table.ColumnWidth(1));

    Profile().DebugFlag = true;
    const uint64_t before = table.Generation();
    table.UpDateMultiVarTable(start + 200, 4, 3, 3);
    Profile().DebugFlag = false;
    EXPECT_GT(table.Generation(), before);
    EXPECT_EQ(table.Cols(), 4);
    EXPECT_EQ(table.At(t, 3).text, "1.000");  // untouched
    EXPECT_NE(test::ReadAll(Paths().LogPath).find("Value column out of range error"),
              std::string::npos);
}

TEST_F(ValueTableTest, ANewlyEnabledVariableRebuildsTheGrid) {
    ValueTable table;
    const int32_t start = Store().RunInfo[1].RunStart;
    table.UpDateMultiVarTable(start + 100, 1, 1, 0);
    const int32_t before = table.Rows();
    int off = 0;
    for (int s = 2; s < kNoDataSlot && !off; ++s)
        if (Catalogue().RunVars[s].Available && !Catalogue().RunVars[s].Enabled) off = s;
    ASSERT_GT(off, 0);
    Catalogue().RunVars[off].Enabled = true;
    table.UpDateMultiVarTable(start + 100, 1, 1, 0);
    EXPECT_EQ(table.Rows(), before + 1);
    EXPECT_GT(GridRowOf(table, off), 0);
    Catalogue().RunVars[off].Enabled = false;
}

TEST_F(ValueTableTest, PlaceKeptInTheOptionsFile) {
    ValueTable table;
    table.Load();
    EXPECT_TRUE(table.Open());
    table.Place = {120, 240, 3600, 4800};
    table.Unload();
    EXPECT_FALSE(table.Open());
    const std::string& cfg = Paths().TracelabCfgPath;
    EXPECT_EQ(GetConfig(cfg, "ValueTableLeft"), 120.0f);
    EXPECT_EQ(GetConfig(cfg, "ValueTableHeight"), 4800.0f);
    ValueTable again;
    again.Load();
    EXPECT_EQ(again.Place.Width, 3600.0f);
    WriteToolWindowPlace(kMiniMapKeys, {1, 2, 3, 4});
    EXPECT_EQ(GetConfig(cfg, "MiniMapTop"), 2.0f);
    EXPECT_EQ(ReadToolWindowPlace(kMiniMapKeys).Height, 4.0f);
}

// Playback gives the open table each playing panel's row in the panel's
// column.
struct TableViews : PlaybackViews {
    ValueTable* table = nullptr;
    ValueTable* OpenValueTable() override { return table; }
};

TEST_F(ValueTableTest, PlaybackStepFillsThePanelsColumns) {
    ValueTable table;
    TableViews views;
    views.table = &table;
    double clock = 40000;
    Playback pb(views, [&] { return clock; });
    pb.RunsDisplayed = "2";
    pb.RunsDisplayed_Change();
    pb.Panel(1).JumpToTime = "30";
    pb.JumpButton_Click(1);
    pb.PlayButton_Click(2);
    clock += 0.5;
    pb.Step(clock);
    const int32_t t = GridRowOf(table, slot::Time);
    EXPECT_EQ(table.Cols(), 3);
    EXPECT_EQ(table.At(t, 1).text, "0.500");
    EXPECT_EQ(table.At(t, 2).text, "30.50");
    EXPECT_EQ(table.At(t, 2).colour, VqColorIndex(1, false));
}

}  // namespace
}  // namespace tl
