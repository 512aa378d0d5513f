#pragma once

#include "platform/Windows.h"
#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/WindowManagerLink.h"
#include "platform/qt/views/ViewEngine.h"

namespace QtPlatform {

/// Windows of fixed size with the frame of the window manager. A hidden title stays in the task list.
class QtWindows : public Platform::Windows {
public:
    /// `engine` and `screens` outlive the windows.
    QtWindows(ViewEngine& engine, const QtScreens& screens, WindowManagerLink windowManager);

    std::unique_ptr<Platform::Window> makeWindow(Platform::View content, const Platform::Size& contentSize,
                                                 const Platform::WindowStyle& style) override;

private:
    ViewEngine& engine_;
    const QtScreens& screens_;
    WindowManagerLink windowManager_;
};

} // namespace QtPlatform
