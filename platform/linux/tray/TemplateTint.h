#pragma once

#include "platform/linux/appearance/ColorScheme.h"

#include <QColor>

#include <optional>

namespace LinuxPlatform {

/// What a panel lets an icon know of its looks.
struct PanelLook {
    /// The colour that the tray asks icons to have.
    std::optional<QColor> foreground;
    /// What the icon stands on.
    std::optional<QColor> background;
};

/// Chooses the colour in which a template image can be seen on a panel.
class TemplateTint {
public:
    /// `textColor` is the last resort.
    explicit TemplateTint(const QColor& textColor) : textColor_(textColor) {}

    /// The scheme that the whole desktop is said to follow, for panels that tell nothing.
    void setColorScheme(std::optional<ColorScheme> scheme) { scheme_ = scheme; }

    QColor colorOn(const PanelLook& panel) const;

private:
    QColor textColor_;
    std::optional<ColorScheme> scheme_;
};

} // namespace LinuxPlatform
