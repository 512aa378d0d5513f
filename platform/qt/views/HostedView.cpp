#include "platform/qt/views/HostedView.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <utility>

namespace QtPlatform {

HostedView::HostedView(ViewEngine& engine, QQuickWindow& window) : engine_(engine), window_(window) {}

HostedView::~HostedView() = default;

void HostedView::setContent(Platform::View content) {
    if (item_ && content.source == content_.source) {
        engine_.setModel(*item_, content);
    } else if (content.source.empty()) {
        item_.reset();
    } else {
        item_ = engine_.makeItem(content);
        item_->setParentItem(window_.contentItem());
        item_->setFocus(true);
        place();
    }
    // The earlier model goes only now that nothing reads it any more.
    content_ = std::move(content);
}

void HostedView::setGeometry(const Platform::Point& corner, const Platform::Size& size, double scale) {
    corner_ = corner;
    size_ = size;
    scale_ = scale;
    place();
}

void HostedView::place() {
    if (item_) {
        item_->setPosition({corner_.x, corner_.y});
        item_->setSize({size_.width, size_.height});
        item_->setTransformOrigin(QQuickItem::TopLeft);
        item_->setScale(scale_);
    }
}

} // namespace QtPlatform
