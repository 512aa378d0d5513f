// Takes the place of every text of the interface: English with its vowels doubled and accented, which is some
// two fifths longer. In Arabic it is set from right to left, so that the whole interface can be looked at in
// both directions.

#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace PseudoLanguage {

using Curtain::PlatformKey;
using CurtainCore::LocKey;

// The linker gives the second of each pair to whoever calls PlatformWording::string, and that function to
// whoever calls the first.
std::string_view english(LocKey key, std::string_view lang) asm(
    "__real__ZN7Curtain15PlatformWording6stringEN11CurtainCore6LocKeyESt17basic_string_viewIcSt11char_"
    "traitsIcEE");
std::string_view pseudo(LocKey key, std::string_view lang) asm(
    "__wrap__ZN7Curtain15PlatformWording6stringEN11CurtainCore6LocKeyESt17basic_string_viewIcSt11char_"
    "traitsIcEE");
std::string_view english(PlatformKey key, std::string_view lang) asm(
    "__real__ZN7Curtain15PlatformWording6stringENS_11PlatformKeyESt17basic_string_viewIcSt11char_traitsIcEE");
std::string_view pseudo(PlatformKey key, std::string_view lang) asm(
    "__wrap__ZN7Curtain15PlatformWording6stringENS_11PlatformKeyESt17basic_string_viewIcSt11char_traitsIcEE");

namespace {

std::string_view accented(char letter) {
    switch (letter) {
    case 'a':
        return "áá";
    case 'e':
        return "éé";
    case 'i':
        return "íí";
    case 'o':
        return "óó";
    case 'u':
        return "úú";
    default:
        return {};
    }
}

std::string strange(std::string_view text, bool isRightToLeft) {
    std::string result(isRightToLeft ? "\u200F" : "");
    for (const auto letter : text) {
        if (const auto vowel = accented(letter); !vowel.empty()) {
            result += vowel;
        } else {
            result += letter;
        }
    }
    return result;
}

/// As long as the program lives.
template <class Key>
std::string_view kept(Key key, std::string_view lang) {
    static std::map<std::pair<Key, bool>, std::string> texts;
    const auto isRightToLeft = CurtainCore::Localizer::isRightToLeft(lang);
    auto& text = texts[{key, isRightToLeft}];
    if (text.empty()) {
        text = strange(english(key, "en"), isRightToLeft);
    }
    return text;
}

} // namespace

std::string_view pseudo(LocKey key, std::string_view lang) {
    return kept(key, lang);
}

std::string_view pseudo(PlatformKey key, std::string_view lang) {
    return kept(key, lang);
}

TEST(PseudoLanguage, TakesThePlaceOfEveryText) {
    EXPECT_EQ(Curtain::PlatformWording::string(LocKey::quit, "en"), "Qúúíít");
    EXPECT_EQ(Curtain::PlatformWording::string(LocKey::quit, "ar"), "\u200FQúúíít");
    EXPECT_EQ(Curtain::PlatformWording::string(PlatformKey::close, "en"), "Clóóséé");
}

} // namespace PseudoLanguage
