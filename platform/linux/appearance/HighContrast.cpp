#include "platform/linux/appearance/HighContrast.h"

#include <utility>

namespace LinuxPlatform {

HighContrast::HighContrast(const QDBusConnection& bus, Handler onChange)
    : onChange_(std::move(onChange)),
      common_(bus, QStringLiteral("org.freedesktop.appearance"), QStringLiteral("contrast"),
              [this](const QVariant& value) {
                  isAskedFor_ = value.toUInt() == 1;
                  report();
              }),
      gnome_(bus, QStringLiteral("org.gnome.desktop.a11y.interface"), QStringLiteral("high-contrast"),
             [this](const QVariant& value) {
                 isSwitchedOn_ = value.metaType() == QMetaType::fromType<bool>() && value.toBool();
                 report();
             }) {}

void HighContrast::report() {
    onChange_(isAskedFor_ || isSwitchedOn_);
}

} // namespace LinuxPlatform
