#include "platform/linux/windows/x11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <utility>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t iconicState = 3;
constexpr std::uint32_t addState = 1;
/// One that has not hidden a window by now is busy, or does not heed the request.
constexpr Platform::MainQueue::Seconds hideDeadline{1};
/// However busy a window manager is, it has done by then what it is asked, or says by then what it can do.
constexpr Platform::MainQueue::Seconds answerDeadline{5};

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
      hostName_(localHostName()),
      leaving_(mainQueue),
      restorer_(connection, model_, mainQueue, [this] { takeIn(); }),
      activation_(
          mainQueue, [this] { return lookAtScene(); },
          [this](WindowId window) { restorer_.bringToFront(xcbWindow(window)); }),
      events_(mainQueue, leaving_, [this](WindowId window) { return find(window); }) {
    scheduleTakeIn();
}

std::optional<Platform::HidingObstacle> X11WindowSystem::hidingObstacle() {
    takeIn();
    if (!model_.hasManager()) {
        return Platform::HidingObstacle::noWindowManager;
    }
    if (hidingTrial_.isLost()) {
        return Platform::HidingObstacle::windowManagerIgnoresHiding;
    }
    if (!model_.hasWindowList()) {
        // Window managers show that they are there before they say what they can do.
        return mainQueue_.now() - managerSince_ < answerDeadline
                   ? Platform::HidingObstacle::notKnownYet
                   : Platform::HidingObstacle::windowManagerIgnoresHiding;
    }
    const bool isInDoubt = model_.isWindowListOld() || hidingTrial_.isInDoubt();
    return isInDoubt ? std::optional(Platform::HidingObstacle::notKnownYet) : std::nullopt;
}

bool X11WindowSystem::knowsEveryWindow() {
    takeIn();
    return model_.hasWindowList() && !model_.isWindowListOld();
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
    // Whose the focus is may have changed a moment ago.
    takeIn();
    std::vector<TakenWindow> taken;
    std::vector<WindowId> visible;
    for (const auto window : windows) {
        // The window manager remembers the places itself.
        taken.push_back({window, {}});
        // Of what an earlier run has hidden no answer would come, and its return would be taken for one.
        if (!isAway(window)) {
            visible.push_back(window);
        }
    }
    taken_.take(taken);
    takeAway(visible);
    keepPopupsAway();
}

bool X11WindowSystem::isAway(WindowId window) const {
    const auto* const found = model_.find(xcbWindow(window));
    return found != nullptr && model_.isHidden(*found) && !model_.isExpectedHidden(xcbWindow(window)) &&
           !restorer_.isReturning(window);
}

void X11WindowSystem::takeAway(std::span<const WindowId> windows) {
    activation_.forget([this](WindowId window) { return !exists(window); });
    activation_.noteHiding(windows, model_.activeWindow());
    leaving_.add(windows);
    restorer_.remember(windows);
    const auto request = beginTrial(windows);
    for (const auto window : windows) {
        requestIconic(xcbWindow(window));
        model_.expectHidden(xcbWindow(window), request);
        std::erase(toActivate_, window);
    }
    connection_.flush();
    watchHiding(request, windows);
}

void X11WindowSystem::keepPopupsAway() {
    taken_.forget([this](WindowId window) { return !exists(window); });
    if (taken_.isEmpty()) {
        popups_.reset();
        return;
    }
    if (popups_) {
        popups_->judgeAnew();
    } else {
        popups_ = X11Popups::open([this](const X11Popup& popup) { return isPopupOfHiddenApp(popup); });
    }
}

bool X11WindowSystem::isTaken(const Window& window) const {
    return taken_.contains(window.id) && (window.isHidden || model_.isExpectedHidden(xcbWindow(window.id)));
}

