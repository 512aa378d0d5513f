#pragma once

#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/GSettingsIconSwitch.h"
#include "platform/linux/desktopicons/IconDesktop.h"

#include <chrono>
#include <optional>

namespace LinuxPlatform {

/// MATE's file manager, which closes its desktop when the setting says so, and ends if that was its only
/// window.
class CajaDesktop : public IconDesktop {
public:
    CajaDesktop(EarlierValue earlier, StartDesktopProgram start);

    std::string_view windowClass() const override { return "Caja"; }
    /// Starts the program again if it ended after `show`, as it may have been about to.
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    /// Whether it drew a desktop in this session, or in an earlier one of MATE, until its icons were hidden.
    bool wasHidden(const DesktopScene& scene) const;

    GSettingsIconSwitch setting_;
    StartDesktopProgram start_;
    /// Ran when it was to show its icons, and has not shown them yet.
    bool isAwaited_ = false;
    /// One that starts while its predecessor is about to end may end with it, and is started again.
    std::optional<std::chrono::steady_clock::time_point> started_;
};

} // namespace LinuxPlatform
