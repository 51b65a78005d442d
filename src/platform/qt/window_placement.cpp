#include "platform/qt/window_placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace tl::qt {

namespace {

// How much of a window's title strip must lie on a screen to grab it.
constexpr int kGripHeight = 24;
constexpr int kGripWidth = 48;

}  // namespace

void CentreWidgetOn(QWidget* widget, const QWidget* window) {
    QRect area;
    if (window != nullptr && window->isVisible()) {
        area = window->frameGeometry();
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
        area = screen->availableGeometry();
    }
    if (!area.isValid()) return;
    QRect box = widget->frameGeometry();
    box.moveCenter(area.center());
    widget->move(box.topLeft());
}

QRect KeepOnScreens(const QRect& box, const QList<QRect>& areas) {
    if (areas.isEmpty() || !box.isValid()) return box;
    const QRect grip(box.left(), box.top(), box.width(), std::min(kGripHeight, box.height()));
    for (const QRect& area : areas) {
        const QRect shared = area.intersected(grip);
        if (shared.width() >= std::min(kGripWidth, box.width()) &&
            shared.height() >= std::min(kGripHeight / 2, grip.height()))
            return box;
    }
    const QRect& area = areas.front();
    QRect placed = box;
    placed.setWidth(std::min(box.width(), area.width()));
    placed.setHeight(std::min(box.height(), area.height()));
    const int left = std::clamp(box.left(), area.left(), area.right() - placed.width() + 1);
    const int top = std::clamp(box.top(), area.top(), area.bottom() - placed.height() + 1);
    placed.moveTopLeft(QPoint(left, top));
    return placed;
}

QList<QRect> ScreenAreas() {
    QList<QRect> areas;
    if (QScreen* primary = QGuiApplication::primaryScreen()) areas << primary->availableGeometry();
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != QGuiApplication::primaryScreen()) areas << screen->availableGeometry();
    }
    return areas;
}

void PlaceWindowAt(QWidget* widget, const QRect& box) {
    const QRect kept = KeepOnScreens(box, ScreenAreas());
    widget->resize(kept.size());
    widget->move(kept.topLeft());
}

}  // namespace tl::qt
