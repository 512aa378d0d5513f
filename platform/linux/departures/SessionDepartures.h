#pragma once

#include "platform/Departures.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/departures/I3WorkspaceSwitches.h"
#include "platform/linux/departures/SessionLock.h"
#include "platform/linux/departures/X11WorkspaceSwitches.h"

#include <QDBusConnection>

#include <filesystem>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// What the parts of a session tell of its user's leaving. Each part is heard from when it is named here.
class SessionDepartures : public Platform::Departures {
public:
    explicit SessionDepartures(const QDBusConnection& sessionBus);

    void hearLoginManager(const QDBusConnection& systemBus);
    /// `connection` outlives this object; nobody else selects the events of the root window on it.
    void hearWindowManager(X11Connection& connection);
    /// i3 or sway. `queue` outlives this object.
    void hearI3(const std::filesystem::path& socket, Platform::MainQueue& queue);

    /// For parts that tell in ways of their own.
    void tell() { observers_.tell(); }
    void tellLock(bool isLocked);

    Platform::Subscription addObserver(std::function<void()> handler) override;
    Platform::Subscription addLockObserver(std::function<void(bool isLocked)> handler) override;

private:
    Platform::Subscribers<> observers_;
    Platform::Subscribers<bool> lockObservers_;
    SessionLock lock_;
    std::optional<X11WorkspaceSwitches> x11Switches_;
    std::optional<I3WorkspaceSwitches> i3Switches_;
};

} // namespace LinuxPlatform
