#include "platform/linux/windows/toplevels/ToplevelWindowSystem.h"

#include <algorithm>
#include <array>

namespace LinuxPlatform {
namespace {

using Platform::HidingObstacle;
using Seconds = Platform::MainQueue::Seconds;

/// However busy the compositor is, it has answered by then, or it will not.
constexpr Seconds answerDeadline{5};
/// What has been asked takes a few milliseconds.
constexpr Seconds patience{1};
/// One that has not hidden a window by now, after it has taken the request, does not heed it.
constexpr Seconds hideDeadline{1};

} // namespace

ToplevelWindowSystem::ToplevelWindowSystem(const std::filesystem::path& socket, Platform::MainQueue& queue,
                                           Minimising minimising, ForeignToplevels::Patience patience)
    : queue_(queue),
      minimising_(minimising),
      silentSince_(queue.now()),
      leaving_(queue),
      front_(
          queue, [this](WindowId window) { return !isHidden(window) && !isLeaving(window); },
          [this](WindowId window) { bringToFront(window); }),
      // Nothing tells on which workspace a window is.
      activation_(
          queue,
          [this] {
              return WindowActivation::Scene{{}, [this](WindowId window) { return exists(window); }};
          },
          [this](WindowId window) {
              front_.setFront(window);
              bringToFront(window);
          }),
      events_(queue, leaving_,
              [this](WindowId window) {
                  const auto* const found = model_.find(window);
                  return found != nullptr ? std::optional(*found) : std::nullopt;
              }),
      toplevels_(socket, queue,
                 {.onChanged = [this](WindowId window,
                                      const ForeignToplevels::State& state) { takeChange(window, state); },
                  .onClosed =
                      [this](WindowId window) {
                          model_.close(window);
                          noteWhatIsHidden();
                      },
                  .onListed = [this] { takeList(); },
                  .onTaken = [this] { waitForHiding(); },
                  .onLost = [this] { takeLoss(); }},
                 patience) {
    toplevels_.open();
}

ToplevelWindowSystem::~ToplevelWindowSystem() {
    front_.keep();
}

std::optional<HidingObstacle> ToplevelWindowSystem::hidingObstacle() {
    if (!toplevels_.isListed()) {
        const bool mayStillCome = toplevels_.offer() != ForeignToplevels::Offer::notMade && silentSince_ &&
                                  queue_.now() - *silentSince_ < answerDeadline;
        return mayStillCome ? HidingObstacle::notKnownYet : HidingObstacle::waylandSession;
    }
    if (trial_.isLost()) {
        return HidingObstacle::windowManagerIgnoresHiding;
    }
    if (minimising_ == Minimising::untried && trial_.hidden() == 0) {
        return HidingObstacle::waylandSession;
    }
    return trial_.isInDoubt() || isBusy() ? std::optional(HidingObstacle::notKnownYet) : std::nullopt;
}

bool ToplevelWindowSystem::isBusy() const {
    return toplevels_.askedAt() && queue_.now() - *toplevels_.askedAt() > patience;
}

bool ToplevelWindowSystem::isLeaving(WindowId window) const {
    return leaving_.contains(window) || toplevels_.isToBeMinimised(window);
}

bool ToplevelWindowSystem::isHidden(WindowId window) const {
    const auto* const found = model_.find(window);
    return found != nullptr && found->isHidden;
}

void ToplevelWindowSystem::takeChange(WindowId window, const ForeignToplevels::State& state) {
    const auto change = model_.update(window, state);
    noteWhatIsHidden();
    if (change.isActivated && !isLeaving(window)) {
        front_.noteActivated(window);
    }
    if (!toplevels_.isListed()) {
        return;
    }
    if (change.isOpened) {
        events_.announce(WindowEvent::opened, window);
    }
    if (change.isReturned || (change.isActivated && !isLeaving(window))) {
        events_.announce(WindowEvent::activated, window);
    }
}

void ToplevelWindowSystem::takeList() {
    silentSince_.reset();
    // That they are all of them is new.
    model_.touch();
    // They are not new, but they may have been looked for before.
    for (const auto& window : model_.windows()) {
        if (!window.isHidden) {
            events_.announce(WindowEvent::activated, window.id);
        }
    }
}

void ToplevelWindowSystem::takeLoss() {
    silentSince_ = silentSince_.value_or(queue_.now());
    model_.clear();
    trial_.startAnew();
    leaving_.remove([](WindowId) { return true; });
    activation_.forget([](WindowId) { return true; });
    front_.forget();
}

void ToplevelWindowSystem::noteWhatIsHidden() {
    const auto isAway = [this](WindowId window) { return isHidden(window); };
    const auto isGone = [this](WindowId window) { return !exists(window); };
    trial_.note(isAway, isGone);
    leaving_.remove([&](WindowId window) { return isGone(window) || isAway(window); });
}

void ToplevelWindowSystem::hide(std::span<const WindowId> windows) {
    activation_.forget([this](WindowId window) { return !exists(window); });
    activation_.noteHiding(windows, model_.active());
    leaving_.add(windows);
    std::vector<WindowId> visible(windows.begin(), windows.end());
    std::erase_if(visible, [this](WindowId window) { return !exists(window) || isHidden(window); });
    trial_.begin(visible);
    toplevels_.ask(ForeignToplevels::Act::minimise, windows);
}

void ToplevelWindowSystem::show(std::span<const WindowId> windows) {
    trial_.withdraw(windows);
    leaving_.remove([&](WindowId window) { return std::ranges::find(windows, window) != windows.end(); });
    front_.noteShown(windows, model_.active());
    toplevels_.ask(ForeignToplevels::Act::restore, windows);
}

void ToplevelWindowSystem::activate(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        if (const auto* const found = model_.find(window)) {
            front_.noteRequested(found->hints.applicationId);
        }
    }
    activation_.request(windows);
}

void ToplevelWindowSystem::bringToFront(WindowId window) {
    toplevels_.ask(ForeignToplevels::Act::activate, std::array{window});
}

void ToplevelWindowSystem::waitForHiding() {
    const auto request = trial_.lastRequest();
    if (trial_.hidden() == 0 && !trial_.awaited(request).empty()) {
        queue_.asyncAfter(hideDeadline, lifetime_.weak([this, request, isRepeated = trial_.isLate(request)] {
            hidingIsLate(request, isRepeated);
        }));
    }
}

void ToplevelWindowSystem::hidingIsLate(std::uint64_t request, bool isRepeated) {
    const auto late = trial_.awaited(request);
    if (trial_.hidden() > 0 || late.empty()) {
        return;
    }
    if (isRepeated) {
        trial_.judge(request);
    } else if (!trial_.isLate(request)) {
        // One may have been missed. It is asked once more, and then judged.
        trial_.becomeLate(request);
        toplevels_.ask(ForeignToplevels::Act::minimise, late);
    }
}

} // namespace LinuxPlatform
