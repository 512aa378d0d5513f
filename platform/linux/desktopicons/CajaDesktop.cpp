#include "platform/linux/desktopicons/CajaDesktop.h"

#include <utility>

namespace LinuxPlatform {
namespace {

/// It has its name on the bus by then.
constexpr std::chrono::seconds timeToStart{2};
/// One that is about to end may show its desktop once more on the way, but not for so long.
constexpr std::chrono::seconds timeToStay{2};
/// One that is not there by then will not come.
constexpr std::chrono::seconds timeToComeBack{30};

constexpr auto busName = "org.mate.Caja";
/// Runs in every session of MATE.
constexpr auto mateName = "org.mate.SettingsDaemon";

std::vector<std::string> command() {
    return {"caja", "--no-default-window", "--force-desktop"};
}

} // namespace

CajaDesktop::CajaDesktop(EarlierValue earlier, StartDesktopProgram start, Now now)
    : setting_({"org.mate.background", "show-desktop-icons"}, std::move(earlier), "false", "true"),
      start_(std::move(start)),
      now_(std::move(now)) {}

DesktopIcons CajaDesktop::icons(const DesktopScene& scene) {
    if (comingBack_ && !bringBack(scene)) {
        comingBack_.reset();
    }
    if (scene.desktopWindowOf(windowClass()) != nullptr) {
        return DesktopIcons::shown;
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

bool CajaDesktop::bringBack(const DesktopScene& scene) {
    const auto now = now_();
    const bool isThere = scene.desktopWindowOf(windowClass()) != nullptr;
    comingBack_->seen = isThere ? std::optional(comingBack_->seen.value_or(now)) : std::nullopt;
    const bool hasStayed = isThere && now - *comingBack_->seen >= timeToStay;
    if (hasStayed || now - comingBack_->asked > timeToComeBack || setting_.isHidden() == true) {
        return false;
    }
    const auto& started = comingBack_->started;
    if (isThere || scene.hasName(busName) || (started && now - *started <= timeToStart)) {
        return true;
    }
    comingBack_->started = now;
    return start_(command());
}

bool CajaDesktop::isAboutToHide(const DesktopScene& scene) const {
    return scene.desktopWindowOf(windowClass()) != nullptr && setting_.isHidden() == true &&
           setting_.earlier().isOfThisSession();
}

void CajaDesktop::hide(const DesktopScene&) {
    comingBack_.reset();
    setting_.hide();
}

bool CajaDesktop::show(const DesktopScene& scene) {
    comingBack_.reset();
    const bool isToStart = wasHidden(scene);
    if (!setting_.giveBack()) {
        return false;
    }
    if (!isToStart) {
        return scene.hasName(busName);
    }
    comingBack_ = {.asked = now_(), .started = {}, .seen = {}};
    if (scene.hasName(busName)) {
        // It may still be about to end.
        return true;
    }
    comingBack_->started = comingBack_->asked;
    return start_(command());
}

bool CajaDesktop::wasHidden(const DesktopScene& scene) const {
    const auto& earlier = setting_.earlier();
    return earlier.isOfThisSession() || (earlier.get() && scene.hasName(mateName));
}

} // namespace LinuxPlatform
