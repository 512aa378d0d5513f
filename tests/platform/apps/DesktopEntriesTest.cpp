#include "core/PreferencesJson.h"
#include "platform/linux/apps/DesktopEntryBundles.h"
#include "platform/linux/workspace/LinuxWorkspace.h"
#include "tests/platform/apps/AppsWorld.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <vector>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

using LinuxPlatform::DesktopEntries;
using LinuxPlatform::DesktopEntryBundles;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::NotNull;

struct DesktopEntriesTest : testing::Test, TestSupport::AppsWorld {
    DesktopEntryBundles bundles{entries};

    std::vector<std::string> ids() {
        std::vector<std::string> ids;
        for (const auto& entry : entries.all()) {
            ids.push_back(entry.id);
        }
        return ids;
    }
    std::string nameOf(const std::string& id) {
        const auto* const entry = entries.withId(id);
        return entry != nullptr ? entry->name : "(none)";
    }
};

TEST_F(DesktopEntriesTest, AnEntrySaysWhatIsInItsFile) {
    addProgram("editor");
    install(system / "org.example.Editor.desktop",
            "Name=Editor\nExec=editor --edit %F\nIcon=accessories\nStartupWMClass=EditorWindow\n");
    const auto* const entry = entries.withId("org.example.Editor");
    ASSERT_THAT(entry, NotNull());
    EXPECT_EQ(entry->id, "org.example.Editor");
    EXPECT_EQ(entry->bundleIdentifier, "org.example.Editor");
    EXPECT_EQ(entry->name, "Editor");
    EXPECT_EQ(entry->path, (system / "org.example.Editor.desktop").string());
    EXPECT_EQ(entry->icon, "accessories");
    EXPECT_EQ(entry->startupWMClass, "EditorWindow");
    EXPECT_EQ(entry->program, "editor");
    EXPECT_TRUE(entry->hasArguments);
    EXPECT_TRUE(entry->shouldShow);
}

TEST_F(DesktopEntriesTest, AnEarlierFolderHidesTheSameIdInALaterOne) {
    addProgram("app");
    install(user / "app.desktop", "Name=Mine\nExec=app\n");
    install(system / "app.desktop", "Name=Theirs\nExec=app\n");
    EXPECT_THAT(ids(), ElementsAre("app"));
    EXPECT_EQ(nameOf("app"), "Mine");
    EXPECT_EQ(bundles.open((system / "app.desktop").string()), std::nullopt);
}

TEST_F(DesktopEntriesTest, HiddenInTheUsersFolderHidesTheSystems) {
    installPlain(system / "app.desktop");
    installPlain(system / "other.desktop");
    install(user / "app.desktop", "Name=app\nExec=app\nHidden=true\n");
    EXPECT_THAT(ids(), ElementsAre("other"));
    EXPECT_EQ(bundles.open((user / "app.desktop").string()), std::nullopt);
    EXPECT_EQ(bundles.open((system / "app.desktop").string()), std::nullopt);
}

TEST_F(DesktopEntriesTest, AnythingUnderTheNameInTheUsersFolderHidesTheSystems) {
    for (const auto* name : {"empty", "link", "app"}) {
        installPlain(system / (std::string(name) + ".desktop"));
    }
    installFile(user / "empty.desktop", "");
    fs::create_symlink("/dev/null", user / "link.desktop");
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, WithoutDisplayIsKnownButNoAppToChoose) {
    addProgram("app");
    install(system / "app.desktop", "Name=App\nExec=app\nNoDisplay=true\n");
    EXPECT_EQ(nameOf("app"), "App");
    EXPECT_FALSE(entries.withId("app")->shouldShow);
    EXPECT_EQ(bundles.open((system / "app.desktop").string()), std::nullopt);
}

