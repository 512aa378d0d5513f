#pragma once

#include <QPoint>
#include <QRect>
#include <qwindowdefs.h>

#include <functional>
#include <vector>

namespace QtPlatform {

/// What Qt's own interface does not say or do about the window manager and the panels. Pixels are those of
/// the whole screen. Where a desktop has nothing of this, the functions are empty.
struct WindowManagerLink {
    /// Whether windows may be translucent; empty where they always may.
    std::function<bool()> isComposited;
    /// Keeps a window, which is not shown yet, out of task lists and above others.
    std::function<void(WId window)> markAsPopover;
    /// Puts a window, which need not be shown yet, with its corner at a pixel, and tells when it is there, or
    /// when it may not get there; empty where Qt puts it there, or nobody can.
    std::function<void(WId window, const QPoint& corner, std::function<void()> whenThere)> place = nullptr;
    /// Lets clicks outside the rectangle, in the window's own pixels, go through to what is below.
    std::function<void(WId window, const QRect& pixels)> setInputRegion;
    /// Gives a window the keyboard, as somebody whom the user asked to do so.
    std::function<void(WId window)> activate;
    /// The edges that panels keep for themselves, in pixels; empty where Qt knows the free part of a screen.
    std::function<std::vector<QRect>()> panels;
    /// Whether Qt learns where the pointer is also while it is over windows of others.
    bool isPointerKnown = false;
    /// Whether it is a Wayland compositor that shows the windows.
    bool isCompositor = false;
};

} // namespace QtPlatform
