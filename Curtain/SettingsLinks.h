#pragma once

namespace Curtain::SettingsLinks {

inline constexpr const char* cameraPrivacy =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Camera";
inline constexpr const char* focus = "x-apple.systempreferences:com.apple.Focus-Settings.extension";
inline constexpr const char* privacyAndSecurity = "x-apple.systempreferences:com.apple.preference.security";

} // namespace Curtain::SettingsLinks
