#include "platform/linux/wayland/WaylandConnection.h"

#include "platform/linux/system/LocalSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr Platform::MainQueue::Seconds shortestPause{0.05};
constexpr Platform::MainQueue::Seconds longestPause{5};

} // namespace

WaylandConnection::WaylandConnection(std::filesystem::path socket, Platform::MainQueue& queue,
                                     Handlers handlers)
    : socket_(std::move(socket)),
      queue_(queue),
      handlers_(std::move(handlers)),
      pause_(shortestPause) {
    // A connection that is broken ends, which is all there is to it; the library would write about each one.
    wl_log_set_handler_client([](const char* /*format*/, va_list /*arguments*/) {});
}

WaylandConnection::~WaylandConnection() {
    close();
}

void WaylandConnection::open() {
    const int descriptor = connectToSocket(socket_);
    // The library closes it with the connection.
    display_.reset(descriptor >= 0 ? wl_display_connect_to_fd(descriptor) : nullptr);
    if (!display_) {
        reopenLater();
        return;
    }
    openedAt_ = queue_.now();
    readable_ = watch(QSocketNotifier::Read, &WaylandConnection::read);
    writable_ = watch(QSocketNotifier::Write, &WaylandConnection::write);
    handlers_.onConnected(*display_);
}

std::unique_ptr<QSocketNotifier> WaylandConnection::watch(QSocketNotifier::Type type,
                                                          void (WaylandConnection::*what)()) {
    auto notifier = std::make_unique<QSocketNotifier>(wl_display_get_fd(display_.get()), type);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [this, what] { (this->*what)(); });
    return notifier;
}

void WaylandConnection::sync(std::function<void()> whenTaken) {
    if (!display_) {
        return;
    }
    static constexpr wl_callback_listener listener{
        [](void* data, wl_callback* /*callback*/, std::uint32_t /*serial*/) {
            const auto& sync = *static_cast<Sync*>(data);
            sync.connection->taken(sync);
        }};
    auto& sync = syncs_.emplace_back(
        Sync{this, std::move(whenTaken), WaylandObject<wl_callback>(wl_display_sync(display_.get()))});
    wl_callback_add_listener(sync.callback.get(), &listener, &sync);
    write();
}

void WaylandConnection::taken(const Sync& sync) {
    const auto whenTaken = sync.whenTaken;
    syncs_.remove_if([&](const Sync& known) { return &known == &sync; });
    whenTaken();
}

void WaylandConnection::write() {
    // Whoever has hung up is found out by reading.
    const bool isFull = wl_display_flush(display_.get()) < 0 && errno == EAGAIN;
    writable_->setEnabled(isFull);
}

void WaylandConnection::read() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        wl_display_dispatch_pending(display_.get());
    }
    const bool isThere = wl_display_read_events(display_.get()) >= 0;
    // What was said before the end counts.
    if (wl_display_dispatch_pending(display_.get()) < 0 || !isThere) {
        lose();
    }
}

void WaylandConnection::finish(std::chrono::milliseconds patience) {
    serveSocket(
        {.socket = [this] { return display_ && !syncs_.empty() ? wl_display_get_fd(display_.get()) : -1; },
         .wantsToWrite = [this] { return writable_->isEnabled(); },
         .write = [this] { write(); },
         .read = [this] { read(); }},
        Patience(patience));
}

void WaylandConnection::lose() {
    // One that ends again and again is not tried without a pause.
    if (queue_.now() - openedAt_ > longestPause) {
        pause_ = shortestPause;
    }
    handlers_.onLost();
    close();
    reopenLater();
}

void WaylandConnection::close() {
    // Closed from within their own signals as well.
    for (auto* const notifier : {&readable_, &writable_}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
            notifier->release()->deleteLater();
        }
    }
    syncs_.clear();
    display_.reset();
}

void WaylandConnection::reopenLater() {
    queue_.asyncAfter(pause_, lifetime_.weak([this] { open(); }));
    pause_ = std::min(pause_ * 2, longestPause);
}

} // namespace LinuxPlatform
