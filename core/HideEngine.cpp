#include "core/HideEngine.h"

#include <algorithm>
#include <utility>

namespace CurtainCore {

HideEngine::HideEngine(AppHiding& hiding) : hiding_(hiding) {}

void HideEngine::activate(std::vector<std::string> targets) {
    const auto thisSwitch = ++switches_;
    targets_ = std::move(targets);
    hiddenByUs_.clear();
    previousHidden_.clear();
    isActive_ = true;
    // Whoever hides apps may call in between.
    const auto wanted = targets_;
    for (const auto& target : wanted) {
        if (switches_ != thisSwitch) {
            return;
        }
        if (isTarget(target)) {
            hideAndRemember(target);
        }
    }
}

void HideEngine::deactivate() {
    const auto thisSwitch = ++switches_;
    for (const auto& bundleID : std::set(hiddenByUs_)) {
        const auto wasHidden = previousHidden_.find(bundleID);
        const bool isToBeShown =
            hiddenByUs_.erase(bundleID) != 0 && wasHidden != previousHidden_.end() && !wasHidden->second;
        if (isToBeShown) {
            hiding_.unhide(bundleID);
        }
        if (switches_ != thisSwitch) {
            return;
        }
    }
    hiddenByUs_.clear();
    previousHidden_.clear();
    targets_.clear();
    isActive_ = false;
}

bool HideEngine::reapply(const std::string& activatedBundleID) {
    if (!isActive_ || !isTarget(activatedBundleID) || !hiding_.isRunning(activatedBundleID)) {
        return false;
    }
    hide(activatedBundleID);
    return true;
}

void HideEngine::reveal(const std::string& bundleID) {
    forget(bundleID);
    hiding_.unhide(bundleID);
}

void HideEngine::addTarget(const std::string& bundleID) {
    if (!isActive_) {
        return;
    }
    const bool isNew = !isTarget(bundleID);
    if (isNew) {
        targets_.push_back(bundleID);
    }
    // What is known of a target that is hidden already still holds.
    if (isNew || !hiding_.isHidden(bundleID).value_or(true)) {
        hideAndRemember(bundleID);
    }
}

void HideEngine::removeTarget(const std::string& bundleID) {
    const auto wasHidden = previousHidden_.find(bundleID);
    const bool isUsers = wasHidden != previousHidden_.end() && wasHidden->second;
    const bool isToBeShown = hiddenByUs_.contains(bundleID) && !isUsers;
    forget(bundleID);
    if (isToBeShown) {
        hiding_.unhide(bundleID);
    }
}

bool HideEngine::isTarget(const std::string& bundleID) const {
    return std::ranges::find(targets_, bundleID) != targets_.end();
}

void HideEngine::forget(const std::string& bundleID) {
    std::erase(targets_, bundleID);
    hiddenByUs_.erase(bundleID);
    previousHidden_.erase(bundleID);
}

void HideEngine::hideAndRemember(const std::string& target) {
    if (!hiding_.isRunning(target)) {
        return;
    }
    const bool wasHidden = hiding_.isHidden(target).value_or(false);
    previousHidden_[target] = wasHidden;
    if (!wasHidden) {
        hide(target);
    }
}

void HideEngine::hide(const std::string& bundleID) {
    // Noted before, for whoever switches the mode or reveals the app meanwhile.
    hiddenByUs_.insert(bundleID);
    hiding_.hide(bundleID);
}

} // namespace CurtainCore
