#include "Curtain/ViewTexts.h"

#include "Curtain/ViewText.h"

#include <utility>

namespace Curtain {

ViewTexts::ViewTexts(std::string lang) : lang_(std::move(lang)) {}

void ViewTexts::setLang(std::string lang) {
    if (lang != lang_) {
        lang_ = std::move(lang);
        Q_EMIT changed();
    }
}

QString ViewTexts::textOf(CurtainCore::LocKey key) const {
    return viewText(key, lang_);
}

QString ViewTexts::textOf(PlatformKey key) const {
    return viewText(key, lang_);
}

} // namespace Curtain
