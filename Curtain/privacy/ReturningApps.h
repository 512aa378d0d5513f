#pragma once

#include "Curtain/Notifier.h"
#include "Curtain/ScreenWatcher.h"
#include "core/AppHiding.h"
#include "core/HideEngine.h"
#include "core/PreferencesStore.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/SystemVersion.h"
#include "platform/Workspace.h"

#include <map>
#include <string>

namespace Curtain {

/// Has apps that come back while privacy mode is on hidden again, and tells the user of those that then are.
/// Main thread only.
class ReturningApps {
public:
    /// All of them outlive this object.
    struct Services {
        CurtainCore::HideEngine& engine;
        CurtainCore::AppHiding& hiding;
        Platform::Workspace& workspace;
        Platform::SystemVersion& system;
        Platform::MainQueue& mainQueue;
        const CurtainCore::PreferencesStore& store;
        const ScreenWatcher& screenWatcher;
        Notifier& notifier;
    };

    explicit ReturningApps(const Services& services) : services_(services) {}

    void appeared(const std::string& bundleID);
    /// No notice follows of what is under way.
    void forget(const std::string& bundleID) { returns_.erase(bundleID); }
    void forgetAll() { returns_.clear(); }

private:
    /// Of an app that is looked at until it is hidden.
    struct Return {
        bool wasSeen = false;
        Platform::Lifetime lifetime;
    };

    void hideAgain(const std::string& bundleID);
    /// Posts the notice once the app, having been seen, is hidden, and none where it stays on the screen.
    void noticeOnceHidden(const std::string& bundleID, int looksLeft);
    void noticeRehidden(const std::string& bundleID);
    std::string appName(const std::string& bundleID) const;

    Services services_;
    /// The last of each app, by bundle identifier.
    std::map<std::string, Return> returns_;
    /// By bundle identifier.
    std::map<std::string, Platform::MainQueue::Seconds> lastRehideNotice_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
