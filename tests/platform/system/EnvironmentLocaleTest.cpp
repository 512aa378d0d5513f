#include "platform/linux/system/EnvironmentLocale.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using Variables = std::map<std::string, std::string>;

std::string languageIn(const Variables& variables) {
    LinuxPlatform::EnvironmentLocale locale([&](const char* name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    });
    return locale.preferredLanguageCode();
}

TEST(EnvironmentLocale, NothingSetIsEnglish) {
    EXPECT_EQ(languageIn({}), "en");
    EXPECT_EQ(languageIn({{"LANG", ""}, {"LC_ALL", ""}}), "en");
    EXPECT_EQ(languageIn({{"LANGUAGE", "fr"}}), "en") << "there is no locale that it could refine";
}

TEST(EnvironmentLocale, RegionEncodingAndModifierAreLeftOut) {
    EXPECT_EQ(languageIn({{"LANG", "pt_BR.UTF-8"}}), "pt");
    EXPECT_EQ(languageIn({{"LANG", "ru.KOI8-R"}}), "ru");
    EXPECT_EQ(languageIn({{"LANG", "fr_FR@euro"}}), "fr");
    EXPECT_EQ(languageIn({{"LANG", "zh-Hans"}}), "zh");
    EXPECT_EQ(languageIn({{"LANG", "ast_ES"}}), "ast");
}

TEST(EnvironmentLocale, MoreParticularVariablesWin) {
    EXPECT_EQ(languageIn({{"LANG", "es_ES"}, {"LC_MESSAGES", "fr_FR"}}), "fr");
    EXPECT_EQ(languageIn({{"LANG", "es_ES"}, {"LC_MESSAGES", "fr_FR"}, {"LC_ALL", "ru_RU"}}), "ru");
    EXPECT_EQ(languageIn({{"LANG", "es_ES"}, {"LC_ALL", ""}}), "es") << "empty counts as not set";
}

TEST(EnvironmentLocale, TheFirstLanguageOfTheListWins) {
    EXPECT_EQ(languageIn({{"LANG", "es_ES.UTF-8"}, {"LANGUAGE", "ar_EG:fr"}}), "ar");
    EXPECT_EQ(languageIn({{"LANG", "es_ES.UTF-8"}, {"LANGUAGE", ""}}), "es");
    EXPECT_EQ(languageIn({{"LANG", "es_ES.UTF-8"}, {"LANGUAGE", ":fr"}}), "es");
}

TEST(EnvironmentLocale, TheLocaleWithoutLanguagesIsEnglish) {
    EXPECT_EQ(languageIn({{"LANG", "C"}, {"LANGUAGE", "fr"}}), "en");
    EXPECT_EQ(languageIn({{"LC_ALL", "POSIX"}, {"LANG", "fr_FR"}}), "en");
    EXPECT_EQ(languageIn({{"LANG", "C.UTF-8"}}), "en");
    EXPECT_EQ(languageIn({{"LANG", "C.UTF-8"}, {"LANGUAGE", "hi"}}), "hi");
}

} // namespace
