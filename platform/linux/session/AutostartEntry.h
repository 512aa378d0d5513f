#pragma once

#include "platform/LoginItem.h"
#include "platform/linux/system/BoundedReader.h"

#include <filesystem>
#include <string>

namespace LinuxPlatform {

/// Starts the program with the session by an entry in the user's autostart folder, as the Desktop Application
/// Autostart standard of freedesktop.org describes it.
class AutostartEntry : public Platform::LoginItem {
public:
    /// `configFolder` is XDG_CONFIG_HOME, `program` the absolute path of what is to be started.
    AutostartEntry(const std::filesystem::path& configFolder, std::filesystem::path program,
                   BoundedReader reader = BoundedReader(readSettingsFile));

    /// An entry that the user has switched off in the desktop's own tool stays off, which is an error. So
    /// does one of which it is not known.
    std::optional<std::string> registerItem() override;
    std::optional<std::string> unregisterItem() override;
    std::optional<std::string> registerAnew() override;
    /// Not known while the entry's drive does not answer.
    std::optional<bool> isSwitchedOff() const override;

private:
    std::filesystem::path path_;
    std::filesystem::path program_;
    mutable BoundedReader reader_;
};

} // namespace LinuxPlatform
