#pragma once

#include "platform/linux/appearance/ColorScheme.h"
#include "platform/linux/dbus/PortalSetting.h"

#include <QDBusConnection>

#include <functional>
#include <optional>

namespace LinuxPlatform {

/// The desktop's preference for light or dark, as its portal tells it. Waits for nobody: the answer, if there
/// is one, and its changes come from the event loop.
class DesktopColorScheme {
public:
    using Handler = std::function<void(std::optional<ColorScheme>)>;

    DesktopColorScheme(const QDBusConnection& bus, Handler onChange);

private:
    Handler onChange_;
    PortalSetting setting_;
};

} // namespace LinuxPlatform
