#include "platform/linux/appearance/ReducedMotion.h"

#include <utility>

namespace LinuxPlatform {
namespace {

bool isInstant(const QVariant& value) {
    bool isNumber = false;
    const auto factor = value.toDouble(&isNumber);
    return isNumber && factor <= 0;
}

} // namespace

ReducedMotion::ReducedMotion(const QDBusConnection& bus, Handler onChange)
    : PortalWish(bus,
                 {{"org.freedesktop.appearance", "reduced-motion",
                   [](const QVariant& value) { return value.toUInt() == 1; }},
                  {"org.gnome.desktop.interface", "enable-animations", isSwitched(false)},
                  {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", isInstant}},
                 std::move(onChange)) {}

} // namespace LinuxPlatform
