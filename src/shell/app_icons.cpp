#include "shell/app_icons.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

// The icons live in the shell's static library, whose resource table a
// linker would drop unless it is asked for by name.
static void InitIconResources() {
    Q_INIT_RESOURCE(icons);
}

namespace tl::shell {
namespace {

QPixmap Render(QSvgRenderer& svg, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.end();
    return QPixmap::fromImage(image);
}

// Grey, at 40 % opacity: plainly not available beside the coloured icons.
QPixmap Disabled(const QPixmap& normal) {
    QImage image = normal.toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = line[x];
            const int grey = (qRed(p) * 11 + qGreen(p) * 16 + qBlue(p) * 5) / 32;
            const int lighter = grey + (255 - grey) / 2;
            line[x] = qRgba(lighter, lighter, lighter, qAlpha(p) * 2 / 5);
        }
    }
    return QPixmap::fromImage(image);
}

QIcon Build(const QString& name, bool withDisabled) {
    static const bool loaded = (InitIconResources(), true);
    (void)loaded;
    QSvgRenderer svg(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!svg.isValid()) return QIcon();
    QIcon icon;
    for (int size : {16, 22, 24, 32, 44, 48, 64, 128}) {
        const QPixmap normal = Render(svg, size);
        icon.addPixmap(normal, QIcon::Normal);
        if (withDisabled) icon.addPixmap(Disabled(normal), QIcon::Disabled);
    }
    return icon;
}

}  // namespace

QIcon ToolIcon(const QString& name) {
    return Build(name, true);
}

QIcon AppIcon() {
    static const QIcon icon = Build(QStringLiteral("app"), false);
    return icon;
}

}  // namespace tl::shell