bool X11WindowSystem::isPopupOfHiddenApp(const X11Popup& popup) {
    rebuildIfChanged();
    for (const auto owner : popup.owners) {
        const auto window = std::ranges::find(windows_, WindowId{owner}, &Window::id);
        if (window != windows_.end()) {
            return isTaken(*window);
        }
    }
    // Where its program has windows of several apps, it may be any one's.
    bool hasWindowAway = false;
    for (const auto& window : windows_) {
        const bool isSameProgram =
            popup.process ? popup.process == window.hints.process : popup.client == window.client;
        if (isSameProgram && !window.isHidden && !isTaken(window)) {
            return false;
        }
        hasWindowAway = hasWindowAway || (isSameProgram && isTaken(window));
    }
    return hasWindowAway;
}

void X11WindowSystem::requestIconic(xcb_window_t window) {
    // The standard request. Some window managers take it for done where the window is on another workspace,
    // so the state is asked for as well.
    connection_.sendToWindowManager(window, model_.atom(X11WindowModel::wmChangeState),
                                    std::array{iconicState});
    connection_.sendToWindowManager(window, model_.atom(X11WindowModel::netWmState),
                                    std::array{addState, model_.atom(X11WindowModel::netWmStateHidden),
                                               std::uint32_t{XCB_ATOM_NONE}, sourcePager});
}

std::uint64_t X11WindowSystem::beginTrial(std::span<const WindowId> windows) {
    std::vector<WindowId> judgeable(windows.begin(), windows.end());
    std::erase_if(judgeable, [this](WindowId window) { return !isToBeHidden(window); });
    return hidingTrial_.begin(judgeable);
}

void X11WindowSystem::watchHiding(std::uint64_t request, std::span<const WindowId> windows) {
    mainQueue_.asyncAfter(
        hideDeadline,
        lifetime_.weak([this, request, asked = std::vector(windows.begin(), windows.end()),
                        before = hidingTrial_.hidden()] { endExpectation(request, asked, before); }));
    mainQueue_.asyncAfter(answerDeadline, lifetime_.weak([this, request] {
        takeIn();
        hidingTrial_.judge(request);
    }));
}

bool X11WindowSystem::isToBeHidden(WindowId window) const {
    const auto* const found = model_.find(xcbWindow(window));
    // Window managers may refuse to hide some kinds of windows, and not all of them let one see that a
    // rolled-up window is hidden.
    return found != nullptr && found->isManaged && !found->isTransient && !model_.isHidden(*found) &&
           model_.mayBeMinimized(*found) && !model_.hasState(*found, X11WindowModel::netWmStateShaded) &&
           !model_.hasState(*found, X11WindowModel::netWmStateSkipTaskbar) &&
           std::ranges::none_of(
               std::array{X11WindowModel::netWmWindowTypeMenu, X11WindowModel::netWmWindowTypeToolbar,
                          X11WindowModel::netWmWindowTypeSplash, X11WindowModel::netWmWindowTypeUtility},
               [&](auto type) { return model_.isOfType(*found, type); });
}

void X11WindowSystem::endExpectation(std::uint64_t request, std::span<const WindowId> windows,
                                     std::uint64_t hiddenBefore) {
    takeIn();
    hidingTrial_.becomeLate(request);
    const auto late = hidingTrial_.awaited(request);
    for (const auto window : windows) {
        const auto* const found = model_.find(xcbWindow(window));
        const bool isWaiting = std::ranges::binary_search(late, window);
        if (isWaiting && hidingTrial_.hidden() == hiddenBefore) {
            requestIconic(xcbWindow(window));
        }
        // Of a rolled-up window one may not see that it is hidden until it is back.
        const bool isUnjudged = !hidingTrial_.isAwaited(window) && found != nullptr &&
                                !model_.hasState(*found, X11WindowModel::netWmStateShaded);
        if (isWaiting || isUnjudged) {
            model_.expectNoMore(xcbWindow(window), request);
        }
    }
    noteWhatHasSettled();
    connection_.flush();
}

void X11WindowSystem::noteWhatHasSettled() {
    leaving_.remove([this](WindowId window) { return !model_.isExpectedHidden(xcbWindow(window)); });
}

