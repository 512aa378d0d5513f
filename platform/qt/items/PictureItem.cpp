#include "platform/qt/items/PictureItem.h"

#include "platform/qt/items/PictureFit.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRendererInterface>
#include <QSGTexture>

#include <utility>

namespace QtPlatform {
namespace {

/// Shares the picture's pixels.
QImage image(const std::shared_ptr<const Platform::Picture>& picture) {
    auto owner = std::make_unique<std::shared_ptr<const Platform::Picture>>(picture);
    return {reinterpret_cast<const uchar*>(picture->pixels.data()),
            picture->width,
            picture->height,
            static_cast<qsizetype>(picture->width) * 4,
            QImage::Format_RGB32,
            [](void* finished) { delete static_cast<std::shared_ptr<const Platform::Picture>*>(finished); },
            owner.release()};
}

/// The largest rectangle of that shape inside the other, in its middle.
QRectF inscribed(const QSizeF& shape, const QRectF& outer) {
    QRectF inner({}, shape.scaled(outer.size(), Qt::KeepAspectRatio));
    inner.moveCenter(outer.center());
    return inner;
}

} // namespace

PictureItem::PictureItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void PictureItem::setPicture(std::shared_ptr<const Platform::Picture> picture) {
    if (picture && (picture->width <= 0 || picture->height <= 0)) {
        picture = nullptr;
    }
    if (picture == picture_) {
        return;
    }
    picture_ = std::move(picture);
    prepareAnew();
    Q_EMIT pictureChanged();
}

QVariant PictureItem::pictureVariant() const {
    return QVariant::fromValue(picture_);
}

void PictureItem::setPictureVariant(const QVariant& picture) {
    setPicture(picture.value<std::shared_ptr<const Platform::Picture>>());
}

void PictureItem::setFillMode(FillMode mode) {
    if (std::exchange(fillMode_, mode) != mode) {
        prepareAnew();
        Q_EMIT fillModeChanged();
    }
}

void PictureItem::setMirrored(bool isMirrored) {
    if (std::exchange(isMirrored_, isMirrored) != isMirrored) {
        prepareAnew();
        Q_EMIT mirroredChanged();
    }
}

void PictureItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) {
        prepareAnew();
    }
}

void PictureItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        prepareAnew();
    }
}

void PictureItem::prepareAnew() {
    isTextureOutdated_ = true;
    update();
}

PictureItem::Extract PictureItem::extract() const {
    const QRectF whole(0, 0, picture_->width, picture_->height);
    if (fillMode_ == AspectFill) {
        return {inscribed(size(), whole), boundingRect()};
    }
    return {whole, inscribed(whole.size(), boundingRect())};
}

QSize PictureItem::pixelsOf(const QRectF& place) const {
    const auto pixels = mapRectToScene(place).size() * window()->effectiveDevicePixelRatio();
    return pixels.toSize().expandedTo(QSize(1, 1));
}

QSGNode* PictureItem::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) {
    auto* node = static_cast<QSGImageNode*>(oldNode);
    if (!picture_ || width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    const auto [part, place] = extract();
    const bool isDrawnByProcessor =
        window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software;
    if (!node || std::exchange(isTextureOutdated_, false)) {
        auto* texture = window()->createTextureFromImage(
            isDrawnByProcessor ? fitted(*picture_, part, pixelsOf(place), isMirrored_) : image(picture_),
            QQuickWindow::TextureIsOpaque);
        if (!texture) {
            delete node;
            return nullptr;
        }
        if (!node) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
        }
        node->setTexture(texture);
        isTextureOutdated_ = false;
    }
    node->setRect(place);
    if (isDrawnByProcessor) {
        node->setFiltering(QSGTexture::Nearest);
        node->setSourceRect(QRectF({}, node->texture()->textureSize()));
    } else {
        node->setFiltering(QSGTexture::Linear);
        node->setSourceRect(part);
        node->setTextureCoordinatesTransform(isMirrored_ ? QSGImageNode::MirrorHorizontally
                                                         : QSGImageNode::NoTransform);
        // It takes only its material for changed by that.
        node->markDirty(QSGNode::DirtyGeometry);
    }
    return node;
}

} // namespace QtPlatform
