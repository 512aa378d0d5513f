#include "platform/linux/departures/SessionDepartures.h"

#include <utility>

namespace LinuxPlatform {

SessionDepartures::SessionDepartures(const QDBusConnection& sessionBus)
    : lock_(sessionBus, [this](bool isLocked) { tellLock(isLocked); }) {}

void SessionDepartures::hearLoginManager(const QDBusConnection& systemBus) {
    lock_.hearLoginManager(systemBus);
}

void SessionDepartures::hearWindowManager(X11Connection& connection) {
    x11Switches_.emplace(connection, [this] { tell(); });
}

void SessionDepartures::hearI3(const std::filesystem::path& socket, Platform::MainQueue& queue) {
    i3Switches_.emplace(socket, queue, [this] { tell(); });
}

void SessionDepartures::tellLock(bool isLocked) {
    if (isLocked) {
        tell();
    }
    lockObservers_.tell(isLocked);
}

Platform::Subscription SessionDepartures::addObserver(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

Platform::Subscription SessionDepartures::addLockObserver(std::function<void(bool isLocked)> handler) {
    return lockObservers_.add(std::move(handler));
}

} // namespace LinuxPlatform