TEST_F(DesktopEntriesTest, AnAppIsGoneWhenItsEntryIs) {
    installPlain(system / "org.example.Maps.desktop");
    EXPECT_FALSE(bundles.isGone("org.example.Maps", "Charts"));
    fs::remove(system / "org.example.Maps.desktop");
    EXPECT_TRUE(bundles.isGone("org.example.Maps", "Charts"));
}

TEST_F(DesktopEntriesTest, AnAppThatIsNotShownIsNotGone) {
    addProgram("app");
    for (const auto* const line : {"NoDisplay=true", "OnlyShowIn=Gamma;", "Terminal=true", "Hidden=true"}) {
        install(system / "org.example.Maps.desktop", "Name=Charts\nExec=app\n" + std::string(line) + "\n");
        EXPECT_EQ(bundles.open((system / "org.example.Maps.desktop").string()), std::nullopt) << line;
        EXPECT_FALSE(bundles.isGone("org.example.Maps", "Charts")) << line;
    }
}

TEST_F(DesktopEntriesTest, WhatMayNeverHaveHadAnEntryIsNotGone) {
    EXPECT_FALSE(bundles.isGone("urxvt", "URxvt")) << "a window class";
    EXPECT_FALSE(bundles.isGone("com.hnc.Discord", "Discord")) << "one that is known everywhere";
    EXPECT_FALSE(bundles.isGone("org.example.Maps", "org.example.Maps")) << "what a sandbox says";
    EXPECT_FALSE(bundles.isGone("maps_charts", "maps")) << "what a snap says";
    EXPECT_FALSE(bundles.isGone("us.zoom.xos", "zoom-client")) << "a snap that is known everywhere";
    EXPECT_TRUE(bundles.isGone("us.zoom.xos", "Zoom Workplace"));
}

TEST_F(DesktopEntriesTest, NothingIsGoneWhileAFolderCannotBeRead) {
    fs::create_directories(system);
    EXPECT_TRUE(bundles.isGone("org.example.Maps", "Charts"));
    fs::create_symlink("applications-loop", system.parent_path() / "applications-loop");
    DesktopEntries loop({system, system.parent_path() / "applications-loop"});
    EXPECT_FALSE(DesktopEntryBundles(loop).isGone("org.example.Maps", "Charts"));
}

TEST_F(DesktopEntriesTest, PagesOfTheSettingsAreToldFromPrograms) {
    addProgram("app");
    for (const auto& [categories, isPage] :
         {std::pair{"Settings;DesktopSettings;", true}, std::pair{"X-XFCE;Settings", true},
          std::pair{"Utility;X-Settings;", false}}) {
        install(system / "app.desktop", std::string("Name=App\nExec=app\nCategories=") + categories + "\n");
        EXPECT_EQ(bundles.open((system / "app.desktop").string()).value().isControlPanel, isPage)
            << categories;
    }
}

TEST_F(DesktopEntriesTest, ThisProgramIsNoAppToChoose) {
    installPlain(system / "app.desktop");
    installPlain(system / "other.desktop");
    DesktopEntryBundles others(entries, "app");
    EXPECT_EQ(others.open((system / "app.desktop").string()), std::nullopt);
    EXPECT_TRUE(others.open((system / "other.desktop").string()));
}

TEST_F(DesktopEntriesTest, DesktopsThatAnEntryNamesDecideWhetherItShows) {
    addProgram("app");
    const std::vector<std::pair<std::string, bool>> cases{
        {"", true},
        {"OnlyShowIn=Alpha;\n", true},
        {"OnlyShowIn=Gamma;Beta;\n", true},
        {"OnlyShowIn=Gamma;\n", false},
        {"NotShowIn=Alpha;\n", false},
        {"NotShowIn=Beta\n", false},
        {"NotShowIn=Gamma;\n", true},
    };
    for (const auto& [line, isShown] : cases) {
        install(system / "app.desktop", "Name=App\nExec=app\n" + line);
        EXPECT_EQ(entries.withId("app")->shouldShow, isShown) << line;
        EXPECT_EQ(bundles.open((system / "app.desktop").string()).has_value(), isShown) << line;
    }
}

