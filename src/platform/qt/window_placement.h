// Placing the program's small windows.
#pragma once

class QWidget;

namespace tl::qt {

// Moves widget so that its frame is centred on window's frame, or on the
// primary screen's free area when window is null or not shown.
void CentreWidgetOn(QWidget* widget, const QWidget* window);

}  // namespace tl::qt
