#pragma once

#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/DBusSignal.h"
#include "platform/linux/windows/WindowHints.h"
#include "platform/linux/windows/WindowId.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// A window as the extension tells of it.
struct GnomeWindow {
    WindowId id = 0;
    WindowHints hints;
    bool isHidden = false;
    bool isInTaskList = true;
    /// On the workspace in front.
    bool isHere = true;
};

/// What has changed since the last report; the first one tells everything.
struct GnomeWindowReport {
    std::vector<GnomeWindow> windows;
    std::vector<WindowId> closed;
    /// All, bottom to top.
    std::vector<WindowId> stacking;
    /// Absent where no window of an app has it.
    std::optional<WindowId> focused;
};

/// The conversation with Curtain's extension in GNOME Shell. It begins whenever the extension is there, and
/// only with one that runs in the shell itself. Main thread only; nothing here waits.
class GnomeShellLink {
public:
    enum class State {
        /// The bus or the extension has not answered yet.
        notKnownYet,
        /// No extension answers.
        absent,
        /// One of another version, or one that does not accept Curtain.
        unfit,
        up,
    };

    struct Handlers {
        std::function<void()> onStateChange;
        /// While the link is up, and the first ones just before.
        std::function<void(const GnomeWindowReport&)> onReport;
    };
    using Done = std::function<void(bool isDone)>;

    GnomeShellLink(const QDBusConnection& bus, Handlers handlers);

    State state() const { return state_; }

    /// What was changed has been reported when `done` is called. It is not called when the link breaks.
    void hide(std::span<const WindowId> windows, Done done);
    void show(std::span<const WindowId> windows);
    void activate(WindowId window);

private:
    void meet();
    void askToWatch();
    void settle(State state);
    void noteWatch(QDBusPendingCallWatcher& answer);
    void receive(const QDBusMessage& message);
    void call(const QString& method, const QVariantList& arguments, Done done);

    QDBusConnection bus_;
    Handlers handlers_;
    State state_ = State::notKnownYet;
    /// Receives the answers of the present conversation.
    std::unique_ptr<QObject> conversation_;
    DBusSignal changed_;
    BusNameOwner shell_;
    BusNameOwner extension_;
};

} // namespace LinuxPlatform