TEST_F(DesktopEntriesTest, AnEntryForAProgramThatIsNotInstalledIsNone) {
    addProgram("app");
    install(system / "tried.desktop", "Name=Tried\nExec=app\nTryExec=missing\n");
    install(system / "started.desktop", "Name=Started\nExec=missing\n");
    install(system / "installed.desktop", "Name=Installed\nExec=app\nTryExec=app\n");
    EXPECT_THAT(ids(), ElementsAre("installed"));
}

TEST_F(DesktopEntriesTest, OnlyApplicationsCount) {
    installPlain(system / "app.desktop");
    installFile(system / "page.desktop", "[Desktop Entry]\nType=Link\nName=Page\nURL=about:blank\n");
    installFile(system / "folder.desktop", "[Desktop Entry]\nType=Directory\nName=Folder\n");
    installFile(system / "notes.txt", "[Desktop Entry]\nType=Application\nName=Notes\nExec=app\n");
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, NamesAreInTheUsersLanguage) {
    addProgram("app");
    install(system / "german.desktop", "Exec=app\nName=Files\nName[de]=Dateien\nName[fr]=Fichiers\n");
    install(system / "french.desktop", "Exec=app\nName=Files\nName[fr]=Fichiers\n");
    EXPECT_EQ(nameOf("german"), "Dateien");
    EXPECT_EQ(nameOf("french"), "Files");
    EXPECT_EQ(bundles.open((system / "german.desktop").string())->infoDictionary.at("CFBundleName"),
              "Dateien");
}

TEST_F(DesktopEntriesTest, NamesMayHoldAnyCharacter) {
    addProgram("app");
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Foo; Bar;", "Foo; Bar;"},          {R"("Quoted" 'name')", R"("Quoted" 'name')"},
        {R"(Back\\slash)", R"(Back\slash)"}, {"a=b [c] #d", "a=b [c] #d"},
        {"Größe 你好", "Größe 你好"},        {R"(\sTwo\s)", " Two "},
    };
    for (const auto& [line, name] : cases) {
        install(system / "app.desktop", "Exec=app\nName=" + line + "\n");
        EXPECT_EQ(nameOf("app"), name);
    }
}

TEST_F(DesktopEntriesTest, AnEntryWithoutANameHasNone) {
    addProgram("app");
    install(system / "app.desktop", "Exec=app\n");
    EXPECT_EQ(nameOf("app"), "");
    EXPECT_THAT(bundles.open((system / "app.desktop").string())->infoDictionary, IsEmpty());
}

TEST_F(DesktopEntriesTest, SubfoldersArePartOfTheId) {
    installPlain(system / "kde/foo.desktop");
    installPlain(system / "kde/deep/bar.desktop");
    installPlain(user / "kde-foo.desktop");
    EXPECT_THAT(ids(), ElementsAre("kde-foo", "kde-deep-bar"));
    EXPECT_EQ(entries.withId("kde-foo")->path, (user / "kde-foo.desktop").string());
    EXPECT_THAT(entries.withPath((system / "kde/deep/bar.desktop").string()), NotNull());
}

TEST_F(DesktopEntriesTest, ALoopOfLinksIsLeftAlone) {
    installPlain(system / "app.desktop");
    installPlain(system / "kde/foo.desktop");
    for (const auto* link : {"one", "two", "three", "four", "kde/back"}) {
        fs::create_directory_symlink(system, system / link);
    }
    fs::create_symlink("self", system / "self");
    touch(system);
    EXPECT_THAT(ids(), ElementsAre("app", "kde-foo"));
    EXPECT_EQ(entries.withProgram("app")->id, "app");
}

