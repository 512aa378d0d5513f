#include "core/HideEngine.h"

#include <algorithm>
#include <utility>

namespace CurtainCore {

HideEngine::HideEngine(AppHiding& hiding) : hiding_(hiding) {}

void HideEngine::activate(std::vector<std::string> targets) {
    targets_ = std::move(targets);
    hiddenByUs_.clear();
    previousHidden_.clear();
    isActive_ = true;
    for (const auto& target : targets_) {
        if (!hiding_.isRunning(target)) {
            continue;
        }
        const bool wasHidden = hiding_.isHidden(target).value_or(false);
        previousHidden_[target] = wasHidden;
        if (!wasHidden) {
            hiding_.hide(target);
            hiddenByUs_.insert(target);
        }
    }
}

void HideEngine::deactivate() {
    for (const auto& bundleID : hiddenByUs_) {
        const auto wasHidden = previousHidden_.find(bundleID);
        if (wasHidden != previousHidden_.end() && !wasHidden->second) {
            hiding_.unhide(bundleID);
        }
    }
    hiddenByUs_.clear();
    previousHidden_.clear();
    targets_.clear();
    isActive_ = false;
}

bool HideEngine::reapply(const std::string& activatedBundleID) {
    if (!isActive_ || std::ranges::find(targets_, activatedBundleID) == targets_.end() ||
        !hiding_.isRunning(activatedBundleID)) {
        return false;
    }
    hiding_.hide(activatedBundleID);
    hiddenByUs_.insert(activatedBundleID);
    return true;
}

void HideEngine::reveal(const std::string& bundleID) {
    std::erase(targets_, bundleID);
    hiddenByUs_.erase(bundleID);
    previousHidden_.erase(bundleID);
    hiding_.unhide(bundleID);
}

} // namespace CurtainCore
