// The one thing the engine's hooks need from an open view: a way to rebuild
// itself from the run store. Every view window (graphs, bar charts, the track
// map, dashboards, tables) derives from ViewWindow besides its QWidget base;
// the shell hooks find them among the MDI children and the floating tool
// windows with a dynamic_cast.
#pragma once

namespace tl::qt {

class ViewWindow {
  public:
    virtual ~ViewWindow() = default;
    // The view's own regenerate routine (ReGenerateGraph, ReDraw, CalcFrequency,
    // ReDrawDash, RegenerateTable): read the run store again and redraw.
    virtual void Regenerate() = 0;
};

}  // namespace tl::qt
