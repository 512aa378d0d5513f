#pragma once

#include "platform/Image.h"

#include <QColor>
#include <QImage>
#include <QQuickAsyncImageProvider>
#include <QQuickImageProvider>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace QtPlatform {

/// The program's symbols in one colour: "image://symbol/NAME/RRGGBB" or ".../AARRGGBB", square, with as many
/// pixels as are asked for.
class SymbolImages : public QQuickImageProvider {
public:
    SymbolImages() : QQuickImageProvider(QQuickImageProvider::Image) {}

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

/// Pictures of the program and icons of the desktop's theme: "image://icon/SOURCE", where SOURCE is that of a
/// `Platform::Image`, percent-encoded. Files are read and drawn on a thread of their own, since anybody may
/// have put them there; the others on the main thread, one an event, so that a list of apps never keeps its
/// window waiting. A single clear pixel when there is no such picture. To be made and ended on the main
/// thread; the end waits for a file that is being read, but not for long.
class IconImages : public QQuickAsyncImageProvider {
public:
    using Render = std::function<QImage(const Platform::Image& image, const QColor& templateColor, int size)>;

    /// `render` is called on both threads, and may outlive this object.
    explicit IconImages(Render render);
    ~IconImages() override;
    IconImages(const IconImages&) = delete;
    IconImages& operator=(const IconImages&) = delete;

    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

private:
    Render render_;
    /// Of one thread.
    std::unique_ptr<QThreadPool> thread_ = std::make_unique<QThreadPool>();
};

} // namespace QtPlatform
