#pragma once

#include "core/LocKey.h"
#include "core/Preferences.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace CurtainCore {

/// The texts of one language, in the order of the keys.
struct LanguageTexts {
    std::array<char, 2> code;
    std::array<std::string_view, locKeyCount> texts;
};

/// Every choice of language but "system".
inline constexpr std::size_t languageCount = allCases<AppLanguage>().size() - 1;

/// All texts, English first; made from core/texts when the program is built.
extern const std::array<LanguageTexts, languageCount> textTable;

} // namespace CurtainCore
