#pragma once

#include <string>

namespace Platform {

/// Addresses of the pages of the desktop's settings.
namespace SettingsLink {
inline constexpr const char* cameraPrivacy =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Camera";
inline constexpr const char* focus = "x-apple.systempreferences:com.apple.Focus-Settings.extension";
inline constexpr const char* privacyAndSecurity = "x-apple.systempreferences:com.apple.preference.security";
} // namespace SettingsLink

class UrlOpener {
public:
    virtual ~UrlOpener() = default;

    /// Opens what belongs to the address. Returns whether anything here can; not waited for.
    virtual bool open(const std::string& url) = 0;
};

} // namespace Platform
