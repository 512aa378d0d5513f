#pragma once

#include <optional>
#include <string>

namespace Platform {

/// The user's folders, as absolute paths.
class UserFolders {
public:
    virtual ~UserFolders() = default;

    virtual std::string home() = 0;
    /// Where the icons on the desktop come from; absent when this user has no desktop folder.
    virtual std::optional<std::string> desktop() = 0;
    virtual std::optional<std::string> pictures() = 0;
    /// For short-lived files that only this user may see.
    virtual std::string temporary() = 0;
};

} // namespace Platform
