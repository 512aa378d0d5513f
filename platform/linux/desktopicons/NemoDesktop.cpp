#include "platform/linux/desktopicons/NemoDesktop.h"

#include <utility>

namespace LinuxPlatform {

NemoDesktop::NemoDesktop(EarlierValue earlier)
    : layout_({"org.nemo.desktop", "desktop-layout"}, std::move(earlier), "'false::false'", "'true::false'") {
}

DesktopIcons NemoDesktop::icons(const DesktopScene& scene) {
    const bool isThere = scene.hasName("org.NemoDesktop") || scene.desktopWindowOf(windowClass()) != nullptr;
    const auto isHidden = layout_.isHidden();
    // One that has ended since it was told to hide them is to have them when it starts again.
    if (!isThere && !(layout_.earlier().isOfThisSession() && isHidden == true)) {
        return DesktopIcons::absent;
    }
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
