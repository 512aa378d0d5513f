#pragma once

#include "platform/linux/system/FolderChanges.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace LinuxPlatform {

/// One installed desktop entry.
struct DesktopEntry {
    /// The id without its suffix.
    std::string id;
    std::string bundleIdentifier;
    /// In the user's language.
    std::string name;
    std::string path;
    /// A name in the icon theme or an absolute path; empty when the entry has none.
    std::string icon;
    std::string startupWMClass;
    /// The file name of the program that it starts; of one that an interpreter runs, the name that
    /// `interpretedProgram` gives it.
    std::string program;
    /// Whether its command says more than the program and what to open, as entries for one function of a
    /// program do.
    bool hasArguments = false;
    /// The schemes of the addresses that it opens, in small letters.
    std::vector<std::string> urlSchemes;
    /// Whether its command names what the program is to open, as those of a browser's web apps do.
    bool namesContent = false;
    /// Whether it belongs in a list of apps on this desktop.
    bool shouldShow = true;
    /// Whether it is listed among the desktop's settings.
    bool isControlPanel = false;
    /// The Flatpak app or the snap from which it comes; empty for others.
    std::string sandbox;
};

/// The desktop entries of a list of application folders, subfolders included. An id in an earlier folder
/// hides the same id in a later one, even if it only says that the app is hidden. Read on first use and again
/// after a folder has changed. Belongs to one thread.
class DesktopEntries {
public:
    explicit DesktopEntries(std::vector<std::filesystem::path> folders);

    /// The folders that XDG_DATA_HOME and XDG_DATA_DIRS name, and those of Flatpak and Snap.
    static std::vector<std::filesystem::path> standardFolders();

    /// Reads them on a thread of its own unless that has been done, so that the first question need not wait.
    /// One that comes before the end of it waits for the rest only.
    void readAhead();

    /// Counts how often the entries were read.
    std::uint64_t generation();

    const std::vector<DesktopEntry>& all();
    /// By id, exactly or, failing that, without regard to case. Null when there is none; valid until the next
    /// call.
    const DesktopEntry* withId(std::string_view id);
    /// The first that there is.
    const DesktopEntry* withOneOfIds(std::span<const std::string> ids);
    const DesktopEntry* withBundleIdentifier(std::string_view bundleID);
    /// Whether there is an entry with this identifier, or a file that would be one if it were not masked or
    /// faulty, or a folder that cannot be read.
    bool mayHold(std::string_view bundleID);
    const DesktopEntry* withPath(const std::string& path);
    /// The entry whose windows carry this class.
    const DesktopEntry* withWindowClass(std::string_view windowClass, bool ignoringCase);
    /// The entry that starts this program as such, or else the only one that starts it at all; null when
    /// several do and none of them stands out.
    const DesktopEntry* withProgram(std::string_view program);

private:
    using Index = std::unordered_map<std::string, std::size_t>;

    /// What a file said when it looked like this.
    struct ReadFile {
        std::array<std::int64_t, 6> stamp{};
        std::optional<DesktopEntry> entry;
        std::uint64_t generation = 0;
    };

    void readIfChanged();
    void read();
    std::optional<DesktopEntry> entryIn(const std::filesystem::path& path, const std::string& id);
    void buildIndexes();
    void indexPrograms();
    const DesktopEntry* find(const Index& index, std::string_view key);

    std::vector<std::filesystem::path> folders_;
    FolderChanges changes_;
    /// Those that cannot be watched, for instance because they are not there yet.
    std::vector<std::filesystem::path> unwatchedFolders_;
    std::vector<std::filesystem::file_time_type> folderTimes_;
    std::uint64_t generation_ = 0;
    /// Of the last reading, so that a change costs no more than the files that have changed.
    std::unordered_map<std::string, ReadFile> files_;
    std::vector<DesktopEntry> entries_;
    /// The identifiers of files that are no entries.
    std::set<std::string, std::less<>> unusable_;
    bool hasUnreadFolder_ = false;
    Index byId_;
    Index byLowerCaseId_;
    Index byBundleIdentifier_;
    Index byPath_;
    Index byWindowClass_;
    Index byLowerCaseWindowClass_;
    Index byProgram_;
    /// The last member, since the reading must have ended before the others go.
    std::future<void> readingAhead_;
};

} // namespace LinuxPlatform
