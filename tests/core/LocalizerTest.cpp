#include "core/Localizer.h"

#include "tests/support/EnglishTexts.h"
#include "tests/support/Typography.h"

#include <gmock/gmock.h>

#include <future>
#include <unordered_set>

namespace {

using namespace CurtainCore;
using testing::HasSubstr;
using testing::Not;
using TestSupport::count;
using TestSupport::englishTexts;
using TestSupport::typographies;
using TestSupport::Typography;

constexpr std::array<std::string_view, 8> codes{"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"};

std::string_view text(LocKey key, std::string_view lang) {
    return Localizer().string(key, lang);
}

TEST(LocKey, NamesComeInTheOrderOfTheTexts) {
    const auto keys = allCases<LocKey>();
    ASSERT_EQ(keys.size(), englishTexts.size());
    for (std::size_t index = 0; index < keys.size(); ++index) {
        EXPECT_EQ(static_cast<std::size_t>(keys[index]), index);
        EXPECT_EQ(rawValue(keys[index]), englishTexts[index].key);
        EXPECT_EQ(fromRawValue<LocKey>(englishTexts[index].key), keys[index]);
    }
}

TEST(LocKey, RawValuesMatchExactly) {
    for (const auto* const name : {"", " ", "ReadyForCall", "READYFORCALL", "readyforcall", " readyForCall",
                                   "readyForCall ", "ready", "en"}) {
        EXPECT_EQ(fromRawValue<LocKey>(name), std::nullopt) << name;
    }
    EXPECT_EQ(rawValue(static_cast<LocKey>(131)), "");
    EXPECT_EQ(rawValue(static_cast<LocKey>(-1)), "");
}

TEST(LocKey, IsHashable) {
    const auto keys = allCases<LocKey>();
    EXPECT_EQ((std::unordered_set<LocKey>(keys.begin(), keys.end()).size()), 131U);
}

TEST(LocalizerResolve, ASupportedSystemLanguageIsUsed) {
    for (const auto code : codes) {
        EXPECT_EQ(Localizer::resolve(AppLanguage::system, code), code);
    }
}

TEST(LocalizerResolve, AnythingElseFallsBackToEnglish) {
    for (const auto* const system :
         {"de", "", "system", "pt-BR", "pt_BR", "EN", "Fr", " fr", "fr ", "f", "fra", "xx"}) {
        EXPECT_EQ(Localizer::resolve(AppLanguage::system, system), "en") << system;
    }
}

TEST(LocalizerResolve, AChoiceWinsOverTheSystem) {
    for (const auto language : allCases<AppLanguage>()) {
        if (language == AppLanguage::system) {
            continue;
        }
        for (const auto* const system : {"fr", "de", ""}) {
            EXPECT_EQ(Localizer::resolve(language, system), rawValue(language));
        }
    }
    EXPECT_EQ(Localizer::resolve(AppLanguage::ru, "fr"), "ru");
}

TEST(LocalizerResolve, AChoiceThatIsNoneOfTheCasesIsEnglish) {
    EXPECT_EQ(Localizer::resolve(static_cast<AppLanguage>(9), "fr"), "en");
    EXPECT_EQ(Localizer::resolve(static_cast<AppLanguage>(-1), "fr"), "en");
}

TEST(LocalizerResolve, TheCodeOutlivesTheArgument) {
    std::string_view code;
    {
        const std::string system = "fr";
        code = Localizer::resolve(AppLanguage::system, system);
    }
    EXPECT_EQ(code, "fr");
}

TEST(Localizer, EnglishIsAsWrittenDownApart) {
    for (const auto& [key, english] : englishTexts) {
        EXPECT_EQ(text(fromRawValue<LocKey>(key).value(), "en"), english);
    }
}

TEST(Localizer, TellingTextsOfTheOtherLanguages) {
    EXPECT_EQ(text(LocKey::readyForCall, "es"), "¿Listo para tu llamada?");
    EXPECT_EQ(text(LocKey::readyForCall, "zh"), "准备好通话了吗？");
    EXPECT_EQ(text(LocKey::readyForCall, "fr"), "Prêt pour votre appel ?");
    EXPECT_EQ(text(LocKey::readyForCall, "ru"), "Готовы к звонку?");
    EXPECT_EQ(text(LocKey::fixEverything, "es"), "Arreglar todo");
    EXPECT_EQ(text(LocKey::fixEverything, "zh"), "一键修复");
    EXPECT_EQ(text(LocKey::fixEverything, "fr"), "Tout corriger");
    EXPECT_EQ(text(LocKey::fixEverything, "ru"), "Исправить всё");
    EXPECT_EQ(text(LocKey::embarrassmentScore, "es"), "Nivel de riesgo");
    EXPECT_EQ(text(LocKey::embarrassmentScore, "zh"), "尴尬指数");
    EXPECT_EQ(text(LocKey::embarrassmentScore, "fr"), "Niveau de risque");
    EXPECT_EQ(text(LocKey::embarrassmentScore, "ru"), "Уровень риска");
    EXPECT_EQ(text(LocKey::embarrassmentScore, "pt"), "Nível de risco");
    EXPECT_EQ(text(LocKey::cancel, "es"), "Volver");
    EXPECT_EQ(text(LocKey::cancel, "zh"), "返回");
    EXPECT_EQ(text(LocKey::cancel, "fr"), "Retour");
    EXPECT_EQ(text(LocKey::cancel, "ru"), "Назад");
}

TEST(Localizer, AnUnknownLanguageReadsEnglish) {
    for (const auto* const lang : {"xx", "", "system", "EN", "Fr", "fr-CA", "e", "eng"}) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_EQ(text(key, lang), text(key, "en")) << lang;
        }
    }
    EXPECT_EQ(text(LocKey::readyForCall, "xx"), "Ready for your call?");
}

