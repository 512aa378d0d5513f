#pragma once

#include "platform/Subscription.h"
#include "platform/SystemVersion.h"
#include "platform/linux/windows/WindowHints.h"
#include "platform/linux/windows/WindowId.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// One top-level window of the session, as its window manager sees it.
struct Window {
    WindowId id = 0;
    /// Tells windows apart that have the same identifier one after another.
    std::uint64_t birth = 0;
    WindowHints hints;
    /// The connection to the display server over which the window was made: one process each, even where the
    /// process is not known.
    std::uint64_t client = 0;
    /// Put away by its user or by `WindowSystem::hide`. A window on another workspace is not hidden.
    bool isHidden = false;
    /// Stands in the task list.
    bool isInTaskList = true;
};

enum class WindowEvent {
    /// A window was opened, or became that of another app.
    opened,
    /// A window became the active one, or was put away and came back.
    activated,
};

/// The windows of the session, whichever way it lets us list, hide and show them. Panels and the desktop
/// itself are not among them. Main thread only; requests are asked for and not waited for.
class WindowSystem {
public:
    using EventHandler = std::function<void(WindowEvent, const Window&)>;

    virtual ~WindowSystem() = default;

    /// Why windows cannot be hidden at this moment; absent where they can.
    virtual std::optional<Platform::HidingObstacle> hidingObstacle() = 0;
    /// As `Platform::SystemVersion::switchExtensionOn`; for sessions that have such an extension.
    virtual void switchExtensionOn() {}
    /// Whether `windows` leaves none of the session's windows out. Where it may, an app that has none in the
    /// list may be in full view all the same.
    virtual bool knowsEveryWindow() = 0;

    /// Changes whenever `windows` does.
    virtual std::uint64_t generation() = 0;
    /// In a stable order; valid until the next call to this interface.
    virtual const std::vector<Window>& windows() = 0;
    /// Whether the window still exists, be it in the list or not.
    virtual bool exists(WindowId window) const = 0;

    virtual void hide(std::span<const WindowId> windows) = 0;
    /// Brings hidden windows back as they were, without a change of focus or workspace.
    virtual void show(std::span<const WindowId> windows) = 0;
    /// Whether it was asked to be shown and that has not been carried out yet, as far as is known; false
    /// where all requests are passed on at once.
    virtual bool isShowAwaited(WindowId window) const = 0;
    /// Brings one of these windows to the front, unless they are all on other workspaces: the one that had
    /// the focus when it was hidden, or else the topmost. Calls in one turn of the main queue count as one.
    virtual void activate(std::span<const WindowId> windows) = 0;

    /// `handler` is called on the main queue.
    virtual Platform::Subscription addEventHandler(EventHandler handler) = 0;
};

} // namespace LinuxPlatform
