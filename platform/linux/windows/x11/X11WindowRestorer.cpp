#include "platform/linux/windows/x11/X11WindowRestorer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t removeState = 0;
constexpr std::uint32_t addState = 1;
/// Window managers answer within a few milliseconds. One that has not brought back a single window by now,
/// and does not tell that it is busy, does not know the request.
constexpr Platform::MainQueue::Seconds quietTime{0.15};
/// What is still away so long after the manager has come to the request will not come by it. Some show
/// windows with their next frame only, which takes the longer the more there are.
constexpr Platform::MainQueue::Seconds patience{1};
constexpr Platform::MainQueue::Seconds patienceForEach{0.02};
/// One that says that it tells when it has come to a request, and does not, is busy until then, or gone.
constexpr Platform::MainQueue::Seconds longestAnswer{30};
/// For so long a window may be on its way out that is to come back.
constexpr Platform::MainQueue::Seconds longestHiding{5};

xcb_window_t xcbWindow(WindowId window) {
    return static_cast<xcb_window_t>(window);
}

} // namespace

X11WindowRestorer::X11WindowRestorer(X11Connection& connection, X11WindowModel& model,
                                     Platform::MainQueue& queue, Look look)
    : connection_(connection),
      model_(model),
      queue_(queue),
      look_(std::move(look)),
      echo_(connection),
      order_(connection, model) {}

void X11WindowRestorer::remember(std::span<const WindowId> windows) {
    order_.remember(windows, returning_);
    cancel(windows);
}

void X11WindowRestorer::restore(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        askForState(xcbWindow(window), removeState, X11WindowModel::netWmStateHidden);
        const auto* const found = model_.find(xcbWindow(window));
        if (found != nullptr) {
            targets_[window] = {Request::state, model_.desktopOf(*found)};
            if (isAwayOrLeaving(*found)) {
                returning_.insert(window);
            }
        }
    }
    connection_.flush();
    scheduleWatch();
}

void X11WindowRestorer::cancel(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        targets_.erase(window);
        returning_.erase(window);
    }
}

void X11WindowRestorer::forget(std::span<const xcb_window_t> closed) {
    cancel(std::vector<WindowId>(closed.begin(), closed.end()));
    order_.forget(closed);
}

void X11WindowRestorer::whenDone(Platform::MainQueue::Task task) {
    whenDone_.push_back(std::move(task));
    noteChanges();
}

void X11WindowRestorer::noteChanges() {
    std::erase_if(targets_, [this](const auto& one) { return isBack(one.first, one.second); });
    if (isAnswered_) {
        askForMore(false);
    }
    // The order is known only when the manager has come to all that it was asked.
    const bool isSomethingLeftToDo = !returning_.empty() || !whenDone_.empty();
    if (isSomethingLeftToDo && targets_.empty() && (returning_.empty() || isAnswered_)) {
        finish();
    }
}

void X11WindowRestorer::scheduleWatch() {
    isAnswered_ = false;
    askedAt_ = queue_.now();
    if (!std::exchange(isWatchScheduled_, true)) {
        queue_.async(lifetime_.weak([this] {
            isWatchScheduled_ = false;
            watch();
        }));
    }
}

void X11WindowRestorer::watch() {
    ++watch_;
    noteProgress();
    echo_.ask(
        [this, answered = whileItLasts(&X11WindowRestorer::managerHasAnswered)] { queue_.async(answered); });
    lookLater();
}

void X11WindowRestorer::lookLater() {
    queue_.asyncAfter(quietTime, whileItLasts(&X11WindowRestorer::lookAgain));
}

Platform::MainQueue::Task X11WindowRestorer::whileItLasts(void (X11WindowRestorer::*step)()) {
    return lifetime_.weak([this, watch = watch_, step] {
        if (watch == watch_ && !isWatchScheduled_) {
            (this->*step)();
        }
    });
}

void X11WindowRestorer::noteProgress() {
    awayBefore_ = targets_.size();
    quietSince_ = queue_.now();
}

void X11WindowRestorer::managerHasAnswered() {
    isAnswered_ = true;
    quietSince_ = queue_.now();
    look_();
    noteChanges();
}

void X11WindowRestorer::lookAgain() {
    const auto watchBefore = watch_;
    look_();
    noteChanges();
    if (watch_ != watchBefore || isWatchScheduled_) {
        return;
    }
    // Of some windows it is never seen that they are hidden.
    const bool isOnItsWay =
        queue_.now() - askedAt_ < longestHiding && std::ranges::any_of(targets_, [this](const auto& one) {
            return model_.isExpectedHidden(xcbWindow(one.first));
        });
    if (targets_.size() < awayBefore_ || isOnItsWay) {
        // With many windows a window manager is busy for longer.
        noteProgress();
    }
    const bool isLastRequestDue = isPatienceOver();
    // One that answers in turn may still be raising what is back.
    const bool isSettled = targets_.empty() &&
                           (isAnswered_ || !model_.answersInTurn() || queue_.now() - quietSince_ >= patience);
    if (isSettled || (!askForMore(isLastRequestDue) && isLastRequestDue)) {
        finish();
    } else if (!isWatchScheduled_) {
        lookLater();
    }
}

bool X11WindowRestorer::isPatienceOver() const {
    const auto count = static_cast<double>(targets_.size());
    return queue_.now() - quietSince_ >=
           (model_.answersInTurn() && !isAnswered_ ? longestAnswer : patience + count * patienceForEach);
}

bool X11WindowRestorer::isBack(WindowId window, const Target& target) const {
    const auto* const found = model_.find(xcbWindow(window));
    if (found == nullptr || !found->isManaged) {
        return true;
    }
    return !model_.isHidden(*found) && !model_.isExpectedHidden(found->id) &&
           (target.request == Request::state || model_.desktopOf(*found) == target.desktop);
}

