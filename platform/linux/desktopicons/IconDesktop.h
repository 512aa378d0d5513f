#pragma once

#include "platform/linux/desktopicons/DesktopScene.h"

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

    /// Asked afresh each time.
    virtual DesktopIcons icons(const DesktopScene& scene) = 0;
    /// To be called when the icons are shown. Remembers how they were, beyond the end of this process.
    virtual void hide(const DesktopScene& scene) = 0;
    /// To be called when the icons are hidden. Gives back what `hide` found; without that, the desktop's
    /// default. Returns whether icons are going to appear.
    virtual bool show(const DesktopScene& scene) = 0;
};

} // namespace LinuxPlatform
