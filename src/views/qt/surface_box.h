// A drawing box over a retained raster surface, as the map, its two strips,
// the dashboards and the mini map use it: the surface is the widget's size
// times its device pixel ratio (crisp lines at 200 %) at 96 dpi times that
// ratio, so one logical pixel is 15 twips; paintEvent shows the surface's
// picture, and the mouse arrives in twips.
#pragma once

#include <QWidget>
#include <functional>

#include "platform/render/painter_surface.h"

namespace tl::views {

// The twips of a logical pixel.
inline constexpr double kTwipsPerPixel = 15.0;

// VB colour (0x00BBGGRR) as a QColor.
QColor FromVbColour(uint32_t colour);

class SurfaceBox : public QWidget {
    Q_OBJECT
  public:
    explicit SurfaceBox(const QString& name, QWidget* parent = nullptr);
    render::RasterSurface& Surface() { return surface_; }
    // Run after the surface took a new size or resolution: draw again.
    std::function<void()> resized;
    // Button 1 left, 2 right, 4 middle; positions in twips.
    std::function<void(int button, double x, double y)> pressed, moved, released;
    std::function<void()> doubleClicked;
    std::function<bool(int ascii)> keyPressed;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    bool FitSurface();
    render::RasterSurface surface_;
};

}  // namespace tl::views
