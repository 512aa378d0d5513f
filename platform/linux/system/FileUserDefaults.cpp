#include "platform/linux/system/FileUserDefaults.h"

#include "core/Utf8.h"

#include <system_error>
#include <utility>

namespace LinuxPlatform {
namespace fs = std::filesystem;

FileUserDefaults::FileUserDefaults(fs::path folder, Platform::Log& log, BoundedReader reader,
                                   SettingsWriter writer)
    : folder_(std::move(folder)),
      log_(log),
      reader_(std::move(reader)),
      writer_(std::move(writer)) {}

bool FileUserDefaults::contains(std::string_view key) const {
    settleLateWrites();
    if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) {
        return unsaved->second.has_value();
    }
    const auto path = pathFor(key);
    return path && reader_.read(*path).outcome != FileReading::Outcome::absent;
}

std::optional<std::string> FileUserDefaults::data(std::string_view key) const {
    settleLateWrites();
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
    if (pathFor(key)) {
        copiesDue_.insert(std::string(key));
        write({});
    }
}

std::optional<std::string> FileUserDefaults::copyNow(std::string_view key) {
    const auto bytes = data(key);
    if (!bytes) {
        return std::nullopt;
    }
    const auto outcome = write({{std::string(key), *bytes}});
    return outcome.copyNames.empty() ? std::nullopt : std::optional(outcome.copyNames.begin()->second);
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
    write({});
}

SettingsOutcome FileUserDefaults::write(std::map<std::string, std::string> copies) {
    settleLateWrites();
    SettingsOutcome late;
    late.error = std::make_error_code(std::errc::timed_out);
    auto outcome = writer_.write(folder_, {unsaved_, copiesDue_, std::move(copies)}).value_or(late);
    settle(outcome);
    return outcome;
}

void FileUserDefaults::settleLateWrites() const {
    if (const auto outcome = writer_.lateOutcome()) {
        settle(*outcome);
    }
}

void FileUserDefaults::settle(const SettingsOutcome& outcome) const {
    for (const auto& [key, value] : outcome.written) {
        const auto unsaved = unsaved_.find(key);
        if (unsaved != unsaved_.end() && unsaved->second == value) {
            unsaved_.erase(unsaved);
        }
    }
    for (const auto& key : outcome.copied) {
        copiesDue_.erase(key);
    }
    if (outcome.error && !hasReportedFailure_) {
        hasReportedFailure_ = true;
        log_.writeLine("Curtain: the settings cannot be saved in " + folder_.string() + " (" +
                       outcome.error.message() + "); changes last until Curtain ends");
    }
}

} // namespace LinuxPlatform
