#include "platform/qt/views/ViewImages.h"

#include "platform/qt/screens/ImageRendering.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace QtPlatform {
namespace {

constexpr int defaultSize = 24;
/// No view shows an icon larger than this; a wrong size must not cost memory.
constexpr int largestSize = 1024;
constexpr std::chrono::milliseconds longestEnd{500};

int sideOf(const QSize& requestedSize) {
    const auto side = std::max(requestedSize.width(), requestedSize.height());
    return side > 0 ? std::min(side, largestSize) : defaultSize;
}

/// Draws on the thread that runs it.
class IconJob : public QObject {
    Q_OBJECT

public:
    IconJob(IconImages::Render render, QString source, int side)
        : render_(std::move(render)),
          source_(std::move(source)),
          side_(side) {}

    void run() {
        Platform::Image image;
        image.source = source_.toStdString();
        Q_EMIT done(render_(image, Qt::black, side_));
    }

Q_SIGNALS:
    void done(const QImage& image);

private:
    IconImages::Render render_;
    QString source_;
    int side_;
};

class IconResponse : public QQuickImageResponse {
    Q_OBJECT

public:
    explicit IconResponse(const IconJob& job) { connect(&job, &IconJob::done, this, &IconResponse::receive); }

    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(image_);
    }

private:
    void receive(const QImage& image) {
        image_ = image;
        if (image_.isNull()) {
            // An error would be written out, and it is none that an app has no icon.
            image_ = QImage(1, 1, QImage::Format_ARGB32_Premultiplied);
            image_.fill(Qt::transparent);
        }
        Q_EMIT finished();
    }

    QImage image_;
};

} // namespace

QImage SymbolImages::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
    const auto slash = id.lastIndexOf('/');
    const QColor color('#' + id.mid(slash + 1));
    Platform::Image symbol;
    symbol.source = (":/curtain/symbols/" + id.left(slash) + ".svg").toStdString();
    symbol.isTemplate = true;
    auto image = renderImage(symbol, color, sideOf(requestedSize));
    if (color.alpha() < 255 && !image.isNull()) {
        // The symbol's own strokes overlap, so that only the whole picture can be made transparent.
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.fillRect(image.rect(), QColor(0, 0, 0, color.alpha()));
    }
    if (size != nullptr) {
        *size = image.size();
    }
    return image;
}

IconImages::IconImages(Render render) : render_(std::move(render)) {
    thread_->setMaxThreadCount(1);
}

IconImages::~IconImages() {
    thread_->clear();
    if (!thread_->waitForDone(static_cast<int>(longestEnd.count()))) {
        // It goes on alone with a file that may never be read.
        static_cast<void>(thread_.release());
    }
}

QQuickImageResponse* IconImages::requestImageResponse(const QString& id, const QSize& requestedSize) {
    const auto source = QUrl::fromPercentEncoding(id.toUtf8());
    const std::shared_ptr<IconJob> job(new IconJob(render_, source, sideOf(requestedSize)),
                                       [](IconJob* over) { over->deleteLater(); });
    auto* const response = new IconResponse(*job);
    job->moveToThread(QCoreApplication::instance()->thread());
    if (source.startsWith('/')) {
        thread_->start([job] { job->run(); });
    } else {
        // Only there may icon themes be asked.
        QMetaObject::invokeMethod(
            job.get(), [job] { job->run(); }, Qt::QueuedConnection);
    }
    return response;
}

} // namespace QtPlatform

#include "ViewImages.moc"
