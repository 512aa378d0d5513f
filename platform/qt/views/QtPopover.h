#pragma once

#include "platform/Lifetime.h"
#include "platform/Popover.h"
#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/WindowManagerLink.h"
#include "platform/qt/views/HostedView.h"

#include <QMargins>
#include <QPoint>
#include <QRect>

#include <memory>
#include <optional>

class QQuickItem;
class QScreen;

namespace QtPlatform {

/// A popover as a frameless window above all others. With a compositor it has rounded corners and a shadow
/// around it; without one it has square edges. The window is made the first time it is needed and then kept.
class QtPopover : public Platform::Popover {
public:
    /// Both references outlive the popover.
    QtPopover(ViewEngine& engine, const QtScreens& screens, WindowManagerLink windowManager);
    ~QtPopover() override;
    QtPopover(const QtPopover&) = delete;
    QtPopover& operator=(const QtPopover&) = delete;

    bool isShown() const override;
    void setContent(Platform::View content) override;
    void setContentSize(const Platform::Size& size) override;
    void show(Platform::StatusItem& relativeTo) override;
    void close() override;
    void setOnDidClose(std::function<void()> callback) override;

private:
    class PopoverWindow;

    void makeWindow();
    void activate();
    /// Where the item is, in points of the screens; absent when nobody knows.
    struct Anchor {
        const QScreen* screen;
        std::optional<QRectF> item;
    };
    Anchor anchorAt(const Platform::StatusItem& item) const;

    ViewEngine& engine_;
    const QtScreens& screens_;
    WindowManagerLink windowManager_;
    Platform::Size contentSize_;
    bool isActivationDue_ = false;
    std::function<void()> onDidClose_;
    std::unique_ptr<PopoverWindow> window_;
    std::unique_ptr<QQuickItem> shadow_;
    std::unique_ptr<HostedView> view_;
    Platform::Lifetime lifetime_;
};

} // namespace QtPlatform
