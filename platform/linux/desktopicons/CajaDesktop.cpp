#include "platform/linux/desktopicons/CajaDesktop.h"

#include <utility>

namespace LinuxPlatform {
namespace {

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
    if (isAwaited_ && !scene.hasName(busName)) {
        isAwaited_ = false;
        start_(command());
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
    // It may still be about to end.
    isAwaited_ = isToStart && scene.hasName(busName);
    return scene.hasName(busName) || (isToStart && start_(command()));
}

bool CajaDesktop::wasHidden(const DesktopScene& scene) const {
    const auto& earlier = setting_.earlier();
    return earlier.isOfThisSession() || (earlier.get() && scene.hasName(mateName));
}

} // namespace LinuxPlatform
