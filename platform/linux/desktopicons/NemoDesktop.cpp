#include "platform/linux/desktopicons/NemoDesktop.h"

#include <utility>

namespace LinuxPlatform {

NemoDesktop::NemoDesktop(EarlierValue earlier)
    : layout_({"org.nemo.desktop", "desktop-layout"}, std::move(earlier), "'false::false'", "'true::false'") {
}

DesktopIcons NemoDesktop::icons(const DesktopScene& scene) {
    if (!scene.hasName("org.NemoDesktop") && scene.desktopWindowOf(windowClass()) == nullptr) {
        return DesktopIcons::absent;
    }
    const auto isHidden = layout_.isHidden();
    if (!isHidden) {
        return DesktopIcons::unknown;
    }
    return *isHidden ? DesktopIcons::hidden : DesktopIcons::shown;
}

void NemoDesktop::hide(const DesktopScene&) {
    layout_.hide();
}

bool NemoDesktop::show(const DesktopScene&) {
    return layout_.giveBack();
}

} // namespace LinuxPlatform
