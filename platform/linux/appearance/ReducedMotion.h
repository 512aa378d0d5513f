#pragma once

#include "platform/linux/appearance/PortalWish.h"

namespace LinuxPlatform {

/// Whether the desktop asks for less motion, in its own words: the common setting, GNOME's switch for
/// animations, or KDE's speed of animations.
class ReducedMotion : public PortalWish {
public:
    ReducedMotion(const QDBusConnection& bus, Handler onChange);
};

} // namespace LinuxPlatform
