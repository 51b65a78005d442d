#include "platform/qt/window_placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace tl::qt {

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

}  // namespace tl::qt
