#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/X11Popups.h"
#include "platform/linux/windows/X11WindowModel.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
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
    void activate(std::span<const WindowId> windows) override;
    Platform::Subscription addEventHandler(EventHandler handler) override;

private:
    void takeIn();
    void scheduleTakeIn();
    void deliverEvents();
    void rebuildIfChanged();
    bool isAppWindow(const X11Window& window) const;
    bool isOfType(const X11Window& window, X11WindowModel::Atom type) const;
    Window describe(const X11Window& window) const;
    void requestHidden(xcb_window_t window, bool hidden);
    void keepPopupsAway();
    bool isKeptAway(const Window& window) const;
    bool isPopupOfHiddenApp(const X11Popup& popup);
    void requestIconic(xcb_window_t window);
    void watchHiding(std::span<const WindowId> windows);
    bool isToBeHidden(WindowId window) const;
    void endWatchOfHiding(std::vector<WindowId> asked, std::uint64_t heededBefore);
    void noteWhatWasHeeded(const X11WindowModel::Changes& changes);
    void noteWhatIsBack(const X11WindowModel::Changes& changes);
    void watchShowing();
    void mapStillHidden(std::size_t countBefore);
    void activateOne();
    void rememberFocus(std::span<const WindowId> hidden);
    bool isOnItsWayOut(xcb_window_t window) const;

    X11Connection& connection_;
    Platform::MainQueue& mainQueue_;
    X11WindowModel model_;
    std::string hostName_;
    std::uint64_t builtGeneration_ = 0;
    std::uint64_t notedGeneration_ = 0;
    std::vector<Window> windows_;
    /// Asked to hide and not seen to have done so.
    std::set<WindowId> awaitingHide_;
    /// How often a window was seen to do what was asked; tells whether any did in between.
    std::uint64_t heeded_ = 0;
    /// In a row, of the present window manager.
    int unheededRequests_ = 0;
    std::uint64_t judgedManager_ = 0;
    /// Asked to hide, and neither asked back nor brought back.
    std::set<WindowId> keptAway_;
    /// Null while no window is kept away.
    std::unique_ptr<X11Popups> popups_;
    /// Asked back and not known to have come.
    std::set<WindowId> awaitingShow_;
    std::uint64_t lastShowWatch_ = 0;
    Platform::MainQueue::Seconds lastHide_{0};
    std::set<WindowId> awaitingActivation_;
    /// Had the focus when they were hidden; the window manager may pass it from one to the next meanwhile.
    std::vector<xcb_window_t> hiddenWithFocus_;
    bool isTakeInScheduled_ = false;
    std::vector<std::pair<WindowEvent, xcb_window_t>> undelivered_;
    Platform::Subscribers<WindowEvent, Window> handlers_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
