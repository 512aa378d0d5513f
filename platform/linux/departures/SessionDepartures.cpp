#include "platform/linux/departures/SessionDepartures.h"

#include <utility>

namespace LinuxPlatform {

SessionDepartures::SessionDepartures(const QDBusConnection& sessionBus)
    : lock_(sessionBus, [this] { tell(); }) {}

void SessionDepartures::hearLoginManager(const QDBusConnection& systemBus) {
    lock_.hearLoginManager(systemBus);
}

void SessionDepartures::hearWindowManager(X11Connection& connection) {
    x11Switches_.emplace(connection, [this] { tell(); });
}

void SessionDepartures::hearI3(const std::filesystem::path& socket, Platform::MainQueue& queue) {
    i3Switches_.emplace(socket, queue, [this] { tell(); });
}

Platform::Subscription SessionDepartures::addObserver(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

} // namespace LinuxPlatform
