#include "core/HideEngine.h"

#include <algorithm>
#include <utility>

namespace CurtainCore {

HideEngine::HideEngine(AppHiding& hiding) : hiding_(hiding) {}

void HideEngine::activate(std::vector<std::string> targets) {
    const auto thisSwitch = ++switches_;
    state_ = {std::move(targets), {}, {}};
    isActive_ = true;
    noteChange();
    // Whoever hides apps may call in between.
    const auto wanted = state_.targets;
    for (const auto& target : wanted) {
        if (switches_ != thisSwitch) {
            return;
        }
        if (isTarget(target)) {
            hideAndRemember(target);
        }
    }
}

void HideEngine::resume(State earlier) {
    ++switches_;
    state_ = std::move(earlier);
    isActive_ = true;
    hideAgain();
}

void HideEngine::hideAgain() {
    const auto thisSwitch = switches_;
    const auto wanted = state_.targets;
    for (const auto& target : wanted) {
        if (state_.hiddenByUs.contains(target) && hiding_.isRunning(target)) {
            hide(target);
        } else {
            addTarget(target);
        }
        if (switches_ != thisSwitch) {
            return;
        }
    }
}

void HideEngine::deactivate() {
    const auto thisSwitch = ++switches_;
    for (const auto& bundleID : std::set(state_.hiddenByUs)) {
        const auto wasHidden = state_.previousHidden.find(bundleID);
        const bool isToBeShown = state_.hiddenByUs.erase(bundleID) != 0 &&
                                 wasHidden != state_.previousHidden.end() && !wasHidden->second;
        if (isToBeShown) {
            hiding_.unhide(bundleID);
        }
        if (switches_ != thisSwitch) {
            return;
        }
    }
    state_ = {};
    isActive_ = false;
    noteChange();
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
    noteChange();
}

void HideEngine::addTarget(const std::string& bundleID) {
    if (!isActive_) {
        return;
    }
    const bool isNew = !isTarget(bundleID);
    if (isNew) {
        state_.targets.push_back(bundleID);
        noteChange();
    }
    // What is known of a target that is hidden already still holds.
    if (isNew || !hiding_.isHidden(bundleID).value_or(true)) {
        hideAndRemember(bundleID);
    }
}

void HideEngine::removeTarget(const std::string& bundleID) {
    const auto wasHidden = state_.previousHidden.find(bundleID);
    const bool isUsers = wasHidden != state_.previousHidden.end() && wasHidden->second;
    const bool isToBeShown = state_.hiddenByUs.contains(bundleID) && !isUsers;
    forget(bundleID);
    if (isToBeShown) {
        hiding_.unhide(bundleID);
    }
    noteChange();
}

bool HideEngine::isTarget(const std::string& bundleID) const {
    return std::ranges::find(state_.targets, bundleID) != state_.targets.end();
}

void HideEngine::noteChange() const {
    if (onChange) {
        onChange();
    }
}

void HideEngine::forget(const std::string& bundleID) {
    std::erase(state_.targets, bundleID);
    state_.hiddenByUs.erase(bundleID);
    state_.previousHidden.erase(bundleID);
}

void HideEngine::hideAndRemember(const std::string& target) {
    if (!hiding_.isRunning(target)) {
        return;
    }
    const bool wasHidden = hiding_.isHidden(target).value_or(false);
    state_.previousHidden[target] = wasHidden;
    if (wasHidden) {
        noteChange();
    } else {
        hide(target);
    }
}

void HideEngine::hide(const std::string& bundleID) {
    // Noted before, for whoever switches the mode or reveals the app meanwhile.
    state_.hiddenByUs.insert(bundleID);
    noteChange();
    hiding_.hide(bundleID);
}

} // namespace CurtainCore
