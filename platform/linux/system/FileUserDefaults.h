#pragma once

#include "core/UserDefaults.h"
#include "platform/Log.h"
#include "platform/linux/system/BoundedReader.h"
#include "platform/linux/system/SettingsWriter.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace LinuxPlatform {

/// A folder with one file a key, named after the key, that holds the bare value: bytes as they are, text as
/// UTF-8, a boolean as true or false. A person can read and edit it. The folder is for its user alone; files
/// are replaced atomically and durably, so that a kill at any moment leaves the old value or the new one.
///
/// What was read under a key last, or written, is kept for one case only: that the file cannot be read for a
/// while, or its drive does not answer. That is said in the log, once until it can be read again. Whoever
/// asks is otherwise answered from the file, which others may edit.
///
/// What cannot be written, or not in time, is said once in the log, stays readable for as long as the process
/// lives and is tried again with the next write. Keys are plain file names without a leading dot; under any
/// other nothing is ever stored.
class FileUserDefaults : public CurtainCore::UserDefaults {
public:
    /// `log` outlives this object. The folder is made with the first write.
    FileUserDefaults(std::filesystem::path folder, Platform::Log& log,
                     BoundedReader reader = BoundedReader(readSettingsFile),
                     SettingsWriter writer = SettingsWriter());

    bool contains(std::string_view key) const override;
    std::optional<std::string> data(std::string_view key) const override;
    std::optional<std::string> string(std::string_view key) const override;
    void setData(std::string_view key, const std::string& bytes) override;
    void setString(std::string_view key, const std::string& text) override;
    void setBool(std::string_view key, bool value) override;
    void remove(std::string_view key) override;
    /// The copy is named after the key with ".damaged-" and a number.
    void keepCopy(std::string_view key) override;
    std::optional<std::string> copyNow(std::string_view key) override;

private:
    std::optional<std::filesystem::path> pathFor(std::string_view key) const;
    std::optional<std::string> read(const std::filesystem::path& path, const std::string& key) const;
    void change(std::string_view key, std::optional<std::string> value);
    /// Writes what is not saved yet, and these copies, by key.
    SettingsOutcome write(std::map<std::string, std::string> copies);
    void settleLateWrites() const;
    void settle(const SettingsOutcome& outcome) const;

    std::filesystem::path folder_;
    Platform::Log& log_;
    mutable BoundedReader reader_;
    mutable SettingsWriter writer_;
    mutable std::map<std::string, std::string> lastRead_;
    /// Keys under which the last reading has failed.
    mutable std::set<std::string> failing_;
    /// Values that the folder does not hold yet, absent ones to be removed.
    mutable SettingsChanges::Values unsaved_;
    /// Keys under which the folder still holds what is to be kept before it is replaced.
    mutable std::set<std::string> copiesDue_;
    mutable bool hasReportedFailure_ = false;
};

} // namespace LinuxPlatform
