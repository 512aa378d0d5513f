#include "platform/linux/system/FileUserDefaults.h"

#include "core/Utf8.h"
#include "platform/linux/system/FileReplacement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <system_error>
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

/// The name of a copy of these bytes, made now unless there is one.
std::optional<fs::path> copyOf(const fs::path& path, const std::string& bytes) {
    auto copy = nameForCopy(path, bytes);
    return isThere(copy) || !replaceFile(copy, bytes) ? std::optional(std::move(copy)) : std::nullopt;
}

/// Keeps what is at the path, if anything, under a new name beside it.
std::error_code copyAside(const fs::path& path) {
    const auto reading = readSettingsFile(path);
    if (isShortage(reading.error)) {
        return reading.error;
    }
    if (reading.outcome == FileReading::Outcome::read && copyOf(path, reading.bytes)) {
        return {};
    }
    // What cannot be copied gives way to the new value under the copy's name.
    const auto copy = nameForCopy(path, std::nullopt);
    return ::rename(path.c_str(), copy.c_str()) == 0 || errno == ENOENT ? std::error_code{} : lastError();
}

} // namespace

FileUserDefaults::FileUserDefaults(fs::path folder, Platform::Log& log, BoundedReader reader)
    : folder_(std::move(folder)),
      log_(log),
      reader_(std::move(reader)) {}

bool FileUserDefaults::contains(std::string_view key) const {
    if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) {
        return unsaved->second.has_value();
    }
    const auto path = pathFor(key);
    return path && reader_.read(*path).outcome != FileReading::Outcome::absent;
}

std::optional<std::string> FileUserDefaults::data(std::string_view key) const {
    if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) {
        return unsaved->second;
    }
    const auto path = pathFor(key);
    return path ? read(*path, std::string(key)) : std::nullopt;
}

std::optional<std::string> FileUserDefaults::read(const fs::path& path, const std::string& key) const {
    auto reading = reader_.read(path);
    if (reading.outcome == FileReading::Outcome::failed) {
        if (failing_.insert(key).second) {
            log_.writeLine("Curtain: " + path.string() + " cannot be read (" + reading.error.message() +
                           "); what was read before stays in force");
        }
        const auto last = lastRead_.find(key);
        return last == lastRead_.end() ? std::nullopt : std::optional(last->second);
    }
    failing_.erase(key);
    if (reading.outcome != FileReading::Outcome::read) {
        lastRead_.erase(key);
        return std::nullopt;
    }
    lastRead_.insert_or_assign(key, reading.bytes);
    return std::move(reading.bytes);
}

std::optional<std::string> FileUserDefaults::string(std::string_view key) const {
    auto bytes = data(key);
    return bytes && CurtainCore::isUtf8(*bytes) ? std::move(bytes) : std::nullopt;
}

void FileUserDefaults::setData(std::string_view key, const std::string& bytes) {
    change(key, bytes);
}

void FileUserDefaults::setString(std::string_view key, const std::string& text) {
    change(key, text);
}

void FileUserDefaults::setBool(std::string_view key, bool value) {
    change(key, value ? "true" : "false");
}

void FileUserDefaults::remove(std::string_view key) {
    change(key, std::nullopt);
}

void FileUserDefaults::keepCopy(std::string_view key) {
    if (const auto path = pathFor(key); path && copyAside(*path)) {
        copiesDue_.insert(std::string(key));
    }
}

std::optional<std::string> FileUserDefaults::copyNow(std::string_view key) {
    const auto path = pathFor(key);
    const auto bytes = data(key);
    const auto copy = path && bytes ? copyOf(*path, *bytes) : std::nullopt;
    return copy ? std::optional(copy->filename().string()) : std::nullopt;
}

std::optional<fs::path> FileUserDefaults::pathFor(std::string_view key) const {
    if (key.empty() || key.front() == '.' || key.find('/') != std::string_view::npos ||
        key.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    return folder_ / key;
}

void FileUserDefaults::change(std::string_view key, std::optional<std::string> value) {
    const auto path = pathFor(key);
    if (!path) {
        return;
    }
    const std::string name(key);
    if (failing_.contains(name)) {
        read(*path, name);
    }
    if (failing_.contains(name)) {
        // What is there may be more than what was read last.
        copiesDue_.insert(name);
    }
    if (value) {
        lastRead_.insert_or_assign(name, *value);
    } else {
        lastRead_.erase(name);
    }
    unsaved_.insert_or_assign(name, std::move(value));
    writeUnsaved();
}

void FileUserDefaults::writeUnsaved() {
    auto error = makeFolder(folder_);
    for (auto entry = unsaved_.begin(); entry != unsaved_.end();) {
        const auto path = folder_ / entry->first;
        auto failure = copiesDue_.contains(entry->first) ? copyAside(path) : std::error_code{};
        if (!failure) {
            copiesDue_.erase(entry->first);
            failure = entry->second ? replaceFile(path, *entry->second) : removeFile(path);
        }
        error = error ? error : failure;
        entry = failure ? std::next(entry) : unsaved_.erase(entry);
    }
    if (error && !hasReportedFailure_) {
        hasReportedFailure_ = true;
        log_.writeLine("Curtain: the settings cannot be saved in " + folder_.string() + " (" +
                       error.message() + "); changes last until Curtain ends");
    }
}

} // namespace LinuxPlatform
