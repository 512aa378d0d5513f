#include "platform/linux/desktopicons/PcmanfmDesktop.h"

#include <utility>

namespace LinuxPlatform {
PcmanfmDesktop::PcmanfmDesktop(Platform::ProcessRunner& runner, EarlierValue earlier,
                               StartDesktopProgram start)
    : runner_(runner),
      earlier_(std::move(earlier)),
      start_(std::move(start)) {}

DesktopIcons PcmanfmDesktop::icons(const DesktopScene& scene) {
    if (scene.desktopWindowOf(windowClass()) != nullptr) {
        return DesktopIcons::shown;
    }
    return earlier_.isOfThisSession() ? DesktopIcons::hidden : DesktopIcons::absent;
}

void PcmanfmDesktop::hide(const DesktopScene& scene) {
    const auto* const window = scene.desktopWindowOf(windowClass());
    if (window == nullptr) {
        return;
    }
    const auto profile = window->process ? profileArguments(*window->process) : std::vector<std::string>{};
    earlier_.keep(profile.empty() ? std::string() : profile.front());
    runner_.run("/usr/bin/pcmanfm", {"--desktop-off"});
}

bool PcmanfmDesktop::show(const DesktopScene&) {
    std::vector<std::string> command{"pcmanfm", "--desktop"};
    if (const auto profile = earlier_.get(); profile && !profile->empty()) {
        command.push_back(*profile);
    }
    const bool isStarted = start_(command);
    if (isStarted) {
        earlier_.forget();
    }
    return isStarted;
}

} // namespace LinuxPlatform
