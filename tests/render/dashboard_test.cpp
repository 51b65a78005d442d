// The virtual dashboard: the scale maths on worked examples, the faces' red
// and green rims where the scale's ends are, needles that stand where their
// values put them and leave the faces bit for bit when drawn again, on the
// window's raster surface with the demo road run.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "platform/render/painter_surface.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"
#include "views/dashboard.h"
#include "views/playback.h"

namespace tl {
namespace {

struct Scale {
    float min, max, multiplier;
    int32_t ticks;
};

Scale Ticks(float min, float max) {
    Scale s{min, max, 0, 0};
    CalcTicks(s.max, s.min, s.multiplier, s.ticks);
    return s;
}

TEST(CalcTicks, WorkedExamples) {
    // Symmetric: m = 50 at multiplier 10, step 5, top 55.
    Scale s = Ticks(-3, 5);
    EXPECT_EQ(s.min, -55);
    EXPECT_EQ(s.max, 55);
    EXPECT_EQ(s.ticks, 22);
    EXPECT_EQ(s.multiplier, 10);
    EXPECT_EQ(DialMultiplierText(s.multiplier), "x 1/10");
    // One-sided: multiplier 0.1, m = 720, step 50, top 750.
    s = Ticks(0, 7200);
    EXPECT_EQ(s.min, 0);
    EXPECT_EQ(s.max, 750);
    EXPECT_EQ(s.ticks, 15);
    EXPECT_FLOAT_EQ(s.multiplier, 0.1f);
    EXPECT_EQ(DialMultiplierText(s.multiplier), "x 10");
    // All rows at 0 come as -1 ... 1: m = 10 at multiplier 10, step 2.
    s = Ticks(-1, 1);
    EXPECT_EQ(s.min, -12);
    EXPECT_EQ(s.max, 12);
    EXPECT_EQ(s.ticks, 12);
    // A negative upper bound: the scale ends at 0 (m = 30, step 2).
    s = Ticks(-30, -5);
    EXPECT_EQ(s.min, -32);
    EXPECT_EQ(s.max, 0);
    EXPECT_EQ(s.ticks, 16);
    EXPECT_EQ(DialMultiplierText(s.multiplier), " ");
    // A maximum on a step: one step higher (m = 100, step 5).
    s = Ticks(0, 100);
    EXPECT_EQ(s.max, 105);
    EXPECT_EQ(s.ticks, 21);
    // Above 1000 scale units the multiplier comes down: 0 ... 2500 rpm.
    s = Ticks(0, 2500);
    EXPECT_FLOAT_EQ(s.multiplier, 0.1f);
    EXPECT_EQ(s.max, 260);  // m = 250, step 20
    EXPECT_EQ(s.ticks, 13);
}

class DashboardTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        ASSERT_EQ(LoadDemoRun(), 1);
        const auto& vars = Catalogue().RunVars;
        dash.DashVar = {vars[slot::SpeedKph].Name, vars[slot::EngineSpeed].Name,
                        vars[slot::AccelLong].Name, vars[slot::AccelLat].Name};
        dash.FindDialLimits();
        dash.SetRunName(Store().RunInfo[1].Name);
        dash.ReDrawDash();
        face = surface.Image().copy();
    }
    // The pixel at a point given in twips.
    QColor At(const QImage& image, double x, double y) const {
        const double ppt = surface.PixelsPerTwip();
        return QColor(image.pixel(static_cast<int>(std::floor(x * ppt)),
                                  static_cast<int>(std::floor(y * ppt))));
    }
    // A point of dial d at a fraction of its radius and an angle in degrees,
    // anticlockwise from the right.
    void OnDial(int d, double fraction, double degrees, double& x, double& y) const {
        const DialRecord& dial = dash.Dials[d];
        const double a = degrees * 3.141592654 / 180;
        x = dial.DialX + fraction * dial.DialRadius * std::cos(a);
        y = dial.DialY - fraction * dial.DialRadius * std::sin(a);
    }

    render::RasterSurface surface{467, 200, 96.0};  // 7000 x 3000 twips
    Dashboard dash{surface, 0};
    QImage face;
};

