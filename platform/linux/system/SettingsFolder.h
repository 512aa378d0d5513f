#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <system_error>

namespace LinuxPlatform {

/// Changes of a folder that holds one file a key.
struct SettingsChanges {
    using Values = std::map<std::string, std::optional<std::string>, std::less<>>;

    /// What is to stand under the keys; absent ones are removed.
    Values values;
    /// Keys under which what stands there is kept beside it first.
    std::set<std::string> copiesDue;
    /// Bytes of which a copy is made beside what stands under their keys, which stays as it is.
    std::map<std::string, std::string> copies;
};

/// What has become of them.
struct SettingsOutcome {
    SettingsChanges::Values written;
    std::set<std::string> copied;
    /// The file names of the copies, by key.
    std::map<std::string, std::string> copyNames;
    /// The first failure; what is neither written nor copied is as it was.
    std::error_code error;
};

/// Carries changes out on this thread. Each file is replaced atomically and durably; one whose copy fails
/// stays as it is. A copy is named after its key with ".damaged-" and a number; one of the same bytes that is
/// there already will do.
SettingsOutcome changeSettings(const std::filesystem::path& folder, const SettingsChanges& changes);

} // namespace LinuxPlatform
