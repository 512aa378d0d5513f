#include "Curtain/AppChoiceModel.h"

#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeLoginItem.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FakeWorkspace.h"

#include <gmock/gmock.h>

namespace {

using Curtain::CatalogEntry;
using testing::ElementsAre;
using testing::IsEmpty;

struct AppChoiceModelTest : testing::Test {
    TestSupport::MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store{defaults};
    TestSupport::FakeLocale locale;
    TestSupport::FakeLoginItem loginItem;
    TestSupport::RecordingLog log;
    TestSupport::FakeWorkspace workspace;
    TestSupport::FakeInstallation installation;
    Curtain::SettingsModel settings{store, locale, loginItem, log};
    Curtain::AppCatalog catalog{workspace, installation, installation, {{}, "app"}};
    Curtain::AppChoiceModel model{settings, catalog, "en"};

    AppChoiceModelTest() { model.setEntries({{"a", "Calendar"}, {"b", "Zoom"}, {"c", "Zoo\nBook"}}); }

    QVariant value(int row, const char* role) const {
        return model.data(model.index(row), model.roleNames().key(role));
    }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (int row = 0; row < model.rowCount(); ++row) {
            names.push_back(value(row, "name").toString().toStdString());
        }
        return names;
    }
};

TEST_F(AppChoiceModelTest, AnEmptyQueryShowsEverythingInOrder) {
    EXPECT_THAT(names(), ElementsAre("Calendar", "Zoom", "Zoo Book"));
    model.setQuery("zo");
    model.setQuery("");
    EXPECT_THAT(names(), ElementsAre("Calendar", "Zoom", "Zoo Book"));
}

TEST_F(AppChoiceModelTest, AQueryShowsTheNamesThatHoldIt) {
    model.setQuery("zo");
    EXPECT_THAT(names(), ElementsAre("Zoom", "Zoo Book"));
    model.setQuery("zoom");
    EXPECT_THAT(names(), ElementsAre("Zoom"));
    model.setQuery("xyz");
    EXPECT_THAT(names(), IsEmpty());
    model.setQuery("CAL");
    EXPECT_THAT(names(), ElementsAre("Calendar"));
}

TEST_F(AppChoiceModelTest, TheQueryStaysWhenTheEntriesChange) {
    model.setQuery("zo");
    model.setEntries({{"d", "Ozone"}, {"e", "Mail"}});
    EXPECT_THAT(names(), ElementsAre("Ozone"));
}

TEST_F(AppChoiceModelTest, RowsAreToggledAsTheyAreShown) {
    model.setQuery("zo");
    model.toggle(0);
    EXPECT_THAT(store.load().targetApps, ElementsAre(CurtainCore::TargetApp{"b", "Zoom"}));
    EXPECT_TRUE(value(0, "isSelected").toBool());
    EXPECT_FALSE(value(1, "isSelected").toBool());
    model.toggle(2);
    model.toggle(-1);
    EXPECT_THAT(store.load().targetApps, testing::SizeIs(1));
}

TEST_F(AppChoiceModelTest, MissingAppsComeFirstSaySoAndAreGivenBackUnderTheirName) {
    store.save([&] {
        auto preferences = store.load();
        preferences.targetApps = {{"gone", "Old Chat"}};
        return preferences;
    }());
    settings.reload();
    model.setEntries({{"a", "Calendar"}}, {{"gone", "Old Chat"}});
    EXPECT_THAT(names(), ElementsAre("Old Chat — Not installed", "Calendar"));
    EXPECT_TRUE(value(0, "isSelected").toBool());
    model.toggle(0);
    EXPECT_THAT(store.load().targetApps, IsEmpty());
    EXPECT_THAT(names(), ElementsAre("Old Chat — Not installed", "Calendar")) << "for a second thought";
    model.toggle(0);
    EXPECT_THAT(store.load().targetApps, ElementsAre(CurtainCore::TargetApp{"gone", "Old Chat"}));
    model.setQuery("cal");
    EXPECT_THAT(names(), ElementsAre("Calendar"));
    model.setQuery("");
    model.setEntries({{"gone", "Old Chat"}, {"a", "Calendar"}});
    EXPECT_THAT(names(), ElementsAre("Old Chat", "Calendar"));
}

TEST_F(AppChoiceModelTest, ASelectionIsToldWithoutMovingTheList) {
    int resets = 0;
    int changes = 0;
    QObject::connect(&model, &QAbstractItemModel::modelReset, [&] { ++resets; });
    QObject::connect(&model, &QAbstractItemModel::dataChanged, [&] { ++changes; });
    model.toggle(1);
    EXPECT_EQ(resets, 0);
    EXPECT_EQ(changes, 1);
    model.setEntries({{"a", "Calendar"}, {"b", "Zoom"}, {"c", "Zoo\nBook"}});
    EXPECT_EQ(resets, 0) << "the same entries again";
}

TEST_F(AppChoiceModelTest, IconsAreAddressesOfImages) {
    workspace.urls["a"] = "/apps/a";
    workspace.icons["/apps/a"].source = "/pictures/a b%.png";
    EXPECT_EQ(value(0, "icon").toString(), "image://icon/%2Fpictures%2Fa%20b%25.png");
    EXPECT_EQ(value(1, "icon").toString(), "");
}

} // namespace
