#include "platform/linux/desktopicons/CajaDesktop.h"

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto busName = "org.mate.Caja";

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
    const bool wasHiddenHere = setting_.earlier().isOfThisSession();
    if (!scene.hasName(busName) && !wasHiddenHere) {
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
    const bool wasHiddenHere = setting_.earlier().isOfThisSession();
    if (!setting_.giveBack()) {
        return false;
    }
    // It may still be about to end.
    isAwaited_ = wasHiddenHere && scene.hasName(busName);
    return scene.hasName(busName) || (wasHiddenHere && start_(command()));
}

} // namespace LinuxPlatform
