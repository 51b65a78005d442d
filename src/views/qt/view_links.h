// The one object through which the open view windows move each other: it is
// the playback's PlaybackViews, every graph's GraphLinks and the track map's
// TrackMapLinks, over whatever windows are open at the moment (the track
// map, the graphs of XYGraphForms, the dashboards of DashForms, the mini map
// and the value table). A click on a graph moves the map, the mini map and
// the value table; a click on the map moves the graphs, the mini map and the
// value table; playback moves them all.
#pragma once

#include <QPointer>
#include <functional>

#include "views/graph_cursors.h"
#include "views/playback.h"
#include "views/track_map.h"

class QWidget;

namespace tl::views {

class TrackMapForm;
class MiniMapForm;
class ValueTableForm;

class ViewHub final : public PlaybackViews, public GraphLinks, public TrackMapLinks {
  public:
    // Where a new dashboard window goes (the shell puts it in its frame);
    // without it the dashboard is a window of its own.
    std::function<void(QWidget*)> placeWindow;
    QPointer<TrackMapForm> map;
    QPointer<MiniMapForm> miniMap;
    QPointer<ValueTableForm> valueTable;

    // Every open view shows its surface again (after a step or a click).
    void RefreshViews();

    // PlaybackViews
    bool MapOptionsUp() const override;
    void ShowPlayTime(int panel, const std::string& text) override;
    void AnimateMap(const std::vector<int32_t>& rows, bool panel0Playing) override;
    void RedrawMap() override;
    Dashboard* DashboardOf(int panel) override;
    Dashboard* CreateDashboard(int panel) override;
    void CloseDashboard(int panel) override;
    std::vector<GraphCursors*> Graphs() override;
    ValueTable* OpenValueTable() override;
    void PanelsChanged() override;
    void PlaybackStarted() override;

    // GraphLinks and TrackMapLinks
    bool TrackMapOpen() const override;
    void StopPlayback() override;
    void UpdateRunAnimation() override;
    void MoveTrackMap(int32_t row, int colourIndex) override;
    void MoveOtherGraphs(const GraphCursors* from, int32_t row, int32_t run, int colourIndex,
                         int mode) override;
    bool ValueTableOpen() const override;
    void MoveValueTable(int32_t row) override;
    void MoveValueTable(int32_t row, int panel, int panels) override;
    bool MiniMapOpen() const override;
    void MoveMiniMap(int32_t run, int32_t row) override;
    void MoveMiniMap(int32_t row, int32_t run, int panel) override;
    void MoveGraphs(int32_t row, int32_t run, int panel) override;
    int AskNewMarkerName() override;
};

ViewHub& Hub();

}  // namespace tl::views
