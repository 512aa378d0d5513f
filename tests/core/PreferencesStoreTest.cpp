#include "core/PreferencesStore.h"

#include "tests/support/MemoryUserDefaults.h"

#include <gmock/gmock.h>

namespace {

using CurtainCore::AppLanguage;
using CurtainCore::Preferences;
using CurtainCore::PreferencesDamage;
using CurtainCore::PreferencesStore;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::MemoryUserDefaults;

constexpr auto key = "curtain.preferences.v1";

struct PreferencesStoreTest : testing::Test {
    MemoryUserDefaults defaults;
    PreferencesStore store{defaults};
};

TEST_F(PreferencesStoreTest, EmptyStoreLoadsTheDefaultsAndWritesNothing) {
    EXPECT_EQ(store.load(), Preferences{});
    EXPECT_EQ(defaults.writes, 0);
}

TEST_F(PreferencesStoreTest, SavedRecordIsLoadedAgain) {
    Preferences preferences;
    preferences.language = AppLanguage::fr;
    preferences.targetApps = {{"a", "A"}};
    store.save(preferences);
    EXPECT_EQ(store.load(), preferences);
    EXPECT_EQ(PreferencesStore(defaults).load(), preferences);
    EXPECT_THAT(defaults.copies, IsEmpty());
}

TEST_F(PreferencesStoreTest, EveryLoadReadsAgain) {
    store.load();
    defaults.values[key] = R"({"hasOnboarded": true})";
    EXPECT_TRUE(store.load().hasOnboarded);
    defaults.values.erase(key);
    EXPECT_FALSE(store.load().hasOnboarded);
}

TEST_F(PreferencesStoreTest, AnActionReadsOnceAndAgainAfterASave) {
    {
        const PreferencesStore::Action action(store);
        const PreferencesStore::Action part(store);
        store.load();
        defaults.values[key] = R"({"hasOnboarded": true})";
        EXPECT_FALSE(store.load().hasOnboarded);
        EXPECT_EQ(defaults.reads[key], 1);
        Preferences preferences;
        preferences.language = AppLanguage::fr;
        store.save(preferences);
        EXPECT_EQ(store.load(), preferences);
    }
    defaults.values[key] = R"({"hasOnboarded": true})";
    EXPECT_TRUE(store.load().hasOnboarded);
    const PreferencesStore::Action next(store);
    defaults.values.erase(key);
    EXPECT_FALSE(store.load().hasOnboarded);
}

TEST_F(PreferencesStoreTest, APartThatEndsLeavesTheActionWhatWasRead) {
    const PreferencesStore::Action action(store);
    store.load();
    { const PreferencesStore::Action part(store); }
    store.load();
    EXPECT_EQ(defaults.reads[key], 1);
}

TEST_F(PreferencesStoreTest, BadDocumentLosesEverySettingButStaysStored) {
    const std::string document = R"({"hasOnboarded": true, "language": "de"})";
    defaults.values[key] = document;
    EXPECT_EQ(store.load(), Preferences{});
    EXPECT_EQ(defaults.values[key], document);
    EXPECT_EQ(defaults.writes, 0);
}

TEST_F(PreferencesStoreTest, ABadDocumentIsToldOnceWithTheNameOfItsCopy) {
    int told = 0;
    store.onDamage = [&] { ++told; };
    store.load();
    EXPECT_EQ(store.damage(), std::nullopt) << "nothing is stored, and nothing damaged";
    defaults.values[key] = "not json";
    store.load();
    store.load();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(store.damage(), (PreferencesDamage{"curtain.preferences.v1.damaged-1"}));
    EXPECT_THAT(defaults.copies, ElementsAre("not json"));
    defaults.values[key] = "no json either";
    store.load();
    EXPECT_EQ(told, 2);
    EXPECT_EQ(store.damage(), (PreferencesDamage{"curtain.preferences.v1.damaged-2"}));
    store.save({});
    store.load();
    EXPECT_EQ(told, 2);
    EXPECT_TRUE(store.damage()) << "what was lost stays lost";
    EXPECT_THAT(defaults.copies, ElementsAre("not json", "no json either"));
}

TEST_F(PreferencesStoreTest, ADocumentThatCannotBeReadIsToldWithoutACopyAndStays) {
    int told = 0;
    store.onDamage = [&] { ++told; };
    defaults.values[key] = R"({"hasOnboarded": true})";
    defaults.unreadable.insert(key);
    store.load();
    store.load();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(store.damage(), PreferencesDamage{});
    EXPECT_TRUE(defaults.contains(key));
    EXPECT_THAT(defaults.copies, IsEmpty());
}

TEST_F(PreferencesStoreTest, ADocumentThatIsReadAfterAllHasNoDamage) {
    int told = 0;
    store.onDamage = [&] { ++told; };
    defaults.values[key] = R"({"hasOnboarded": true})";
    defaults.unreadable.insert(key);
    store.load();
    defaults.unreadable.clear();
    EXPECT_TRUE(store.load().hasOnboarded);
    EXPECT_EQ(store.damage(), std::nullopt);
    defaults.unreadable.insert(key);
    store.load();
    EXPECT_EQ(store.damage(), PreferencesDamage{});
    EXPECT_EQ(told, 2) << "it went away in between";
}

TEST_F(PreferencesStoreTest, ASaveInPlaceOfAnUnreadableDocumentIsNoMendOfIt) {
    defaults.values[key] = R"({"hasOnboarded": true})";
    defaults.unreadable.insert(key);
    store.load();
    store.save({});
    store.load();
    EXPECT_EQ(store.damage(), PreferencesDamage{}) << "what was lost stays lost";
}

TEST_F(PreferencesStoreTest, TheNextSaveKeepsACopyOfABadDocument) {
    defaults.values[key] = "not json";
    store.save({});
    EXPECT_THAT(defaults.copies, ElementsAre("not json"));
    EXPECT_EQ(store.load(), Preferences{});
    store.save({});
    EXPECT_EQ(defaults.copies.size(), 1U);
}

TEST_F(PreferencesStoreTest, TheNextSaveKeepsACopyOfAnUnreadableDocument) {
    defaults.values[key] = R"({"hasOnboarded": true})";
    defaults.unreadable.insert(key);
    EXPECT_EQ(store.load(), Preferences{});
    Preferences preferences;
    preferences.launchAtLogin = true;
    store.save(preferences);
    EXPECT_EQ(defaults.copies.size(), 1U);
    EXPECT_EQ(store.load(), preferences);
}

TEST_F(PreferencesStoreTest, TheNextSaveKeepsACopyOfADocumentOfALaterVersion) {
    const std::string document = R"({"hasOnboarded": true, "invented": {"later": 1}})";
    defaults.values[key] = document;
    auto preferences = store.load();
    EXPECT_TRUE(preferences.hasOnboarded);
    EXPECT_THAT(defaults.copies, IsEmpty()) << "nothing is lost by reading";
    preferences.showCameraPreview = false;
    store.save(preferences);
    preferences.showCameraPreview = true;
    store.save(preferences);
    EXPECT_THAT(defaults.copies, ElementsAre(document));
    EXPECT_EQ(store.load(), preferences);
    EXPECT_EQ(store.damage(), std::nullopt);
}

TEST_F(PreferencesStoreTest, RecordThatCannotBeEncodedChangesNothing) {
    Preferences good;
    good.hasOnboarded = true;
    store.save(good);
    auto bad = good;
    bad.targetApps = {{"\xc3\x28", "broken"}};
    store.save(bad);
    EXPECT_EQ(store.load(), good);
}

} // namespace
