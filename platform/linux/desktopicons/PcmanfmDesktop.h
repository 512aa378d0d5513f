#pragma once

#include "platform/ProcessRunner.h"
#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/IconDesktop.h"
#include "platform/linux/session/EarlierValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    std::vector<std::string> command() const;

    Platform::ProcessRunner& runner_;
    /// The profile's argument.
    EarlierValue earlier_;
    StartDesktopProgram start_;
    /// Was told to switch its desktop off.
    std::optional<std::uint32_t> process_;
    /// What that process may still take for itself while it is about to end.
    std::optional<std::vector<std::string>> awaited_;
};

} // namespace LinuxPlatform
