#include "hotkeys/Shortcut.h"

#include <gmock/gmock.h>

#include <limits>
#include <unordered_set>

namespace {

using namespace KeyboardShortcuts;

TEST(KeyCodes, FlagsOfTheDefaultGiveItsModifierMask) {
    EXPECT_EQ(carbonModifiers(1835008), 6400);
    EXPECT_EQ(modifierFlags(6400), 1835008U);
}

TEST(KeyCodes, EveryFlagMapsThereAndBack) {
    EXPECT_EQ(carbonModifiers(ModifierFlag::command), 256);
    EXPECT_EQ(carbonModifiers(ModifierFlag::shift), 512);
    EXPECT_EQ(carbonModifiers(ModifierFlag::option), 2048);
    EXPECT_EQ(carbonModifiers(ModifierFlag::control), 4096);
    EXPECT_EQ(carbonModifiers(ModifierFlag::function), 131072);
    for (const auto flag : {0x20000U, 0x40000U, 0x80000U, 0x100000U, 0x800000U}) {
        EXPECT_EQ(modifierFlags(carbonModifiers(flag)), flag);
    }
    EXPECT_EQ(carbonModifiers(0x10000), 0) << "Caps Lock is no modifier of a shortcut";
}

TEST(KeyCodes, NamesAreThoseOfAUSKeyboard) {
    EXPECT_EQ(keyName(KeyCode::h), "H");
    EXPECT_EQ(keyName(0), "A");
    EXPECT_EQ(keyName(18), "1");
    EXPECT_EQ(keyName(36), "Enter");
    EXPECT_EQ(keyName(49), "Space");
    EXPECT_EQ(keyName(53), "Escape");
    EXPECT_EQ(keyName(82), "Num 0");
    EXPECT_EQ(keyName(96), "F5");
    EXPECT_EQ(keyName(122), "F1");
    EXPECT_EQ(keyName(126), "Up");
    EXPECT_EQ(keyName(-1), std::nullopt);
    EXPECT_EQ(keyName(127), std::nullopt);
    EXPECT_EQ(keyName(128), std::nullopt);
}

TEST(Shortcut, IsDescribedForPeople) {
    EXPECT_EQ((Shortcut{4, 6400}.description()), "Ctrl+Alt+Super+H");
    EXPECT_EQ((Shortcut{96, 0}.description()), "F5");
    EXPECT_EQ((Shortcut{0, 131072 + 512}.description()), "Fn+Shift+A");
    EXPECT_EQ((Shortcut{400, 256}.description()), "Super+key 400");
}

TEST(Shortcut, RoundTripOfTheStoredForm) {
    for (const auto& shortcut :
         {Shortcut{4, 6400}, Shortcut{0, 0}, Shortcut{-1, std::numeric_limits<std::int64_t>::max()}}) {
        EXPECT_EQ(decodeShortcut(encodeShortcut(shortcut)), shortcut);
    }
    EXPECT_EQ(decodeShortcut(R"({"carbonModifiers":6400,"carbonKeyCode":4,"more":1})"), (Shortcut{4, 6400}));
}

TEST(Shortcut, EverythingElseIsNoShortcut) {
    for (const auto* text :
         {"", "false", "true", "null", "[4,6400]", "{}", R"({"carbonKeyCode":4})",
          R"({"carbonModifiers":6400})", R"({"carbonKeyCode":"4","carbonModifiers":6400})",
          R"({"carbonKeyCode":4.5,"carbonModifiers":6400})",
          R"({"carbonKeyCode":null,"carbonModifiers":6400})", R"({"carbonKeyCode":4,"carbonModifiers":6400)",
          R"({"carbonKeyCode":18446744073709551615,"carbonModifiers":6400})", "\xff"}) {
        EXPECT_EQ(decodeShortcut(text), std::nullopt) << text;
    }
}

TEST(Shortcut, IsHashable) {
    const std::unordered_set<Shortcut> shortcuts{{4, 6400}, {4, 6400}, {4, 256}};
    EXPECT_EQ(shortcuts.size(), 2U);
}

} // namespace
