// What a new user gets on the first load of a run: the shipped options place
// the lap marker and three sectors, and the check boxes of the laps form show
// them ticked.
#include <gtest/gtest.h>

#include <string>

#include "core/config_store.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

class FirstLoad : public test::EngineTest {};

TEST_F(FirstLoad, ShippedOptionsPlaceTheLapMarkerAndThreeSectors) {
    UseProfile(Family::MQ7, Vehicle::Kart);
    const std::string& cfg = Paths().TracelabCfgPath;
    // As the laps form's check boxes write them.
    EXPECT_EQ(GetConfigString(cfg, "AutoPlaceLaps"), "1");
    EXPECT_EQ(GetConfigString(cfg, "AutoPlaceSectors"), "1");
    const std::string demo = std::string(TRACELAB_SOURCE_DIR) + "/samples/demo_mq7_kart";
    CopyFileReplacing(demo + ".car", Paths().CarCfgPath);
    ui.yesNoAnswers.push_back(true);
    LoadDataFromFile(demo + ".run");
    ASSERT_EQ(Store().RunCount, 1);
    const int lap = CheckForLapMarker();
    ASSERT_GT(lap, 0);
    EXPECT_EQ(Markers().Entries[lap].Name, "Lap Marker #");
    EXPECT_EQ(LapsOfRun(1).laps.size(), 2u);
    // Three sectors: rows 90 to 92, the first from and the last to the lap
    // marker, row 93 empty.
    const auto& rows = Measurements().Rows;
    EXPECT_EQ(rows[kFirstSectorRow].Mode, "Sector 1");
    EXPECT_EQ(rows[kFirstSectorRow].StartMarker, "Lap Marker #");
    EXPECT_EQ(rows[kFirstSectorRow + 2].Mode, "Sector 3");
    EXPECT_EQ(rows[kFirstSectorRow + 2].EndMarker, "Lap Marker #");
    EXPECT_TRUE(rows[kFirstSectorRow + 3].Mode.empty());
}

}  // namespace
}  // namespace tl
