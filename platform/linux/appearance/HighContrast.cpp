#include "platform/linux/appearance/HighContrast.h"

#include <utility>

namespace LinuxPlatform {

HighContrast::HighContrast(const QDBusConnection& bus, Handler onChange)
    : PortalWish(bus,
                 {{"org.freedesktop.appearance", "contrast",
                   [](const QVariant& value) { return value.toUInt() == 1; }},
                  {"org.gnome.desktop.a11y.interface", "high-contrast", isSwitched(true)}},
                 std::move(onChange)) {}

} // namespace LinuxPlatform
