// Playback's round over two real graphs of the demo road run on raster
// surfaces (one X axis and five): after any number of steps each picture is
// its paint plus the cursors at the panels' present rows and nothing else;
// after a repaint the next step draws without erasing.
#include <gtest/gtest.h>

#include <QImage>
#include <memory>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "platform/render/painter_surface.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/graph_cursors.h"
#include "views/graph_model.h"
#include "views/playback.h"

namespace tl {
namespace {

// A graph window: speed and engine speed against time, every row.
struct Graph {
    GraphModel g;
    render::RasterSurface surface{900, 520, 96.0};
    GraphCursors cursors{g, surface};
    explicit Graph(bool multipleX) {
        g.Load(1);
        g.settings.FastPlot = 0;
        g.settings.MultipleXAxis = multipleX ? 1 : 0;
        g.settings.Slots[0].SelYAxis = "GPS Speed [kph]";
        g.SelYAxis_Click(0);
        g.settings.Slots[1].SelYAxis = "Engine Speed [rpm]";
        g.SelYAxis_Click(1);
        g.MultipleXAxis_Click();
        g.SetTickCounts(surface.ScaleWidth(), surface.ScaleHeight());
        g.ReGenerateGraph();
        cursors.Paint();
    }
};

struct GraphViews : PlaybackViews {
    std::vector<GraphCursors*> graphs;
    std::vector<GraphCursors*> Graphs() override { return graphs; }
};

class PlaybackGraphs : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        for (bool multipleX : {false, true}) {
            shown.push_back(std::make_unique<Graph>(multipleX));
            reference.push_back(std::make_unique<Graph>(multipleX));
            views.graphs.push_back(&shown.back()->cursors);
        }
    }
    // The reference graph with the cursors of the panels at their present
    // rows drawn once on its fresh paint equals the graph playback drew on.
    void ExpectOnlyPresentCursors(const Playback& pb, const char* when) {
        for (size_t k = 0; k < shown.size(); ++k) {
            Graph& ref = *reference[k];
            const QImage painted = ref.surface.Image().copy();
            auto cursors = [&] {
                for (int i = 0; i < pb.RunsInUse(); ++i)
                    ref.cursors.UpDateGraphAni(pb.PanelRow(i), 1, i, 2);
            };
            cursors();
            EXPECT_NE(ref.surface.Image(), painted) << when << " graph " << k;
            EXPECT_EQ(shown[k]->surface.Image(), ref.surface.Image()) << when << " graph " << k;
            cursors();
            ASSERT_EQ(ref.surface.Image(), painted);
        }
    }

    std::vector<std::unique_ptr<Graph>> shown, reference;
    GraphViews views;
    double clock = 45000;
};

TEST_F(PlaybackGraphs, StepsLeaveOnlyThePresentCursors) {
    Playback pb(views, [&] { return clock; });
    pb.RunsDisplayed = "2";
    pb.RunsDisplayed_Change();
    pb.Panel(0).JumpToTime = "40";
    pb.JumpButton_Click(0);
    pb.Panel(1).JumpToTime = "90";
    pb.JumpButton_Click(1);
    ExpectOnlyPresentCursors(pb, "after the jumps");
    pb.PlayButton_Click(0);
    pb.FForwardButton_Click(1);
    for (int n = 0; n < 40; ++n) {
        clock += 0.021 + 0.004 * (n % 3);
        pb.Step(clock);
    }
    EXPECT_GT(pb.Panel(0).CurrentIndex, 4000);
    EXPECT_GT(pb.Panel(1).CurrentIndex, 9000 + 2 * (pb.Panel(0).CurrentIndex - 4000) - 5);
    ExpectOnlyPresentCursors(pb, "after 40 steps");

    // A repaint clears the cursor-drawn flag: the next step draws on the
    // fresh picture without erasing.
    for (auto& g : shown) {
        g->cursors.Paint();
        EXPECT_FALSE(g->cursors.CursorDrawn);
    }
    clock += 0.03;
    pb.Step(clock);
    for (auto& g : shown) EXPECT_TRUE(g->cursors.CursorDrawn);
    ExpectOnlyPresentCursors(pb, "after a repaint");

    // Stopped: further rounds (a click's) keep the pairs.
    pb.StopButton_Click(2);
    pb.UpdateRunAnimation();
    pb.UpdateRunAnimation();
    ExpectOnlyPresentCursors(pb, "stopped");
}

}  // namespace
}  // namespace tl
