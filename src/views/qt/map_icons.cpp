#include "views/qt/map_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cmath>

namespace tl::views {
namespace {

const QColor kInk(0x20, 0x40, 0x80);

void Arrow(QPainter& p, QPointF from, QPointF to) {
    p.drawLine(from, to);
    const QPointF d = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
    const QPointF n(-d.y(), d.x());
    QPainterPath head;
    head.moveTo(to + d * 1.5);
    head.lineTo(to - d * 3.5 + n * 3.5);
    head.lineTo(to - d * 3.5 - n * 3.5);
    head.closeSubpath();
    p.fillPath(head, p.pen().color());
}

void Magnifier(QPainter& p, const QPen& pen) {
    p.drawEllipse(QPointF(8, 8), 5.5, 5.5);
    p.setPen(QPen(kInk, 2.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(12.2, 12.2), QPointF(17.5, 17.5));
    p.setPen(pen);
}

// A filled triangle pointing right (dir 1) or left (dir -1) at x, 10.
void Triangle(QPainter& p, double x, int dir, double size, const QColor& fill) {
    QPainterPath t;
    t.moveTo(x + dir * size, 10);
    t.lineTo(x, 10 - size);
    t.lineTo(x, 10 + size);
    t.closeSubpath();
    p.fillPath(t, fill);
}

// A marker line across a piece of track, green with round ends.
void MarkerLine(QPainter& p) {
    p.setPen(QPen(QColor(0x90, 0x90, 0x90), 3.0, Qt::SolidLine, Qt::RoundCap));
    p.drawArc(QRectF(-6, 4, 24, 24), 20 * 16, 70 * 16);
    p.setPen(QPen(QColor(0, 0xA0, 0), 1.8, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(3, 15), QPointF(11, 5));
    p.setBrush(QColor(0, 0xA0, 0));
    p.drawEllipse(QPointF(3, 15), 1.8, 1.8);
    p.drawEllipse(QPointF(11, 5), 1.8, 1.8);
    p.setBrush(Qt::NoBrush);
}

void Draw(QPainter& p, const QString& c) {
    QPen pen(kInk, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    if (c == QLatin1String("ZoomIn") || c == QLatin1String("ZoomOut")) {
        Magnifier(p, pen);
        p.drawLine(QPointF(5, 8), QPointF(11, 8));
        if (c == QLatin1String("ZoomIn")) p.drawLine(QPointF(8, 5), QPointF(8, 11));
    } else if (c == QLatin1String("ZoomWindow")) {
        p.setPen(QPen(kInk, 1.3, Qt::DashLine));
        p.drawRect(QRectF(2.5, 2.5, 11, 9));
        p.setPen(pen);
        Arrow(p, QPointF(9, 7), QPointF(16, 15));
    } else if (c == QLatin1String("ShowWholeTrack")) {
        p.drawRect(QRectF(1.5, 2.5, 17, 15));
        p.setPen(QPen(QColor(0xC0, 0x30, 0x30), 1.6));
        QPainterPath loop;
        loop.moveTo(5, 13);
        loop.cubicTo(3, 6, 10, 4, 12, 8);
        loop.cubicTo(13, 11, 17, 10, 15.5, 14);
        loop.cubicTo(14, 16, 7, 16, 5, 13);
        p.drawPath(loop);
    } else if (c == QLatin1String("RotateCW") || c == QLatin1String("RotateCCW")) {
        const bool cw = c == QLatin1String("RotateCW");
        const QRectF r(3.5, 3.5, 13, 13);
        // An open circle with the arrow head at its end.
        p.drawArc(r, cw ? 100 * 16 : 80 * 16, cw ? 250 * 16 : -250 * 16);
        const double a = (cw ? 100 + 250 : 80 - 250) * M_PI / 180.0;
        const QPointF end(10 + 6.5 * std::cos(a), 10 - 6.5 * std::sin(a));
        const QPointF tangent =
            cw ? QPointF(std::sin(a), std::cos(a)) : QPointF(-std::sin(a), -std::cos(a));
        Arrow(p, end - tangent * 2.0, end + tangent * 1.0);
    } else if (c == QLatin1String("AddNewNode") || c == QLatin1String("DeleteNode")) {
        MarkerLine(p);
        if (c == QLatin1String("AddNewNode")) {
            p.setPen(QPen(kInk, 2.0, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(15, 12), QPointF(15, 19));
            p.drawLine(QPointF(11.5, 15.5), QPointF(18.5, 15.5));
        } else {
            p.setPen(QPen(QColor(0xD0, 0x20, 0x20), 2.0, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(12, 12), QPointF(18, 18));
            p.drawLine(QPointF(18, 12), QPointF(12, 18));
        }
    } else if (c == QLatin1String("RewindToMarker") || c == QLatin1String("ForwardToMarker")) {
        const int dir = c == QLatin1String("RewindToMarker") ? -1 : 1;
        const double bar = dir < 0 ? 3.5 : 16.5;
        Triangle(p, dir < 0 ? 11 : 3, dir, 6, kInk);
        Triangle(p, dir < 0 ? 17 : 9, dir, 6, kInk);
        p.setPen(QPen(QColor(0, 0xA0, 0), 2.2));
        p.drawLine(QPointF(bar, 4), QPointF(bar, 16));
    } else if (c == QLatin1String("RewindButton")) {
        Triangle(p, 10, -1, 6, kInk);
        Triangle(p, 17, -1, 6, kInk);
    } else if (c == QLatin1String("FForwardButton")) {
        Triangle(p, 3, 1, 6, kInk);
        Triangle(p, 10, 1, 6, kInk);
    } else if (c == QLatin1String("StopButton")) {
        p.fillRect(QRectF(5, 4, 3.5, 12), kInk);
        p.fillRect(QRectF(11.5, 4, 3.5, 12), kInk);
    } else if (c == QLatin1String("PlayButton")) {
        Triangle(p, 5, 1, 7, QColor(0, 0x90, 0));
    } else if (c == QLatin1String("SlowPlayButton")) {
        // Play at a quarter: a small triangle and a snail's pace of dots.
        Triangle(p, 3, 1, 5, QColor(0, 0x90, 0));
        p.setBrush(kInk);
        p.setPen(Qt::NoPen);
        for (int i = 0; i < 3; ++i) p.drawEllipse(QPointF(11 + i * 3, 15), 1.0, 1.0);
        p.setBrush(Qt::NoBrush);
    } else if (c == QLatin1String("JumpButton")) {
        QPainterPath hop;
        hop.moveTo(3, 15);
        hop.cubicTo(5, 3, 13, 3, 15, 12);
        p.drawPath(hop);
        Arrow(p, QPointF(14.2, 9.5), QPointF(15.5, 14));
        p.drawLine(QPointF(2, 17), QPointF(18, 17));
    }
}

}  // namespace

QIcon MapIcon(const QString& control) {
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0}) {
        QPixmap pixmap(QSize(20, 20) * ratio);
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        Draw(p, control);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace tl::views
