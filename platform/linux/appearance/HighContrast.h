#pragma once

#include "platform/linux/appearance/PortalWish.h"

namespace LinuxPlatform {

/// Whether the desktop asks for high contrast, in its own words: the common setting or GNOME's switch.
class HighContrast : public PortalWish {
public:
    HighContrast(const QDBusConnection& bus, Handler onChange);
};

} // namespace LinuxPlatform