TEST_F(DesktopEntriesTest, FoldersThatLinkToEachOtherInEveryWayHoldNobodyUp) {
    installPlain(user / "app.desktop");
    const auto folderOf = [&](int number) { return system / ("folder" + std::to_string(number)); };
    constexpr int count = 12;
    for (int number = 0; number < count; ++number) {
        installPlain(folderOf(number) / "foo.desktop");
    }
    for (int from = 0; from < count; ++from) {
        for (int to = 0; to < count; ++to) {
            fs::create_directory_symlink(folderOf(to), folderOf(from) / ("link" + std::to_string(to)));
        }
    }
    touch(system);
    EXPECT_THAT(ids(), Contains("app"));
    EXPECT_TRUE(entries.mayHold("org.example.Unread"));
}

TEST_F(DesktopEntriesTest, NoFolderIsReadBelowASensibleDepth) {
    auto folder = system;
    for (int depth = 0; depth < 40; ++depth) {
        folder /= "d";
    }
    installPlain(folder / "foo.desktop");
    installPlain(system / "d/app.desktop");
    EXPECT_THAT(ids(), ElementsAre("d-app"));
}

TEST_F(DesktopEntriesTest, AFileOfNoEntrysSizeIsNotRead) {
    installPlain(system / "app.desktop");
    install(system / "huge.desktop", "Name=huge\nExec=app\nComment=" + std::string(2 << 20, 'x') + "\n");
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, ALinkToAFolderElsewhereIsASubfolder) {
    installPlain(root.path() / "elsewhere/foo.desktop");
    fs::create_directories(user);
    fs::create_directory_symlink(root.path() / "elsewhere", user / "linked");
    fs::create_directory_symlink(system, user / "all");
    installPlain(system / "app.desktop");
    EXPECT_THAT(ids(), ElementsAre("all-app", "linked-foo", "app"));
}

TEST_F(DesktopEntriesTest, CommandsNameTheirProgram) {
    struct Case {
        std::string command;
        std::string program;
        bool hasArguments;
    };
    addProgram("app");
    addProgram("with space");
    const auto path = (bin / "app").string();
    const auto spaced = (bin / "with space").string();
    const std::vector<Case> cases{
        {"app", "app", false},
        {"app %U", "app", false},
        {"app %i -- %F", "app", true},
        {"app --new-window", "app", true},
        {"app --new-window %U", "app", true},
        {path + " %f", "app", false},
        {"\"" + path + R"(" "%f")", "app", false},
        {"\"" + spaced + "\" %U", "with space", false},
        {R"(app "quoted argument")", "app", true},
        {"env A=1 app", "app", false},
        {R"(env A=1 B="2 3" app %u)", "app", false},
        {"/usr/bin/env A=1 app --flag", "app", true},
        {"env -i A=1 app", "app", false},
        {"env --unset=A app", "app", false},
        {"env -u A -C / B=1 app %U", "app", false},
        {"env --unset A --chdir / app", "app", false},
        {"app -u A", "app", true},
        {"env", "", false},
    };
    for (const auto& [command, program, hasArguments] : cases) {
        install(system / "app.desktop", "Name=App\nExec=" + command + "\n");
        const auto* const entry = entries.withId("app");
        ASSERT_THAT(entry, NotNull()) << command;
        EXPECT_EQ(entry->program, program) << command;
        EXPECT_EQ(entry->hasArguments, hasArguments) << command;
    }
}

TEST_F(DesktopEntriesTest, AddressesThatAnEntryOpensAreKnownByTheirSchemes) {
    addProgram("browser");
    install(user / "browser.desktop", "Name=Browser\nExec=browser %U\n"
                                      "MimeType=text/html;x-scheme-handler/http;X-Scheme-Handler/HTTPS;\n");
    installPlain(user / "editor.desktop");
    EXPECT_THAT(entries.withId("browser")->urlSchemes, ElementsAre("http", "https"));
    EXPECT_THAT(entries.withId("editor")->urlSchemes, IsEmpty());
}

