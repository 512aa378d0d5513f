#pragma once

#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/IconDesktop.h"
#include "platform/linux/session/EarlierValue.h"

namespace LinuxPlatform {

/// xfdesktop: its setting for the style of icons, which lies in xfconf and takes effect at once.
class XfceDesktop : public IconDesktop {
public:
    /// `bus` outlives this object.
    XfceDesktop(DesktopBus& bus, EarlierValue earlier);

    std::string_view windowClass() const override { return "Xfdesktop"; }
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    /// As text; the word for the default when there is no setting; absent when it cannot be known.
    std::optional<std::string> style();
    /// Whether it was set; absent when that is not known.
    std::optional<bool> setStyle(const std::string& style);

    DesktopBus& bus_;
    EarlierValue earlier_;
};

} // namespace LinuxPlatform
