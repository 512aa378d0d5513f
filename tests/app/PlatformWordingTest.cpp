#include "Curtain/PlatformWording.h"

#include "core/Localizer.h"
#include "tests/support/Typography.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace CurtainCore;
using namespace Curtain;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using TestSupport::count;
using TestSupport::typographies;
using TestSupport::Typography;

using Words = std::vector<std::string_view>;

/// Of the home platform alone, in whichever language.
const Words foreignNames{"Mac",
                         "macOS",
                         "OS X",
                         "iOS",
                         "iCloud",
                         "iPhone",
                         "iPad",
                         "Apple",
                         "Siri",
                         "Finder",
                         "Dock",
                         "Launchpad",
                         "Spotlight",
                         "Mission Control",
                         "Control Center",
                         "Control Centre",
                         "Safari",
                         "FaceTime",
                         "Keychain",
                         "Time Machine",
                         "Touch ID",
                         "AirDrop",
                         "⌘",
                         "⌥",
                         "Google Meet"};

/// What a language calls what only the home platform has or calls so.
struct ForeignTerms {
    std::string_view lang;
    Words terms;
    /// A text that speaks of it makes a claim that does not hold here.
    std::string_view browser;
};

const std::array<ForeignTerms, 8> foreignTerms{{
    {"en", {"Focus", "System Settings", "System Preferences", "menu bar", "menu-bar"}, "browser"},
    {"es", {"Concentración", "Ajustes del Sistema", "barra de menús"}, "navegador"},
    {"zh", {"专注模式", "访达", "程序坞", "菜单栏", "系统偏好设置"}, "浏览器"},
    {"hi", {"फ़ोकस", "फ़ाइंडर", "मेनू बार", "मेन्यू बार"}, "ब्राउज़र"},
    {"ar", {"التركيز", "فايندر", "شريط القوائم"}, "المتصفح"},
    {"pt", {"Foco", "Ajustes do Sistema", "barra de menus"}, "navegador"},
    {"fr", {"Concentration", "Réglages Système", "barre des menus"}, "navigateur"},
    {"ru", {"окусировани", "Системные настройки", "строка меню", "строке меню"}, "браузер"},
}};

/// Every text that is untrue on Linux, and what its English users see instead.
struct Replacement {
    LocKey key;
    std::string_view seen;
    /// The other languages name no program here.
    bool isEnglishOnly = false;
};

const std::vector<Replacement> replacements{
    {LocKey::openFocusSettings, "Open Do Not Disturb Settings"},
    {LocKey::hideFinder, "Hide File Manager"},
    {LocKey::openSystemSettings, "Open system settings", true},
    {LocKey::openFocus, "Open Do Not Disturb"},
    {LocKey::autoDetectNote,
     "Note: Sharing from a browser is detected too. Changing this takes effect on relaunch."},
    {LocKey::notifNote,
     "Some desktops don't say whether Do Not Disturb is on, so this is a manual reminder."},
    {LocKey::onboardBody,
     "Before each call, Curtain checks your camera, microphone, notifications and screen so "
     "you don't share anything private. It needs your permission for each — everything "
     "stays on your computer and nothing is recorded or uploaded."},
    {LocKey::wizWelcomeCTA, "See if my computer qualifies"},
    {LocKey::wizCompatTitle, "Your computer is perfect for this"},
    {LocKey::wizCompatOSFail,
     "Curtain can't hide apps in this session. Please log in to another one to continue."},
    {LocKey::wizCompatCheckOS, "Hiding apps"},
    {LocKey::wizPermDeniedHint, "Access denied. Open the system settings to grant it, then retry.", true},
    {LocKey::wizPermOpenSettings, "Open system settings", true},
};

bool isReplaced(LocKey key, std::string_view lang) {
    return std::ranges::any_of(replacements, [&](const Replacement& replacement) {
        return replacement.key == key && (lang == "en" || !replacement.isEnglishOnly);
    });
}

bool holdsAny(std::string_view text, const Words& words) {
    return std::ranges::any_of(words, [text](std::string_view word) { return count(text, word) > 0; });
}

