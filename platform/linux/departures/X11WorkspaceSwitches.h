#pragma once

#include "platform/Subscription.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// Hears from the window manager that another workspace comes into view; compositors of Wayland sessions may
/// tell their X server the same. Source: _NET_CURRENT_DESKTOP of the Extended Window Manager Hints.
class X11WorkspaceSwitches {
public:
    /// `connection` outlives this object; nobody else selects the events of the root window on it.
    X11WorkspaceSwitches(X11Connection& connection, std::function<void()> didSwitch);

private:
    void handle(const xcb_generic_event_t& event);
    std::optional<std::uint32_t> current();

    X11Connection& connection_;
    std::function<void()> didSwitch_;
    xcb_atom_t currentDesktop_;
    /// Absent where there is no window manager, or one without workspaces.
    std::optional<std::uint32_t> shown_;
    Platform::Subscription events_;
};

} // namespace LinuxPlatform
