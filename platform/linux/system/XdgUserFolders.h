#pragma once

#include "platform/UserFolders.h"

namespace LinuxPlatform {

/// The folders that the user's XDG settings name (xdg-user-dirs, basedir), read again on every call.
class XdgUserFolders : public Platform::UserFolders {
public:
    std::string home() override;
    /// Without a setting, the home folder's "Desktop". A setting that names the home folder itself means
    /// none.
    std::optional<std::string> desktop() override;
    std::optional<std::string> pictures() override;
    /// The session's run-time folder, or else a folder of the user's own below the system's temporary one.
    std::string temporary() override;
};

} // namespace LinuxPlatform
