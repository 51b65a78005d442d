// A trimmed run with a lap marker comes through a reprocess as it was: the
// same length, the same marker, the same laps, the same map.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/config_store.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

class TrimReprocess : public test::EngineTest {
  protected:
    struct Picture {
        RunRecord run;
        std::string markerName;
        std::vector<int32_t> crossings;
        std::vector<double> laps;
        std::vector<float> x, y;
    };
    static Picture Take() {
        Picture p;
        p.run = Store().RunInfo[1];
        const int lap = CheckForLapMarker();
        if (lap > 0) {
            p.markerName = Markers().Entries[lap].Name;
            p.crossings = MarkerCrossings(lap, 1);
        }
        for (const LapInfo& l : LapsOfRun(1).laps) p.laps.push_back(l.time);
        for (int32_t row = p.run.RunStart; row <= p.run.RunEnd; row += 500) {
            p.x.push_back(SlotColumn(slot::PositionX)[row]);
            p.y.push_back(SlotColumn(slot::PositionY)[row]);
        }
        return p;
    }
};

TEST_F(TrimReprocess, TrimmedRunKeepsLengthMarkerLapsAndMap) {
    const std::string demo = std::string(TRACELAB_SOURCE_DIR) + "/samples/demo_hx40_road";
    CopyFileReplacing(demo + ".car", Paths().CarCfgPath);
    SetConfig(Paths().TracelabCfgPath, "AutoPlaceLaps", 0);
    SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
    ui.yesNoAnswers.push_back(true);  // process the run as it is loaded
    LoadDataFromFile(demo + ".run");
    ASSERT_EQ(Store().RunCount, 1);

    // As the run manager does: trim, then convert the trimmed run again.
    ASSERT_EQ(TrimRun(1, "5", "200"), TrimResult::Done);
    ConvertRawToRunData(1);
    // 5 to 200 s is 19501 rows; the window gives up the last one, which
    // follows a GPS block that begins eight frames before it.
    EXPECT_EQ(Store().RunInfo[1].RunLength, 19500);
    AutoAddLapMarkerCmd(1, "20");
    const Picture before = Take();
    ASSERT_EQ(before.markerName, "Lap Marker #");
    ASSERT_EQ(before.laps.size(), 1u);
    EXPECT_NEAR(before.laps[0], 147.10, 0.005);

    ReprocessAllRuns();
    const Picture after = Take();
    EXPECT_EQ(after.run.RunLength, before.run.RunLength);
    EXPECT_EQ(after.run.RawEnd, before.run.RawEnd);
    EXPECT_EQ(after.markerName, before.markerName);
    EXPECT_EQ(after.crossings, before.crossings);
    EXPECT_EQ(after.laps, before.laps);
    ASSERT_EQ(after.x.size(), before.x.size());
    for (size_t i = 0; i < after.x.size(); ++i) {
        EXPECT_NEAR(after.x[i], before.x[i], 1e-3) << i;
        EXPECT_NEAR(after.y[i], before.y[i], 1e-3) << i;
    }
}

// The session's map is the plane of the first run converted; a reprocess that
// converts another run first (the current one) keeps that plane, so markers
// placed on it still cross every run.
TEST_F(TrimReprocess, ReprocessWithTheSecondRunCurrentKeepsTheMarkers) {
    const std::string demo = std::string(TRACELAB_SOURCE_DIR) + "/samples/demo_hx40_road";
    CopyFileReplacing(demo + ".car", Paths().CarCfgPath);
    SetConfig(Paths().TracelabCfgPath, "AutoPlaceLaps", 0);
    SetConfig(Paths().TracelabCfgPath, "AutoPlaceSectors", 0);
    ui.yesNoAnswers.push_back(true);
    LoadDataFromFile(demo + ".run");
    ui.yesNoAnswers.push_back(true);
    LoadDataFromFile(demo + ".run");
    ASSERT_EQ(Store().RunCount, 2);
    // The second copy starts 30 s in, so its first fix lies elsewhere.
    ASSERT_EQ(TrimRun(2, "30", "250"), TrimResult::Done);
    ConvertRawToRunData(2);
    AutoAddLapMarkerCmd(1, "20");
    const int lap = CheckForLapMarker();
    ASSERT_GT(lap, 0);
    const std::vector<int32_t> run1 = MarkerCrossings(lap, 1), run2 = MarkerCrossings(lap, 2);
    ASSERT_FALSE(run2.empty());
    Store().CurrentRun = 2;
    ReprocessAllRuns();
    ASSERT_EQ(CheckForLapMarker(), lap);
    EXPECT_EQ(MarkerCrossings(lap, 1), run1);
    EXPECT_EQ(MarkerCrossings(lap, 2), run2);
}

}  // namespace
}  // namespace tl
