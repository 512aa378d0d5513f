#include "hotkeys/ShortcutTexts.h"

#include <gmock/gmock.h>

#include <array>
#include <set>

namespace {

using namespace KeyboardShortcuts;

constexpr std::array languages{"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"};

TEST(ShortcutTexts, EveryKeyHasATextOfItsOwnInEveryLanguage) {
    for (const auto* const lang : languages) {
        std::set<std::string_view> texts;
        for (const auto key :
             {ShortcutTexts::usedByMenuItem, ShortcutTexts::disallowed, ShortcutTexts::usedBySystem,
              ShortcutTexts::canBeChanged, ShortcutTexts::forceUse, ShortcutTexts::ok,
              ShortcutTexts::chooseAnother, ShortcutTexts::recordShortcut, ShortcutTexts::pressShortcut,
              ShortcutTexts::clearShortcut}) {
            const auto text = ShortcutTexts::string(key, lang);
            EXPECT_FALSE(text.empty()) << key << " in " << lang;
            EXPECT_TRUE(texts.insert(text).second) << key << " in " << lang;
        }
    }
}

TEST(ShortcutTexts, AnUnknownLanguageGetsEnglishAndAnUnknownKeyNothing) {
    EXPECT_EQ(ShortcutTexts::string("force_use_shortcut", "xx"), "Use Anyway");
    EXPECT_EQ(ShortcutTexts::string("force_use_shortcut", "fr"), "Utiliser quand même");
    EXPECT_EQ(ShortcutTexts::string("no_such_key", "en"), "");
}

} // namespace
