#pragma once

#include "platform/linux/dbus/PortalSetting.h"

#include <QDBusConnection>

#include <functional>

namespace LinuxPlatform {

/// Whether the desktop asks for high contrast, in its own words: the common setting or GNOME's switch.
/// Without a portal nothing is asked for.
class HighContrast {
public:
    using Handler = std::function<void(bool)>;

    /// `onChange` is called from the event loop, when the first answer comes and when one changes.
    HighContrast(const QDBusConnection& bus, Handler onChange);

private:
    void report();

    Handler onChange_;
    bool isAskedFor_ = false;
    bool isSwitchedOn_ = false;
    PortalSetting common_;
    PortalSetting gnome_;
};

} // namespace LinuxPlatform
