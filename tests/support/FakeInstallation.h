#pragma once

#include "platform/Bundle.h"
#include "platform/FileManager.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace TestSupport {

/// Installed apps in folders that exist only here.
class FakeInstallation : public Platform::FileManager, public Platform::Bundles {
public:
    std::vector<std::string> listedFolders;
    std::set<std::string> unreadableFolders;
    std::vector<std::string> removedFiles;
    std::map<std::string, std::vector<std::byte>> writtenFiles;
    Platform::WriteOutcome writeOutcome = Platform::WriteOutcome::written;

    void install(const std::string& path, const Platform::Bundle& bundle) {
        addFile(path);
        bundles_[path] = bundle;
    }

    void addFile(const std::string& path) {
        folders_[std::filesystem::path(path).parent_path().string()].push_back(path);
    }

    std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) override {
        listedFolders.push_back(path);
        const auto found = folders_.find(path);
        return found == folders_.end() || unreadableFolders.contains(path) ? std::nullopt
                                                                           : std::optional(found->second);
    }

    bool removeItem(const std::string& path) override {
        removedFiles.push_back(path);
        writtenFiles.erase(path);
        std::erase(folders_[std::filesystem::path(path).parent_path().string()], path);
        return true;
    }

    Platform::WriteOutcome write(const std::vector<std::byte>& contents, const std::string& path) override {
        if (writeOutcome != Platform::WriteOutcome::written) {
            return writeOutcome;
        }
        if (writtenFiles.insert_or_assign(path, contents).second) {
            addFile(path);
        }
        return writeOutcome;
    }

    std::optional<Platform::Bundle> open(const std::string& path) override {
        const auto found = bundles_.find(path);
        return found == bundles_.end() ? std::nullopt : std::optional(found->second);
    }

    std::set<std::string> goneApps;

    bool isGone(const std::string& bundleIdentifier, const std::string& /*name*/) override {
        return goneApps.contains(bundleIdentifier);
    }

    /// Whether it says that nothing has changed.
    bool isUnchanged = false;

    std::uint64_t generation() override { return isUnchanged ? generation_ : ++generation_; }

private:
    std::uint64_t generation_ = 0;
    std::map<std::string, std::vector<std::string>> folders_;
    std::map<std::string, Platform::Bundle> bundles_;
};

} // namespace TestSupport