TEST_F(DesktopEntriesTest, AnAppForAnAddressIsOneThatShows) {
    TestSupport::FakeWindowSystem windows;
    LinuxPlatform::AppIdentity identity(entries, LinuxPlatform::ProcessTable(proc));
    TestSupport::HandDrivenQueue queue;
    LinuxPlatform::ScopedApps scopedApps(entries, queue, LinuxPlatform::ProcessTable(proc));
    LinuxPlatform::LinuxWorkspace workspace(windows, identity, entries, scopedApps, queue);
    EXPECT_EQ(workspace.urlForApplicationToOpen("https:"), std::nullopt);

    addProgram("browser");
    const std::string lines = "Name=Browser\nExec=browser %U\nMimeType=x-scheme-handler/https;\n";
    install(user / "helper.desktop", lines + "NoDisplay=true\n");
    EXPECT_EQ(workspace.urlForApplicationToOpen("https:"), std::nullopt);
    install(user / "browser.desktop", lines);
    EXPECT_EQ(workspace.urlForApplicationToOpen("https:"), (user / "browser.desktop").string());
    EXPECT_EQ(workspace.urlForApplicationToOpen("HTTPS://example.org/?a:b"),
              (user / "browser.desktop").string());
    EXPECT_EQ(workspace.urlForApplicationToOpen("mailto:ada@example.org"), std::nullopt);
}

TEST_F(DesktopEntriesTest, AFileNameThatIsNotUnicodeMakesAnIdentifierThatIs) {
    addProgram("app");
    install(system / "caf\xe9.desktop", "Name=Diary\nExec=app\n");
    install(system / "kaf\xe9/app.desktop", "Name=Nested\nExec=app\n");
    EXPECT_THAT(ids(), ElementsAre("caf\xc3\xa9", "kaf\xc3\xa9-app"));
    EXPECT_EQ(nameOf("caf\xc3\xa9"), "Diary");
    const auto bundle = bundles.open((system / "caf\xe9.desktop").string());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier, "caf\xc3\xa9");
    CurtainCore::Preferences preferences;
    preferences.targetApps = {{*bundle->bundleIdentifier, "Diary"}};
    EXPECT_TRUE(CurtainCore::encodePreferences(preferences));
    EXPECT_EQ(entries.withPath((system / "caf\xe9.desktop").string()), entries.withId("caf\xc3\xa9"));
}

TEST_F(DesktopEntriesTest, WhatRunsInATerminalIsNotOffered) {
    addProgram("top");
    install(system / "top.desktop", "Name=Top\nExec=top\nTerminal=true\n");
    install(system / "plain.desktop", "Name=Plain\nExec=top\nTerminal=false\n");
    EXPECT_THAT(ids(), ElementsAre("plain", "top"));
    EXPECT_FALSE(bundles.open((system / "top.desktop").string()));
    EXPECT_TRUE(bundles.open((system / "plain.desktop").string()));
}

TEST_F(DesktopEntriesTest, BrokenFilesAreLeftOut) {
    installPlain(system / "app.desktop");
    const std::string line(1'000'000, 'x');
    installFile(system / "empty.desktop", "");
    installFile(system / "binary.desktop", std::string("\0\x01\xff\xfe[Desktop Entry]\n\0", 21));
    installFile(system / "line.desktop", line);
    installFile(system / "no-group.desktop", "Type=Application\nName=No group\nExec=app\n");
    installFile(system / "other-group.desktop", "[Other]\nType=Application\nName=Other\nExec=app\n");
    installFile(system / "untyped.desktop", "[Desktop Entry]\nName=Untyped\nExec=app\n");
    installFile(system / "quote.desktop", "[Desktop Entry]\nType=Application\nName=Quote\nExec=\"app\n");
    fs::create_directory(system / "folder.desktop");
    fs::create_symlink("missing", system / "dangling.desktop");
    touch(system);
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, ANamedPipeIsNotWaitedFor) {
    installPlain(system / "app.desktop");
    ASSERT_EQ(mkfifo((system / "pipe.desktop").c_str(), 0600), 0);
    touch(system);
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, ALineOfAMegabyteDoesNotKeepAnEntryFromBeingRead) {
    addProgram("app");
    install(system / "app.desktop", "Comment=" + std::string(1'000'000, 'x') + "\nName=App\nExec=app\n");
    EXPECT_EQ(nameOf("app"), "App");
}

