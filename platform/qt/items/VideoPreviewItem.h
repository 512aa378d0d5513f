#pragma once

#include "platform/qt/items/PictureItem.h"

#include <QMetaObject>
#include <qqmlregistration.h>

#include <memory>

namespace QtPlatform {

/// The live picture of a capture session. It fills the item and is cropped; while there is none, the item is
/// transparent. An item that cannot be seen asks for no pictures.
// The description of types for QML wants the whole name.
class VideoPreviewItem : public QtPlatform::PictureItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(VideoPreview)
    /// A std::shared_ptr<Platform::CaptureSession>; anything else is no session.
    Q_PROPERTY(QVariant session READ sessionVariant WRITE setSessionVariant NOTIFY sessionChanged)

public:
    explicit VideoPreviewItem(QQuickItem* parent = nullptr);

    void setSession(std::shared_ptr<Platform::CaptureSession> session);
    QVariant sessionVariant() const;
    void setSessionVariant(const QVariant& session);

Q_SIGNALS:
    void sessionChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void watch(QQuickWindow* window);
    void refreshPreview();

    std::shared_ptr<Platform::CaptureSession> session_;
    std::unique_ptr<Platform::VideoPreview> preview_;
    QMetaObject::Connection windowVisibility_;
};

} // namespace QtPlatform
