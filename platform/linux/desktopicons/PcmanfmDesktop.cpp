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
        awaited_.reset();
        return DesktopIcons::shown;
    }
    if (awaited_ && !isRunning(*process_)) {
        start_(*std::exchange(awaited_, std::nullopt));
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
    process_ = window->process;
    awaited_.reset();
    runner_.run("/usr/bin/pcmanfm", {"--desktop-off"});
}

bool PcmanfmDesktop::show(const DesktopScene&) {
    const auto wanted = command();
    const bool isStarted = start_(wanted);
    if (isStarted) {
        if (process_ && isRunning(*process_)) {
            awaited_ = wanted;
        }
        earlier_.forget();
    }
    return isStarted;
}

std::vector<std::string> PcmanfmDesktop::command() const {
    std::vector<std::string> words{"pcmanfm", "--desktop"};
    if (const auto profile = earlier_.get(); profile && !profile->empty()) {
        words.push_back(*profile);
    }
    return words;
}

} // namespace LinuxPlatform
