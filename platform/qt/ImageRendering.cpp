#include "platform/qt/ImageRendering.h"

#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QSvgRenderer>

namespace QtPlatform {
namespace {

bool isFile(const QString& source) {
    return source.startsWith('/') || source.startsWith(':');
}

} // namespace

QImage renderImage(const Platform::Image& image, const QColor& templateColor, int size) {
    const auto source = QString::fromStdString(image.source);
    if (!isFile(source) || !image.isTemplate) {
        const auto icon = isFile(source) ? QIcon(source) : QIcon::fromTheme(source);
        return icon.pixmap(QSize(size, size), 1.0).toImage();
    }
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QSvgRenderer renderer(file.readAll().replace("currentColor", templateColor.name().toLatin1()));
    if (!renderer.isValid()) {
        return {};
    }
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    renderer.render(&painter);
    return picture;
}

} // namespace QtPlatform
