#pragma once

#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Curtain {

/// An app that can be chosen as private.
struct CatalogEntry {
    std::string bundleID;
    std::string name;

    const std::string& id() const { return bundleID; }
    bool operator==(const CatalogEntry&) const = default;
};

/// Lists the apps that can be chosen as private, each identifier once, sorted by name as people of the
/// current locale expect, without regard to case. Running apps are asked for afresh on every call, installed
/// ones kept until the system says that they have changed. Main thread only.
class AppCatalog {
public:
    /// The services outlive the catalog.
    AppCatalog(Platform::Workspace& workspace, Platform::FileManager& fileManager, Platform::Bundles& bundles,
               Platform::ApplicationFolders folders);

    /// Those with an entry in the task list.
    std::vector<CatalogEntry> runningApps() const;
    /// Those in the application folders, subfolders left out. The first call and the first one after a change
    /// read every app's bundle: not for start-up.
    std::vector<CatalogEntry> installedApps() const;
    /// The installed and the running ones together.
    std::vector<CatalogEntry> allApps() const;
    /// The same for somebody who looks for one: first those that run, last the pages of the desktop's
    /// settings.
    std::vector<CatalogEntry> appsToChoose() const;
    /// Whether it was installed and certainly is so no longer.
    bool isGone(const CatalogEntry& entry) const;
    /// Absent when the system knows no app with this identifier.
    std::optional<Platform::Image> icon(const std::string& bundleID) const;

private:
    Platform::Workspace& workspace_;
    Platform::FileManager& fileManager_;
    Platform::Bundles& bundles_;
    Platform::ApplicationFolders folders_;
    struct Installed {
        std::uint64_t generation = 0;
        std::vector<CatalogEntry> entries;
        /// By bundle identifier.
        std::set<std::string> controlPanels;
        /// Some do not exist, others did not answer in time.
        std::vector<std::string> unreadFolders;
    };

    Installed readInstalledApps() const;
    bool canReadMore() const;

    mutable std::optional<Installed> installed_;
};

} // namespace Curtain

template <>
struct std::hash<Curtain::CatalogEntry> {
    std::size_t operator()(const Curtain::CatalogEntry& entry) const noexcept {
        const std::hash<std::string> hashOf;
        return hashOf(entry.bundleID) * 31U + hashOf(entry.name);
    }
};
