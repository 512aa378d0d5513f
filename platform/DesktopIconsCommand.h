#pragma once

/// The words of the two invocations of a `ProcessRunner` by which the desktop's icons are asked for and set:
/// `defaults read DOMAIN KEY`, which writes 0 where they are hidden, `defaults write DOMAIN KEY -bool VALUE`
/// with true for shown, and `killall PROGRAM`, after which the desktop has taken that in.
namespace Platform::DesktopIconsCommand {

inline constexpr const char* defaultsPath = "/usr/bin/defaults";
inline constexpr const char* killallPath = "/usr/bin/killall";
inline constexpr const char* domain = "com.apple.finder";
inline constexpr const char* key = "CreateDesktop";
inline constexpr const char* program = "Finder";

} // namespace Platform::DesktopIconsCommand
