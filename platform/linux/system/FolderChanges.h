#pragma once

#include <filesystem>
#include <string_view>

namespace LinuxPlatform {

/// Notices when files of a kind come, go or get other contents in watched folders. Nothing is called back:
/// whoever wants to know asks, which costs one system call.
class FolderChanges {
public:
    /// `suffix` is that of the names of the files that count. Folders always do.
    explicit FolderChanges(std::string_view suffix);
    ~FolderChanges();
    FolderChanges(const FolderChanges&) = delete;
    FolderChanges& operator=(const FolderChanges&) = delete;

    /// Watches a folder, without those below it. Returns whether it can be watched. A folder that is watched
    /// already is not watched twice.
    bool add(const std::filesystem::path& folder);
    /// Whether anything has changed since the last call.
    bool take();

private:
    std::string_view suffix_;
    int descriptor_;
};

} // namespace LinuxPlatform
