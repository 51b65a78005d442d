// The measurements table as its form edits and uses it: rows added, deleted
// and cleared, the selection and the checks of Graph and Highlight, the
// cells sent to the map, the copy text. The run's crossings are laid by hand
// over a speed that is known at every row.
#include <gtest/gtest.h>

#include "core/config_store.h"
#include "core/support.h"
#include "derived/derived_helpers.h"
#include "results/laps.h"
#include "results/measurements_form.h"
#include "results/track_markers.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/measurement_highlights.h"
#include "views/track_map.h"

namespace tl {
namespace {

using test::V;

class MeasurementsFormTest : public test::EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        UseProfile(Family::MQ7, Vehicle::Car);
        test::EnableEveryVariable();
        SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
        test::LayOutRuns(1, 4000, "meas");
        const RunRecord& r = Store().RunInfo[1];
        // Speed = the row's hundredth of a second into the run, so every
        // statistic is known in closed form.
        for (int32_t k = 0; k < r.RunLength; ++k) {
            V(r.RunStart + k, slot::Time) = static_cast<float>(k / 100.0);
            V(r.RunStart + k, slot::SpeedKph) = static_cast<float>(k);
        }
        Markers().ResizeRuns(1);
        Mark(1, "Line", {101, 1101, 2101, 3101});
        Mark(2, "A", {501, 1601, 2401});
    }
    void Mark(int index, const std::string& name, std::vector<int32_t> rows) {
        Markers().Entries[index].Name = name;
        Markers().Entries[index].Crossings.assign(2, {});
        Markers().Entries[index].Crossings[1] = std::move(rows);
    }
    std::string Speed() const { return Catalogue().RunVars[slot::SpeedKph].Name; }
    std::vector<std::string> Msgs() const { return ui.Texts(ScriptedEvent::Kind::Message); }
};

TEST_F(MeasurementsFormTest, RowsAreAddedDeletedAndCleared) {
    ASSERT_TRUE(WriteMeasurementRow(1, "Maximum of", Speed(), "Line", "A"));
    ASSERT_TRUE(WriteMeasurementRow(2, "Value of", Speed(), "A", "Line"));
    EXPECT_EQ(Measurements().Rows[2].EndMarker, "");  // "Value of" has no end
    EXPECT_FALSE(WriteMeasurementRow(3, "Sector 1", Speed(), "A", "Line"));
    EXPECT_FALSE(WriteMeasurementRow(90, "Change in", Speed(), "A", "Line"));
    Measurements().Rows[89] = {"Change in", Speed(), "A", "Line"};

    ASSERT_TRUE(AddMeasurement(1));
    EXPECT_TRUE(Measurements().Rows[1].Mode.empty());
    EXPECT_EQ(Measurements().Rows[2].Mode, "Maximum of");
    EXPECT_EQ(Measurements().Rows[3].Mode, "Value of");
    EXPECT_TRUE(Measurements().Rows[89].Mode.empty());  // dropped off the end
    EXPECT_TRUE(Measurements().Rows[90].Mode.empty());  // sectors untouched
    DeleteMeasurement(1);
    EXPECT_EQ(Measurements().Rows[1].Mode, "Maximum of");
    EXPECT_EQ(Measurements().Rows[2].Mode, "Value of");
    EXPECT_TRUE(Measurements().Rows[89].Mode.empty());

    ui.yesNoAnswers.push_back(false);
    EXPECT_FALSE(ClearAllMeasurements());
    EXPECT_EQ(Measurements().Rows[1].Mode, "Maximum of");
    ui.yesNoAnswers.push_back(true);
    EXPECT_TRUE(ClearAllMeasurements());
    EXPECT_TRUE(Measurements().Rows[1].Mode.empty());

    for (int i = 1; i <= kLastMarkerEntry; ++i) Markers().Entries[i].Name.clear();
    EXPECT_FALSE(AddMeasurement(1));
    EXPECT_EQ(Msgs().back(), "There are no track markers available to base maeasurements on");
}

