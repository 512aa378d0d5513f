#include "platform/qt/screens/ImageRendering.h"

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

namespace QtPlatform {
namespace {

/// No icon is as large, and anybody may name a file for one.
constexpr qint64 largestFile = 8LL << 20;
/// The same, and a small file may hold a picture that takes gigabytes.
constexpr qint64 mostPixels = 16LL << 20;

bool isFile(const QString& source) {
    return source.startsWith('/') || source.startsWith(':');
}

/// As much of that square as its shape fills.
QSize within(const QSize& square, const QSize& shape) {
    return shape.scaled(square, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

bool isDrawing(const QString& source) {
    return source.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive) ||
           source.endsWith(QLatin1String(".svgz"), Qt::CaseInsensitive);
}

/// A pipe or a device would be waited for, or never end.
bool isReadable(const QString& source) {
    const QFileInfo file(source);
    return file.isFile() && file.size() <= largestFile;
}

/// Empty where it cannot be read.
QByteArray contentsOf(const QString& source) {
    QFile file(source);
    return file.open(QIODevice::ReadOnly) ? file.read(largestFile) : QByteArray();
}

/// The drawing whose pixels are those of this size or of a part of it: some have one beside them for each.
QString drawnFor(const QString& source, int size) {
    for (const int grid : {24, 22, 18, 16}) {
        auto drawing = source.chopped(4) + QLatin1Char('-') + QString::number(grid) + source.right(4);
        if (size % grid == 0 && QFile::exists(drawing)) {
            return drawing;
        }
    }
    return source;
}

QImage drawn(QSvgRenderer& drawing, const QSize& size) {
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    return picture;
}

/// Not larger than it is.
QImage photograph(QByteArray bytes, const QSize& largest) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    const auto size = reader.size();
    if (!size.isValid() || qint64{size.width()} * size.height() > mostPixels) {
        return {};
    }
    if (size.width() > largest.width() || size.height() > largest.height()) {
        reader.setScaledSize(within(largest, size));
    }
    return reader.read();
}

} // namespace

QImage renderImage(const Platform::Image& image, const QColor& templateColor, int size) {
    const auto source = QString::fromStdString(image.source);
    const QSize square(size, size);
    if (!isFile(source)) {
        return QIcon::fromTheme(source).pixmap(square, 1.0).toImage();
    }
    if (!isReadable(source)) {
        return {};
    }
    if (!image.isTemplate && !isDrawing(source)) {
        return photograph(contentsOf(source), square);
    }
    QSvgRenderer drawing;
    // One that moves would want a timer, which only threads with an event loop have.
    drawing.setFramesPerSecond(0);
    if (image.isTemplate) {
        drawing.load(
            contentsOf(drawnFor(source, size)).replace("currentColor", templateColor.name().toLatin1()));
    } else {
        // What it says about the file names it. A file that grows meanwhile is read whole.
        drawing.load(source);
    }
    if (!drawing.isValid()) {
        return {};
    }
    return drawn(drawing, image.isTemplate ? square : within(square, drawing.defaultSize()));
}

} // namespace QtPlatform
