#pragma once

#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/GSettingsIconSwitch.h"
#include "platform/linux/desktopicons/IconDesktop.h"

#include <chrono>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// MATE's file manager, which closes its desktop when the setting says so, and ends if that was its only
/// window.
class CajaDesktop : public IconDesktop {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    CajaDesktop(EarlierValue earlier, StartDesktopProgram start, Now now = &Clock::now);

    std::string_view windowClass() const override { return "Caja"; }
    /// Starts the program again if it ended after `show`, as it may have been about to.
    DesktopIcons icons(const DesktopScene& scene) override;
    bool isAboutToHide(const DesktopScene& scene) const override;
    bool isComingBack() const override { return comingBack_.has_value(); }
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    /// Whether it drew a desktop in this session, or in an earlier one of MATE, until its icons were hidden.
    bool wasHidden(const DesktopScene& scene) const;

    /// What became of `show` so far.
    struct ComingBack {
        Clock::time_point asked;
        /// When the program was started last. One that starts while its predecessor is about to end may end
        /// with it.
        std::optional<Clock::time_point> started;
        /// Since when its desktop has been there.
        std::optional<Clock::time_point> seen;
    };

    /// False once that is over.
    bool bringBack(const DesktopScene& scene);

    GSettingsIconSwitch setting_;
    StartDesktopProgram start_;
    Now now_;
    std::optional<ComingBack> comingBack_;
};

} // namespace LinuxPlatform
