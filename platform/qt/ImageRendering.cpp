#include "platform/qt/ImageRendering.h"

#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QPainter>
#include <QSvgRenderer>

namespace QtPlatform {
namespace {

/// No icon is as large, and anybody may name a file for one.
constexpr qint64 largestFile = 8LL << 20;

bool isFile(const QString& source) {
    return source.startsWith('/') || source.startsWith(':');
}

/// A pipe or a device would be waited for, or never end.
bool isReadable(const QString& source) {
    const QFileInfo file(source);
    return file.isFile() && file.size() <= largestFile;
}

} // namespace

QImage renderImage(const Platform::Image& image, const QColor& templateColor, int size) {
    const auto source = QString::fromStdString(image.source);
    if (isFile(source) && !isReadable(source)) {
        return {};
    }
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
