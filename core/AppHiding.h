#pragma once

#include <optional>
#include <string>

namespace CurtainCore {

/// What the hide engine needs to do with apps, each named by its bundle identifier. No operation reports an
/// error.
class AppHiding {
public:
    virtual ~AppHiding() = default;

    /// Whether at least one running process has this identifier.
    virtual bool isRunning(const std::string& bundleID) = 0;
    /// Whether the app is hidden; absent when no running instance can be found.
    virtual std::optional<bool> isHidden(const std::string& bundleID) = 0;
    /// Hides every running instance.
    virtual void hide(const std::string& bundleID) = 0;
    /// Shows every running instance again.
    virtual void unhide(const std::string& bundleID) = 0;
};

} // namespace CurtainCore
