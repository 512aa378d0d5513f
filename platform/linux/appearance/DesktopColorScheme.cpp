#include "platform/linux/appearance/DesktopColorScheme.h"

#include <QVariant>

#include <utility>

namespace LinuxPlatform {
namespace {

std::optional<ColorScheme> colorScheme(const QVariant& value) {
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::dark;
    case 2:
        return ColorScheme::light;
    default:
        return std::nullopt;
    }
}

} // namespace

DesktopColorScheme::DesktopColorScheme(const QDBusConnection& bus, Handler onChange)
    : onChange_(std::move(onChange)),
      setting_(bus, QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
               [this](const QVariant& value) { onChange_(colorScheme(value)); }) {}

} // namespace LinuxPlatform