TEST_F(DashboardTest, ScalesHoldTheData) {
    EXPECT_EQ(dash.Caption, "Virtual Dashboard: " + Store().RunInfo[1].Name);
    const RunArray& rd = Store().RunData;
    for (const DialRecord& d : dash.Dials) {
        ASSERT_NE(d.VarColumn, ColumnOf(kNoDataSlot));
        float lo = 1e20f, hi = -1e20f;
        for (int32_t r = 1; r <= rd.UpperRow(); ++r) {
            lo = std::min(lo, rd(r, d.VarColumn));
            hi = std::max(hi, rd(r, d.VarColumn));
        }
        EXPECT_LE(d.DialMin, lo * d.DialMultiplier);
        EXPECT_GE(d.DialMax, hi * d.DialMultiplier);
        EXPECT_TRUE(d.DialMin == 0 || d.DialMax == 0 || d.DialMin == -d.DialMax);
        // Whole scale numbers from 10 up to some 1000.
        const float span = std::max(std::fabs(d.DialMin), std::fabs(d.DialMax));
        EXPECT_GE(span, 10);
        EXPECT_LE(span, 1100);
    }
    // The two large dials side by side, the small ones above each other.
    const double W = surface.ScaleWidth(), H = surface.ScaleHeight();
    ASSERT_LT(W / 5, H / 2);
    EXPECT_FLOAT_EQ(dash.Dials[0].DialRadius, W / 5);
    EXPECT_FLOAT_EQ(dash.Dials[1].DialX, 3 * W / 5);
    EXPECT_FLOAT_EQ(dash.Dials[2].DialRadius, W / 10);
    EXPECT_FLOAT_EQ(dash.Dials[3].DialY, 3 * H / 4);
}

TEST_F(DashboardTest, RedRimAtTheHighEndGreenAtTheLowEnd) {
    for (int d = 0; d < kDials; ++d) {
        const DialRecord& dial = dash.Dials[d];
        const double A = 270.0 / dial.DialTicks;
        const double k = A * (dial.DialTicks / 5);
        const double rim = 1 - 1.0 / 24;  // the middle of the rim, R - t / 2
        double x, y;
        // Between the first two ticks at the high end (upper right): red.
        OnDial(d, rim, 45 + A / 2, x, y);
        EXPECT_EQ(At(face, x, y), QColor(255, 0, 0)) << d;
        // Between the last two at the low end (lower right): green.
        OnDial(d, rim, 315 - A / 2, x, y);
        EXPECT_EQ(At(face, x, y), QColor(0, 255, 0)) << d;
        // Past the zones, at the left: the black face.
        OnDial(d, rim, 180 + A / 2, x, y);
        EXPECT_EQ(At(face, x, y), QColor(0, 0, 0)) << d;
        // Inside the rim at the high end, within the ring of scale numbers
        // (at R - 2 t): black.
        OnDial(d, 0.6, 45 + k / 2, x, y);
        EXPECT_EQ(At(face, x, y), QColor(0, 0, 0)) << d;
    }
}

TEST(DashboardFace, FewerThanFiveTicksHaveNoZones) {
    render::RasterSurface surface{200, 200, 96.0};
    Dashboard dash(surface, 1);
    surface.BackColor = kBlack;
    surface.Cls();
    dash.DrawDial(1500, 1500, 2800, 0, 4, "x", 4, 1);
    const double ppt = surface.PixelsPerTwip();
    const double a = (45 + 270.0 / 8) * 3.141592654 / 180, r = 1400 * (1 - 1.0 / 24);
    const QColor c(surface.Image().pixel(int((1500 + r * std::cos(a)) * ppt),
                                         int((1500 - r * std::sin(a)) * ppt)));
    EXPECT_EQ(c, QColor(0, 0, 0));
}

