#include "platform/qt/items/VideoPreviewItem.h"

#include <QQuickWindow>

#include <cmath>
#include <utility>

namespace QtPlatform {

VideoPreviewItem::VideoPreviewItem(QQuickItem* parent) : PictureItem(parent) {
    setFillMode(AspectFill);
}

void VideoPreviewItem::setSession(std::shared_ptr<Platform::CaptureSession> session) {
    if (session == session_) {
        return;
    }
    preview_.reset();
    session_ = std::move(session);
    refreshPreview();
    Q_EMIT sessionChanged();
}

QVariant VideoPreviewItem::sessionVariant() const {
    return QVariant::fromValue(session_);
}

void VideoPreviewItem::setSessionVariant(const QVariant& session) {
    setSession(session.value<std::shared_ptr<Platform::CaptureSession>>());
}

void VideoPreviewItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    PictureItem::geometryChange(newGeometry, oldGeometry);
    refreshPreview();
}

void VideoPreviewItem::itemChange(ItemChange change, const ItemChangeData& data) {
    PictureItem::itemChange(change, data);
    if (change == ItemSceneChange) {
        watch(data.window);
    }
    if (change == ItemSceneChange || change == ItemVisibleHasChanged ||
        change == ItemDevicePixelRatioHasChanged) {
        refreshPreview();
    }
}

void VideoPreviewItem::watch(QQuickWindow* newWindow) {
    disconnect(windowVisibility_);
    if (newWindow) {
        windowVisibility_ =
            connect(newWindow, &QWindow::visibilityChanged, this, &VideoPreviewItem::refreshPreview);
    }
}

void VideoPreviewItem::refreshPreview() {
    const bool canBeSeen = window() && window()->isVisible() &&
                           window()->visibility() != QWindow::Minimized && isVisible() && width() > 0 &&
                           height() > 0;
    if (!session_ || !canBeSeen) {
        preview_.reset();
        setPicture(nullptr);
        return;
    }
    if (!preview_) {
        preview_ = session_->makePreview([this] { setPicture(preview_->picture()); });
    }
    const auto pixels = size() * window()->effectiveDevicePixelRatio();
    preview_->setSize(static_cast<int>(std::ceil(pixels.width())),
                      static_cast<int>(std::ceil(pixels.height())));
    setPicture(preview_->picture());
}

} // namespace QtPlatform
