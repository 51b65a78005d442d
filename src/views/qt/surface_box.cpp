#include "views/qt/surface_box.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace tl::views {
namespace {

int Buttons(Qt::MouseButtons b) {
    int v = 0;
    if (b & Qt::LeftButton) v |= 1;
    if (b & Qt::RightButton) v |= 2;
    if (b & Qt::MiddleButton) v |= 4;
    return v;
}

}  // namespace

QColor FromVbColour(uint32_t colour) {
    return QColor(colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF);
}

SurfaceBox::SurfaceBox(const QString& name, QWidget* parent)
    : QWidget(parent), surface_(1, 1, 96.0) {
    setObjectName(name);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
}

bool SurfaceBox::FitSurface() {
    const qreal ratio = devicePixelRatioF();
    const int w = std::max(1, static_cast<int>(std::lround(width() * ratio)));
    const int h = std::max(1, static_cast<int>(std::lround(height() * ratio)));
    const QImage& image = surface_.Image();
    const bool sameDpi = std::abs(surface_.PixelsPerTwip() * kTwipsPerInch / 96.0 - ratio) < 1e-6;
    if (image.width() == w && image.height() == h && sameDpi) return false;
    surface_.Resize(w, h, 96.0 * ratio);
    return true;
}

void SurfaceBox::paintEvent(QPaintEvent*) {
    // Moved to a screen of another scale: drawn again at its resolution.
    if (FitSurface() && resized) resized();
    const qreal ratio = devicePixelRatioF();
    QPainter p(this);
    const QImage& image = surface_.Image();
    p.drawImage(QRectF(0, 0, image.width() / ratio, image.height() / ratio), image,
                QRectF(image.rect()));
}

void SurfaceBox::resizeEvent(QResizeEvent*) {
    if (FitSurface() && resized) resized();
}

void SurfaceBox::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    const QPointF at = event->position() * kTwipsPerPixel;
    if (pressed) pressed(Buttons(event->button()), at.x(), at.y());
    update();
}

void SurfaceBox::mouseMoveEvent(QMouseEvent* event) {
    const QPointF at = event->position() * kTwipsPerPixel;
    if (moved) moved(Buttons(event->buttons()), at.x(), at.y());
    update();
}

void SurfaceBox::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF at = event->position() * kTwipsPerPixel;
    if (released) released(Buttons(event->button()), at.x(), at.y());
    update();
}

void SurfaceBox::mouseDoubleClickEvent(QMouseEvent* event) {
    if (doubleClicked && event->button() == Qt::LeftButton) {
        doubleClicked();
        update();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

void SurfaceBox::keyPressEvent(QKeyEvent* event) {
    int ascii = 0;
    if (event->key() == Qt::Key_Escape) {
        ascii = 27;
    } else if (!event->text().isEmpty()) {
        ascii = event->text().at(0).unicode();
    }
    if (ascii != 0 && keyPressed && keyPressed(ascii)) {
        update();
        return;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace tl::views