TEST_F(DashboardTest, NeedlesStandAtTheirValuesAndGoWhenDrawnAgain) {
    const DialRecord& big = dash.Dials[0];
    const double size = 2.0 * big.DialRadius, L = 0.85 * big.DialRadius;
    // The middle of the scale points left; the low end lower right.
    const float mid = (big.DialMin + big.DialMax) / 2;
    dash.UpDateDial(big.DialX, big.DialY, size, big.DialMin, big.DialMax, mid);
    const QImage drawn = surface.Image().copy();
    EXPECT_EQ(At(drawn, big.DialX - 0.6 * L, big.DialY), QColor(255, 255, 255));
    EXPECT_EQ(At(face, big.DialX - 0.6 * L, big.DialY), QColor(0, 0, 0));
    dash.UpDateDial(big.DialX, big.DialY, size, big.DialMin, big.DialMax, mid);
    const QImage again = surface.Image().copy();
    // Outside the hub every pixel is the face's again.
    const double ppt = surface.PixelsPerTwip();
    const double hub = (L / 16) * ppt + 2;
    const double cx = big.DialX * ppt, cy = big.DialY * ppt;
    int differing = 0;
    for (int y = 0; y < face.height(); ++y)
        for (int x = 0; x < face.width(); ++x) {
            if (std::hypot(x + 0.5 - cx, y + 0.5 - cy) <= hub) continue;
            if (face.pixel(x, y) != again.pixel(x, y)) ++differing;
        }
    EXPECT_EQ(differing, 0);

    // Playback's pairs: the picture at a row is the same however the
    // needles came there.
    const int32_t start = Store().RunInfo[1].RunStart;
    dash.ReDrawDash();
    dash.UpdateDash(start + 6000);
    EXPECT_FALSE(dash.DashFresh);
    EXPECT_EQ(dash.DashRow, start + 6000);
    const QImage atRow = surface.Image().copy();
    EXPECT_NE(atRow, face);
    dash.UpdateDash(start + 9000);
    EXPECT_NE(surface.Image(), atRow);
    dash.UpdateDash(start + 6000);
    EXPECT_EQ(surface.Image(), atRow);
    EXPECT_FLOAT_EQ(dash.Dials[0].DialValue,
                    RunData(start + 6000, dash.Dials[0].VarColumn) * dash.Dials[0].DialMultiplier);
    // Rows beyond the table are clamped.
    dash.UpdateDash(Store().RunData.UpperRow() + 50);
    EXPECT_EQ(dash.DashRow, Store().RunData.UpperRow());
}

// The windows of the dashboards as the track map form makes them.
struct DashViews : PlaybackViews {
    std::vector<std::unique_ptr<render::RasterSurface>> surfaces;
    std::vector<std::unique_ptr<Dashboard>> made;
    Dashboard* DashboardOf(int panel) override { return DashForms().At(panel); }
    Dashboard* CreateDashboard(int panel) override {
        surfaces.push_back(std::make_unique<render::RasterSurface>(467, 200, 96.0));
        made.push_back(std::make_unique<Dashboard>(*surfaces.back(), panel));
        DashForms().Open(panel, made.back().get());
        return made.back().get();
    }
    void CloseDashboard(int panel) override { DashForms().Close(panel); }
};

TEST_F(DashboardTest, ShownPerPanelClosedBeyondTheRunsAndHidden) {
    DashForms().Reset();
    DashViews views;
    Playback pb(views, [] { return 40000.0; });
    pb.DashVar = dash.DashVar;
    pb.RunsDisplayed = "2";
    pb.ShowDash_Click();
    ASSERT_TRUE(DashForms().InUse(0));
    ASSERT_TRUE(DashForms().InUse(1));
    Dashboard* second = DashForms().At(1);
    EXPECT_EQ(second->Caption, "Virtual Dashboard: " + Store().RunInfo[1].Name);
    EXPECT_FALSE(second->DashFresh);
    EXPECT_EQ(second->DashRow, Store().RunInfo[1].RunStart);
    EXPECT_EQ(second->Dials[1].DialMax, dash.Dials[1].DialMax);
    // A second press makes none again.
    pb.ShowDash_Click();
    EXPECT_EQ(views.made.size(), 2u);
    // A playback round moves them.
    pb.Panel(1).JumpToTime = "60";
    pb.JumpButton_Click(1);
    EXPECT_EQ(second->DashRow, Store().RunInfo[1].RunStart + 6000);
    // New selections reach every open dashboard.
    pb.DashVar[0] = "Select Variable";
    pb.DashVar_Click();
    EXPECT_EQ(second->Dials[0].VarColumn, ColumnOf(kNoDataSlot));
    // One run: the second panel's dashboard goes.
    pb.RunsDisplayed = "1";
    pb.RunsDisplayed_Change();
    EXPECT_TRUE(DashForms().InUse(0));
    EXPECT_FALSE(DashForms().InUse(1));
    pb.HideDash_Click();
    EXPECT_FALSE(DashForms().InUse(0));
    DashForms().Reset();
}

TEST(DashForms, EntriesPerPanel) {
    render::RasterSurface surface{50, 50, 96.0};
    Dashboard a(surface, 3);
    DashForms().Reset();
    EXPECT_EQ(DashForms().At(3), nullptr);
    DashForms().Open(3, &a);
    EXPECT_EQ(DashForms().At(3), &a);
    EXPECT_FALSE(DashForms().InUse(2));
    DashForms().Open(12, &a);  // no such panel
    DashForms().Close(3);
    EXPECT_FALSE(DashForms().InUse(3));
    DashForms().Reset();
}

}  // namespace
}  // namespace tl
