#include "core/Localizer.h"

#include "core/TextTable.h"

#include <algorithm>

namespace CurtainCore {
namespace {

/// Letter by letter, since two letters are compared many times faster than two texts.
bool hasCode(const LanguageTexts& language, std::string_view lang) {
    return lang.size() == language.code.size() && lang[0] == language.code[0] && lang[1] == language.code[1];
}

const LanguageTexts& textsOf(std::string_view lang) {
    const auto* const found = std::ranges::find_if(
        textTable, [lang](const LanguageTexts& language) { return hasCode(language, lang); });
    return found == textTable.end() ? textTable.front() : *found;
}

} // namespace

std::string_view Localizer::string(LocKey key, std::string_view lang) const {
    const auto index = static_cast<std::size_t>(key);
    return index < locKeyCount ? textsOf(lang).texts[index] : rawValue(key);
}

std::string_view Localizer::resolve(AppLanguage choice, std::string_view system) {
    const auto& code = textsOf(choice == AppLanguage::system ? system : rawValue(choice)).code;
    return {code.data(), code.size()};
}

} // namespace CurtainCore
