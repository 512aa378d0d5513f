#pragma once

#include "platform/linux/dbus/PortalSetting.h"

#include <QDBusConnection>

#include <functional>

namespace LinuxPlatform {

/// Whether the desktop asks for less motion, in its own words: the common setting, GNOME's switch for
/// animations, or KDE's speed of animations. Without a portal nothing is asked for.
class ReducedMotion {
public:
    using Handler = std::function<void(bool)>;

    /// `onChange` is called from the event loop, when the first answer comes and when one changes.
    ReducedMotion(const QDBusConnection& bus, Handler onChange);

private:
    void report();

    Handler onChange_;
    bool isAskedFor_ = false;
    bool hasNoAnimations_ = false;
    bool areAnimationsInstant_ = false;
    PortalSetting common_;
    PortalSetting gnome_;
    PortalSetting kde_;
};

} // namespace LinuxPlatform
