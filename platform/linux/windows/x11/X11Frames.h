#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <vector>

namespace LinuxPlatform {

// Windows with what a window manager puts around them. Both ask the server, and wait for it.

/// The windows, bottom to top.
std::vector<xcb_window_t> stackingOrderOf(X11Connection& connection,
                                          const std::vector<xcb_window_t>& windows);
/// What is around the window; the window itself where that is nothing.
xcb_window_t outermostWindow(X11Connection& connection, xcb_window_t window);

} // namespace LinuxPlatform
