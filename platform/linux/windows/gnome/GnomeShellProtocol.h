#pragma once

#include <QString>

/// What GNOME Shell and Curtain's extension in it say to Curtain. The extension's side is
/// gnome-extension/WindowService.js; the shell's interface is in GNOME Shell 43, js/ui/shellDBus.js.
namespace LinuxPlatform::GnomeShellProtocol {

inline const auto extensionUuid = QStringLiteral("curtain@com.curtain.Curtain");
inline const auto extensionService = QStringLiteral("com.curtain.Curtain.GnomeShell");
inline const auto extensionPath = QStringLiteral("/com/curtain/Curtain/GnomeShell");
inline const auto extensionInterface = QStringLiteral("com.curtain.Curtain.GnomeShell");
/// Of the extension's interface.
inline constexpr unsigned version = 1;
inline const auto changedSignature = QStringLiteral("a(tssssubbb)atatt");
inline const auto keySignature = QStringLiteral("uub");

inline const auto shellService = QStringLiteral("org.gnome.Shell");
inline const auto shellPath = QStringLiteral("/org/gnome/Shell");
inline const auto extensionsInterface = QStringLiteral("org.gnome.Shell.Extensions");

} // namespace LinuxPlatform::GnomeShellProtocol
