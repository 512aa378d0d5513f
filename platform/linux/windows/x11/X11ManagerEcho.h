#pragma once

#include "platform/Subscription.h"
#include "platform/linux/x11/X11Connection.h"

#include <functional>

namespace LinuxPlatform {

/// Tells when the window manager has come to what it was asked before, by a question that is answered in
/// turn: the extents of a frame (EWMH 1.5, _NET_REQUEST_FRAME_EXTENTS). Not all window managers answer it.
/// Main thread only.
class X11ManagerEcho {
public:
    /// `connection` outlives this object.
    explicit X11ManagerEcho(X11Connection& connection);
    ~X11ManagerEcho();
    X11ManagerEcho(const X11ManagerEcho&) = delete;
    X11ManagerEcho& operator=(const X11ManagerEcho&) = delete;

    /// `onAnswer` is called from the event loop, unless another question is asked before.
    void ask(std::function<void()> onAnswer);
    /// Nobody waits for the answer any more.
    void forget();

private:
    void handleEvent(const xcb_generic_event_t& event);

    X11Connection& connection_;
    xcb_atom_t request_;
    xcb_atom_t answer_;
    /// Never shown, and one for each question: an answer may come after the next has been asked.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    std::function<void()> onAnswer_;
    Platform::Subscription eventHandler_;
};

} // namespace LinuxPlatform
