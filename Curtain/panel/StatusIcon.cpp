#include "Curtain/panel/StatusIcon.h"

#include "Curtain/HidingWording.h"
#include "Curtain/PlatformWording.h"

#include <string_view>

namespace Curtain {
namespace {

using CurtainCore::LocKey;

constexpr double imageSize = 18;

/// The image and, should it be missing, the symbol in its place.
struct Look {
    const char* image;
    const char* symbol;
};
constexpr Look openCurtain{"open", "eye"};
constexpr Look closedCurtain{"close", "eye.slash"};
/// It must not look like a closed curtain, which promises that something is hidden.
constexpr Look curtainInVain{"alert", "exclamationmark.triangle"};

} // namespace

void StatusIcon::update() {
    const auto& privacy = services_.privacy;
    const auto& look = !privacy.isOn() ? openCurtain : privacy.isInVain() ? curtainInVain : closedCurtain;
    const auto image = statusImage(look.image);
    services_.item.setImage(image ? *image : symbolImage(look.symbol));
    updateToolTip();
}

void StatusIcon::updateToolTip() {
    services_.item.setToolTip(toolTip());
}

std::string StatusIcon::toolTip() const {
    const auto& privacy = services_.privacy;
    const auto lang = services_.language.code();
    auto text = PlatformWording::opening("Curtain", lang);
    const auto add = [&](std::string_view words) { text.append(" — ").append(words); };
    if (privacy.isInVain()) {
        add(PlatformWording::string(PlatformKey::privacyModeInVain, lang));
        add(HidingWording::reason(*services_.hidingWatch.obstacle(), lang));
        return text;
    }
    add(privacy.isOn() ? PlatformWording::string(LocKey::privacyOnTitle, lang)
                       : PlatformWording::string(PlatformKey::privacyModeEndedTitle, lang));
    if (const auto shortcut = services_.hotkeys.shortcut();
        shortcut && services_.hotKeyService.reach() == Platform::HotKeyReach::everywhere) {
        text.append(" (").append(shortcut->description(services_.keyboard)).append(")");
    }
    if (privacy.isOn() && privacy.isAutomatic()) {
        add(PlatformWording::string(LocKey::privacyOnBody, lang));
    }
    return text;
}

std::optional<Platform::Image> StatusIcon::statusImage(const std::string& name) const {
    const auto path = services_.resources.pathForResource(name, "pdf");
    if (!path) {
        return std::nullopt;
    }
    return Platform::Image{*path, imageSize, imageSize, true, {}};
}

Platform::Image StatusIcon::symbolImage(const std::string& name) const {
    return {services_.resources.pathForSystemSymbol(name).value_or(std::string{}), 0, 0, true, "Curtain"};
}

} // namespace Curtain
