#pragma once

#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/GSettingsIconSwitch.h"
#include "platform/linux/desktopicons/IconDesktop.h"

namespace LinuxPlatform {

/// MATE's file manager, which closes its desktop when the setting says so, and ends if that was its only
/// window.
class CajaDesktop : public IconDesktop {
public:
    CajaDesktop(EarlierValue earlier, StartDesktopProgram start);

    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    GSettingsIconSwitch setting_;
    StartDesktopProgram start_;
    /// Ran when it was to show its icons, and has not shown them yet.
    bool isAwaited_ = false;
};

} // namespace LinuxPlatform
