#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

namespace Bench {

/// The floor for hiding and showing windows: nothing but the requests in one batch and the waiting.
class BareWindows {
public:
    explicit BareWindows(const std::vector<xcb_window_t>& windows);

    /// Asks the window manager for all windows at once.
    void request(bool isHidden);
    /// Until the window manager has written that all windows are in its list, and hidden or shown.
    void waitUntil(bool isHidden);

private:
    xcb_atom_t atom(const char* name);
    void send(xcb_window_t window, xcb_atom_t type, std::vector<std::uint32_t> data);
    /// Reads the states of these windows in one batch.
    void read(const std::set<xcb_window_t>& windows);

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    std::vector<xcb_window_t> windows_;
    xcb_window_t root_;
    xcb_atom_t state_;
    xcb_atom_t hiddenState_;
    xcb_atom_t managerState_;
    xcb_atom_t changeState_;
    std::set<xcb_window_t> hidden_;
    std::set<xcb_window_t> shown_;
};

/// The floor for reading all windows on a connection of its own: the list in one round trip, and as many
/// properties of each window as Curtain reads in another. The number of windows.
std::size_t readProperties();
inline constexpr int readRoundTrips = 3;

} // namespace Bench
