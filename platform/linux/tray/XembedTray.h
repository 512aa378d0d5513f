#pragma once

#include "platform/Subscription.h"
#include "platform/linux/x11/X11Connection.h"

#include <functional>

namespace LinuxPlatform {

/// Follows who manages the tray of the X screen, by the system tray protocol of X11.
class XembedTray {
public:
    /// `connection` outlives the object; nobody else selects events of its root window.
    XembedTray(X11Connection& connection, std::function<void()> onChange);

    /// XCB_WINDOW_NONE when there is no tray.
    xcb_window_t manager() const { return manager_; }

private:
    void handle(const xcb_generic_event_t& event);
    void follow();
    void findManager();

    X11Connection& connection_;
    std::function<void()> onChange_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t announcement_ = XCB_ATOM_NONE;
    xcb_window_t manager_ = XCB_WINDOW_NONE;
    Platform::Subscription events_;
};

} // namespace LinuxPlatform
