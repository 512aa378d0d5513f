#include "platform/linux/windows/gnome/GnomeWindowSystem.h"

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

/// However busy the shell is, it has done by then what it is asked, or it hangs.
constexpr Platform::MainQueue::Seconds answerDeadline{5};

Window describe(const GnomeWindow& window) {
    Window described;
    described.id = window.id;
    // The shell gives no number twice.
    described.birth = window.id;
    described.hints = window.hints;
    described.client = window.id;
    described.isHidden = window.isHidden;
    described.isInTaskList = window.isInTaskList;
    return described;
}

} // namespace

GnomeWindowSystem::GnomeWindowSystem(const QDBusConnection& bus, Platform::MainQueue& queue,
                                     std::function<bool()> isInstalled)
    : queue_(queue),
      isInstalled_(std::move(isInstalled)),
      leaving_(queue),
      activation_(
          queue,
          [this] {
              return WindowActivation::Scene{stacking_, [this](WindowId window) {
                                                 const auto found = known_.find(window);
                                                 return found != known_.end() && found->second.isHere;
                                             }};
          },
          [this](WindowId window) { link_.activate(window); }),
      extension_(bus, [this] { ++generation_; }),
      link_(bus, {.onStateChange = [this] { noteLink(); },
                  .onReport = [this](const GnomeWindowReport& report) { takeIn(report); }}) {}

std::optional<Platform::HidingObstacle> GnomeWindowSystem::hidingObstacle() {
    using Platform::HidingObstacle;
    switch (link_.state()) {
    case GnomeShellLink::State::notKnownYet:
        return HidingObstacle::notKnownYet;
    case GnomeShellLink::State::unfit:
        return HidingObstacle::nextSessionNeeded;
    case GnomeShellLink::State::absent:
        return obstacleWithoutExtension();
    case GnomeShellLink::State::up:
        break;
    }
    if (!unanswered_.empty() && queue_.now() - unanswered_.begin()->second >= answerDeadline) {
        return HidingObstacle::notKnownYet;
    }
    return failed_.empty() ? std::nullopt : std::optional(HidingObstacle::extensionFails);
}

Platform::HidingObstacle GnomeWindowSystem::obstacleWithoutExtension() const {
    using Platform::HidingObstacle;
    switch (extension_.state()) {
    case GnomeExtensionState::State::noShell:
        return HidingObstacle::waylandSession;
    case GnomeExtensionState::State::notFound:
        return isInstalled_() ? HidingObstacle::nextSessionNeeded : HidingObstacle::extensionMissing;
    case GnomeExtensionState::State::off:
        return HidingObstacle::extensionOff;
    case GnomeExtensionState::State::failed:
        return HidingObstacle::extensionFails;
    case GnomeExtensionState::State::on:
    case GnomeExtensionState::State::notKnownYet:
        break;
    }
    return HidingObstacle::notKnownYet;
}

const std::vector<Window>& GnomeWindowSystem::windows() {
    if (std::exchange(builtGeneration_, generation_) != generation_) {
        windows_.clear();
        for (const auto& [id, window] : known_) {
            windows_.push_back(describe(window));
        }
    }
    return windows_;
}

void GnomeWindowSystem::hide(std::span<const WindowId> windows) {
    if (!isUp()) {
        return;
    }
    activation_.noteHiding(windows, focused_);
    leaving_.add(windows);
    const auto request = ++lastRequest_;
    unanswered_.emplace(request, queue_.now());
    link_.hide(windows, [this, request, asked = std::vector(windows.begin(), windows.end())](bool isDone) {
        noteHidden(request, asked, isDone);
    });
}

void GnomeWindowSystem::noteHidden(std::uint64_t request, std::vector<WindowId> windows, bool isDone) {
    unanswered_.erase(request);
    failed_ = isDone ? std::vector<WindowId>() : std::move(windows);
    forgetFailureOnceHidden();
    ++generation_;
}

void GnomeWindowSystem::forgetFailureOnceHidden() {
    const bool areHidden = std::ranges::all_of(failed_, [this](WindowId window) {
        const auto found = known_.find(window);
        return found != known_.end() && found->second.isHidden;
    });
    if (areHidden) {
        failed_.clear();
    }
}

void GnomeWindowSystem::show(std::span<const WindowId> windows) {
    link_.show(windows);
}

Platform::Subscription GnomeWindowSystem::addEventHandler(EventHandler handler) {
    return handlers_.add(std::move(handler));
}

void GnomeWindowSystem::noteLink() {
    ++generation_;
    if (isUp()) {
        isFirstReport_ = false;
        tell(std::exchange(untold_, {}));
        return;
    }
    known_.clear();
    stacking_.clear();
    focused_.reset();
    unanswered_.clear();
    failed_.clear();
    untold_.clear();
    activation_.forget([](WindowId) { return true; });
}

void GnomeWindowSystem::takeIn(const GnomeWindowReport& report) {
    ++generation_;
    Events events;
    for (const auto window : report.closed) {
        known_.erase(window);
    }
    activation_.forget([this](WindowId window) { return !exists(window); });
    stacking_ = report.stacking;
    for (const auto& window : report.windows) {
        noteWindow(window, events);
    }
    noteFocus(report.focused, events);
    leaving_.remove([this](WindowId window) {
        const auto found = known_.find(window);
        return found == known_.end() || found->second.isHidden;
    });
    forgetFailureOnceHidden();
    if (isUp()) {
        tell(events);
    } else {
        untold_.insert(untold_.end(), events.begin(), events.end());
    }
}

void GnomeWindowSystem::tell(const Events& events) {
    for (const auto& [event, window] : events) {
        // Who is told may close the conversation.
        if (const auto found = known_.find(window); found != known_.end()) {
            handlers_.tell(event, describe(found->second));
        }
    }
}

void GnomeWindowSystem::noteWindow(const GnomeWindow& window, Events& events) {
    const auto found = known_.find(window.id);
    const bool isNew = found == known_.end();
    const bool isOther = !isNew && found->second.hints != window.hints;
    const bool isBack = !isNew && found->second.isHidden && !window.isHidden;
    known_.insert_or_assign(window.id, window);
    if ((isNew && !isFirstReport_) || isOther) {
        events.emplace_back(WindowEvent::opened, window.id);
    }
    if (isBack || (isNew && isFirstReport_ && !window.isHidden)) {
        events.emplace_back(WindowEvent::activated, window.id);
    }
}

void GnomeWindowSystem::noteFocus(std::optional<WindowId> focused, Events& events) {
    if (std::exchange(focused_, focused) == focused || !focused || isFirstReport_) {
        return;
    }
    const auto found = known_.find(*focused);
    if (found != known_.end() && !found->second.isHidden && !leaving_.contains(*focused)) {
        events.emplace_back(WindowEvent::activated, *focused);
    }
}

} // namespace LinuxPlatform
