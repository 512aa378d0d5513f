#pragma once

#include "platform/linux/desktopicons/DesktopScene.h"

#include <string_view>

namespace LinuxPlatform {

enum class DesktopIcons {
    absent, ///< this desktop does not draw here
    unknown,
    hidden,
    shown,
};

/// One of the programs that draw icons on the desktop. Main thread only; every call is bounded in time.
class IconDesktop {
public:
    virtual ~IconDesktop() = default;

    /// The class of the windows in which it draws a desktop on an X server, with or without icons; empty when
    /// only its icons have a window.
    virtual std::string_view windowClass() const = 0;
    /// Asked afresh each time. Changes nothing that the user chose, but may bring to its end what `show`
    /// began.
    virtual DesktopIcons icons(const DesktopScene& scene) = 0;
    /// Whether its icons are shown only because it has not followed `hide` yet.
    virtual bool isAboutToHide(const DesktopScene& /*scene*/) const { return false; }
    /// Whether `icons` is to be asked again, as `show` is not done.
    virtual bool isComingBack() const { return false; }
    /// To be called when the icons are shown. Remembers how they were, beyond the end of this process.
    virtual void hide(const DesktopScene& scene) = 0;
    /// To be called when the icons are hidden, or about to be. Gives back what `hide` found; without that,
    /// the desktop's default. Returns whether icons are going to appear.
    virtual bool show(const DesktopScene& scene) = 0;
};

} // namespace LinuxPlatform
