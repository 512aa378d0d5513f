#pragma once

#include <QString>

/// The names that panels and items agree on.
namespace LinuxPlatform::StatusNotifierProtocol {

inline const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
inline const auto watcherInterface = watcherService;
inline const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
inline const auto itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
inline const auto itemPath = QStringLiteral("/StatusNotifierItem");
inline const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace LinuxPlatform::StatusNotifierProtocol
