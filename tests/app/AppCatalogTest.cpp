#include "Curtain/AppCatalog.h"

#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeWorkspace.h"

#include <QLocale>

#include <gmock/gmock.h>

#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using Curtain::CatalogEntry;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using TestSupport::FakeInstallation;
using TestSupport::FakeWorkspace;

/// The application folders of the home platform, for a user called u.
const Platform::ApplicationFolders homeFolders{
    {"/Applications", "/System/Applications", "/System/Applications/Utilities", "/Users/u/Applications"},
    "app"};

struct AppCatalogTest : testing::Test {
    AppCatalogTest() { QLocale::setDefault(QLocale(QLocale::English)); }

    FakeWorkspace workspace;
    FakeInstallation installation;
    Curtain::AppCatalog catalog{workspace, installation, installation, homeFolders};

    static Platform::Bundle bundle(std::optional<std::string> identifier,
                                   std::optional<std::string> name = {}) {
        Platform::Bundle result{std::move(identifier), {}};
        if (name) {
            result.infoDictionary["CFBundleName"] = *name;
        }
        return result;
    }
};

TEST_F(AppCatalogTest, RunningAppsAreThoseInTheTaskListWithAnIdentifier) {
    workspace.run("regular");
    workspace.run("accessory").policy = Platform::ActivationPolicy::accessory;
    workspace.run("background").policy = Platform::ActivationPolicy::prohibited;
    workspace.run(std::nullopt).name = "No identifier";
    EXPECT_THAT(catalog.runningApps(), ElementsAre(CatalogEntry{"regular", "regular"}));
}

TEST_F(AppCatalogTest, RunningAppWithoutNameIsListedUnderItsIdentifier) {
    workspace.run("org.example.Nameless").name.reset();
    EXPECT_THAT(catalog.runningApps(),
                ElementsAre(CatalogEntry{"org.example.Nameless", "org.example.Nameless"}));
}

TEST_F(AppCatalogTest, FirstInstanceOfAnIdentifierGivesTheName) {
    workspace.run("a").name = "Zebra";
    workspace.run("a").name = "Ant";
    EXPECT_THAT(catalog.runningApps(), ElementsAre(CatalogEntry{"a", "Zebra"}));
}

TEST_F(AppCatalogTest, SortedByNameWithoutRegardToCaseAndEqualNamesInTheirOrder) {
    const std::vector<std::pair<const char*, const char*>> apps{
        {"1", "zoom"}, {"2", "Éditeur"}, {"3", "alpha"}, {"4", "Files"}, {"5", "ALPHA"}, {"6", "Edge"}};
    for (const auto& [identifier, name] : apps) {
        workspace.run(identifier).name = name;
    }
    EXPECT_THAT(catalog.runningApps(), ElementsAre(CatalogEntry{"3", "alpha"}, CatalogEntry{"5", "ALPHA"},
                                                   CatalogEntry{"6", "Edge"}, CatalogEntry{"2", "Éditeur"},
                                                   CatalogEntry{"4", "Files"}, CatalogEntry{"1", "zoom"}));
}

TEST_F(AppCatalogTest, SortedWithoutRegardToCaseWhereNoLanguageIsSet) {
    QLocale::setDefault(QLocale::c());
    for (const auto* name : {"Zebra", "apple", "Berry"}) {
        workspace.run(name);
    }
    EXPECT_THAT(catalog.runningApps(),
                ElementsAre(CatalogEntry{"apple", "apple"}, CatalogEntry{"Berry", "Berry"},
                            CatalogEntry{"Zebra", "Zebra"}));
}

TEST_F(AppCatalogTest, InstalledAppsComeFromEveryFolderInOrder) {
    installation.install("/Users/u/Applications/Mine.app", bundle("mine", "Mine"));
    installation.install("/System/Applications/Utilities/Term.app", bundle("term", "Term"));
    installation.install("/System/Applications/Sys.app", bundle("sys", "Sys"));
    installation.install("/Applications/App.app", bundle("app", "App"));
    EXPECT_THAT(catalog.installedApps(),
                ElementsAre(CatalogEntry{"app", "App"}, CatalogEntry{"mine", "Mine"},
                            CatalogEntry{"sys", "Sys"}, CatalogEntry{"term", "Term"}));
    EXPECT_EQ(installation.listedFolders, homeFolders.paths);
}

TEST_F(AppCatalogTest, AllAppsAreTheInstalledOnesWithTheRunningOnesInTheirPlaces) {
    installation.install("/Applications/App.app", bundle("app", "App"));
    installation.install("/Applications/Files.app", bundle("files", "Files"));
    workspace.run("editor").name = "éditeur";
    workspace.run("files").name = "another name";
    workspace.run("zoom").name = "Zoom";
    EXPECT_THAT(catalog.allApps(), ElementsAre(CatalogEntry{"app", "App"}, CatalogEntry{"editor", "éditeur"},
                                               CatalogEntry{"files", "Files"}, CatalogEntry{"zoom", "Zoom"}));
    installation.isUnchanged = true;
    catalog.allApps();
    installation.listedFolders.clear();
    catalog.allApps();
    EXPECT_THAT(installation.listedFolders, Not(Contains("/Applications")))
        << "the installed ones were read again";
}

