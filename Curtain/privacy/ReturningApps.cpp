#include "Curtain/privacy/ReturningApps.h"

#include <algorithm>

namespace Curtain {
namespace {

using Platform::MainQueue;

/// An app that returns is given this long to finish coming to the front before it is hidden again.
constexpr MainQueue::Seconds rehideDelay{0.2};
constexpr MainQueue::Seconds rehideNoticeInterval{4.0};
/// A window manager has hidden by then what it is going to hide.
constexpr int hiddenLooks = 20;
constexpr MainQueue::Seconds hiddenLookInterval{0.1};

} // namespace

void ReturningApps::appeared(const std::string& bundleID) {
    services_.mainQueue.asyncAfter(rehideDelay, lifetime_.weak([this, bundleID] { hideAgain(bundleID); }));
}

void ReturningApps::hideAgain(const std::string& bundleID) {
    const bool isSeen = services_.engine.isActive() && !services_.hiding.isHidden(bundleID).value_or(true);
    if (services_.engine.reapply(bundleID)) {
        // One return may be announced more than once, at last when the app is on its way out again.
        const auto underWay = returns_.find(bundleID);
        const bool wasSeen = isSeen || (underWay != returns_.end() && underWay->second.wasSeen);
        returns_.insert_or_assign(bundleID, Return{wasSeen, {}});
        noticeOnceHidden(bundleID, hiddenLooks);
    }
}

void ReturningApps::noticeOnceHidden(const std::string& bundleID, int looksLeft) {
    const auto isHidden = services_.hiding.isHidden(bundleID);
    if (!services_.engine.isActive() || !isHidden || services_.system.hidingObstacle() ||
        !services_.workspace.knowsEveryWindow()) {
        returns_.erase(bundleID);
        return;
    }
    auto& lastReturn = returns_[bundleID];
    if (lastReturn.wasSeen && *isHidden) {
        returns_.erase(bundleID);
        noticeRehidden(bundleID);
    } else if (looksLeft > 0) {
        lastReturn.wasSeen |= !*isHidden;
        services_.mainQueue.asyncAfter(hiddenLookInterval,
                                       lastReturn.lifetime.weak([this, bundleID, looksLeft] {
                                           noticeOnceHidden(bundleID, looksLeft - 1);
                                       }));
    } else {
        returns_.erase(bundleID);
    }
}

void ReturningApps::noticeRehidden(const std::string& bundleID) {
    // A notice names the app, to whoever may be watching.
    const auto& isWatched = services_.screenWatcher.fn;
    if (isWatched && isWatched().value_or(true)) {
        return;
    }
    const auto now = services_.mainQueue.now();
    const auto last = lastRehideNotice_.find(bundleID);
    if (last != lastRehideNotice_.end() && now - last->second < rehideNoticeInterval) {
        return;
    }
    lastRehideNotice_[bundleID] = now;
    services_.notifier.notifyRehidden(appName(bundleID), bundleID);
}

std::string ReturningApps::appName(const std::string& bundleID) const {
    const auto instances = services_.workspace.runningApplicationsWithBundleIdentifier(bundleID);
    if (!instances.empty()) {
        if (const auto name = instances.front()->localizedName()) {
            return *name;
        }
    }
    const auto targets = services_.store.load().targetApps;
    const auto target =
        std::ranges::find_if(targets, [&](const auto& candidate) { return candidate.bundleID == bundleID; });
    return target != targets.end() ? target->displayName : bundleID;
}

} // namespace Curtain