bool namesTheForeign(std::string_view text, const ForeignTerms& language) {
    return holdsAny(text, foreignNames) || holdsAny(text, language.terms);
}

std::string_view coreText(LocKey key, std::string_view lang) {
    return Localizer().string(key, lang);
}

std::string shown(LocKey key, std::string_view text) {
    return std::string(rawValue(key)) + ": " + std::string(text);
}

TEST(PlatformWording, EveryTextThatIsUntrueOnLinuxIsKnown) {
    for (const auto& language : foreignTerms) {
        std::vector<std::string_view> untrue;
        std::vector<std::string_view> known;
        for (const auto key : allCases<LocKey>()) {
            const auto text = coreText(key, language.lang);
            if (namesTheForeign(text, language) || count(text, language.browser) > 0) {
                untrue.push_back(rawValue(key));
            }
            if (isReplaced(key, language.lang)) {
                known.push_back(rawValue(key));
            }
        }
        EXPECT_EQ(untrue, known) << language.lang;
    }
}

TEST(PlatformWording, WhatEnglishUsersSeeInsteadOfAnUntrueText) {
    for (const auto& replacement : replacements) {
        EXPECT_EQ(PlatformWording::string(replacement.key, "en"), replacement.seen);
    }
}

TEST(PlatformWording, NothingThatIsSeenNamesWhatLinuxHasNot) {
    for (const auto& language : foreignTerms) {
        for (const auto key : allCases<LocKey>()) {
            const auto seen = PlatformWording::string(key, language.lang);
            EXPECT_FALSE(namesTheForeign(seen, language)) << language.lang << ' ' << shown(key, seen);
        }
        for (const auto key : allCases<PlatformKey>()) {
            const auto seen = PlatformWording::string(key, language.lang);
            EXPECT_FALSE(namesTheForeign(seen, language)) << language.lang << ' ' << seen;
        }
    }
}

TEST(PlatformWording, EveryOtherTextIsTheCoresOwn) {
    for (const auto& [code, fullStop, forbidden] : typographies) {
        for (const auto key : allCases<LocKey>()) {
            const auto seen = PlatformWording::string(key, code);
            const auto core = coreText(key, code);
            EXPECT_EQ(seen != core, isReplaced(key, code)) << code << ' ' << shown(key, seen);
            EXPECT_EQ(seen.data() != core.data(), isReplaced(key, code)) << code << ' ' << rawValue(key);
        }
    }
}

TEST(PlatformWording, NoLanguageBorrowsTheTextOfAnother) {
    const auto isBorrowed = [](auto key) {
        std::array<std::string_view, typographies.size()> seen;
        std::ranges::transform(typographies, seen.begin(), [key](const Typography& language) {
            return PlatformWording::string(key, language.code);
        });
        std::ranges::sort(seen);
        return std::ranges::adjacent_find(seen) != seen.end();
    };
    for (const auto& replacement : replacements) {
        EXPECT_FALSE(isBorrowed(replacement.key)) << rawValue(replacement.key);
    }
    for (const auto key : allCases<PlatformKey>()) {
        EXPECT_FALSE(isBorrowed(key)) << rawValue(key);
    }
}

TEST(PlatformWording, ReplacedTextsKeepTheirPlaceholders) {
    for (const auto& [code, fullStop, forbidden] : typographies) {
        for (const auto key : allCases<LocKey>()) {
            const auto seen = PlatformWording::string(key, code);
            EXPECT_EQ(count(seen, "%@"), count(coreText(key, code), "%@")) << code << ' ' << rawValue(key);
            EXPECT_EQ(count(seen, "%"), count(seen, "%@")) << code << ' ' << rawValue(key);
        }
    }
}

