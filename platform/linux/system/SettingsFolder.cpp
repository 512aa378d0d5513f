#include "platform/linux/system/SettingsFolder.h"

#include "platform/linux/system/BoundedReader.h"
#include "platform/linux/system/FileReplacement.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

std::error_code removeFile(const fs::path& path) {
    if (::unlink(path.c_str()) == 0) {
        return syncFolder(path.parent_path());
    }
    return errno == ENOENT ? std::error_code{} : lastError();
}

std::error_code makeFolder(const fs::path& folder) {
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) {
        return {};
    }
    error = makeFolder(folder.parent_path());
    if (!error && ::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        error = lastError();
    }
    return error;
}

fs::path copyName(const fs::path& path, int number) {
    auto copy = path;
    copy += ".damaged-" + std::to_string(number);
    return copy;
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

/// The first name that no copy has; with bytes, an earlier copy that holds the same.
fs::path nameForCopy(const fs::path& path, const std::optional<std::string>& bytes) {
    for (int number = 1;; ++number) {
        auto copy = copyName(path, number);
        const bool isSame = bytes && readSettingsFile(copy).bytes == *bytes;
        if (isSame || !isThere(copy)) {
            return copy;
        }
    }
}

/// Whether this process or this computer is short of something, and not the file at fault.
bool isShortage(const std::error_code& error) {
    return error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system ||
           error == std::errc::not_enough_memory;
}

/// A copy of these bytes, made now unless there is one.
std::optional<fs::path> copyBeside(const fs::path& path, const std::string& bytes) {
    auto copy = nameForCopy(path, bytes);
    return isThere(copy) || !replaceFile(copy, bytes) ? std::optional(std::move(copy)) : std::nullopt;
}

/// Keeps what is at the path, if anything, under a new name beside it.
std::error_code copyAside(const fs::path& path) {
    const auto reading = readSettingsFile(path);
    if (isShortage(reading.error)) {
        return reading.error;
    }
    if (reading.outcome == FileReading::Outcome::read && copyBeside(path, reading.bytes)) {
        return {};
    }
    // What cannot be copied gives way to the new value under the copy's name.
    const auto copy = nameForCopy(path, std::nullopt);
    return ::rename(path.c_str(), copy.c_str()) == 0 || errno == ENOENT ? std::error_code{} : lastError();
}

} // namespace

SettingsOutcome changeSettings(const fs::path& folder, const SettingsChanges& changes) {
    SettingsOutcome outcome;
    outcome.error = changes.values.empty() ? std::error_code{} : makeFolder(folder);
    auto failed = changes.copiesDue;
    for (const auto& key : changes.copiesDue) {
        const auto failure = copyAside(folder / key);
        if (!failure) {
            failed.erase(key);
            outcome.copied.insert(key);
        } else if (changes.values.contains(key)) {
            outcome.error = outcome.error ? outcome.error : failure;
        }
    }
    for (const auto& [key, bytes] : changes.copies) {
        if (const auto copy = copyBeside(folder / key, bytes)) {
            outcome.copyNames.emplace(key, copy->filename().string());
        }
    }
    for (const auto& [key, value] : changes.values) {
        if (failed.contains(key)) {
            continue;
        }
        const auto failure = value ? replaceFile(folder / key, *value) : removeFile(folder / key);
        if (!failure) {
            outcome.written.emplace(key, value);
        }
        outcome.error = outcome.error ? outcome.error : failure;
    }
    return outcome;
}

} // namespace LinuxPlatform
