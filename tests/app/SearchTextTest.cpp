#include "Curtain/SearchText.h"

#include <gtest/gtest.h>

namespace {

using Curtain::SearchText;

bool finds(const char* query, const char* name, const char* lang = "en") {
    return SearchText(QString::fromUtf8(name), lang).contains(SearchText(QString::fromUtf8(query), lang));
}

TEST(SearchText, CaseDoesNotMatter) {
    EXPECT_TRUE(finds("zo", "Zoom"));
    EXPECT_TRUE(finds("OOM", "Zoom"));
    EXPECT_TRUE(finds("пОЧ", "Почта"));
    EXPECT_TRUE(finds("ΣΊΓΜΑΣ", "σίγμας"));
    EXPECT_FALSE(finds("zoo", "Zo"));
    EXPECT_FALSE(finds("zm", "Zoom"));
}

TEST(SearchText, ALetterWithoutAnAccentFindsThoseWithOneButNotTheReverse) {
    EXPECT_TRUE(finds("cafe", "Café"));
    EXPECT_TRUE(finds("CAFÉ", "café"));
    EXPECT_TRUE(finds("resume", "Résumé"));
    EXPECT_TRUE(finds("é", "Éditeur"));
    EXPECT_FALSE(finds("é", "Editor"));
    EXPECT_FALSE(finds("è", "Éditeur"));
    EXPECT_TRUE(finds("ang", "Ångström"));
}

TEST(SearchText, AnAccentMayBeWrittenInTwoWays) {
    EXPECT_TRUE(finds("e\u0301", "\u00E9"));
    EXPECT_TRUE(finds("\u00E9", "e\u0301"));
    EXPECT_TRUE(finds("e", "e\u0301"));
    EXPECT_FALSE(finds("\u0301", "e"));
}

TEST(SearchText, SharpSIsTwoLettersToo) {
    EXPECT_TRUE(finds("strasse", "Straße"));
    EXPECT_TRUE(finds("STRASSE", "Straße"));
    EXPECT_TRUE(finds("straße", "Strasse"));
    EXPECT_TRUE(finds("STRAẞE", "Straße"));
}

TEST(SearchText, TurkishHasTwoKindsOfI) {
    EXPECT_TRUE(finds("izmir", "İzmir", "tr"));
    EXPECT_TRUE(finds("İZ", "izmir", "tr"));
    EXPECT_TRUE(finds("ışık", "IŞIK", "tr"));
    EXPECT_TRUE(finds("I", "ışık", "az"));
    EXPECT_FALSE(finds("ı", "İzmir", "tr"));
    EXPECT_FALSE(finds("ışık", "IŞIK", "en"));
    EXPECT_TRUE(finds("inks", "Inkscape", "tr")) << "programs have English names there too";
}

TEST(SearchText, OtherScriptsAreComparedAsTheirReadersDo) {
    EXPECT_TRUE(finds("क", "कैलेंडर"));
    EXPECT_TRUE(finds("कैलें", "कैलेंडर"));
    EXPECT_TRUE(finds("كتاب", "كِتَاب")) << "without the signs for vowels";
    EXPECT_TRUE(finds("كتاب", "كتـــاب")) << "however long it is drawn";
    EXPECT_TRUE(finds("日", "日历"));
    EXPECT_TRUE(finds("zoom", "ＺＯＯＭ"));
    EXPECT_TRUE(finds("file", "ﬁle"));
}

TEST(SearchText, WhatCannotBeSeenDoesNotMatter) {
    EXPECT_TRUE(finds("zoom", "zo\u00ADom"));
    EXPECT_TRUE(finds("zoom", "\u200Fzoom\u200E"));
    EXPECT_TRUE(finds("😀", "Smile 😀"));
}

TEST(SearchText, NothingIsFoundInNothing) {
    EXPECT_FALSE(finds("a", ""));
    EXPECT_FALSE(SearchText().contains(SearchText(QStringLiteral("a"), "tr")));
    EXPECT_FALSE(finds("", "a")) << "an empty query is not searched for";
}

} // namespace
