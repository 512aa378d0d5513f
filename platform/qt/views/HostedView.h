#pragma once

#include "platform/Geometry.h"
#include "platform/View.h"
#include "platform/qt/views/ViewEngine.h"

#include <memory>

class QQuickItem;
class QQuickWindow;

namespace QtPlatform {

/// A view inside a window, filling a part of it.
class HostedView {
public:
    /// Both outlive the hosted view.
    HostedView(ViewEngine& engine, QQuickWindow& window);
    ~HostedView();
    HostedView(const HostedView&) = delete;
    HostedView& operator=(const HostedView&) = delete;

    /// A view of the same source as before stays and only gets the other model; one without a source is none.
    void setContent(Platform::View content);
    /// The corner is in points of the window. Of its own points, which are as large as those of the window at
    /// the scale 1, the view has `size`.
    void setGeometry(const Platform::Point& corner, const Platform::Size& size, double scale);

private:
    void place();

    ViewEngine& engine_;
    QQuickWindow& window_;
    Platform::Point corner_;
    Platform::Size size_;
    double scale_ = 1;
    Platform::View content_;
    std::unique_ptr<QQuickItem> item_;
};

} // namespace QtPlatform
