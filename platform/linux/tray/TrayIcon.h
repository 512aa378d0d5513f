#pragma once

#include "platform/Event.h"
#include "platform/Image.h"
#include "platform/Menu.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>

#include <array>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// What the icon shows and whom it tells of clicks, whichever way it takes into a panel.
struct TrayIconContent {
    Platform::Image image;
    QString toolTip;
    /// The second argument is where the click or the icon is, in pixels of the screen; null when not known.
    std::function<void(const Platform::Event&, const QRect&)> onClick;
    /// What a right click would open now.
    std::function<std::optional<Platform::Menu>()> menu;
    /// Does what a right click does, except that the menu is not opened but returned, for panels that draw
    /// menus themselves.
    std::function<std::optional<Platform::Menu>()> openMenu;
};

/// The sizes that panels ask for, and that the status images are drawn for.
inline constexpr std::array trayIconSizes{16, 18, 22, 24, 32, 36, 44, 48, 64};

/// An icon in a panel's tray. Its destruction removes it.
class TrayIcon {
public:
    virtual ~TrayIcon() = default;

    virtual void setImage(const Platform::Image& image) = 0;
    virtual void setToolTip(const QString& text) = 0;
    /// Where it is, in pixels of the screen; absent when the panel does not tell.
    virtual std::optional<QRect> geometry() const = 0;
    /// The colour for templates may have changed.
    virtual void updateTint() = 0;
};

/// What a tray icon asks of the toolkit.
struct TrayToolkit {
    /// A picture with that many pixels on each side; a template is drawn in the colour. Null when there is
    /// none.
    std::function<QImage(const Platform::Image&, const QColor&, int)> render;
    /// Opens a menu beside a place, in pixels of the screen; at the pointer when that is null.
    std::function<void(const Platform::Menu&, const QRect&)> popUpMenu;
    /// The pixel of the screen under the pointer; absent when it cannot be known.
    std::function<std::optional<QPoint>()> pointer;
    /// Whether a pixel that a panel tells can be that of an icon which has been clicked. Some panels tell
    /// places within themselves.
    std::function<bool(const QPoint&)> isPlausible;
    /// The colour of text on the desktop's ordinary surfaces.
    QColor textColor;
    double pixelsPerPoint = 1;
};

} // namespace LinuxPlatform
