#include "views/qt/view_links.h"

#include <QMdiSubWindow>
#include <QTableWidget>

#include "views/dashboard.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/surface_box.h"
#include "views/qt/tool_forms.h"
#include "views/qt/track_map_form.h"

namespace tl::views {

ViewHub& Hub() {
    static ViewHub hub;
    return hub;
}

void ViewHub::RefreshViews() {
    if (map) map->MapBox()->update();
    for (int i = 0; i < DashFormTable::kPanels; ++i) {
        if (DashboardForm* form = DashboardFormOf(i)) {
            form->Sync();
            form->Board()->update();
        }
    }
    for (GraphXYForm* graph : OpenGraphForms()) graph->Box()->update();
    if (valueTable) valueTable->ShowModel();
    if (miniMap) miniMap->Box()->update();
}

// --- PlaybackViews ----------------------------------------------------------------

bool ViewHub::MapOptionsUp() const {
    return map && map->OptionsUp();
}

void ViewHub::ShowPlayTime(int panel, const std::string& text) {
    if (map) map->ShowPlayTime(panel, text);
}

void ViewHub::AnimateMap(const std::vector<int32_t>& rows, bool panel0Playing) {
    if (!map) return;
    map->PanelsToMap();
    const float cx = map->Map().settings.ViewCentreX, cy = map->Map().settings.ViewCentreY;
    map->Map().AnimateStep(rows, panel0Playing);
    // AutoPan moved the view: the scroll bars and strips follow.
    if (cx != map->Map().settings.ViewCentreX || cy != map->Map().settings.ViewCentreY)
        map->AfterMapCall();
}

void ViewHub::RedrawMap() {
    if (map) map->RedrawMap();
}

Dashboard* ViewHub::DashboardOf(int panel) {
    return DashForms().At(panel);
}

Dashboard* ViewHub::CreateDashboard(int panel) {
    auto* form = new DashboardForm(panel);
    DashForms().Open(panel, &form->Dash());
    if (placeWindow) {
        placeWindow(form);
    } else {
        form->resize(form->sizeHint());
        form->show();
    }
    return &form->Dash();
}

void ViewHub::CloseDashboard(int panel) {
    DashboardForm* form = DashboardFormOf(panel);
    DashForms().Close(panel);
    if (form == nullptr) return;
    if (auto* sub = qobject_cast<QMdiSubWindow*>(form->parentWidget())) {
        sub->close();
    } else {
        form->close();
    }
}

std::vector<GraphCursors*> ViewHub::Graphs() {
    std::vector<GraphCursors*> graphs;
    for (GraphXYForm* form : OpenGraphForms()) graphs.push_back(&form->Cursors());
    return graphs;
}

ValueTable* ViewHub::OpenValueTable() {
    return valueTable && valueTable->Table().Open() ? &valueTable->Table() : nullptr;
}

void ViewHub::PanelsChanged() {
    if (map) map->PanelsChanged();
}

void ViewHub::PlaybackStarted() {
    if (map) map->PlaybackStarted();
}

// --- GraphLinks and TrackMapLinks ----------------------------------------------------

bool ViewHub::TrackMapOpen() const {
    return !map.isNull();
}

void ViewHub::StopPlayback() {
    if (map) map->Player().StopButton_Click(map->Player().RunsInUse());
}

void ViewHub::UpdateRunAnimation() {
    if (!map) return;
    map->PanelsToMap();
    map->Player().UpdateRunAnimation();
}

void ViewHub::MoveTrackMap(int32_t row, int colourIndex) {
    if (!map) return;
    map->Map().UpDateGraphAni(row, colourIndex);
    map->MapBox()->update();
}

void ViewHub::MoveOtherGraphs(const GraphCursors* from, int32_t row, int32_t run, int colourIndex,
                              int mode) {
    for (GraphXYForm* form : OpenGraphForms()) {
        if (&form->Cursors() == from) continue;
        form->Cursors().UpDateGraphAni(row, run, colourIndex, mode);
        form->Box()->update();
    }
}

bool ViewHub::ValueTableOpen() const {
    return valueTable && valueTable->Table().Open();
}

void ViewHub::MoveValueTable(int32_t row) {
    if (!ValueTableOpen()) return;
    valueTable->Table().UpDateMultiVarTable(row, 1, 1, 0);
    valueTable->ShowModel();
}

void ViewHub::MoveValueTable(int32_t row, int panel, int panels) {
    if (!ValueTableOpen()) return;
    valueTable->Table().UpDateMultiVarTable(row, panel + 1, panels, panel);
    valueTable->ShowModel();
}

bool ViewHub::MiniMapOpen() const {
    return !miniMap.isNull();
}

void ViewHub::MoveMiniMap(int32_t run, int32_t row) {
    if (miniMap) miniMap->Move(row, run, 0);
}

void ViewHub::MoveMiniMap(int32_t row, int32_t run, int panel) {
    if (miniMap) miniMap->Move(row, run, panel);
}

void ViewHub::MoveGraphs(int32_t row, int32_t run, int panel) {
    for (GraphXYForm* form : OpenGraphForms()) {
        form->Cursors().UpDateGraphAni(row, run, panel, 2);
        form->Box()->update();
    }
}

int ViewHub::AskNewMarkerName() {
    AddTrackMarkerForm form(map ? static_cast<QWidget*>(map) : nullptr);
    return form.Exec();
}

}  // namespace tl::views
