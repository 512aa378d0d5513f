#pragma once

#include "platform/linux/apps/AppIdentity.h"
#include "platform/linux/apps/ScopedApps.h"
#include "platform/linux/windows/WindowSystem.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
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
    /// All outlive this object.
    AppInstances(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                 ScopedApps& scopedApps);

    /// Those with a visible window first, otherwise in the order of their oldest windows, those without
    /// windows last; valid until the next call.
    const std::vector<AppInstance>& all();
    std::vector<AppInstanceKey> withBundleIdentifier(const std::string& bundleID);
    /// Null when it is gone; valid until the next call.
    const AppInstance* find(const AppInstanceKey& key);
    std::optional<AppInstanceKey> owning(WindowId window);

    void hide(const AppInstanceKey& key);
    /// Shows what `hide` took away, or else everything.
    void unhide(const AppInstanceKey& key);
    void activate(const AppInstanceKey& key);

private:
    void regroupIfChanged();
    void regroup();
    void addWindowless();
    void lookForWindowless();
    void forgetIfBroughtBack(const Window& window);
    const std::optional<AppIdentifier>& identityOf(const Window& window);

    WindowSystem& windowSystem_;
    AppIdentity& identity_;
    DesktopEntries& entries_;
    ScopedApps& scopedApps_;
    std::vector<ScopedApp> scoped_;
    std::uint64_t scopedGeneration_ = 0;
    std::optional<std::uint64_t> groupedGeneration_;
    std::uint64_t entriesGeneration_ = 0;
    std::vector<AppInstance> instances_;
    std::unordered_map<std::string, std::vector<AppInstanceKey>> keysByBundleIdentifier_;
    std::map<AppInstanceKey, std::size_t> positions_;
    std::unordered_map<WindowId, AppInstanceKey> owners_;
    std::unordered_map<WindowId, std::pair<WindowHints, std::optional<AppIdentifier>>> identities_;
    /// Hidden on request, and whether they have been seen hidden since: the window manager takes its time.
    std::map<WindowId, bool> takenAway_;
    /// Shown on request, but not seen yet.
    std::set<WindowId> askedBack_;
    /// Asked the opposite before they were seen to obey. What is seen of them may be an answer to an earlier
    /// request, so it does not say that their user brought them back.
    std::set<WindowId> hurried_;
};

} // namespace LinuxPlatform
