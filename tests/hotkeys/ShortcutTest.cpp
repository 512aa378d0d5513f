#include "hotkeys/Shortcut.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

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

/// Every key with its code, in rows as they lie on a keyboard.
const std::vector<std::pair<std::string_view, std::int64_t>> keys{
    {"Escape", 53},   {"F1", 122},     {"F2", 120},   {"F3", 99},         {"F4", 118},
    {"F5", 96},       {"F6", 97},      {"F7", 98},    {"F8", 100},        {"F9", 101},
    {"F10", 109},     {"F11", 103},    {"F12", 111},  {"F13", 105},       {"F14", 107},
    {"F15", 113},     {"F16", 106},    {"F17", 64},   {"F18", 79},        {"F19", 80},
    {"F20", 90},      {"`", 50},       {"1", 18},     {"2", 19},          {"3", 20},
    {"4", 21},        {"5", 23},       {"6", 22},     {"7", 26},          {"8", 28},
    {"9", 25},        {"0", 29},       {"-", 27},     {"=", 24},          {"Backspace", 51},
    {"Tab", 48},      {"Q", 12},       {"W", 13},     {"E", 14},          {"R", 15},
    {"T", 17},        {"Y", 16},       {"U", 32},     {"I", 34},          {"O", 31},
    {"P", 35},        {"[", 33},       {"]", 30},     {"\\", 42},         {"A", 0},
    {"S", 1},         {"D", 2},        {"F", 3},      {"G", 5},           {"H", 4},
    {"J", 38},        {"K", 40},       {"L", 37},     {";", 41},          {"'", 39},
    {"Enter", 36},    {"Z", 6},        {"X", 7},      {"C", 8},           {"V", 9},
    {"B", 11},        {"N", 45},       {"M", 46},     {",", 43},          {".", 47},
    {"/", 44},        {"Space", 49},   {"Menu", 110}, {"Insert", 114},    {"Home", 115},
    {"Page Up", 116}, {"Delete", 117}, {"End", 119},  {"Page Down", 121}, {"Left", 123},
    {"Right", 124},   {"Down", 125},   {"Up", 126},   {"Num Lock", 71},   {"Num =", 81},
    {"Num /", 75},    {"Num *", 67},   {"Num -", 78}, {"Num +", 69},      {"Num Enter", 76},
    {"Num .", 65},    {"Num 0", 82},   {"Num 1", 83}, {"Num 2", 84},      {"Num 3", 85},
    {"Num 4", 86},    {"Num 5", 87},   {"Num 6", 88}, {"Num 7", 89},      {"Num 8", 91},
    {"Num 9", 92},
};

TEST(KeyCodes, EveryKeyHasItsName) {
    std::map<std::int64_t, std::string_view> names;
    for (std::int64_t code = -1; code <= 200; ++code) {
        if (const auto name = keyName(code)) {
            names.emplace(code, *name);
        }
    }
    std::map<std::int64_t, std::string_view> expected;
    for (const auto& [name, code] : keys) {
        expected.emplace(code, name);
    }
    EXPECT_EQ(names, expected);
}

TEST(KeyCodes, FunctionKeysAreF1ToF20) {
    for (const auto& [name, code] : keys) {
        EXPECT_EQ(isFunctionKey(code), name.size() > 1 && name[0] == 'F') << name;
    }
    EXPECT_FALSE(isFunctionKey(10));
    EXPECT_FALSE(isFunctionKey(-1));
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

TEST(Shortcut, TheStoredFormIsThatOfTheFirstLaunch) {
    EXPECT_EQ(encodeShortcut({4, 6400}), R"({"carbonKeyCode":4,"carbonModifiers":6400})");
}

TEST(Shortcut, AWholeNumberMayBeWrittenWithAFraction) {
    for (const auto* const modifiers : {"6400", "6400.0", "6.4e3", "64E+2", "640000e-2"}) {
        const auto text = R"({"carbonKeyCode":4.0,"carbonModifiers":)" + std::string(modifiers) + "}";
        EXPECT_EQ(decodeShortcut(text), (Shortcut{4, 6400})) << text;
    }
    EXPECT_EQ(decodeShortcut(R"({"carbonKeyCode":-0.0,"carbonModifiers":-9223372036854775808.0})"),
              (Shortcut{0, std::numeric_limits<std::int64_t>::min()}));
}

TEST(Shortcut, UnknownMembersMayHoldAnything) {
    for (const auto* const value : {"1e999", "\"\\ud800\"", "[[[{}]]]", "null"}) {
        const auto text =
            R"({"later":)" + std::string(value) + R"(,"carbonKeyCode":4,"carbonModifiers":6400})";
        EXPECT_EQ(decodeShortcut(text), (Shortcut{4, 6400})) << text;
    }
}

TEST(Shortcut, EverythingElseIsNoShortcut) {
    for (const auto* text : {"",
                             "false",
                             "true",
                             "null",
                             "[4,6400]",
                             "{}",
                             R"({"carbonKeyCode":4})",
                             R"({"carbonModifiers":6400})",
                             R"({"carbonKeyCode":"4","carbonModifiers":6400})",
                             R"({"carbonKeyCode":4.5,"carbonModifiers":6400})",
                             R"({"carbonKeyCode":null,"carbonModifiers":6400})",
                             R"({"carbonKeyCode":4,"carbonModifiers":6400)",
                             R"({"carbonKeyCode":18446744073709551615,"carbonModifiers":6400})",
                             "\xff",
                             R"({"carbonKeyCode":4,"carbonModifiers":9223372036854775808.0})",
                             R"({"carbonKeyCode":4,"carbonModifiers":-9223372036854777856.0})",
                             R"({"carbonKeyCode":1e999,"carbonModifiers":6400})",
                             R"({"carbonKeyCode":4,"carbonModifiers":6400.5})",
                             R"({"carbonKeyCode":4,"carbonModifiers":1e-999})",
                             R"({"carbonKeyCode":true,"carbonModifiers":6400})",
                             R"({"carbonKeyCode":[4],"carbonModifiers":6400})",
                             R"(/* comment */{"carbonKeyCode":4,"carbonModifiers":6400})"}) {
        EXPECT_EQ(decodeShortcut(text), std::nullopt) << text;
    }
}

TEST(Shortcut, BytesAfterAByteOfZeroAreNoShortcut) {
    const std::string document = R"({"carbonKeyCode":4,"carbonModifiers":6400})";
    EXPECT_EQ(decodeShortcut(document + std::string(1, '\0')), std::nullopt);
    EXPECT_EQ(decodeShortcut(document + std::string("\0junk", 5)), std::nullopt);
}

TEST(Shortcut, IsHashable) {
    const std::unordered_set<Shortcut> shortcuts{{4, 6400}, {4, 6400}, {4, 256}};
    EXPECT_EQ(shortcuts.size(), 2U);
}

} // namespace
