#include "platform/linux/desktopicons/CajaDesktop.h"

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto busName = "org.mate.Caja";

} // namespace

CajaDesktop::CajaDesktop(EarlierValue earlier, StartDesktopProgram start)
    : setting_({"org.mate.background", "show-desktop-icons"}, std::move(earlier), "false", "true"),
      start_(std::move(start)) {}

DesktopIcons CajaDesktop::icons(const DesktopScene& scene) {
    if (scene.desktopWindowOf("Caja") != nullptr) {
        return DesktopIcons::shown;
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
    setting_.hide();
}

bool CajaDesktop::show(const DesktopScene& scene) {
    const bool wasHiddenHere = setting_.earlier().isOfThisSession();
    if (!setting_.giveBack()) {
        return false;
    }
    if (scene.hasName(busName)) {
        return true;
    }
    return wasHiddenHere && start_({"caja", "--no-default-window", "--force-desktop"});
}

} // namespace LinuxPlatform
