#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QRect>

#include <vector>

namespace LinuxPlatform {

/// Speaks to an EWMH window manager about windows of this program, and to panels. Every question is one or
/// two round trips.
class X11WindowManagerClient {
public:
    /// `connection` outlives this object.
    explicit X11WindowManagerClient(X11Connection& connection);

    /// Whether windows may be translucent.
    bool isComposited();
    /// Keeps a window, which is not mapped yet, out of task lists and above others.
    void markAsPopover(xcb_window_t window);
    /// Lets clicks outside the rectangle, in the window's own pixels, go through to what is below.
    void setInputRegion(xcb_window_t window, const QRect& pixels);
    /// Gives a window the keyboard, as somebody whom the user asked to do so.
    void activate(xcb_window_t window);
    /// The edges of the whole screen that panels keep for themselves.
    std::vector<QRect> panels();

private:
    struct Atoms {
        xcb_atom_t compositor;
        xcb_atom_t clientList;
        xcb_atom_t strutPartial;
        xcb_atom_t state;
        xcb_atom_t above;
        xcb_atom_t skipTaskbar;
        xcb_atom_t skipPager;
        xcb_atom_t activeWindow;
    };

    X11Connection& connection_;
    Atoms atoms_;
};

} // namespace LinuxPlatform
