#include "Curtain/privacy/PrivacyMode.h"

#include "Curtain/FixEverything.h"
#include "Curtain/HidingWording.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Curtain {
namespace {

using Action = CurtainCore::PreferencesStore::Action;
using Platform::MainQueue;

/// Whatever taking privacy mode up brings about has happened by then.
constexpr MainQueue::Seconds resumeSettled{10.0};
/// Once as many starts have ended over it, the next one is to go well without it.
constexpr int mostFailedStarts = 2;

} // namespace

PrivacyMode::PrivacyMode(const Services& services)
    : services_(services),
      journal_(services.note),
      hiding_(services.workspace),
      engine_(hiding_),
      quietHold_(services.doNotDisturb, services.center, services.screenWatcher, services.mainQueue),
      returning_({engine_, hiding_, services.workspace, services.system, services.mainQueue, services.store,
                  services.screenWatcher, services.notifier}) {
    engine_.onChange = [this] { keepJournal(); };
}

bool PrivacyMode::isInVain() const {
    return isOn() && services_.hidingWatch.isHidingImpossible();
}

bool PrivacyMode::resume() {
    const auto& earlier = journal_.earlier();
    if (!earlier || isOn()) {
        quietHold_.end();
        return false;
    }
    if (journal_.failedStarts() >= mostFailedStarts) {
        quietHold_.end();
        quietHold_.whenSeen([this] { services_.notifier.notifyNotResumed(); });
        return false;
    }
    journal_.willTakeUp();
    services_.shield.cover(earlier->privacy.targets);
    isAutomatic_ = earlier->wasAutomatic;
    isQuiet_ = earlier->isQuiet;
    engine_.resume(earlier->privacy);
    keepJournal();
    if (!sayIfNothingIsHidden()) {
        services_.notifier.notifyResumed();
    }
    if (earlier->isQuiet) {
        beginQuiet();
    } else {
        quietHold_.end();
    }
    isResumeAwaited_ = areWindowsAwaited_;
    changed();
    return true;
}

void PrivacyMode::toggle() {
    const Action action(services_.store);
    if (isOn()) {
        switchOff();
        return;
    }
    activate();
    setAutomatic(false);
    changed();
}

void PrivacyMode::hidePrivateApps() {
    const Action action(services_.store);
    if (isOn()) {
        hideAlso(services_.store.load().targetBundleIDs());
    } else {
        activate();
    }
    changed();
}

void PrivacyMode::fixEverything() {
    const Action action(services_.store);
    const bool wasOn = isOn();
    if (wasOn) {
        hideAlso(services_.store.load().targetBundleIDs());
    } else {
        services_.notifier.withdrawPrivacyModeEnded();
        services_.shield.cover(services_.store.load().targetBundleIDs());
    }
    const bool notificationsNeedAttention = FixEverything::run(engine_, services_.store, services_.desktop);
    if (!wasOn) {
        tellIfListWasLost();
        sayIfNothingIsHidden();
    }
    changed();
    if (notificationsNeedAttention) {
        // Where the desktop does not say whether it shows notices, its user is asked to see to them.
        if (services_.doNotDisturb.isOn() != true) {
            services_.notifier.notifyPrompt();
        }
        beginQuiet();
    }
}

void PrivacyMode::switchOnForShare() {
    const Action action(services_.store);
    // Written down with the first that is hidden: a crash may follow at once.
    isAutomatic_ = true;
    isQuiet_ = FixEverything::needsQuiet(services_.store.load());
    const bool hasEffect = activate();
    changed();
    if (hasEffect) {
        services_.notifier.notifyActivated();
    }
    if (isQuiet_) {
        beginQuiet();
    }
}

void PrivacyMode::switchOff() {
    const Action action(services_.store);
    if (isOn()) {
        deactivate();
    }
    setAutomatic(false);
    changed();
}

void PrivacyMode::undo() {
    if (isOn()) {
        switchOff();
    }
}

void PrivacyMode::reveal(const std::string& bundleID) {
    const Action action(services_.store);
    returning_.forget(bundleID);
    engine_.reveal(bundleID);
    services_.shield.cover(engine_.targets());
    services_.notifier.withdrawRehidden(bundleID);
    changed();
}