TEST(PlatformWording, TheEnglishTextsOfItsOwn) {
    std::vector<std::string> sentences;
    for (const auto key : allCases<PlatformKey>()) {
        sentences.emplace_back(PlatformWording::string(key, "en"));
    }
    EXPECT_THAT(
        sentences,
        ElementsAre(
            "This Wayland desktop offers no way to hide other apps.",
            "No window manager is running, so apps can't be hidden.",
            "Log out and back in once so that Curtain can hide apps.",
            "The window manager of this session doesn't hide windows when it is asked to.",
            "Curtain's extension for GNOME isn't installed, so apps can't be hidden.",
            "Curtain's extension for GNOME is switched off, so apps can't be hidden.",
            "Curtain's extension doesn't work in this version of GNOME, so apps can't be hidden.",
            "Whether apps can be hidden in this session isn't known yet.",
            "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce.",
            "Start a window manager, or choose a complete desktop at the login screen.",
            "At the login screen, choose a desktop such as Xfce, MATE or LXQt.",
            "Install Curtain from its package, then log out and back in once.",
            "Switch it on here or in the Extensions app.",
            "Curtain can't tell whether your private apps can be seen.",
            "This session doesn't tell of every running app; find the others among the installed ones.",
            "No matching settings page was found. Look in your desktop's menus or panel.",
            "No matching settings page was found. Allow access with your desktop's own tools, then continue.",
            "No system tray was found. Add one to see Curtain's icon.",
            "This session doesn't support global shortcuts.",
            "The shortcut works only while a window of an X11 program has the focus.",
            "Screen sharing can't be detected in this session.",
            "Curtain can't tell at the moment whether the screen is shared.",
            "The settings file is damaged, so the defaults apply and no app is private. A copy of it was "
            "kept.",
            "The settings file can't be read, so the defaults apply and no app is private.",
            "Your private apps are not known, since the settings could not be read. Choose them again in the "
            "settings.",
            "Your account may not use this computer's cameras. Log in at its own screen, or ask to be added "
            "to the group video.",
            "The camera is not plugged in any more.", "Another program is using the camera.",
            "The camera doesn't start. Another program may be using it.",
            "The camera sends no picture. Curtain keeps trying.", "Another program asked for it.",
            "Curtain ended unexpectedly, and goes on where it was.",
            "Curtain ended twice while switching it on again. What was hidden stays hidden.",
            "The photo is on the clipboard.", "The photo could not be copied.", "The photo is saved.",
            "The photo could not be saved.", "Not saved: the disk is full.",
            "Not saved: you may not write there.", "The camera took no photo.",
            "There is a file of this name already.", "The camera shows no picture.",
            "In use by another program.", "No app has this name.", "No app is open.", "No app is private.",
            "The desktop's own settings have switched this off.",
            "A click on its icon checks everything before a call.", "This shortcut hides your private apps.",
            "Mirror picture", "More options", "Clear search", "Your settings could not be read",
            "No app was hidden", "Close", "Switch on", "Can't tell", "Not installed",
            "Private apps not counted", "Some private apps not counted", "Privacy mode has no effect",
            "Privacy mode off", "Choose private apps", "Private", "Restart Curtain",
            "Curtain is in your panel", "Curtain is running"));
}

TEST(PlatformWording, AnUnknownLanguageReadsEnglish) {
    for (const auto* const lang : {"xx", "", "system", "EN", "Fr", "fr-CA", "fr ", "e", "eng"}) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_EQ(PlatformWording::string(key, lang), PlatformWording::string(key, "en")) << lang;
        }
        for (const auto key : allCases<PlatformKey>()) {
            EXPECT_EQ(PlatformWording::string(key, lang), PlatformWording::string(key, "en")) << lang;
        }
    }
}

TEST(PlatformWording, AKeyThatIsNoneOfTheCasesReadsItsRawValueWhichIsEmpty) {
    for (const auto key : {131, 4000, -1}) {
        for (const auto* const lang : {"en", "fr", "xx"}) {
            EXPECT_EQ(PlatformWording::string(static_cast<LocKey>(key), lang), "");
            EXPECT_EQ(PlatformWording::string(static_cast<PlatformKey>(key), lang), "");
        }
    }
}

