#pragma once

#include "platform/Popover.h"
#include "platform/Windows.h"
#include "platform/qt/views/ViewLibrary.h"

#include <functional>
#include <memory>

namespace QtPlatform {

/// The popover of the view library, which is loaded when it is given something to show. Without the library
/// it stays closed.
class LazyPopover : public Platform::Popover {
public:
    /// Both references outlive the popover.
    LazyPopover(ViewLibrary& library, const QtScreens& screens, WindowManagerLink windowManager);

    bool isShown() const override;
    void setContent(Platform::View content) override;
    void setContentSize(const Platform::Size& size) override;
    void show(Platform::StatusItem& relativeTo) override;
    void close() override;
    void setOnDidClose(std::function<void()> callback) override;

private:
    /// Null without the library.
    Platform::Popover* loaded();

    ViewLibrary& library_;
    const QtScreens& screens_;
    WindowManagerLink windowManager_;
    Platform::Size contentSize_;
    std::function<void()> onDidClose_;
    std::unique_ptr<Platform::Popover> popover_;
};

/// The windows of the view library, which is loaded for the first of them. Without the library they are never
/// visible.
class LazyWindows : public Platform::Windows {
public:
    /// Both references outlive the windows.
    LazyWindows(ViewLibrary& library, const QtScreens& screens, WindowManagerLink windowManager);

    std::unique_ptr<Platform::Window> makeWindow(Platform::View content, const Platform::Size& contentSize,
                                                 const Platform::WindowStyle& style) override;

private:
    ViewLibrary& library_;
    const QtScreens& screens_;
    WindowManagerLink windowManager_;
    std::unique_ptr<Platform::Windows> windows_;
};

} // namespace QtPlatform
