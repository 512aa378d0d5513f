#include "platform/linux/windows/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <utility>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t iconicState = 3;
constexpr std::uint32_t removeState = 0;
constexpr std::uint32_t addState = 1;
/// A request in the user's name, which focus stealing prevention lets through.
constexpr std::uint32_t sourcePager = 2;
constexpr std::uint32_t onAllDesktops = 0xFFFFFFFF;
/// Window managers answer within a few milliseconds; one that has not shown a single window by now does not
/// know the polite request.
constexpr Platform::MainQueue::Seconds showDeadline{0.15};
/// One that has not hidden a window by now does not heed the request.
constexpr Platform::MainQueue::Seconds hideDeadline{1};

std::string localHostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

xcb_window_t xcbWindow(WindowId window) {
    return static_cast<xcb_window_t>(window);
}

} // namespace

X11WindowSystem::X11WindowSystem(X11Connection& connection, Platform::MainQueue& mainQueue)
    : connection_(connection),
      mainQueue_(mainQueue),
      model_(connection, [this] { scheduleTakeIn(); }),
      hostName_(localHostName()) {
    scheduleTakeIn();
}

std::optional<Platform::HidingObstacle> X11WindowSystem::hidingObstacle() {
    takeIn();
    return model_.hasManager() ? std::nullopt : std::optional(Platform::HidingObstacle::noWindowManager);
}

bool X11WindowSystem::knowsEveryWindow() {
    takeIn();
    return model_.hasManager();
}

std::uint64_t X11WindowSystem::generation() {
    takeIn();
    return model_.generation();
}

const std::vector<Window>& X11WindowSystem::windows() {
    takeIn();
    rebuildIfChanged();
    return windows_;
}

bool X11WindowSystem::exists(WindowId window) const {
    return model_.find(xcbWindow(window)) != nullptr;
}

void X11WindowSystem::hide(std::span<const WindowId> windows) {
    rememberFocus(windows);
    lastHide_ = mainQueue_.now();
    for (const auto window : windows) {
        // The standard request. Some window managers take it for done where the window is on another
        // workspace, so the state is asked for as well.
        connection_.sendToWindowManager(xcbWindow(window), model_.atom(X11WindowModel::wmChangeState),
                                        std::array{iconicState});
        requestHidden(xcbWindow(window), true);
        model_.expectHidden(xcbWindow(window));
        awaitingShow_.erase(window);
        awaitingActivation_.erase(window);
    }
    connection_.flush();
}

void X11WindowSystem::show(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        requestHidden(xcbWindow(window), false);
        awaitingShow_.insert(window);
    }
    connection_.flush();
    watchShowing();
}

void X11WindowSystem::activate(std::span<const WindowId> windows) {
    // Where several apps are given back, they come back one after another. One window can come to the front,
    // and the others are to keep their places.
    if (awaitingActivation_.empty()) {
        mainQueue_.async(lifetime_.weak([this] { activateOne(); }));
    }
    awaitingActivation_.insert(windows.begin(), windows.end());
}

void X11WindowSystem::activateOne() {
    takeIn();
    const auto desktop = model_.currentDesktop();
    const auto isCandidate = [&](xcb_window_t id) {
        const auto* const window = awaitingActivation_.contains(id) ? model_.find(id) : nullptr;
        return window != nullptr && window->isManaged &&
               (!desktop || !window->desktop || window->desktop == desktop ||
                window->desktop == onAllDesktops);
    };
    const auto stackingOrder = model_.stackingOrder();
    const auto topmost = std::find_if(stackingOrder.rbegin(), stackingOrder.rend(), isCandidate);
    const auto focused = std::ranges::find_if(hiddenWithFocus_, isCandidate);
    if (focused != hiddenWithFocus_.end() || topmost != stackingOrder.rend()) {
        connection_.sendToWindowManager(focused != hiddenWithFocus_.end() ? *focused : *topmost,
                                        model_.atom(X11WindowModel::netActiveWindow),
                                        std::array{sourcePager, std::uint32_t{XCB_CURRENT_TIME}});
        connection_.flush();
    }
    std::erase_if(hiddenWithFocus_, [this](auto window) { return awaitingActivation_.contains(window); });
    awaitingActivation_.clear();
}

void X11WindowSystem::rememberFocus(std::span<const WindowId> hidden) {
    std::erase_if(hiddenWithFocus_, [this](auto window) { return !exists(window); });
    const auto active = model_.activeWindow();
    const bool isKnown = !active || std::ranges::find(hiddenWithFocus_, *active) != hiddenWithFocus_.end();
    if (!isKnown && std::ranges::find(hidden, WindowId{*active}) != hidden.end()) {
        hiddenWithFocus_.push_back(*active);
    }
}

