// frmVirtualDash's logic: four round instruments with needles for one
// playback panel, two large and two small, on a black instrument board.
//
// A widget owns the form and a raster surface of its inner size; it builds a
// Dashboard over that surface and forwards:
//   Form_Load   -> FindDialLimits(), then sizes itself kDashWidth x
//                  kDashHeight twips with DashResizing set for the duration;
//   Form_Paint  -> ReDrawDash(), then UpdateDash(CurrentIndex(PanelIndex) +
//                  RunStart of the panel's run) (Playback::PanelRow gives it);
//   Form_Resize -> unless DashResizing: resize the surface, ReDrawDash(),
//                  UpdateDash(DashRow);
//   Form_Unload -> DashForms().Close(PanelIndex).
// Its window title is Caption. Playback moves the needles with UpdateDash at
// each step; only the needles (XOR) and the hubs are drawn then, the faces
// are painted only by ReDrawDash.
//
// Scales: every scale holds 0 and is one-sided or symmetric, with whole
// scale numbers from 10 up to some 1000; DialMultiplier turns a raw value into
// scale units and the multiplier text under the name ("x 1/10", "x 10") says
// how to read the scale back.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/draw_surface.h"

namespace tl {

struct DialRecord {
    int32_t VarColumn = 0;       // RunData column of the variable
    float DialMin = 0;           // scale's lower end, scale units
    float DialMax = 0;           // scale's upper end, scale units
    float DialX = 0, DialY = 0;  // centre on the form, twips
    float DialRadius = 0;
    float DialValue = 0;       // last shown value, scale units
    int32_t DialTicks = 0;     // intervals on the scale
    float DialMultiplier = 1;  // raw value x this = value on the scale
};

// The scale maths: max, min and multiplier in and out (multiplier is set
// here, whatever comes in), ticks out.
void CalcTicks(float& max, float& min, float& multiplier, int32_t& ticks);

// The multiplier text of a dial: "x " and 1 / multiplier below 1, "x 1/" and
// the multiplier above 1, " " at 1.
std::string DialMultiplierText(float multiplier);

inline constexpr double kDashWidth = 7000;
inline constexpr double kDashHeight = 3000;
inline constexpr int kDials = 4;

class Dashboard {
  public:
    // The surface is the form's and outlives the dashboard. The needles are
    // white XOR marks on the black faces.
    Dashboard(DrawSurface& surface, int panelIndex);

    // The four variable names of DashVar on the track map form ("Select
    // Variable" or an unknown name gives the *No Data* column).
    std::array<std::string, kDials> DashVar;
    std::array<DialRecord, kDials> Dials;
    int PanelIndex = 0;
    int32_t DashRow = 0;
    bool DashFresh = true;
    bool DashResizing = false;
    std::string Caption;
    // The panel's colour, VqColorIndex(PanelIndex), for the window's frame.
    uint32_t Colour = 0;

    // Caption "Virtual Dashboard: " + the run's name.
    void SetRunName(const std::string& runName);
    // The four scales from the data of every run in memory.
    void FindDialLimits();
    // Clears the board to black, lays out the four dials by the surface's
    // size and paints their faces; no needles stand afterwards (DashFresh).
    void ReDrawDash();
    void DrawDial(double x, double y, double size, float min, float max, const std::string& name,
                  int32_t ticks, float multiplier);
    // One needle in XOR and the hub over it: drawn twice at the same value
    // the needle is gone.
    void UpDateDial(double x, double y, double size, float min, float max, float value);
    // The needles to a RunData row (clamped to 1 ... the table's upper row),
    // erasing the ones standing unless the picture is fresh.
    void UpdateDash(int32_t row);
    // DashVar_click: new limits, faces and needles.
    void Refresh();

  private:
    DrawSurface& s_;
};

// DashForms: per playback panel 0 to 9 an entry, in use or free, with its
// form. Closing a dashboard frees its entry, so playback skips it.
class DashFormTable {
  public:
    static constexpr int kPanels = 10;
    struct Entry {
        bool inUse = false;
        Dashboard* form = nullptr;
    };
    void Open(int panel, Dashboard* form);
    void Close(int panel);
    // The dashboard of a panel in use, nullptr otherwise.
    Dashboard* At(int panel) const;
    bool InUse(int panel) const { return At(panel) != nullptr; }
    void Reset();

  private:
    std::array<Entry, kPanels> entries_{};
};

DashFormTable& DashForms();

}  // namespace tl
