#pragma once

#include "core/UserDefaults.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace TestSupport {

/// What every store of user defaults does. A world has `defaults` and, from outside of them,
/// `put(key, bytes)`, `putUnreadable(key)`, `stored(key)` and `copies(key)`, the texts of the copies kept,
/// the oldest first, with any text for one that cannot be read.
template <class World>
struct UserDefaultsContract : testing::Test {
    World world;
    CurtainCore::UserDefaults& defaults = world.defaults;
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, NothingIsThereAtFirst) {
    EXPECT_FALSE(this->defaults.contains("key"));
    EXPECT_EQ(this->defaults.data("key"), std::nullopt);
    EXPECT_EQ(this->defaults.string("key"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, DataIsStoredByteForByte) {
    for (const auto& bytes : {std::string("plain"), std::string("\0\xff\r\n", 4), std::string("line\n"),
                              std::string(), std::string(100000, 'x')}) {
        this->defaults.setData("key", bytes);
        EXPECT_TRUE(this->defaults.contains("key"));
        EXPECT_EQ(this->defaults.data("key"), bytes);
        EXPECT_EQ(this->world.stored("key"), bytes);
    }
}

TYPED_TEST_P(UserDefaultsContract, TextIsStoredAsItIs) {
    this->defaults.setString("key", "Grüße, 你好\n");
    EXPECT_EQ(this->world.stored("key"), "Grüße, 你好\n");
    EXPECT_EQ(this->defaults.string("key"), "Grüße, 你好\n");
    EXPECT_EQ(this->defaults.data("key"), "Grüße, 你好\n");
}

TYPED_TEST_P(UserDefaultsContract, ABooleanIsStoredAsTrueOrFalse) {
    this->defaults.setBool("key", true);
    EXPECT_EQ(this->world.stored("key"), "true");
    this->defaults.setBool("key", false);
    EXPECT_EQ(this->world.stored("key"), "false");
    EXPECT_EQ(this->defaults.string("key"), "false");
}

TYPED_TEST_P(UserDefaultsContract, KeysStandApart) {
    this->defaults.setString("key", "1");
    this->defaults.setString("key.more", "2");
    this->defaults.setString("Key", "3");
    EXPECT_EQ(this->defaults.string("key"), "1");
    EXPECT_EQ(this->defaults.string("key.more"), "2");
    EXPECT_EQ(this->defaults.string("Key"), "3");
}

TYPED_TEST_P(UserDefaultsContract, RemovingTakesOneKeyAway) {
    this->defaults.setString("key", "value");
    this->defaults.setString("other", "value");
    this->defaults.remove("key");
    this->defaults.remove("never there");
    EXPECT_FALSE(this->defaults.contains("key"));
    EXPECT_EQ(this->defaults.data("key"), std::nullopt);
    EXPECT_EQ(this->defaults.string("other"), "value");
}

TYPED_TEST_P(UserDefaultsContract, ChangesFromOutsideAreSeenAtOnce) {
    this->defaults.setString("key", "mine");
    this->world.put("key", "theirs");
    EXPECT_EQ(this->defaults.string("key"), "theirs");
}

TYPED_TEST_P(UserDefaultsContract, BytesThatAreNoTextAreAbsentAsText) {
    for (const auto* bytes : {"\xff", "a\x80", "\xc3", "\xc3(", "\xe2\x82", "\xf0\x9f\x98", "\xc0\x80",
                              "\xe0\x80\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80"}) {
        this->world.put("key", bytes);
        EXPECT_TRUE(this->defaults.contains("key"));
        EXPECT_EQ(this->defaults.string("key"), std::nullopt) << testing::PrintToString(bytes);
        EXPECT_EQ(this->defaults.data("key"), bytes);
    }
}

TYPED_TEST_P(UserDefaultsContract, EveryCharacterIsText) {
    for (const auto* text : {"", "~", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                             "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        this->world.put("key", text);
        EXPECT_EQ(this->defaults.string("key"), text);
    }
}

TYPED_TEST_P(UserDefaultsContract, AnUnreadableValueIsThereButAbsent) {
    this->world.putUnreadable("key");
    EXPECT_TRUE(this->defaults.contains("key"));
    EXPECT_EQ(this->defaults.data("key"), std::nullopt);
    EXPECT_EQ(this->defaults.string("key"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, AnUnreadableValueGivesWayToANewOne) {
    this->world.putUnreadable("key");
    this->defaults.setString("key", "new");
    EXPECT_EQ(this->defaults.string("key"), "new");
    EXPECT_EQ(this->world.stored("key"), "new");
}

TYPED_TEST_P(UserDefaultsContract, AnUnreadableValueCanBeRemoved) {
    this->world.putUnreadable("key");
    this->defaults.remove("key");
    EXPECT_FALSE(this->defaults.contains("key"));
}

TYPED_TEST_P(UserDefaultsContract, ACopyOutlastsTheValue) {
    this->world.put("key", "\xff damaged");
    this->defaults.keepCopy("key");
    EXPECT_EQ(this->defaults.data("key"), "\xff damaged");
    this->defaults.setString("key", "new");
    this->defaults.remove("key");
    EXPECT_THAT(this->world.copies("key"), testing::ElementsAre("\xff damaged"));
}

TYPED_TEST_P(UserDefaultsContract, NoCopyReplacesAnOlderOne) {
    for (const auto* bytes : {"first", "second", "second"}) {
        this->world.put("key", bytes);
        this->defaults.keepCopy("key");
    }
    EXPECT_THAT(this->world.copies("key"), testing::ElementsAre("first", "second"));
}

TYPED_TEST_P(UserDefaultsContract, ACopyMadeAtOnceHasANameAndLeavesTheValue) {
    this->world.put("key", "first");
    EXPECT_EQ(this->defaults.copyNow("key"), "key.damaged-1");
    this->world.put("key", "second");
    EXPECT_EQ(this->defaults.copyNow("key"), "key.damaged-2");
    EXPECT_EQ(this->defaults.copyNow("key"), "key.damaged-2") << "it is there already";
    this->world.put("key", "first");
    EXPECT_EQ(this->defaults.copyNow("key"), "key.damaged-1");
    this->defaults.keepCopy("key");
    EXPECT_EQ(this->defaults.data("key"), "first");
    EXPECT_THAT(this->world.copies("key"), testing::ElementsAre("first", "second"));
}

TYPED_TEST_P(UserDefaultsContract, WhatCannotBeReadIsNotCopiedAtOnceAndStays) {
    EXPECT_EQ(this->defaults.copyNow("key"), std::nullopt);
    this->world.putUnreadable("key");
    EXPECT_EQ(this->defaults.copyNow("key"), std::nullopt);
    EXPECT_TRUE(this->defaults.contains("key"));
    EXPECT_THAT(this->world.copies("key"), testing::IsEmpty());
}

TYPED_TEST_P(UserDefaultsContract, WhereNothingIsNothingIsKept) {
    this->defaults.keepCopy("key");
    this->defaults.setString("key", "value");
    EXPECT_THAT(this->world.copies("key"), testing::IsEmpty());
}

TYPED_TEST_P(UserDefaultsContract, AnUnreadableValueIsKeptByMovingIt) {
    this->world.put("key", "first");
    this->defaults.keepCopy("key");
    this->world.putUnreadable("key");
    this->defaults.keepCopy("key");
    EXPECT_FALSE(this->defaults.contains("key"));
    EXPECT_THAT(this->world.copies("key"), testing::ElementsAre("first", testing::_));
    this->defaults.setString("key", "new");
    EXPECT_EQ(this->defaults.string("key"), "new");
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, NothingIsThereAtFirst, DataIsStoredByteForByte,
                            TextIsStoredAsItIs, ABooleanIsStoredAsTrueOrFalse, KeysStandApart,
                            RemovingTakesOneKeyAway, ChangesFromOutsideAreSeenAtOnce,
                            BytesThatAreNoTextAreAbsentAsText, EveryCharacterIsText,
                            AnUnreadableValueIsThereButAbsent, AnUnreadableValueGivesWayToANewOne,
                            AnUnreadableValueCanBeRemoved, ACopyOutlastsTheValue, NoCopyReplacesAnOlderOne,
                            ACopyMadeAtOnceHasANameAndLeavesTheValue,
                            WhatCannotBeReadIsNotCopiedAtOnceAndStays, WhereNothingIsNothingIsKept,
                            AnUnreadableValueIsKeptByMovingIt);

} // namespace TestSupport