std::vector<xcb_window_t> X11WindowRestorer::stillAway(Request lastRequest) {
    std::vector<xcb_window_t> windows;
    for (const auto& [window, target] : targets_) {
        const auto* const found = model_.find(xcbWindow(window));
        if (target.request == lastRequest && found != nullptr && model_.isHidden(*found)) {
            windows.push_back(found->id);
        }
    }
    if (!windows.empty()) {
        order_.sort(windows);
    }
    return windows;
}

bool X11WindowRestorer::askForMore(bool isLastRequestDue) {
    const bool isMappingDue = isAnswered_ || isLastRequestDue || !model_.answersInTurn();
    if (const auto windows = isMappingDue ? stillAway(Request::state) : std::vector<xcb_window_t>{};
        !windows.empty()) {
        askToMap(windows);
        return true;
    }
    if (const auto windows = isLastRequestDue ? stillAway(Request::map) : std::vector<xcb_window_t>{};
        !windows.empty()) {
        askToActivate(windows);
        return true;
    }
    return false;
}

void X11WindowRestorer::askToMap(const std::vector<xcb_window_t>& windows) {
    std::vector<xcb_get_window_attributes_cookie_t> attributes;
    attributes.reserve(windows.size());
    for (const auto window : windows) {
        attributes.push_back(xcb_get_window_attributes(connection_.get(), window));
    }
    const auto currentDesktop = model_.currentDesktop();
    for (std::size_t index = 0; index < windows.size(); ++index) {
        const auto reply = connection_.reply<xcb_get_window_attributes_reply>(attributes[index]);
        const bool isMapped = reply && reply->map_state != XCB_MAP_STATE_UNMAPPED;
        const auto window = windows[index];
        visit(window, Request::map, currentDesktop,
              [&] { isMapped ? sendMapRequest(window) : (void)xcb_map_window(connection_.get(), window); });
    }
    connection_.flush();
    scheduleWatch();
}

void X11WindowRestorer::sendMapRequest(xcb_window_t window) {
    // The server passes on no request to map what is mapped, as some window managers leave minimized windows.
    xcb_map_request_event_t request{};
    request.response_type = XCB_MAP_REQUEST;
    request.parent = connection_.root();
    request.window = window;
    xcb_send_event(connection_.get(), 0, connection_.root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&request));
}

void X11WindowRestorer::askToActivate(const std::vector<xcb_window_t>& windows) {
    const auto currentDesktop = model_.currentDesktop();
    const auto focused = model_.activeWindow();
    const auto time = connection_.serverTime();
    for (const auto window : windows) {
        visit(window, Request::activation, currentDesktop, [&] { askForFocus(window, time); });
    }
    if (currentDesktop) {
        connection_.sendToWindowManager(connection_.root(), model_.atom(X11WindowModel::netCurrentDesktop),
                                        std::array{*currentDesktop, time});
    }
    const auto* const focusedWindow = focused ? model_.find(*focused) : nullptr;
    if (focusedWindow != nullptr && !isAwayOrLeaving(*focusedWindow) &&
        std::ranges::find(windows, *focused) == windows.end()) {
        askForFocus(*focused, time);
    }
    connection_.flush();
    scheduleWatch();
}

bool X11WindowRestorer::isAwayOrLeaving(const X11Window& window) const {
    return model_.isHidden(window) || model_.isExpectedHidden(window.id);
}

void X11WindowRestorer::visit(xcb_window_t window, Request request,
                              std::optional<std::uint32_t> currentDesktop, const std::function<void()>& ask) {
    auto& target = targets_.at(window);
    target.request = request;
    const bool isElsewhere = currentDesktop && target.desktop && target.desktop != currentDesktop;
    if (isElsewhere && target.desktop != onAllDesktops) {
        askForDesktop(window, *currentDesktop);
    }
    ask();
    if (isElsewhere) {
        askForDesktop(window, *target.desktop);
    }
}

void X11WindowRestorer::askForDesktop(xcb_window_t window, std::uint32_t desktop) {
    connection_.sendToWindowManager(window, model_.atom(X11WindowModel::netWmDesktop),
                                    std::array{desktop, sourcePager});
}

void X11WindowRestorer::askForState(xcb_window_t window, std::uint32_t change, X11WindowModel::Atom state) {
    connection_.sendToWindowManager(
        window, model_.atom(X11WindowModel::netWmState),
        std::array{change, model_.atom(state), std::uint32_t{XCB_ATOM_NONE}, sourcePager});
}

void X11WindowRestorer::askForFocus(xcb_window_t window, xcb_timestamp_t time) {
    connection_.sendToWindowManager(window, model_.atom(X11WindowModel::netActiveWindow),
                                    std::array{sourcePager, time});
}

void X11WindowRestorer::bringToFront(xcb_window_t window) {
    auto windows = std::exchange(toRaise_, {});
    std::erase(windows, window);
    windows.push_back(window);
    const auto time = connection_.serverTime();
    for (const auto one : windows) {
        askForFocus(one, time);
        const auto* const found = model_.find(one);
        if (found != nullptr && model_.hasState(*found, X11WindowModel::netWmStateShaded)) {
            // Most window managers unroll what they activate.
            askForState(one, addState, X11WindowModel::netWmStateShaded);
        }
    }
    connection_.flush();
}

void X11WindowRestorer::finish() {
    toRaise_ = order_.restore(returning_);
    returning_.clear();
    targets_.clear();
    echo_.forget();
    ++watch_;
    for (auto& task : std::exchange(whenDone_, {})) {
        queue_.async(lifetime_.weak(std::move(task)));
    }
}

} // namespace LinuxPlatform
