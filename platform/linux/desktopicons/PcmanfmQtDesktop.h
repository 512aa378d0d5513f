#pragma once

#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/IconDesktop.h"
#include "platform/linux/session/EarlierValue.h"

namespace LinuxPlatform {

/// PCManFM-Qt of LXQt: its desktop is switched off and on as a whole, over the bus; it ends with its last
/// window.
class PcmanfmQtDesktop : public IconDesktop {
public:
    /// `bus` outlives this object.
    PcmanfmQtDesktop(DesktopBus& bus, EarlierValue earlier, StartDesktopProgram start);

    std::string_view windowClass() const override { return "pcmanfm-qt"; }
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    bool startDesktop();
    /// Whether it was switched; absent when that is not known.
    std::optional<bool> switchDesktop(bool isOn);

    DesktopBus& bus_;
    /// The profile's argument.
    EarlierValue earlier_;
    StartDesktopProgram start_;
};

} // namespace LinuxPlatform
