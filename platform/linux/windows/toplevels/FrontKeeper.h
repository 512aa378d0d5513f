#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/WindowId.h"

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>

namespace LinuxPlatform {

/// Keeps in front the window that was there, where the compositor may give the focus to what comes back. Main
/// thread only.
class FrontKeeper {
public:
    /// `queue` outlives this object. `canBeInFront` is whether a window is in view and to stay there;
    /// `bringToFront` is called in a later turn of the queue.
    FrontKeeper(Platform::MainQueue& queue, WindowPredicate canBeInFront,
                std::function<void(WindowId)> bringToFront);

    /// A window has got the focus, whoever gave it to it.
    void noteActivated(WindowId window);
    /// We give the focus to a window.
    void setFront(WindowId window) { front_ = window; }
    /// Windows are asked to come back while `active` has the focus.
    void noteShown(std::span<const WindowId> windows, std::optional<WindowId> active);
    /// An app is asked to come to the front. One app that comes back and is asked for is to be seen; of
    /// several, nobody has asked for one of them.
    void noteRequested(const std::string& app);
    /// What the next turn of the queue does, at once.
    void keep();
    /// The windows have other names from now on.
    void forget();

private:
    void keepLater();

    Platform::MainQueue& queue_;
    WindowPredicate canBeInFront_;
    std::function<void(WindowId)> bringToFront_;
    /// Those that were asked to come back a moment ago.
    LeavingWindows returning_;
    /// Had the focus before they came back.
    std::optional<WindowId> front_;
    /// What happens in this turn of the queue: what comes back, and the apps that are to come to the front.
    std::set<WindowId> shown_;
    std::set<std::string> requestedApps_;
    bool isKeptLater_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
