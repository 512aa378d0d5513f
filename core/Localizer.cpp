#include "core/Localizer.h"

#include "core/TextTable.h"

#include <algorithm>

namespace CurtainCore {
namespace {

const LanguageTexts& textsOf(std::string_view lang) {
    const auto* const found = std::ranges::find(textTable, lang, &LanguageTexts::code);
    return found == textTable.end() ? textTable.front() : *found;
}

} // namespace

std::string_view Localizer::string(LocKey key, std::string_view lang) const {
    const auto index = static_cast<std::size_t>(key);
    return index < locKeyCount ? textsOf(lang).texts[index] : rawValue(key);
}

std::string_view Localizer::resolve(AppLanguage choice, std::string_view system) {
    return textsOf(choice == AppLanguage::system ? system : rawValue(choice)).code;
}

} // namespace CurtainCore