void PrivacyMode::tellOfEnd() {
    quietHold_.whenSeen([this] {
        if (!isOn()) {
            services_.notifier.notifyPrivacyModeEnded();
        }
    });
}

void PrivacyMode::takeOut(const std::string& bundleID) {
    returning_.forget(bundleID);
    engine_.removeTarget(bundleID);
    services_.shield.cover(engine_.targets());
    services_.notifier.withdrawRehidden(bundleID);
}

void PrivacyMode::appAppeared(const std::string& bundleID) {
    if (areWindowsAwaited_ && isTarget(bundleID)) {
        hideAlso({bundleID});
    } else {
        returning_.appeared(bundleID);
    }
}

void PrivacyMode::hidingAnswered() {
    if (isOn()) {
        tellObstacle();
        hideWhatWasAwaited();
    }
}

void PrivacyMode::changed() const {
    if (onChange) {
        onChange();
    }
}

void PrivacyMode::setAutomatic(bool isAutomatic) {
    isAutomatic_ = isAutomatic;
    keepJournal();
}

void PrivacyMode::beginQuiet() {
    isQuiet_ = true;
    quietHold_.begin();
    keepJournal();
}

void PrivacyMode::keepJournal() {
    if (!isOn()) {
        journal_.clear();
        return;
    }
    if (journal_.isOnTrial() && !std::exchange(isTrialTimed_, true)) {
        services_.mainQueue.asyncAfter(resumeSettled, lifetime_.weak([this] {
            journal_.didTakeUp();
            keepJournal();
        }));
    }
    journal_.write({engine_.state(), isAutomatic_, isQuiet_});
}

bool PrivacyMode::activate() {
    services_.notifier.withdrawPrivacyModeEnded();
    const auto targets = services_.store.load().targetBundleIDs();
    services_.shield.cover(targets);
    engine_.activate(targets);
    tellIfListWasLost();
    return !sayIfNothingIsHidden();
}

void PrivacyMode::deactivate() {
    returning_.forgetAll();
    areWindowsAwaited_ = isResumeAwaited_ = false;
    services_.shield.cover({});
    engine_.deactivate();
    services_.notifier.withdrawPrivacyNotices();
    isQuiet_ = false;
    quietHold_.end();
}

void PrivacyMode::tellIfListWasLost() {
    if (services_.store.load().targetApps.empty() && services_.store.damage()) {
        services_.notifier.notifyNothingHidden();
    }
}

bool PrivacyMode::sayIfNothingIsHidden() {
    toldObstacle_.reset();
    services_.hidingWatch.begin();
    areWindowsAwaited_ = services_.hidingWatch.obstacle() == Platform::HidingObstacle::notKnownYet &&
                         !services_.workspace.knowsEveryWindow();
    return tellObstacle();
}

bool PrivacyMode::tellObstacle() {
    const auto obstacle = services_.hidingWatch.obstacle();
    if (obstacle == Platform::HidingObstacle::notKnownYet) {
        return false;
    }
    if (std::exchange(toldObstacle_, obstacle) == obstacle) {
        return obstacle.has_value();
    }
    if (obstacle) {
        services_.notifier.notifyPrivacyModeInVain(
            std::string(HidingWording::reason(*obstacle, services_.language.code())));
    } else {
        services_.notifier.withdrawPrivacyModeInVain();
    }
    return obstacle.has_value();
}

bool PrivacyMode::isTarget(const std::string& bundleID) const {
    return std::ranges::find(engine_.targets(), bundleID) != engine_.targets().end();
}

void PrivacyMode::hideAlso(const std::vector<std::string>& identifiers) {
    auto covered = engine_.targets();
    std::ranges::copy_if(identifiers, std::back_inserter(covered),
                         [this](const auto& identifier) { return !isTarget(identifier); });
    services_.shield.cover(covered);
    for (const auto& identifier : identifiers) {
        engine_.addTarget(identifier);
    }
}

void PrivacyMode::hideWhatWasAwaited() {
    const bool areThere = services_.hidingWatch.obstacle() != Platform::HidingObstacle::notKnownYet;
    if (areThere && std::exchange(areWindowsAwaited_, false)) {
        if (std::exchange(isResumeAwaited_, false)) {
            engine_.hideAgain();
        } else {
            hideAlso(std::vector(engine_.targets()));
        }
    }
}

} // namespace Curtain
