#pragma once

#include "platform/linux/donotdisturb/QuietRoad.h"

#include <QDBusConnection>
#include <QString>

#include <filesystem>
#include <memory>

namespace LinuxPlatform {

/// What a notification server says about itself.
struct NotificationServer {
    QString name;
    QString vendor;
};

/// The switch of this server. A server of which nothing is known is asked as Plasma's is, which no other
/// server answers. `configFolder` is that of the user.
std::unique_ptr<QuietRoad> quietRoadOf(const NotificationServer& server, const QDBusConnection& bus,
                                       const std::filesystem::path& configFolder);

} // namespace LinuxPlatform