TEST_F(MeasurementsFormTest, CellsSelectionGraphHighlightAndCopy) {
    SetLapMarker(1);  // "Line#", laps of 10 s from rows 101, 1101, 2101
    WriteMeasurementRow(1, "Maximum of", Speed(), "Line#", "A");
    WriteMeasurementRow(2, "Value of", Speed(), "A", "");
    WriteMeasurementRow(3, "Std Dev of", Speed(), "A", "Line#");
    MeasurementsTable t;
    t.Update();
    const TableGrid& g = t.Grid();
    EXPECT_EQ(g.Text(0, 1), "Maximum of " + Speed() + " from Line# to A");
    EXPECT_EQ(g.Text(0, 2), "Value of " + Speed() + " at A");
    EXPECT_EQ(g.Text(1, 0), "Run \"meas\"");
    // Lap 1: line at row 101 (speed 100), A at 501 (500); lap 2 1101 / 1601;
    // lap 3 2101 / 2401.
    EXPECT_EQ(g.Text(2, 0), "Lap 1, 10.00s (f)");
    EXPECT_EQ(g.Text(2, 1), FormToSD(500, 4));  // to four significant digits
    EXPECT_EQ(g.Text(3, 1), FormToSD(1600, 4));
    EXPECT_EQ(g.Text(4, 1), FormToSD(2400, 4));
    EXPECT_EQ(g.Text(3, 2), FormToSD(1600, 4));
    // A to the line on lap 1: speeds 500 to 1100, 601 rows whose squared
    // deviations add up to 601 * (601^2 - 1) / 12, over the divisor 600.
    EXPECT_NEAR(std::stod(g.Text(2, 3)), 601.0 * 30100.0 / 600.0, 5.0) << g.Text(2, 3);

    // Graph needs one column, a selection, and not "Value of".
    EXPECT_TRUE(t.GraphCells().empty());
    EXPECT_EQ(Msgs().back(), "Please select the data to be graphed");
    EXPECT_TRUE(t.Click(2, 1));
    EXPECT_TRUE(t.Click(4, 1));
    EXPECT_FALSE(t.Click(1, 0));  // a run's heading
    EXPECT_TRUE(t.Click(3, 2));
    EXPECT_TRUE(t.GraphCells().empty());
    EXPECT_EQ(Msgs().back(), "All the selected cells must be in a single column");
    EXPECT_TRUE(t.Click(3, 2));  // released
    int kind = 0;
    std::vector<CellRequest> cells = t.GraphCells(&kind);
    EXPECT_EQ(kind, 1);
    ASSERT_EQ(cells.size(), 2u);
    EXPECT_EQ(cells[0].startRow, 101);
    EXPECT_EQ(cells[0].endRow, 501);
    EXPECT_EQ(cells[1].startRow, 2101);
    EXPECT_EQ(cells[1].endRow, 2401);
    t.ClearSelections();
    t.Click(2, 2);
    EXPECT_TRUE(t.GraphCells().empty());
    EXPECT_EQ(Msgs().back(), "You cannot plot a graph of a single measured value");
    t.ClearSelections();
    t.Click(2, 3);
    t.GraphCells(&kind);
    EXPECT_EQ(kind, 2);  // a bar chart

    // Highlight: the selection to the map's sections.
    t.ClearSelections();
    EXPECT_TRUE(t.HighlightCells().empty());
    EXPECT_EQ(Msgs().back(), "Please select some data to be highlighted on the track map");
    t.Click(3, 1);
    t.Click(3, 0);  // lap 2 whole
    cells = t.HighlightCells();
    ASSERT_EQ(cells.size(), 2u);
    SetHighlightSections(cells);
    const auto& h = HighlightSections();
    EXPECT_TRUE(h[0].active && h[1].active && !h[2].active);
    EXPECT_EQ(h[0].firstRow, 1101);  // the lap column comes first
    EXPECT_EQ(h[0].lastRow, 2101);
    EXPECT_EQ(h[1].firstRow, 1101);
    EXPECT_EQ(h[1].lastRow, 1601);
    EXPECT_TRUE(t.IsSelected(3, 1));  // the selection stays

    // A marker that is gone: its rows blank, the selection there released.
    Markers().Entries[2].Name.clear();
    t.Update();
    EXPECT_EQ(t.Grid().Text(3, 1), "");
    EXPECT_FALSE(t.IsSelected(3, 1));
    EXPECT_TRUE(t.IsSelected(3, 0));

    const std::string copy = t.CopyText();
    EXPECT_EQ(copy.substr(0, copy.find("\t\t")),
              "\tMaximum of " + Speed() + " from Line# to A\tValue of " + Speed() +
                  " at A\tStd Dev of " + Speed() + " from A to Line#");
}

}  // namespace
}  // namespace tl