TEST_F(DesktopEntriesTest, AFolderThatIsMissingMayComeLater) {
    EXPECT_THAT(ids(), IsEmpty());
    installPlain(system / "app.desktop");
    EXPECT_THAT(ids(), ElementsAre("app"));
    installPlain(user / "own.desktop");
    EXPECT_THAT(ids(), ElementsAre("own", "app"));
    fs::remove_all(user);
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, ChangesOfAFolderAreNoticed) {
    installPlain(system / "app.desktop");
    fs::create_directory(system / "kde");
    EXPECT_THAT(ids(), ElementsAre("app"));
    installPlain(system / "added.desktop");
    EXPECT_THAT(ids(), ElementsAre("added", "app"));
    installPlain(system / "kde/nested.desktop");
    EXPECT_THAT(ids(), ElementsAre("added", "app", "kde-nested"));
    fs::remove(system / "added.desktop");
    touch(system);
    EXPECT_THAT(entries.withId("added"), IsNull());
    EXPECT_EQ(bundles.open((system / "added.desktop").string()), std::nullopt);
    installPlain(user / "own.desktop");
    EXPECT_THAT(entries.withProgram("own"), NotNull());
}

TEST_F(DesktopEntriesTest, AFileThatIsWrittenInPlaceIsNoticed) {
    addProgram("app");
    install(system / "app.desktop", "Name=Before\nExec=app\n");
    install(system / "kde/app.desktop", "Name=Before too\nExec=app\n");
    EXPECT_EQ(nameOf("app"), "Before");
    const auto generation = bundles.generation();
    TestSupport::writeFile(system / "app.desktop",
                           "[Desktop Entry]\nType=Application\nName=After\nExec=app\n");
    EXPECT_EQ(nameOf("app"), "After");
    EXPECT_NE(bundles.generation(), generation);
    TestSupport::writeFile(system / "kde/app.desktop",
                           "[Desktop Entry]\nType=Application\nName=After too\nExec=app\n");
    EXPECT_EQ(nameOf("kde-app"), "After too");
}

TEST_F(DesktopEntriesTest, OtherFilesChangeNothing) {
    installPlain(system / "app.desktop");
    entries.all();
    const auto generation = bundles.generation();
    TestSupport::writeFile(system / "mimeinfo.cache", "[MIME Cache]\n");
    fs::remove(system / "mimeinfo.cache");
    EXPECT_EQ(bundles.generation(), generation);
}

TEST_F(DesktopEntriesTest, AnEntryThatComesBackUnderAnotherPlaceIsReadThere) {
    installPlain(system / "app.desktop");
    EXPECT_THAT(ids(), ElementsAre("app"));
    fs::create_directories(system / "sub");
    fs::rename(system / "app.desktop", system / "sub/app.desktop");
    EXPECT_THAT(ids(), ElementsAre("sub-app"));
    fs::rename(system / "sub/app.desktop", system / "app.desktop");
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, WithoutAChangeNothingIsReadAgain) {
    installPlain(system / "kde/app.desktop");
    const auto first = entries.generation();
    EXPECT_EQ(first, 1U);
    entries.withId("app");
    entries.all();
    EXPECT_EQ(entries.generation(), first);
    installPlain(system / "other.desktop");
    EXPECT_EQ(entries.generation(), first + 1);
}

