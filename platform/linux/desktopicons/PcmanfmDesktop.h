#pragma once

#include "platform/ProcessRunner.h"
#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/EarlierValue.h"
#include "platform/linux/desktopicons/IconDesktop.h"

namespace LinuxPlatform {

/// PCManFM of LXDE. It has no setting for its icons, but its desktop can be switched off and on as a whole;
/// it ends with its last window.
class PcmanfmDesktop : public IconDesktop {
public:
    /// `runner` outlives this object.
    PcmanfmDesktop(Platform::ProcessRunner& runner, EarlierValue earlier, StartDesktopProgram start);

    std::string_view windowClass() const override { return "Pcmanfm"; }
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    Platform::ProcessRunner& runner_;
    /// The profile's argument.
    EarlierValue earlier_;
    StartDesktopProgram start_;
};

} // namespace LinuxPlatform
