#pragma once

#include <QQuickAsyncImageProvider>
#include <QQuickImageProvider>

namespace QtPlatform {

/// The program's symbols in one colour: "image://symbol/NAME/RRGGBB" or ".../AARRGGBB", square, with as many
/// pixels as are asked for.
class SymbolImages : public QQuickImageProvider {
public:
    SymbolImages() : QQuickImageProvider(QQuickImageProvider::Image) {}

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

/// Pictures of the program and icons of the desktop's theme: "image://icon/SOURCE", where SOURCE is that of a
/// `Platform::Image`, percent-encoded. They are drawn on the main thread, one an event, so that a list of
/// apps never keeps its window waiting. A single clear pixel when there is no such picture.
class IconImages : public QQuickAsyncImageProvider {
public:
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;
};

} // namespace QtPlatform