TEST_F(DesktopEntriesTest, WhatIsReadAheadIsNotReadAgain) {
    addProgram("app");
    install(system / "app.desktop", "Name=App\nExec=app\n");
    entries.readAhead();
    EXPECT_THAT(ids(), ElementsAre("app"));
    EXPECT_EQ(entries.generation(), 1U);
    entries.readAhead();
    EXPECT_EQ(entries.generation(), 1U);
}

TEST_F(DesktopEntriesTest, AChangeAfterReadingAheadIsNoticed) {
    addProgram("app");
    entries.readAhead();
    EXPECT_THAT(ids(), IsEmpty());
    install(system / "app.desktop", "Name=App\nExec=app\n");
    EXPECT_THAT(ids(), ElementsAre("app"));
}

TEST_F(DesktopEntriesTest, AReadingAheadEndsBeforeItsEntriesGo) {
    addProgram("app");
    for (int number = 0; number < 200; ++number) {
        install(system / ("app" + std::to_string(number) + ".desktop"), "Name=App\nExec=app\n");
    }
    DesktopEntries shortLived({system});
    shortLived.readAhead();
}

TEST_F(DesktopEntriesTest, AnIdIsFoundExactlyBeforeWithoutRegardToCase) {
    installPlain(system / "App.desktop");
    installPlain(system / "app.desktop");
    EXPECT_EQ(entries.withId("App")->id, "App");
    EXPECT_EQ(entries.withId("app")->id, "app");
    EXPECT_THAT(entries.withId("APP"), NotNull());
    EXPECT_THAT(entries.withId("ap"), IsNull());
    EXPECT_THAT(entries.withId(""), IsNull());
}

TEST_F(DesktopEntriesTest, PackagingsOfAProgramShareABundleIdentifier) {
    addProgram("app");
    install(system / "us.zoom.Zoom.desktop", "Name=Zoom\nExec=app\n");
    const auto* const entry = entries.withBundleIdentifier("us.zoom.xos");
    ASSERT_THAT(entry, NotNull());
    EXPECT_EQ(entry->id, "us.zoom.Zoom");
    EXPECT_THAT(entries.withBundleIdentifier("us.zoom.Zoom"), IsNull());
    EXPECT_EQ(bundles.open((system / "us.zoom.Zoom.desktop").string())->bundleIdentifier, "us.zoom.xos");
}

TEST_F(DesktopEntriesTest, AWindowClassPrefersAnEntryThatShows) {
    addProgram("app");
    install(system / "app-handler.desktop",
            "Name=Handler\nExec=app --open %u\nStartupWMClass=App\nNoDisplay=true\n");
    install(system / "app.desktop", "Name=App\nExec=app %U\nStartupWMClass=App\n");
    EXPECT_EQ(entries.withWindowClass("App", false)->id, "app");
    EXPECT_THAT(entries.withWindowClass("APP", false), IsNull());
    EXPECT_EQ(entries.withWindowClass("APP", true)->id, "app");
    EXPECT_THAT(entries.withWindowClass("", true), IsNull());
}

TEST_F(DesktopEntriesTest, AProgramIsFoundIfOneEntryStartsIt) {
    addProgram("app");
    install(system / "org.example.App.desktop", "Name=App\nExec=env A=1 app %U\n");
    install(system / "org.example.App.Window.desktop", "Name=New window\nExec=app --new-window\n");
    EXPECT_EQ(entries.withProgram("app")->id, "org.example.App");
    EXPECT_THAT(entries.withProgram("env"), IsNull());
    EXPECT_THAT(entries.withProgram(""), IsNull());
}