TEST_F(AppCatalogTest, WhoChoosesFindsRunningAppsFirstAndPagesOfTheSettingsLast) {
    auto panel = bundle("colours", "Colours");
    panel.isControlPanel = true;
    installation.install("/Applications/Colours.app", panel);
    installation.install("/Applications/Editor.app", bundle("editor", "Editor"));
    installation.install("/Applications/Zoom.app", bundle("zoom", "Zoom"));
    workspace.run("zoom").name = "Zoom";
    workspace.run("mail").name = "Mail";
    EXPECT_THAT(catalog.appsToChoose(),
                ElementsAre(CatalogEntry{"mail", "Mail"}, CatalogEntry{"zoom", "Zoom"},
                            CatalogEntry{"editor", "Editor"}, CatalogEntry{"colours", "Colours"}));
}

TEST_F(AppCatalogTest, OnlyTheExactExtensionCounts) {
    installation.install("/Applications/Upper.APP", bundle("upper", "Upper"));
    installation.install("/Applications/Text.txt", bundle("text", "Text"));
    installation.install("/Applications/None", bundle("none", "None"));
    installation.install("/Applications/.app", bundle("dot", "Dot"));
    installation.install("/Applications/.Hidden.app", bundle("hidden", "Hidden"));
    EXPECT_THAT(catalog.installedApps(), ElementsAre(CatalogEntry{"hidden", "Hidden"}));
}

TEST_F(AppCatalogTest, SubfoldersAreNotSearched) {
    installation.install("/Applications/Suite/Inner.app", bundle("inner", "Inner"));
    EXPECT_THAT(catalog.installedApps(), IsEmpty());
}

TEST_F(AppCatalogTest, UnreadableFolderContributesNothing) {
    installation.install("/Applications/App.app", bundle("app", "App"));
    installation.install("/System/Applications/Sys.app", bundle("sys", "Sys"));
    installation.unreadableFolders.insert("/Applications");
    EXPECT_THAT(catalog.installedApps(), ElementsAre(CatalogEntry{"sys", "Sys"}));
}

TEST_F(AppCatalogTest, WhatIsNoBundleOrHasNoIdentifierIsSkipped) {
    installation.addFile("/Applications/Broken.app");
    installation.install("/Applications/Nobody.app", bundle(std::nullopt, "Nobody"));
    EXPECT_THAT(catalog.installedApps(), IsEmpty());
}

TEST_F(AppCatalogTest, BundleWithoutANameIsListedUnderItsFileName) {
    installation.install("/Applications/My Tool.2.app", bundle("tool"));
    EXPECT_THAT(catalog.installedApps(), ElementsAre(CatalogEntry{"tool", "My Tool.2"}));
}

TEST_F(AppCatalogTest, TheFirstFolderWins) {
    installation.install("/Users/u/Applications/App.app", bundle("app", "Mine"));
    installation.install("/Applications/App.app", bundle("app", "Everybody's"));
    EXPECT_THAT(catalog.installedApps(), ElementsAre(CatalogEntry{"app", "Everybody's"}));
}

TEST_F(AppCatalogTest, IconIsThatOfTheAppsFile) {
    const Platform::Image image{"maps", 0, 0, false, ""};
    workspace.urls["org.gnome.Maps"] = "/apps/maps.desktop";
    workspace.icons["/apps/maps.desktop"] = image;
    EXPECT_EQ(catalog.icon("org.gnome.Maps"), image);
    EXPECT_EQ(catalog.icon("unknown"), std::nullopt);
}

TEST_F(AppCatalogTest, EntriesAreEqualAndHashedByBothFields) {
    const std::unordered_set<CatalogEntry> entries{{"a", "A"}, {"a", "A"}, {"a", "B"}, {"b", "A"}};
    EXPECT_EQ(entries.size(), 3U);
    EXPECT_EQ((CatalogEntry{"a", "A"}.id()), "a");
}

TEST_F(AppCatalogTest, InstalledAppsAreReadAgainOnlyAfterAChange) {
    installation.install("/Applications/A.app", bundle("a", "A"));
    EXPECT_THAT(catalog.installedApps(), SizeIs(1));
    installation.isUnchanged = true;
    EXPECT_THAT(catalog.installedApps(), SizeIs(1));
    installation.listedFolders.clear();
    installation.install("/Applications/B.app", bundle("b", "B"));
    EXPECT_THAT(catalog.installedApps(), SizeIs(1));
    EXPECT_THAT(installation.listedFolders, Not(Contains("/Applications")));
    installation.isUnchanged = false;
    EXPECT_THAT(catalog.installedApps(), SizeIs(2));
}

TEST_F(AppCatalogTest, AFolderThatAnswersLateIsNotMissedForLong) {
    installation.install("/Applications/A.app", bundle("a", "A"));
    installation.install("/System/Applications/B.app", bundle("b", "B"));
    installation.unreadableFolders = {"/System/Applications"};
    EXPECT_THAT(catalog.installedApps(), SizeIs(1));
    installation.isUnchanged = true;
    EXPECT_THAT(catalog.installedApps(), SizeIs(1));
    installation.unreadableFolders.clear();
    EXPECT_THAT(catalog.installedApps(), SizeIs(2));
}

} // namespace
