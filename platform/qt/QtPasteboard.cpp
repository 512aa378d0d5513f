#include "platform/qt/QtPasteboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QMimeData>

#include <memory>

namespace QtPlatform {

void QtPasteboard::clearContents() {
    QGuiApplication::clipboard()->clear();
}

bool QtPasteboard::writeImage(const std::vector<std::byte>& encoded) {
    QByteArray bytes(reinterpret_cast<const char*>(encoded.data()), static_cast<qsizetype>(encoded.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const auto format = reader.format();
    const auto image = reader.read();
    if (image.isNull()) {
        return false;
    }
    auto data = std::make_unique<QMimeData>();
    data->setImageData(image);
    data->setData(QStringLiteral("image/") + QString::fromLatin1(format), bytes);
    // The clipboard takes the ownership.
    QGuiApplication::clipboard()->setMimeData(data.release());
    return true;
}

} // namespace QtPlatform