TEST_F(DesktopEntriesTest, TheOnlyEntryOfAProgramMayTellItSomething) {
    for (const auto* program : {"app", "browser", "steam", "flatpak", "twice", "java"}) {
        addProgram(program);
    }
    install(system / "app.one.desktop", "Name=App\nExec=app --started-from-file -- %U\n");
    install(system / "web-app.desktop", "Name=Mail\nExec=browser --app-id=mail\n");
    install(system / "game.desktop", "Name=Game\nExec=steam steam://rungameid/570\n");
    install(system / "org.example.Boxed.desktop",
            "Name=Boxed\nExec=flatpak run org.example.Boxed @@u %U @@\n");
    install(system / "one.desktop", "Name=One\nExec=twice --one\n");
    install(system / "two.desktop", "Name=Two\nExec=twice --two\n");
    install(system / "jar.desktop", "Name=Jar\nExec=java -Xmx1g -jar /opt/viewer-1.2.jar %f\n");
    EXPECT_EQ(entries.withProgram("app")->id, "app.one");
    EXPECT_EQ(entries.withProgram("viewer")->id, "jar");
    for (const auto* program : {"browser", "steam", "flatpak", "twice", "java"}) {
        EXPECT_THAT(entries.withProgram(program), IsNull()) << program;
    }
}

TEST_F(DesktopEntriesTest, AProgramOfSeveralEntriesIsTheOneThatIsCalledLikeIt) {
    addProgram("app");
    install(system / "a.desktop", "Name=A\nExec=app\n");
    install(system / "b.desktop", "Name=B\nExec=app %f\n");
    EXPECT_THAT(entries.withProgram("app"), IsNull());
    install(system / "app.desktop", "Name=App\nExec=app\n");
    EXPECT_EQ(entries.withProgram("app")->id, "app");
}

TEST_F(DesktopEntriesTest, ABundleIsAnEntryThatShows) {
    installPlain(system / "org.example.App.desktop");
    const auto bundle = bundles.open((system / "org.example.App.desktop").string());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier, "org.example.App");
    EXPECT_THAT(bundle->infoDictionary, ElementsAre(testing::Pair("CFBundleName", "org.example.App")));
    EXPECT_EQ(bundles.open((system / "missing.desktop").string()), std::nullopt);
    EXPECT_EQ(bundles.open("org.example.App.desktop"), std::nullopt);
    EXPECT_EQ(bundles.open(system.string()), std::nullopt);
    EXPECT_EQ(bundles.open(""), std::nullopt);
}

TEST_F(DesktopEntriesTest, FoldersComeFromTheEnvironmentInItsOrder) {
    setenv("XDG_DATA_DIRS", "/first:relative::./also/relative:/second/:/first", 1);
    EXPECT_THAT(DesktopEntries::standardFolders(),
                ElementsAre("/nonexistent/data/applications", "/first/applications", "/second/applications",
                            "/first/applications", "/nonexistent/data/flatpak/exports/share/applications",
                            "/var/lib/flatpak/exports/share/applications",
                            "/var/lib/snapd/desktop/applications"));
}

TEST_F(DesktopEntriesTest, FoldersHaveADefault) {
    for (const auto* value : {"", static_cast<const char*>(nullptr)}) {
        value != nullptr ? setenv("XDG_DATA_DIRS", value, 1) : unsetenv("XDG_DATA_DIRS");
        const auto folders = DesktopEntries::standardFolders();
        ASSERT_GE(folders.size(), 3U);
        EXPECT_EQ(folders[1], "/usr/local/share/applications");
        EXPECT_EQ(folders[2], "/usr/share/applications");
    }
}

TEST_F(DesktopEntriesTest, FlatpaksFolderIsNotListedTwice) {
    setenv("XDG_DATA_DIRS", "/var/lib/flatpak/exports/share:/usr/share", 1);
    EXPECT_THAT(DesktopEntries::standardFolders(),
                ElementsAre("/nonexistent/data/applications", "/var/lib/flatpak/exports/share/applications",
                            "/usr/share/applications", "/nonexistent/data/flatpak/exports/share/applications",
                            "/var/lib/snapd/desktop/applications"));
}

} // namespace
