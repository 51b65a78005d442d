// Placing the program's small windows.
#pragma once

#include <QList>
#include <QRect>

class QWidget;

namespace tl::qt {

// Moves widget so that its frame is centred on window's frame, or on the
// primary screen's free area when window is null or not shown.
void CentreWidgetOn(QWidget* widget, const QWidget* window);

// A stored window box (frame position, client size) kept within reach: when
// no screen's free area holds enough of its title strip to grab it (a place
// saved on a monitor that is gone, or typed into the options file), the box
// is shrunk to fit the first area and moved fully inside it. A box that is
// reachable is returned as it is. With no areas the box is returned as it is.
QRect KeepOnScreens(const QRect& box, const QList<QRect>& areas);

// The free areas of all screens, the primary first.
QList<QRect> ScreenAreas();

// Gives a top-level widget a stored place (left, top of the frame; width,
// height of the client), kept within reach of the screens.
void PlaceWindowAt(QWidget* widget, const QRect& box);

}  // namespace tl::qt
