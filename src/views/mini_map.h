// The mini map (frmMiniMap, "Mini Track Map") without its window: the whole
// path of one run in black, and a cross that follows the cursor of the other
// views. It draws from the same compressed index and transform as the track
// map (views/track_map.h), scaled for its one run and never rotated.
//
// How a window uses it: a RasterSurface for its picture (retained), a
// MiniMap over it; Form_Paint and a resize call ReDraw(MiniRun), and the
// other views' moves arrive as UpDateGraphAni in pairs (draw, then the same
// call again to erase).
#pragma once

#include <cstdint>
#include <vector>

#include "core/draw_surface.h"
#include "views/track_map.h"

namespace tl {

class MiniMap {
  public:
    explicit MiniMap(DrawSurface& surface) : s_(surface) {}

    int32_t MiniRun = 1;
    float MiniScale = 100;
    float MiniRotation = 0;
    float MiniCentreX = 0, MiniCentreY = 0;
    float MiniMinX = 0, MiniMaxX = 0, MiniMinY = 0, MiniMaxY = 0;
    std::vector<int32_t> MiniIndex;
    // MiniChangeSum and MiniChangeRows.
    PositionCheck change;

    MapTransform Transform() const;
    double XPos2Screen(double x, double y) const { return Transform().XPos2Screen(x, y); }
    double YPos2Screen(double x, double y) const { return Transform().YPos2Screen(x, y); }

    // Limits, centre and scale from the run's own rows.
    void SetMapScale(int32_t run);
    // The change check (a change compresses again and rescales), the
    // surface cleared, the run's path in black when it has more than 10
    // rows.
    void ReDraw(int32_t run);
    // The cross at a RunData row; another run is taken first (rescaled and
    // redrawn). Drawn twice with the same arguments it is gone.
    void UpDateGraphAni(int32_t row, int32_t run, int colourIndex);

  private:
    DrawSurface& s_;
};

}  // namespace tl
