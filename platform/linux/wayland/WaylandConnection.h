#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"

#include <QSocketNotifier>

#include <chrono>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>

#include <wayland-client.h>

namespace LinuxPlatform {

/// Ends our side of an object; the compositor is told by its own request, where it has one.
struct WaylandObjectDeleter {
    void operator()(void* object) const { wl_proxy_destroy(static_cast<wl_proxy*>(object)); }
};

template <class Object>
using WaylandObject = std::unique_ptr<Object, WaylandObjectDeleter>;

/// A connection of our own to a Wayland compositor. It is made again when it gets lost. Nothing waits, but
/// for `finish`. Main thread only.
///
/// A request that finds no room ends the connection, and older versions of the library the program. So nobody
/// asks for more than a few hundred bytes before the compositor has answered `sync`.
class WaylandConnection {
public:
    struct Handlers {
        /// The connection is there, perhaps again.
        std::function<void(wl_display& display)> onConnected;
        /// Objects that were made over it are to be destroyed now.
        std::function<void()> onLost;
    };

    /// `queue` outlives this object. The handlers do not end this object.
    WaylandConnection(std::filesystem::path socket, Platform::MainQueue& queue, Handlers handlers);
    /// Objects that were made over it are destroyed before.
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// To be called once. Goes on trying where nobody listens.
    void open();
    /// Sends what was asked for, and has `whenTaken` called once the compositor has taken it, and has told
    /// what it had to tell at once; never when the connection gets lost before.
    void sync(std::function<void()> whenTaken);
    /// Waits until every `sync` has been answered, at most for `patience`: for the beginning and the end of
    /// the program, when no event loop runs.
    void finish(std::chrono::milliseconds patience);

private:
    using Seconds = Platform::MainQueue::Seconds;

    struct Disconnect {
        void operator()(wl_display* display) const { wl_display_disconnect(display); }
    };
    struct Sync {
        WaylandConnection* connection = nullptr;
        std::function<void()> whenTaken;
        WaylandObject<wl_callback> callback;
    };

    std::unique_ptr<QSocketNotifier> watch(QSocketNotifier::Type type, void (WaylandConnection::*what)());
    void read();
    void write();
    void taken(const Sync& sync);
    void lose();
    void close();
    void reopenLater();

    std::filesystem::path socket_;
    Platform::MainQueue& queue_;
    Handlers handlers_;
    std::unique_ptr<wl_display, Disconnect> display_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    std::list<Sync> syncs_;
    Seconds openedAt_{0};
    Seconds pause_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
