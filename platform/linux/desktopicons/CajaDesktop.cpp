#include "platform/linux/desktopicons/CajaDesktop.h"

#include <utility>

namespace LinuxPlatform {
namespace {

/// It has its name on the bus by then.
constexpr std::chrono::seconds timeToStart{2};

constexpr auto busName = "org.mate.Caja";
/// Runs in every session of MATE.
constexpr auto mateName = "org.mate.SettingsDaemon";

std::vector<std::string> command() {
    return {"caja", "--no-default-window", "--force-desktop"};
}

} // namespace

CajaDesktop::CajaDesktop(EarlierValue earlier, StartDesktopProgram start)
    : setting_({"org.mate.background", "show-desktop-icons"}, std::move(earlier), "false", "true"),
      start_(std::move(start)) {}

DesktopIcons CajaDesktop::icons(const DesktopScene& scene) {
    if (scene.desktopWindowOf(windowClass()) != nullptr) {
        isAwaited_ = false;
        return DesktopIcons::shown;
    }
    const auto now = std::chrono::steady_clock::now();
    if (isAwaited_ && !scene.hasName(busName) && (!started_ || now - *started_ > timeToStart)) {
        started_ = now;
        isAwaited_ = start_(command());
    }
    if (!scene.hasName(busName) && !wasHidden(scene)) {
        return DesktopIcons::absent;
    }
    if (setting_.isHidden() == true) {
        return DesktopIcons::hidden;
    }
    // Elsewhere it is a mere file manager, whatever the setting says.
    return scene.isEveryWindowKnown || !scene.hasName(busName) ? DesktopIcons::absent : DesktopIcons::unknown;
}

void CajaDesktop::hide(const DesktopScene&) {
    isAwaited_ = false;
    setting_.hide();
}

bool CajaDesktop::show(const DesktopScene& scene) {
    const bool isToStart = wasHidden(scene);
    if (!setting_.giveBack()) {
        return false;
    }
    isAwaited_ = isToStart;
    started_.reset();
    if (scene.hasName(busName)) {
        // It may still be about to end.
        return true;
    }
    started_ = std::chrono::steady_clock::now();
    return isToStart && start_(command());
}

bool CajaDesktop::wasHidden(const DesktopScene& scene) const {
    const auto& earlier = setting_.earlier();
    return earlier.isOfThisSession() || (earlier.get() && scene.hasName(mateName));
}

} // namespace LinuxPlatform
