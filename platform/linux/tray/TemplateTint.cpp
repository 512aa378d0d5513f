#include "platform/linux/tray/TemplateTint.h"

#include <algorithm>
#include <cmath>

namespace LinuxPlatform {
namespace {

constexpr QRgb lightTint = 0xFFF4F5F8;
constexpr QRgb darkTint = 0xFF1B1F2A;
/// Below this contrast, signs are hard to see.
constexpr double leastContrast = 3;

double linear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

QColor TemplateTint::colorOn(const PanelLook& panel) const {
    const QColor light(lightTint);
    const QColor dark(darkTint);
    if (panel.background) {
        // Some trays name their theme's colour whatever they stand on.
        if (panel.foreground && contrast(*panel.foreground, *panel.background) >= leastContrast) {
            return *panel.foreground;
        }
        return contrast(light, *panel.background) > contrast(dark, *panel.background) ? light : dark;
    }
    if (panel.foreground) {
        return *panel.foreground;
    }
    if (scheme_) {
        return *scheme_ == ColorScheme::dark ? light : dark;
    }
    return textColor_;
}

} // namespace LinuxPlatform
