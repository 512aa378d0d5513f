#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/apps/AppIdentity.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/workspace/HiddenWindowsRecord.h"
#include "platform/linux/workspace/ScopedApps.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace LinuxPlatform {

/// Names one instance of an app. Windows of one process that belong to different apps make an instance each.
struct AppInstanceKey {
    std::string bundleIdentifier;
    std::uint64_t process = 0;

    bool operator<(const AppInstanceKey& other) const {
        return std::tie(bundleIdentifier, process) < std::tie(other.bundleIdentifier, other.process);
    }
};

struct AppInstance {
    AppInstanceKey key;
    std::string localizedName;
    std::vector<WindowId> windows;
    std::vector<WindowId> visibleWindows;
    bool isInTaskList = false;
};

/// Which apps the session's windows make up, which run without any, and which of their windows were put away
/// on request. Main thread only.
class AppInstances {
public:
    /// All but the record outlive this object. What an earlier run has hidden counts as hidden by this one.
    AppInstances(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                 ScopedApps& scopedApps, Platform::MainQueue& mainQueue, HiddenWindowsRecord record);

    /// Those with a visible window first, otherwise in the order of their oldest windows, those without
    /// windows last; valid until the next call.
    const std::vector<AppInstance>& all();
    std::vector<AppInstanceKey> withBundleIdentifier(const std::string& bundleID);
    /// Null when it is gone; valid until the next call.
    const AppInstance* find(const AppInstanceKey& key);
    std::optional<AppInstanceKey> owning(WindowId window);
    /// Of all instances of the app.
    std::vector<WindowId> windowsOf(const std::string& bundleID);

    void hide(const AppInstanceKey& key);
    /// Shows what `hide` took away. Where it took nothing of the whole app, shows everything: then the app
    /// was put away by its user, who asks for it now.
    void unhide(const AppInstanceKey& key);
    void activate(const AppInstanceKey& key);

private:
    using Seconds = Platform::MainQueue::Seconds;

    struct KnownWindow {
        /// As `Window::birth`.
        std::uint64_t birth = 0;
        WindowHints hints;
        std::optional<AppIdentifier> identity;
        /// Of the desktop entries by which it was identified.
        std::uint64_t entriesGeneration = 0;

        /// Hidden on request, and whether it has been seen hidden since: the window manager takes its time.
        std::optional<bool> takenAway;
        /// That was an earlier run's request, and the window system has not heard of it in this one.
        bool isToBeHiddenAnew = false;
        /// Its user had put it away before others of its app were hidden on request.
        bool wasPutAwayBefore = false;
        /// Shown on request and not seen yet. Nobody waits longer than until then.
        std::optional<Seconds> awaitedUntil;
        /// Asked the opposite before it was seen to obey. What is seen of it until then may be an answer to
        /// an earlier request, so it does not say that its user brought it back.
        std::optional<Seconds> hurriedUntil;
    };

    void regroupIfChanged();
    void regroup();
    void addWindowless();
    void lookForWindowless();
    KnownWindow& knownWindow(const Window& window);
    KnownWindow firstKnowledgeOf(const Window& window);
    void identify(KnownWindow& known, const Window& window);
    void takeNoteOf(KnownWindow& known, const Window& window) const;
    void noteWhatWasPutAway(const AppInstance& instance);
    void keepRecord();
    bool hasTakenFrom(const std::string& bundleID) const;
    Seconds newDeadline();
    bool endWhatIsOverdue();

    WindowSystem& windowSystem_;
    AppIdentity& identity_;
    DesktopEntries& entries_;
    ScopedApps& scopedApps_;
    Platform::MainQueue& mainQueue_;
    HiddenWindowsRecord record_;
    std::vector<ScopedApp> scoped_;
    std::uint64_t scopedGeneration_ = 0;
    std::optional<std::uint64_t> groupedGeneration_;
    std::uint64_t entriesGeneration_ = 0;
    std::vector<AppInstance> instances_;
    std::unordered_map<std::string, std::vector<AppInstanceKey>> keysByBundleIdentifier_;
    std::map<AppInstanceKey, std::size_t> positions_;
    std::unordered_map<WindowId, AppInstanceKey> owners_;
    /// Every window of the window system, and those that it does not list for the time being.
    std::unordered_map<WindowId, KnownWindow> known_;
    /// Not later than the first one of the known windows'.
    std::optional<Seconds> nextDeadline_;
};

} // namespace LinuxPlatform
