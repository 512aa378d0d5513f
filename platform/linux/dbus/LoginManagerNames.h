#pragma once

#include <QString>

namespace LinuxPlatform {

// How the system's login manager is called on the bus. Source: the interfaces
// org.freedesktop.login1.Manager and org.freedesktop.login1.Session.

inline const QString loginService = QStringLiteral("org.freedesktop.login1");
inline const QString loginManagerPath = QStringLiteral("/org/freedesktop/login1");
inline const QString loginManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
inline const QString loginSessionInterface = QStringLiteral("org.freedesktop.login1.Session");

} // namespace LinuxPlatform
