#include "platform/qt/ImageRendering.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <array>

namespace QtPlatform {
namespace {

constexpr std::array panelSizes{16, 18, 20, 22, 24, 32, 36, 44, 48, 64};

bool isFile(const QString& source) {
    return source.startsWith('/') || source.startsWith(':');
}

} // namespace

QIcon renderIcon(const Platform::Image& image, const QColor& templateColor) {
    const auto source = QString::fromStdString(image.source);
    if (!isFile(source)) {
        return QIcon::fromTheme(source);
    }
    if (!image.isTemplate) {
        const QIcon icon(source);
        // An icon that cannot be read is only found out when it is drawn.
        return icon.pixmap(panelSizes[0]).isNull() ? QIcon() : icon;
    }
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QSvgRenderer renderer(file.readAll().replace("currentColor", templateColor.name().toLatin1()));
    if (!renderer.isValid()) {
        return {};
    }
    QIcon icon;
    for (const int size : panelSizes) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace QtPlatform
