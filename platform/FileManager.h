#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// What became of a file that was to be written.
enum class WriteOutcome { written, noSpace, notAllowed, failed };

/// Files and folders, by absolute paths. Any thread; may block.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// The paths of everything directly inside a folder, hidden files included, in the file system's order;
    /// absent when the folder cannot be read.
    virtual std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) = 0;
    /// Returns whether the file is gone.
    virtual bool removeItem(const std::string& path) = 0;
    /// Writes the whole file for this user alone, replacing one of that name. It is there as given, and
    /// lasts; or else what was there before still is.
    virtual WriteOutcome write(const std::vector<std::byte>& contents, const std::string& path) = 0;
};

} // namespace Platform
