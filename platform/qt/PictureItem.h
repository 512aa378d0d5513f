#pragma once

#include "platform/CaptureServices.h"

#include <QQuickItem>
#include <QVariant>
#include <qqmlregistration.h>

#include <memory>

namespace QtPlatform {

/// Draws a decoded picture, with every scene graph and with one texture. Without a picture it is transparent.
class PictureItem : public QQuickItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(Picture)
    /// A std::shared_ptr<const Platform::Picture>; anything else is no picture.
    Q_PROPERTY(QVariant picture READ pictureVariant WRITE setPictureVariant NOTIFY pictureChanged)
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY pictureChanged)
    Q_PROPERTY(FillMode fillMode READ fillMode WRITE setFillMode NOTIFY fillModeChanged)

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

Q_SIGNALS:
    void pictureChanged();
    void fillModeChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

private:
    std::shared_ptr<const Platform::Picture> picture_;
    bool isTextureOutdated_ = false;
    FillMode fillMode_ = AspectFit;
};

} // namespace QtPlatform
