#include "platform/linux/appearance/ReducedMotion.h"

#include <utility>

namespace LinuxPlatform {

ReducedMotion::ReducedMotion(const QDBusConnection& bus, Handler onChange)
    : onChange_(std::move(onChange)),
      common_(bus, QStringLiteral("org.freedesktop.appearance"), QStringLiteral("reduced-motion"),
              [this](const QVariant& value) {
                  isAskedFor_ = value.toUInt() == 1;
                  report();
              }),
      gnome_(bus, QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
             [this](const QVariant& value) {
                 hasNoAnimations_ = value.metaType() == QMetaType::fromType<bool>() && !value.toBool();
                 report();
             }),
      kde_(bus, QStringLiteral("org.kde.kdeglobals.KDE"), QStringLiteral("AnimationDurationFactor"),
           [this](const QVariant& value) {
               bool isNumber = false;
               const auto factor = value.toDouble(&isNumber);
               areAnimationsInstant_ = isNumber && factor <= 0;
               report();
           }) {}

void ReducedMotion::report() {
    onChange_(isAskedFor_ || hasNoAnimations_ || areAnimationsInstant_);
}

} // namespace LinuxPlatform
