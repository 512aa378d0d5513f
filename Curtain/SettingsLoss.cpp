#include "Curtain/SettingsLoss.h"

#include "Curtain/PlatformWording.h"

namespace Curtain {

std::string settingsLossText(const CurtainCore::PreferencesDamage& damage, std::string_view lang) {
    const auto sentence = [lang](PlatformKey key) { return std::string(PlatformWording::string(key, lang)); };
    return damage.copy ? sentence(PlatformKey::settingsDamaged) + "\n" + *damage.copy
                       : sentence(PlatformKey::settingsUnreadable);
}

} // namespace Curtain
