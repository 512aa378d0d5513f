#include "platform/qt/PngPlugin.h"

#include <QByteArray>
#include <QIODevice>
#include <QImage>
#include <QImageIOHandler>
#include <QSize>
#include <QSysInfo>
#include <QVariant>
#include <QtEndian>

#include <png.h>

namespace {

/// Larger than any picture that is shown; the rest of a device is not read for it.
constexpr qint64 mostBytes = qint64{64} << 20;

bool isPng(QIODevice& device) {
    constexpr auto signature = "\x89PNG\r\n\x1a\n";
    return device.isReadable() && device.peek(8) == signature;
}

/// A picture that is being read. Its faults stay in it.
class Reading {
public:
    explicit Reading(const QByteArray& data)
        : isBegun_(png_image_begin_read_from_memory(&image_, data.constData(),
                                                    static_cast<std::size_t>(data.size())) != 0) {}
    ~Reading() { png_image_free(&image_); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    /// Empty when there is no picture.
    QSize size() const {
        return isBegun_ ? QSize(static_cast<int>(image_.width), static_cast<int>(image_.height)) : QSize();
    }

    QImage::Format format() const {
        return (image_.format & PNG_FORMAT_FLAG_ALPHA) != 0 ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    }

    /// Into a picture of this size and format; false when the file ends too early or is faulty.
    bool finish(QImage& picture) {
        // As the toolkit takes them.
        image_.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
        image_.format = QSysInfo::ByteOrder == QSysInfo::LittleEndian ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
        const auto rowLength = static_cast<png_int_32>(picture.bytesPerLine());
        return png_image_finish_read(&image_, nullptr, picture.bits(), rowLength, nullptr) != 0;
    }

private:
    png_image image_ = [] {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        return image;
    }();
    bool isBegun_;
};

class PngHandler : public QImageIOHandler {
public:
    bool canRead() const override { return device() != nullptr && isPng(*device()); }

    bool read(QImage* picture) override {
        const auto data = device()->read(mostBytes);
        Reading reading(data);
        return !reading.size().isEmpty() && allocateImage(reading.size(), reading.format(), picture) &&
               reading.finish(*picture);
    }

    bool supportsOption(ImageOption option) const override { return option == Size; }

    QVariant option(ImageOption option) const override {
        // Width and height follow the signature and the name of the first chunk.
        const auto head = device()->peek(24);
        if (option != Size || head.size() < 24) {
            return {};
        }
        return QSize(qFromBigEndian<qint32>(head.constData() + 16),
                     qFromBigEndian<qint32>(head.constData() + 20));
    }
};

} // namespace

QImageIOPlugin::Capabilities PngPlugin::capabilities(QIODevice* device, const QByteArray& format) const {
    const bool isMeant = format.isEmpty() ? device != nullptr : format == "png";
    return isMeant && (device == nullptr || isPng(*device)) ? CanRead : Capabilities();
}

QImageIOHandler* PngPlugin::create(QIODevice* device, const QByteArray& format) const {
    auto* const handler = new PngHandler;
    handler->setDevice(device);
    handler->setFormat(format);
    return handler;
}
