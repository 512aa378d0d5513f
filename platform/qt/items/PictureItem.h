#pragma once

#include "platform/CaptureServices.h"

#include <QQuickItem>
#include <QVariant>
#include <qqmlregistration.h>

#include <memory>

namespace QtPlatform {

/// Draws a decoded picture, with every scene graph and with one texture. Where the processor draws, that has
/// the item's pixels, to be copied as they are. Without a picture it is transparent.
class PictureItem : public QQuickItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(Picture)
    /// A std::shared_ptr<const Platform::Picture>; anything else is no picture.
    Q_PROPERTY(QVariant picture READ pictureVariant WRITE setPictureVariant NOTIFY pictureChanged)
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY pictureChanged)
    Q_PROPERTY(FillMode fillMode READ fillMode WRITE setFillMode NOTIFY fillModeChanged)
    Q_PROPERTY(bool mirrored READ isMirrored WRITE setMirrored NOTIFY mirroredChanged)

public:
    /// Scaled evenly: wholly inside the item, or filling it and cropped.
    enum FillMode { AspectFit, AspectFill };
    Q_ENUM(FillMode)

    explicit PictureItem(QQuickItem* parent = nullptr);

    const std::shared_ptr<const Platform::Picture>& picture() const { return picture_; }
    void setPicture(std::shared_ptr<const Platform::Picture> picture);
    bool hasPicture() const { return picture_ != nullptr; }
    QVariant pictureVariant() const;
    void setPictureVariant(const QVariant& picture);

    FillMode fillMode() const { return fillMode_; }
    void setFillMode(FillMode mode);
    bool isMirrored() const { return isMirrored_; }
    void setMirrored(bool isMirrored);

Q_SIGNALS:
    void pictureChanged();
    void fillModeChanged();
    void mirroredChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

private:
    /// What of the picture is shown, in its pixels, and where in the item.
    struct Extract {
        QRectF part;
        QRectF place;
    };

    /// What is prepared for the screen is of no use any more.
    void prepareAnew();
    Extract extract() const;
    QSize pixelsOf(const QRectF& place) const;

    std::shared_ptr<const Platform::Picture> picture_;
    bool isTextureOutdated_ = false;
    bool isMirrored_ = false;
    FillMode fillMode_ = AspectFit;
};

} // namespace QtPlatform