TEST(PlatformWording, ATextOutlivesTheCode) {
    const auto replaced = PlatformWording::string(LocKey::openFocus, std::string("fr"));
    const auto own = PlatformWording::string(PlatformKey::noTray, std::string("fr"));
    EXPECT_EQ(replaced.data(), PlatformWording::string(LocKey::openFocus, "fr").data());
    EXPECT_EQ(own.data(), PlatformWording::string(PlatformKey::noTray, "fr").data());
}

class PlatformWordingTypography : public testing::TestWithParam<Typography> {
protected:
    /// Every text that the module adds, with its English form.
    static std::vector<std::pair<std::string, std::string>> textsOf(std::string_view lang) {
        std::vector<std::pair<std::string, std::string>> texts;
        texts.reserve(replacements.size() + allCases<PlatformKey>().size());
        for (const auto& replacement : replacements) {
            texts.emplace_back(PlatformWording::string(replacement.key, lang),
                               PlatformWording::string(replacement.key, "en"));
        }
        for (const auto key : allCases<PlatformKey>()) {
            texts.emplace_back(PlatformWording::string(key, lang), PlatformWording::string(key, "en"));
        }
        return texts;
    }
};

TEST_P(PlatformWordingTypography, KeepsToItsMarks) {
    const auto& [code, fullStop, forbidden] = GetParam();
    for (const auto& [text, english] : textsOf(code)) {
        for (const auto mark : forbidden) {
            EXPECT_THAT(text, Not(HasSubstr(std::string(mark))));
        }
    }
}

TEST_P(PlatformWordingTypography, NoTextIsEmptyOrHoldsStrayWhiteSpace) {
    for (auto [text, english] : textsOf(GetParam().code)) {
        EXPECT_NE(text, "") << english;
        EXPECT_FALSE(std::ranges::any_of(text, [](unsigned char byte) {
            return byte < 0x20U || byte == 0x7FU;
        })) << text;
        for (auto at = text.find("\u00A0"); at != std::string::npos; at = text.find("\u00A0")) {
            text.replace(at, std::string_view("\u00A0").size(), " ");
        }
        EXPECT_FALSE(text.starts_with(' ') || text.ends_with(' ')) << text;
        EXPECT_THAT(text, Not(HasSubstr("  ")));
        for (const auto* const unseen : {"\u200B", "\u2009", "\u202F", "\u3000", "\uFEFF"}) {
            EXPECT_THAT(text, Not(HasSubstr(unseen)));
        }
    }
}

TEST_P(PlatformWordingTypography, SentencesEndWhereTheEnglishOnesDo) {
    const auto& [code, fullStop, forbidden] = GetParam();
    for (const auto& [text, english] : textsOf(code)) {
        EXPECT_EQ(text.ends_with(fullStop), english.ends_with('.')) << text;
        EXPECT_EQ(text.ends_with("…"), english.ends_with("…")) << text;
    }
    for (const auto key : allCases<PlatformKey>()) {
        // The names of buttons and the titles come after the sentences.
        const bool isSentence = key < PlatformKey::mirrorPicture;
        EXPECT_EQ(PlatformWording::string(key, code).ends_with(fullStop), isSentence)
            << code << ' ' << rawValue(key);
    }
}

TEST_P(PlatformWordingTypography, MarksComeInPairsAndWithTheirSpaces) {
    const auto& code = GetParam().code;
    for (const auto& [text, english] : textsOf(code)) {
        for (const auto& [open, close] : {std::pair{"«", "»"}, {"‘", "’"}, {"“", "”"}, {"(", ")"}}) {
            // The French apostrophe looks like a closing mark.
            if (code != "fr" || std::string_view(open) != "‘") {
                EXPECT_EQ(count(text, open), count(text, close)) << text;
            }
        }
        if (code == "es") {
            EXPECT_EQ(count(text, "¿"), count(text, "?")) << text;
            EXPECT_EQ(count(text, "¡"), count(text, "!")) << text;
        }
        if (code == "fr") {
            for (const std::string mark : {"?", "!", ":", ";"}) {
                EXPECT_EQ(count(text, mark), count(text, "\u00A0" + mark)) << text;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, PlatformWordingTypography, testing::ValuesIn(typographies));

} // namespace
