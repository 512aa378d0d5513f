#pragma once

#include "platform/linux/desktopicons/DesktopScene.h"
#include "platform/linux/x11/X11Connection.h"

#include <vector>

namespace LinuxPlatform {

/// The windows on the screen that say that they are the desktop, asked for in a fixed number of round trips.
/// Main thread only.
class X11DesktopWindows {
public:
    /// `connection` outlives this object.
    explicit X11DesktopWindows(X11Connection& connection);

    std::vector<DesktopScene::Window> list();

private:
    enum Atom : std::size_t { clientList, windowType, desktopType, processId, atomCount };

    std::vector<xcb_window_t> candidates();

    X11Connection& connection_;
    std::vector<xcb_atom_t> atoms_;
};

} // namespace LinuxPlatform