void X11WindowSystem::noteWhatWasHeeded(const X11WindowModel::Changes& changes) {
    if (std::exchange(judgedManager_, model_.managerGeneration()) != model_.managerGeneration()) {
        hidingTrial_.startAnew();
        managerSince_ = mainQueue_.now();
    }
    hidingTrial_.note(
        [this](WindowId window) {
            const auto* const found = model_.find(xcbWindow(window));
            return found != nullptr && model_.isHidden(*found);
        },
        // One that is closed or taken from the screen by its own program says nothing of the window manager.
        [&](WindowId window) {
            const auto* const found = model_.find(xcbWindow(window));
            return found == nullptr || !found->isManaged ||
                   std::ranges::find(changes.returned, found->id) != changes.returned.end();
        });
}

void X11WindowSystem::noteWhatIsBack(const X11WindowModel::Changes& changes) {
    taken_.forget(std::vector<WindowId>(changes.returned.begin(), changes.returned.end()));
    if (popups_) {
        keepPopupsAway();
    }
}

void X11WindowSystem::show(std::span<const WindowId> windows) {
    hidingTrial_.withdraw(windows);
    restorer_.restore(windows);
    taken_.forget(windows);
    keepPopupsAway();
}

void X11WindowSystem::activate(std::span<const WindowId> windows) {
    takeIn();
    toActivate_.insert(toActivate_.end(), windows.begin(), windows.end());
    newestBefore_ = model_.newestBirth();
    // Some window managers bring a window back by activating it, or put what comes back on top.
    restorer_.whenDone([this] {
        takeIn();
        const auto requested = std::exchange(toActivate_, {});
        if (isActiveBornAfter(newestBefore_)) {
            // Managers may take seconds, and who opened a window in the meantime works in it.
            activation_.forget(
                [&](WindowId window) { return std::ranges::find(requested, window) != requested.end(); });
        } else {
            activation_.request(requested);
        }
    });
}

bool X11WindowSystem::isActiveBornAfter(std::uint64_t birth) const {
    const auto active = model_.activeWindow();
    const auto* const window = active ? model_.find(*active) : nullptr;
    return window != nullptr && window->birth > birth;
}

WindowActivation::Scene X11WindowSystem::lookAtScene() {
    takeIn();
    const auto stackingOrder = model_.stackingOrder();
    return {{stackingOrder.begin(), stackingOrder.end()},
            [this, desktop = model_.currentDesktop()](WindowId id) {
                const auto* const window = model_.find(xcbWindow(id));
                return window != nullptr && window->isManaged && model_.isOnDesktop(*window, desktop);
            }};
}

Platform::Subscription X11WindowSystem::addEventHandler(EventHandler handler) {
    return events_.addHandler(std::move(handler));
}

void X11WindowSystem::takeIn() {
    connection_.dispatchEvents();
    const auto changes = model_.update();
    restorer_.forget(changes.closed);
    noteWhatHasSettled();
    if (std::exchange(notedGeneration_, model_.generation()) != model_.generation()) {
        noteWhatWasHeeded(changes);
        noteWhatIsBack(changes);
        restorer_.noteChanges();
    }
    for (const auto window : changes.opened) {
        events_.announce(WindowEvent::opened, window);
    }
    for (const auto window : changes.identified) {
        events_.announce(WindowEvent::opened, window);
    }
    for (const auto window : changes.returned) {
        events_.announce(WindowEvent::activated, window);
    }
    if (changes.activated && !leaving_.contains(*changes.activated)) {
        events_.announce(WindowEvent::activated, *changes.activated);
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

std::optional<Window> X11WindowSystem::find(WindowId window) const {
    const auto* const found = model_.find(xcbWindow(window));
    return found != nullptr && model_.isAppWindow(*found) ? std::optional(describe(*found)) : std::nullopt;
}

void X11WindowSystem::rebuildIfChanged() {
    if (builtGeneration_ == model_.generation()) {
        return;
    }
    builtGeneration_ = model_.generation();
    windows_.clear();
    for (const auto id : model_.managedWindows()) {
        const auto* const window = model_.find(id);
        if (window != nullptr && model_.isAppWindow(*window)) {
            windows_.push_back(describe(*window));
        }
    }
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

} // namespace LinuxPlatform
