#pragma once

#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>

#include <functional>
#include <memory>

namespace LinuxPlatform {

/// What GNOME Shell says of Curtain's extension, for when the extension itself does not answer. Main thread
/// only; nothing here waits.
class GnomeExtensionState {
public:
    enum class State {
        notKnownYet,
        /// There is no shell to ask.
        noShell,
        /// The shell has not found it; it looks when a session begins.
        notFound,
        off,
        /// The shell has refused it, or it has failed.
        failed,
        on,
    };

    GnomeExtensionState(const QDBusConnection& bus, std::function<void()> onChange);

    State state() const { return state_; }
    /// Has the shell switch it on, now and in later sessions, if it is off.
    void switchOn();

private:
    void ask();
    void settle(State state);

    QDBusConnection bus_;
    std::function<void()> onChange_;
    State state_ = State::notKnownYet;
    std::unique_ptr<QDBusPendingCallWatcher> answer_;
    DBusSignal changed_;
    BusNameOwner shell_;
};

} // namespace LinuxPlatform
