#pragma once

#include "core/LocKey.h"
#include "core/Preferences.h"

#include <string_view>

namespace CurtainCore {

/// Looks up the texts that the user sees. Texts and codes are UTF-8 and live as long as the program; callable
/// from any thread.
class Localizer {
public:
    /// The text in a language, by its two-letter code; in English when the code is not known. A text may hold
    /// the placeholder "%@" for a value.
    std::string_view string(LocKey key, std::string_view lang) const;

    /// The language code to use: that of the choice, or for `AppLanguage::system` the system's own; "en" when
    /// there are no texts for it. A code with a region or in capitals is not known.
    static std::string_view resolve(AppLanguage choice, std::string_view system);

    /// Whether a language, by its two-letter code, is written from right to left.
    static bool isRightToLeft(std::string_view lang) { return lang == "ar"; }
};

} // namespace CurtainCore
