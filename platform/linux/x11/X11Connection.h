#pragma once

#include "platform/Subscribers.h"
#include "platform/Subscription.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

class QObject;

namespace LinuxPlatform {

struct XcbFree {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, event or error that xcb allocated.
template <class Content>
using XcbPointer = std::unique_ptr<Content, XcbFree>;

/// A connection of our own to the X server, beside the one of the toolkit, so that neither sees the other's
/// events. Its events are handed out on the thread that made it, from that thread's event loop. Errors of
/// single requests are swallowed: a window may be gone at any moment.
class X11Connection {
public:
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    /// Null when the display named by the environment cannot be reached.
    static std::unique_ptr<X11Connection> open();

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_.get(); }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    /// False once the server is gone; requests then do nothing.
    bool isAlive() const;

    /// Waits for the reply to a request, null after an error: `reply<xcb_get_property_reply>(cookie)`.
    template <auto receive, class Cookie>
    auto reply(Cookie cookie) {
        countRoundTrip(cookie.sequence);
        auto* const received = receive(get(), cookie, nullptr);
        return XcbPointer<std::remove_pointer_t<decltype(received)>>(received);
    }
    /// How often `reply` had to wait for the server. Requests that were sent before one such wait share it.
    std::uint64_t roundTrips() const { return roundTrips_; }

    /// In the order of `names`, all in one round trip.
    std::vector<xcb_atom_t> atoms(std::span<const std::string_view> names);

    /// Handlers are called for every event, in the order in which they were added.
    Platform::Subscription addEventHandler(EventHandler handler);
    /// Hands out what has arrived, without waiting for more.
    void dispatchEvents();

    void flush();

    /// The server's clock at this moment, in milliseconds, as requests in a user's name carry it; never the
    /// zero that stands for "now". Asks the server, and hands out what has arrived.
    xcb_timestamp_t serverTime();

    /// Sends a client message about a window to the window manager.
    void sendToWindowManager(xcb_window_t window, xcb_atom_t type, std::span<const std::uint32_t> data);

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    X11Connection(std::unique_ptr<xcb_connection_t, Disconnect> connection, xcb_screen_t* screen);

    void countRoundTrip(unsigned sequence);
    void dispatch(const xcb_generic_event_t& event);
    void dispatchQueuedEvents();

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_screen_t* screen_;
    std::uint64_t roundTrips_ = 0;
    /// The newest request that the last round trip carried.
    unsigned carriedSequence_ = 0;
    /// Never shown; what is written there comes back with the time.
    xcb_window_t clockWindow_ = XCB_WINDOW_NONE;
    xcb_timestamp_t clockTime_ = XCB_CURRENT_TIME;
    Platform::Subscribers<std::reference_wrapper<const xcb_generic_event_t>> handlers_;
    /// What ties the connection to the event loop; goes before the connection does.
    std::unique_ptr<QObject> loopLink_;
};

} // namespace LinuxPlatform
