#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/HidingTrial.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/TakenWindows.h"
#include "platform/linux/windows/WindowActivation.h"
#include "platform/linux/windows/WindowEvents.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/x11/X11Popups.h"
#include "platform/linux/windows/x11/X11WindowModel.h"
#include "platform/linux/windows/x11/X11WindowRestorer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The windows of an X11 session under a window manager that follows the Extended Window Manager Hints
/// (EWMH 1.5). The hidden state is asked of the window manager and read back from it.
class X11WindowSystem : public WindowSystem {
public:
    /// Both outlive this object.
    X11WindowSystem(X11Connection& connection, Platform::MainQueue& mainQueue);

    std::optional<Platform::HidingObstacle> hidingObstacle() override;
    bool knowsEveryWindow() override;
    std::uint64_t generation() override;
    const std::vector<Window>& windows() override;
    bool exists(WindowId window) const override;
    void hide(std::span<const WindowId> windows) override;
    void show(std::span<const WindowId> windows) override;
    bool isShowAwaited(WindowId window) const override { return restorer_.isReturning(window); }
    void activate(std::span<const WindowId> windows) override;
    Platform::Subscription addEventHandler(EventHandler handler) override;

private:
    void takeIn();
    void scheduleTakeIn();
    std::optional<Window> find(WindowId window) const;
    void rebuildIfChanged();
    Window describe(const X11Window& window) const;
    void keepPopupsAway();
    bool isTaken(const Window& window) const;
    bool isPopupOfHiddenApp(const X11Popup& popup);
    bool isAway(WindowId window) const;
    void takeAway(std::span<const WindowId> windows);
    void requestIconic(xcb_window_t window);
    std::uint64_t beginTrial(std::span<const WindowId> windows);
    void watchHiding(std::uint64_t request, std::span<const WindowId> windows);
    bool isToBeHidden(WindowId window) const;
    void endExpectation(std::uint64_t request, std::span<const WindowId> windows, std::uint64_t hiddenBefore);
    void noteWhatHasSettled();
    void noteWhatWasHeeded(const X11WindowModel::Changes& changes);
    void noteWhatIsBack(const X11WindowModel::Changes& changes);
    bool isActiveBornAfter(std::uint64_t birth) const;
    WindowActivation::Scene lookAtScene();

    X11Connection& connection_;
    Platform::MainQueue& mainQueue_;
    X11WindowModel model_;
    std::string hostName_;
    std::uint64_t builtGeneration_ = 0;
    std::uint64_t notedGeneration_ = 0;
    std::vector<Window> windows_;
    /// Of the present window manager.
    HidingTrial hidingTrial_;
    Platform::MainQueue::Seconds managerSince_{0};
    std::uint64_t judgedManager_ = 0;
    TakenWindows taken_;
    LeavingWindows leaving_;
    /// Null while no window is taken.
    std::unique_ptr<X11Popups> popups_;
    X11WindowRestorer restorer_;
    /// As soon as what was given back is there.
    std::vector<WindowId> toActivate_;
    /// The newest window when that was asked last.
    std::uint64_t newestBefore_ = 0;
    WindowActivation activation_;
    bool isTakeInScheduled_ = false;
    WindowEvents events_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