bool X11WindowSystem::isOnItsWayOut(xcb_window_t window) const {
    // While several windows are hidden, the window manager passes the focus from one to the next. Nobody
    // chose that.
    return model_.isExpectedHidden(window) && mainQueue_.now() - lastHide_ < hideDeadline;
}

Platform::Subscription X11WindowSystem::addEventHandler(EventHandler handler) {
    return handlers_.add(std::move(handler));
}

void X11WindowSystem::takeIn() {
    connection_.dispatchEvents();
    const auto changes = model_.update();
    for (const auto window : changes.opened) {
        undelivered_.emplace_back(WindowEvent::opened, window);
    }
    for (const auto window : changes.identified) {
        undelivered_.emplace_back(WindowEvent::opened, window);
    }
    for (const auto window : changes.returned) {
        undelivered_.emplace_back(WindowEvent::activated, window);
    }
    if (changes.activated && !isOnItsWayOut(*changes.activated)) {
        undelivered_.emplace_back(WindowEvent::activated, *changes.activated);
    }
    if (!changes.empty()) {
        mainQueue_.async(lifetime_.weak([this] { deliverEvents(); }));
    }
}

void X11WindowSystem::scheduleTakeIn() {
    if (!std::exchange(isTakeInScheduled_, true)) {
        mainQueue_.async(lifetime_.weak([this] {
            isTakeInScheduled_ = false;
            takeIn();
        }));
    }
}

void X11WindowSystem::deliverEvents() {
    for (const auto& [event, window] : std::exchange(undelivered_, {})) {
        const auto* const found = model_.find(window);
        if (found == nullptr || !isAppWindow(*found)) {
            continue;
        }
        handlers_.tell(event, describe(*found));
    }
}

void X11WindowSystem::rebuildIfChanged() {
    if (builtGeneration_ == model_.generation()) {
        return;
    }
    builtGeneration_ = model_.generation();
    windows_.clear();
    for (const auto id : model_.managedWindows()) {
        const auto* const window = model_.find(id);
        if (window != nullptr && isAppWindow(*window)) {
            windows_.push_back(describe(*window));
        }
    }
}

bool X11WindowSystem::isAppWindow(const X11Window& window) const {
    const auto is = [&](X11WindowModel::Atom type) {
        return std::ranges::find(window.type, model_.atom(type)) != window.type.end();
    };
    return window.isManaged && !is(X11WindowModel::netWmWindowTypeDesktop) &&
           !is(X11WindowModel::netWmWindowTypeDock);
}

Window X11WindowSystem::describe(const X11Window& window) const {
    Window described;
    described.id = window.id;
    described.birth = window.birth;
    described.hints = {window.instanceName, window.className, window.desktopFile, window.applicationId,
                       window.connectedProcess};
    if (!described.hints.process && (window.clientMachine.empty() || window.clientMachine == hostName_)) {
        described.hints.process = window.declaredProcess;
    }
    described.client = window.id & ~xcb_get_setup(connection_.get())->resource_id_mask;
    described.isHidden = model_.isHidden(window);
    described.isInTaskList =
        std::ranges::find(window.state, model_.atom(X11WindowModel::netWmStateSkipTaskbar)) ==
        window.state.end();
    return described;
}

void X11WindowSystem::requestHidden(xcb_window_t window, bool hidden) {
    connection_.sendToWindowManager(window, model_.atom(X11WindowModel::netWmState),
                                    std::array{hidden ? addState : removeState,
                                               model_.atom(X11WindowModel::netWmStateHidden),
                                               std::uint32_t{XCB_ATOM_NONE}, sourcePager});
}

void X11WindowSystem::watchShowing() {
    mainQueue_.asyncAfter(showDeadline,
                          lifetime_.weak([this, watch = ++lastShowWatch_, count = awaitingShow_.size()] {
                              if (watch == lastShowWatch_) {
                                  mapStillHidden(count);
                              }
                          }));
}

void X11WindowSystem::mapStillHidden(std::size_t countBefore) {
    takeIn();
    std::erase_if(awaitingShow_, [this](WindowId window) {
        const auto* const found = model_.find(xcbWindow(window));
        return found == nullptr || !found->isManaged || !model_.isHidden(*found);
    });
    if (awaitingShow_.empty()) {
        return;
    }
    if (awaitingShow_.size() < countBefore) {
        // With many windows a window manager is busy for longer.
        watchShowing();
        return;
    }
    for (const auto window : std::exchange(awaitingShow_, {})) {
        xcb_map_window(connection_.get(), xcbWindow(window));
    }
    connection_.flush();
}

} // namespace LinuxPlatform
