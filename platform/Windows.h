#pragma once

#include "platform/Geometry.h"
#include "platform/View.h"

#include <functional>
#include <memory>
#include <string>

namespace Platform {

struct WindowStyle {
    bool isClosable = true;
    bool isResizable = false;
    bool isMinimizable = false;
    /// The view reaches below the title bar, which shows no title of its own.
    bool isTitleHidden = false;
    /// Dragging where there is no control moves the window.
    bool isMovableByBackground = false;
    /// Above other windows, as the popover is.
    bool isKeptAbove = false;
};

/// A window of this program. Closing it hides it; it can be shown again. Its destruction closes it. Main
/// thread only.
class Window {
public:
    virtual ~Window() = default;

    virtual bool isVisible() const = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void center() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    /// Brings it to the front even where the program is not the active one.
    virtual void orderFrontRegardless() = 0;
    virtual void close() = 0;
    /// `callback` runs before every closing, whoever asked for it.
    virtual void setOnWillClose(std::function<void()> callback) = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    /// A window around a view, not shown yet.
    virtual std::unique_ptr<Window> makeWindow(View content, const Size& contentSize,
                                               const WindowStyle& style) = 0;
};

} // namespace Platform
