#include "Curtain/UserLanguage.h"

#include "core/Localizer.h"

namespace Curtain {

UserLanguage::UserLanguage(const CurtainCore::PreferencesStore& store, Platform::Locale& locale)
    : store_(store),
      locale_(locale) {}

std::string UserLanguage::code() const {
    const auto system = locale_.preferredLanguageCode();
    return std::string(CurtainCore::Localizer::resolve(store_.load().language, system));
}

} // namespace Curtain
