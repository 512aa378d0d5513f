#pragma once

#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/WindowActivation.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/gnome/GnomeExtensionState.h"
#include "platform/linux/windows/gnome/GnomeShellLink.h"

#include <QDBusConnection>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace LinuxPlatform {

/// The windows of GNOME Shell, through Curtain's extension in it. There are none while the extension does not
/// answer.
class GnomeWindowSystem : public WindowSystem {
public:
    /// `isInstalled` tells whether the extension's files are there. `queue` outlives this object.
    GnomeWindowSystem(const QDBusConnection& bus, Platform::MainQueue& queue,
                      std::function<bool()> isInstalled);

    std::optional<Platform::HidingObstacle> hidingObstacle() override;
    void switchExtensionOn() override { extension_.switchOn(); }
    bool knowsEveryWindow() override { return isUp(); }
    std::uint64_t generation() override { return generation_; }
    const std::vector<Window>& windows() override;
    bool exists(WindowId window) const override { return known_.contains(window); }
    void hide(std::span<const WindowId> windows) override;
    void show(std::span<const WindowId> windows) override;
    bool isShowAwaited(WindowId /*window*/) const override { return false; }
    void activate(std::span<const WindowId> windows) override { activation_.request(windows); }
    Platform::Subscription addEventHandler(EventHandler handler) override;

private:
    using Events = std::vector<std::pair<WindowEvent, WindowId>>;

    bool isUp() const { return link_.state() == GnomeShellLink::State::up; }
    Platform::HidingObstacle obstacleWithoutExtension() const;
    void noteLink();
    void tell(const Events& events);
    void takeIn(const GnomeWindowReport& report);
    void noteWindow(const GnomeWindow& window, Events& events);
    void noteFocus(std::optional<WindowId> focused, Events& events);
    void noteHidden(std::uint64_t request, std::vector<WindowId> windows, bool isDone);
    void forgetFailureOnceHidden();

    Platform::MainQueue& queue_;
    std::function<bool()> isInstalled_;
    std::map<WindowId, GnomeWindow> known_;
    std::vector<WindowId> stacking_;
    std::optional<WindowId> focused_;
    /// What was there before Curtain is not new, but may have been looked for.
    bool isFirstReport_ = true;
    /// Of the reports that come before the link is up: until then nothing can be hidden.
    Events untold_;
    std::uint64_t generation_ = 1;
    std::uint64_t builtGeneration_ = 0;
    std::vector<Window> windows_;
    /// Requests to hide that have not been answered, by their numbers, with the time at which they were made.
    std::map<std::uint64_t, Platform::MainQueue::Seconds> unanswered_;
    std::uint64_t lastRequest_ = 0;
    /// What the last request to hide was about if it failed.
    std::vector<WindowId> failed_;
    LeavingWindows leaving_;
    WindowActivation activation_;
    Platform::Subscribers<WindowEvent, Window> handlers_;
    GnomeExtensionState extension_;
    GnomeShellLink link_;
};

} // namespace LinuxPlatform
