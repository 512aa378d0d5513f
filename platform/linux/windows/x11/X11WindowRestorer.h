#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/WindowId.h"
#include "platform/linux/windows/x11/X11ManagerEcho.h"
#include "platform/linux/windows/x11/X11WindowModel.h"
#include "platform/linux/windows/x11/X11WindowOrder.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Brings minimized windows back as they were: on their workspaces, in their order, without the focus and
/// without a change of the workspace that is shown. Window managers heed different requests for that, so what
/// is still away once a manager has come to the request gets the next one: the state, a request to map the
/// window, and at last an activation, after which focus and workspace are put back. Main thread only.
class X11WindowRestorer {
public:
    /// Takes in what the server has sent; `noteChanges` follows.
    using Look = std::function<void()>;

    /// All of them outlive this object.
    X11WindowRestorer(X11Connection& connection, X11WindowModel& model, Platform::MainQueue& queue,
                      Look look);

    /// To be called before windows are hidden, which are not to come back for now.
    void remember(std::span<const WindowId> windows);
    void restore(std::span<const WindowId> windows);
    /// Whether the window was asked to come back and has not yet.
    bool isReturning(WindowId window) const { return targets_.contains(window); }
    void forget(std::span<const xcb_window_t> closed);
    /// Gives the focus to a window, on top of those that are back.
    void bringToFront(xcb_window_t window);
    /// To be called when the model has changed.
    void noteChanges();
    /// Runs the task on the main queue as soon as all windows are back, or will not come; at once if none is
    /// away.
    void whenDone(Platform::MainQueue::Task task);

private:
    /// What a window has been asked for last.
    enum class Request { state, map, activation };

    struct Target {
        Request request = Request::state;
        /// Where it is to be; absent where the window manager does not say.
        std::optional<std::uint32_t> desktop;
    };

    void cancel(std::span<const WindowId> windows);
    void scheduleWatch();
    void watch();
    void lookLater();
    /// The step, if the present wait is not over by then.
    Platform::MainQueue::Task whileItLasts(void (X11WindowRestorer::*step)());
    void noteProgress();
    void managerHasAnswered();
    void lookAgain();
    bool isPatienceOver() const;
    bool isBack(WindowId window, const Target& target) const;
    std::vector<xcb_window_t> stillAway(Request lastRequest);
    bool askForMore(bool isLastRequestDue);
    void askToMap(const std::vector<xcb_window_t>& windows);
    void sendMapRequest(xcb_window_t window);
    void askToActivate(const std::vector<xcb_window_t>& windows);
    bool isAwayOrLeaving(const X11Window& window) const;
    /// Window managers map and activate on the workspace that is shown: a window of another one goes there
    /// and back in one go.
    void visit(xcb_window_t window, Request request, std::optional<std::uint32_t> currentDesktop,
               const std::function<void()>& ask);
    void askForDesktop(xcb_window_t window, std::uint32_t desktop);
    void askForState(xcb_window_t window, std::uint32_t change, X11WindowModel::Atom state);
    void askForFocus(xcb_window_t window, xcb_timestamp_t time);
    void finish();

    X11Connection& connection_;
    X11WindowModel& model_;
    Platform::MainQueue& queue_;
    Look look_;
    X11ManagerEcho echo_;
    std::map<WindowId, Target> targets_;
    bool isWatchScheduled_ = false;
    /// The present wait; those before it are over.
    std::uint64_t watch_ = 0;
    std::size_t awayBefore_ = 0;
    /// Since the last request, the answer to it, or a window that has come back.
    Platform::MainQueue::Seconds quietSince_{0};
    Platform::MainQueue::Seconds askedAt_{0};
    /// The manager has come to everything that was asked.
    bool isAnswered_ = false;
    X11WindowOrder order_;
    /// What was hidden, and is to have its place once all is back.
    std::set<WindowId> returning_;
    /// What a window manager that knows no better is to raise before the window that comes to the front.
    std::vector<xcb_window_t> toRaise_;
    std::vector<Platform::MainQueue::Task> whenDone_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
