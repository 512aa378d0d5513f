#pragma once

#include <optional>
#include <string>

namespace Platform {

/// Whether this program starts with the user's session.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// Each returns the error in words, or nothing when it succeeded.
    virtual std::optional<std::string> registerItem() = 0;
    virtual std::optional<std::string> unregisterItem() = 0;
    /// Registers it also where it is switched off.
    virtual std::optional<std::string> registerAnew() = 0;
    /// Whether the desktop's own tool has switched off what is registered; absent when it is not known at the
    /// moment.
    virtual std::optional<bool> isSwitchedOff() const = 0;
};

} // namespace Platform