TEST(Localizer, AKeyThatIsNoneOfTheCasesReadsItsRawValueWhichIsEmpty) {
    for (const auto key : {131, 4000, -1}) {
        EXPECT_EQ(text(static_cast<LocKey>(key), "en"), "");
        EXPECT_EQ(text(static_cast<LocKey>(key), "xx"), "");
    }
}

TEST(Localizer, EveryLanguageHasATextForEveryKey) {
    for (const auto code : codes) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_NE(text(key, code), "") << code << ' ' << rawValue(key);
            EXPECT_NE(text(key, code), rawValue(key)) << code;
        }
    }
}

TEST(Localizer, PlaceholdersAreThoseOfEnglish) {
    for (const auto code : codes) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_EQ(count(text(key, code), "%@"), key == LocKey::wizSummaryDesktop ? 1U : 0U)
                << code << ' ' << rawValue(key);
            EXPECT_EQ(count(text(key, code), "%"), count(text(key, code), "%@"))
                << code << ' ' << rawValue(key);
        }
    }
}

TEST(Localizer, ThreadsMayLookUpSideBySide) {
    const auto totalLength = [] {
        std::size_t length = 0;
        for (const auto code : codes) {
            for (const auto key : allCases<LocKey>()) {
                length += text(key, code).size();
            }
        }
        return length;
    };
    auto first = std::async(std::launch::async, totalLength);
    auto second = std::async(std::launch::async, totalLength);
    EXPECT_EQ(first.get(), second.get());
}

/// "Show desktop" is what desktops call the minimising of all windows.
TEST(Localizer, WhatHidesTheDesktopsIconsNamesThem) {
    constexpr auto icons = std::to_array<std::pair<std::string_view, std::string_view>>({{"es", "conos"},
                                                                                         {"zh", "图标"},
                                                                                         {"hi", "आइकन"},
                                                                                         {"ar", "يقونات"},
                                                                                         {"pt", "cones"},
                                                                                         {"fr", "cônes"},
                                                                                         {"ru", "начки"}});
    for (const auto& [code, word] : icons) {
        for (const auto key :
             {LocKey::hideDesktop, LocKey::showDesktop, LocKey::desktopHidden, LocKey::wizValidDesktop}) {
            EXPECT_THAT(std::string(text(key, code)), HasSubstr(std::string(word))) << rawValue(key);
        }
    }
}

TEST(Localizer, ButtonsOfOneWindowDiffer) {
    for (const auto code : codes) {
        std::unordered_set<std::string_view> texts;
        for (const auto key : {LocKey::recordTitle, LocKey::saveFile, LocKey::copyClip, LocKey::cancel,
                               LocKey::restore, LocKey::undo, LocKey::open, LocKey::takePhoto}) {
            EXPECT_TRUE(texts.insert(text(key, code)).second) << code << ' ' << text(key, code);
        }
    }
}

class LocalizerTypography : public testing::TestWithParam<Typography> {};

TEST_P(LocalizerTypography, KeepsToItsMarks) {
    const auto& [code, fullStop, forbidden] = GetParam();
    for (const auto key : allCases<LocKey>()) {
        for (const auto mark : forbidden) {
            EXPECT_THAT(std::string(text(key, code)), Not(HasSubstr(std::string(mark)))) << rawValue(key);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, LocalizerTypography, testing::ValuesIn(typographies));

TEST(LocalizerTypography, SpanishQuestionsOpenAndClose) {
    for (const auto key : allCases<LocKey>()) {
        const auto spanish = text(key, "es");
        EXPECT_EQ(count(spanish, "¿"), count(spanish, "?")) << rawValue(key);
        EXPECT_EQ(count(spanish, "¡"), count(spanish, "!")) << rawValue(key);
    }
}

TEST(LocalizerTypography, FrenchMarksFollowASpaceThatDoesNotBreak) {
    for (const auto key : allCases<LocKey>()) {
        const auto french = text(key, "fr");
        for (const auto mark : {"?", "!", ":", ";"}) {
            // The text of this key has a plain space.
            const auto* const space = key == LocKey::readyForCall ? " " : "\u00A0";
            EXPECT_EQ(count(french, mark), count(french, std::string(space) + mark)) << rawValue(key);
        }
    }
}

TEST(LocalizerTypography, EllipsesStandWhereEnglishHasThem) {
    for (const auto code : codes) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_EQ(text(key, code).ends_with("…"), text(key, "en").ends_with("…"))
                << code << ' ' << rawValue(key);
        }
    }
}

TEST(LocalizerTypography, SentencesAreSentencesInEveryLanguage) {
    for (const auto& [code, fullStop, forbidden] : typographies) {
        for (const auto key : allCases<LocKey>()) {
            EXPECT_EQ(text(key, code).ends_with(fullStop), text(key, "en").ends_with('.'))
                << code << ' ' << rawValue(key) << ' ' << text(key, code);
        }
    }
}

} // namespace
