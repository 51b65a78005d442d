// The mini map: one run's path and the cursor cross, on the track map's
// compressed index and transform.
#include "views/mini_map.h"

#include <algorithm>
#include <cmath>

#include "core/support.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace tl {

MapTransform MiniMap::Transform() const {
    MapTransform t;
    t.W = s_.ScaleWidth();
    t.H = s_.ScaleHeight();
    t.scale = MiniScale;
    t.rotation = MiniRotation;
    t.centreX = MiniCentreX;
    t.centreY = MiniCentreY;
    return t;
}

void MiniMap::SetMapScale(int32_t run) {
    if (run < 1 || run > Store().RunCount) return;
    const RunRecord& r = Store().RunInfo[run];
    const TrackLimits l = PositionLimits(r.RunStart, r.RunEnd - 1);
    MiniMinX = l.MinX;
    MiniMaxX = l.MaxX;
    MiniMinY = l.MinY;
    MiniMaxY = l.MaxY;
    MiniCentreX = (l.MinX + l.MaxX) / 2;
    MiniCentreY = (l.MinY + l.MaxY) / 2;
    MiniRotation = 0;
    MiniScale = WholeTrackScale(l, s_.ScaleWidth(), s_.ScaleHeight());
}

void MiniMap::ReDraw(int32_t run) {
    const PositionCheck now = TakePositionCheck();
    if (!(now == change)) {
        change = now;
        MiniIndex = CompressData();
        SetMapScale(run);
    }
    MiniScale = FindClip(0.01f, MiniScale, 100.0f);
    s_.Cls();
    s_.DrawMode = DrawModes::CopyPen;
    s_.DrawWidth = 1;
    if (run < 1 || run > Store().RunCount) return;
    const RunRecord& r = Store().RunInfo[run];
    const RunArray& d = Store().RunData;
    const int32_t cx = ColumnOf(slot::PositionX), cy = ColumnOf(slot::PositionY);
    if (r.RunLength <= 10 || cx >= d.Columns() || cy >= d.Columns()) return;
    const MapTransform t = Transform();
    std::vector<double> xs, ys;
    const int32_t end = std::min(r.RunEnd, d.UpperRow());
    for (size_t k = FirstCompressedEntry(MiniIndex, r.RunStart);
         k < MiniIndex.size() && MiniIndex[k] <= end; ++k) {
        const int32_t i = MiniIndex[k];
        xs.push_back(t.XPos2Screen(d(i, cx), d(i, cy)));
        ys.push_back(t.YPos2Screen(d(i, cx), d(i, cy)));
    }
    if (xs.size() > 1) s_.Polyline(xs.data(), ys.data(), int(xs.size()), kBlack);
}

void MiniMap::UpDateGraphAni(int32_t row, int32_t run, int colourIndex) {
    if (run != MiniRun) {
        MiniRun = run;
        SetMapScale(run);
        ReDraw(run);
    }
    if (!s_.CanUndoMarks() || row < 0 || row > Store().RunData.UpperRow()) return;
    const MapTransform t = Transform();
    const double x = RunData(row, ColumnOf(slot::PositionX));
    const double y = RunData(row, ColumnOf(slot::PositionY));
    const double px = t.XPos2Screen(x, y), py = t.YPos2Screen(x, y);
    const double half = std::floor(std::min(t.W, t.H) / 15);
    const uint32_t c = VqColorIndex(colourIndex, true);
    s_.DrawMode = DrawModes::XorPen;
    s_.DrawWidth = 1;
    s_.Line(px - half, py, px + half, py, c);
    s_.Line(px, py - half, px, py + half, c);
    s_.DrawMode = DrawModes::CopyPen;
}

}  // namespace tl
