#pragma once

#include "platform/linux/desktopicons/GSettingsIconSwitch.h"
#include "platform/linux/desktopicons/IconDesktop.h"

namespace LinuxPlatform {

/// Cinnamon's desktop: the setting that says on which monitors it draws icons.
class NemoDesktop : public IconDesktop {
public:
    explicit NemoDesktop(EarlierValue earlier);

    std::string_view windowClass() const override { return "Nemo-desktop"; }
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    GSettingsIconSwitch layout_;
};

} // namespace LinuxPlatform
