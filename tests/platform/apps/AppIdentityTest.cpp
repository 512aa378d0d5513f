#include "platform/linux/apps/AppIdentity.h"

#include "core/Preferences.h"
#include "platform/linux/apps/BundleIdentifiers.h"
#include "tests/platform/apps/AppsWorld.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using LinuxPlatform::AppIdentifier;
using LinuxPlatform::AppIdentity;
using LinuxPlatform::bundleIdentifierFor;
using LinuxPlatform::ProcessTable;
using LinuxPlatform::WindowHints;

struct AppIdentityTest : testing::Test, TestSupport::AppsWorld {
    AppIdentity identity{entries, ProcessTable(proc)};

    AppIdentityTest() {
        for (const auto* program : {"chromium", "google-chrome", "xterm", "uxterm", "maps", "code", "konsole",
                                    "tool", "painter", "python3"}) {
            addProgram(program);
        }
        add("chromium", "Name=Chromium\nExec=chromium %U\nStartupWMClass=chromium\n");
        add("chrome-abc-Default", "Name=Mail\nExec=chromium --app-id=abc\nStartupWMClass=crx_abc\n");
        add("google-chrome", "Name=Google Chrome\nExec=google-chrome %U\n");
        add("debian-xterm", "Name=XTerm\nExec=xterm\nStartupWMClass=XTerm\n");
        add("debian-uxterm", "Name=UXTerm\nExec=uxterm\nStartupWMClass=UXTerm\n");
        add("org.example.Maps", "Name=Maps\nName[de]=Karten\nExec=maps %U\n");
        add("code", "Name=Code\nExec=code %F\nStartupWMClass=Code\n");
        add("kde/konsole", "Name=Konsole\nExec=konsole\n");
        add("tool-one", "Name=One\nExec=tool\n");
        add("tool-two", "Name=Two\nExec=tool\n");
        add("org.example.Painter", "Name=Painter\nExec=painter %f\nNoDisplay=true\n");
        add("python3", "Name=Python\nExec=python3\n");
    }

    void add(const std::string& id, const std::string& lines) { install(system / (id + ".desktop"), lines); }

    /// The identifier, or "absent".
    std::string identify(const WindowHints& hints) {
        const auto app = identity.identify(hints);
        return app ? app->bundleIdentifier : "absent";
    }

    static WindowHints windowClass(const std::string& instanceName, const std::string& className) {
        return {instanceName, className, {}, {}, {}};
    }
    static WindowHints ofProcess(std::uint32_t process) { return {{}, {}, {}, {}, process}; }
};

TEST_F(AppIdentityTest, AWindowsClassFindsItsEntry) {
    struct Case {
        const char* instanceName;
        const char* className;
        const char* identifier;
    };
    const std::vector<Case> cases{
        {"chromium", "chromium", "chromium"},
        {"chromium", "Chromium", "chromium"},
        {"other", "CHROMIUM", "chromium"},
        {"xterm", "XTerm", "debian-xterm"},
        {"session", "XTerm", "debian-xterm"},
        {"xterm", "UXTerm", "debian-uxterm"},
        {"uxterm", "UXTerm", "debian-uxterm"},
        {"xterm", "uxterm", "debian-uxterm"},
        {"XTERM", "", "debian-xterm"},
        {"", "xterm", "debian-xterm"},
        {"code", "Code", "code"},
        {"google-chrome", "Google-chrome", "com.google.Chrome"},
        {"", "Org.Example.Maps", "org.example.Maps"},
        {"org.example.Maps", "Maps window", "org.example.Maps"},
        {"", "kde-konsole", "kde-konsole"},
    };
    for (const auto& [instanceName, className, identifier] : cases) {
        EXPECT_EQ(identify(windowClass(instanceName, className)), identifier)
            << instanceName << ", " << className;
    }
}

TEST_F(AppIdentityTest, ABrowsersWebAppWithAnEntryOfItsOwnIsAnApp) {
    EXPECT_EQ(identity.identify(windowClass("crx_abc", "Chromium")),
              (AppIdentifier{"chrome-abc-Default", "Mail"}));
    EXPECT_EQ(identify(windowClass("crx_ABC", "Chromium")), "chromium")
        << "the letters' case tells apps apart";
}

TEST_F(AppIdentityTest, ABrowsersWebAppWithoutAnEntryIsTheBrowser) {
    EXPECT_EQ(identity.identify(windowClass("crx_xyz", "Chromium")), (AppIdentifier{"chromium", "Chromium"}));
    EXPECT_EQ(identify(windowClass("crx_xyz", "Google-chrome")), "com.google.Chrome");
}

TEST_F(AppIdentityTest, HintsOfADesktopEntryFindIt) {
    for (const auto& hint : {std::string("org.example.Maps"), std::string("org.example.Maps.desktop"),
                             std::string("ORG.example.maps"), (system / "org.example.Maps.desktop").string(),
                             std::string("/elsewhere/org.example.Maps.desktop")}) {
        EXPECT_EQ(identify({"gjs", "Gjs", hint, {}, {}}), "org.example.Maps") << hint;
        EXPECT_EQ(identify({"gjs", "Gjs", {}, hint, {}}), "org.example.Maps") << hint;
    }
}

TEST_F(AppIdentityTest, APathLeadsToTheEntryThatStandsThere) {
    addProgram("foo");
    add("foo", "Name=Foo\nExec=foo\n");
    add("kde/foo", "Name=Foo of another desktop\nExec=foo\n");
    EXPECT_EQ(identify({{}, {}, (system / "kde/konsole.desktop").string(), {}, {}}), "kde-konsole");
    EXPECT_EQ(identify({{}, {}, (system / "kde/foo.desktop").string(), {}, {}}), "kde-foo");
    EXPECT_EQ(identify({{}, {}, (system / "foo.desktop").string(), {}, {}}), "foo");
}

TEST_F(AppIdentityTest, TheSurerHintDecides) {
    addProcess(1, "/usr/bin/painter");
    WindowHints hints{"xterm", "XTerm", "code", "org.example.Maps", 1};
    EXPECT_EQ(identify(hints), "code");
    hints.desktopFile = "not.installed";
    EXPECT_EQ(identify(hints), "org.example.Maps");
    hints.applicationId = ".desktop";
    EXPECT_EQ(identify(hints), "debian-xterm");
    hints.className = hints.instanceName = "unknown";
    EXPECT_EQ(identify(hints), "org.example.Painter");
    hints.process.reset();
    EXPECT_EQ(identify(hints), "unknown");
}

TEST_F(AppIdentityTest, TheProgramFindsTheEntryOfAWindowThatSaysNothing) {
    addProcess(1, "/usr/bin/painter");
    addProcess(2, "/usr/bin/painter (deleted)");
    addProcess(3, "/usr/bin/tool");
    addProcess(4, "/usr/bin/never-installed");
    EXPECT_EQ(identity.identify(ofProcess(1)), (AppIdentifier{"org.example.Painter", "Painter"}));
    EXPECT_EQ(identify(ofProcess(2)), "org.example.Painter") << "the program was replaced while it ran";
    EXPECT_EQ(identity.identify(ofProcess(3)), (AppIdentifier{"tool", "tool"})) << "two entries start it";
    EXPECT_EQ(identify(ofProcess(4)), "never-installed");
    EXPECT_EQ(identify(ofProcess(99)), "absent") << "no such process";
}

TEST_F(AppIdentityTest, AnInterpreterIsNotTheApp) {
    std::uint32_t process = 0;
    for (const auto* program : {"python3",     "python3.11", "perl",           "perl5.36.0",
                                "ruby3.1",     "node",       "java",           "mono",
                                "wine",        "wine64",     "wine-preloader", "wine64-preloader",
                                "gjs-console", "dash",       "electron",       "electron22",
                                "gjs",         "sh",         "bash",           "dotnet"}) {
        addProcess(static_cast<int>(++process), std::string("/usr/bin/") + program);
        EXPECT_EQ(identify(ofProcess(process)), "absent") << program;
        auto hints = windowClass("thing", "Thing");
        hints.process = process;
        EXPECT_EQ(identify(hints), "thing") << program;
    }
    for (const auto* program : {"shutter", "javaws", "nodes", "bashtop"}) {
        addProcess(static_cast<int>(++process), std::string("/usr/bin/") + program);
        EXPECT_EQ(identify(ofProcess(process)), program);
    }
}

TEST_F(AppIdentityTest, AnAppWithoutAnEntryHasOneIdentifierForAllItsWindows) {
    addProcess(1, "/opt/own/own-bin");
    const AppIdentifier own{"own.app", "Own.App"};
    EXPECT_EQ(identity.identify({"main", "Own.App", {}, {}, 1}), own);
    EXPECT_EQ(identity.identify({"dialog", "Own.App", {}, {}, 1}), own);
    EXPECT_EQ(identity.identify({"dialog", "Own.App", {}, {}, {}}), own);
    EXPECT_EQ(identify(windowClass("only-instance", "")), "only-instance");
    EXPECT_EQ(identify(windowClass("", "Größe")), "größe") << "only ASCII letters change";
}

TEST_F(AppIdentityTest, AnAppWithoutAnEntryIsStillItsWellKnownSelf) {
    EXPECT_EQ(identify(windowClass("zoom", "zoom")), "us.zoom.xos");
    EXPECT_EQ(identify(windowClass("discord", "Discord")), "com.hnc.Discord");
}

TEST_F(AppIdentityTest, AnEntryWithoutANameLendsItsId) {
    add("org.example.Nameless", "Exec=tool --nameless\n");
    EXPECT_EQ(identity.identify({{}, {}, "org.example.Nameless", {}, {}}),
              (AppIdentifier{"org.example.Nameless", "org.example.Nameless"}));
}

TEST_F(AppIdentityTest, AWindowThatSaysNothingIsOfNoKnownApp) {
    EXPECT_EQ(identity.identify({}), std::nullopt);
}

TEST_F(AppIdentityTest, AnEntryThatComesLaterIsNoticed) {
    EXPECT_EQ(identify(windowClass("late", "LateWindow")), "latewindow");
    addProgram("late");
    add("org.example.Late", "Name=Late\nExec=late\nStartupWMClass=LateWindow\n");
    EXPECT_EQ(identify(windowClass("late", "LateWindow")), "org.example.Late");
}

struct ProcessTableTest : testing::Test, TestSupport::AppsWorld {
    ProcessTable processes{proc};
};

TEST_F(ProcessTableTest, TellsTheProgramsFileName) {
    addProcess(1, "/usr/bin/program");
    addProcess(2, "/opt/replaced/program (deleted)");
    addProcess(3, "/opt/with space/pro gram");
    EXPECT_EQ(processes.program(1), "program");
    EXPECT_EQ(processes.program(2), "program");
    EXPECT_EQ(processes.program(3), "pro gram");
}

TEST_F(ProcessTableTest, KnowsNothingOfAProcessThatIsGoneOrClosed) {
    std::filesystem::create_directories(proc / "5");
    TestSupport::writeFile(proc / "6/exe", "no link");
    addProcess(7, "/");
    addProcess(8, " (deleted)");
    for (const std::uint32_t process : {0U, 4U, 5U, 6U, 7U, 8U, 4294967295U}) {
        EXPECT_EQ(processes.program(process), std::nullopt) << process;
    }
}

TEST(ProcessTable, KnowsThisProcess) {
    EXPECT_EQ(ProcessTable().program(static_cast<std::uint32_t>(getpid())),
              std::filesystem::read_symlink("/proc/self/exe").filename().string());
}

TEST(BundleIdentifiers, EveryPackagingOfAKnownProgramHasItsIdentifier) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> programs{
        {"us.zoom.xos", {"zoom", "us.zoom.Zoom", "zoom-client_zoom-client", "Zoom"}},
        {"com.microsoft.teams", {"teams", "com.microsoft.Teams"}},
        {"com.microsoft.teams2",
         {"teams-for-linux", "teams-for-linux_teams-for-linux", "com.github.IsmaelMartinez.teams_for_linux"}},
        {"com.cisco.webexmeetingsapp", {"webex", "com.webex.Webex", "Webex"}},
        {"com.hnc.Discord", {"discord", "discord_discord", "com.discordapp.Discord", "Discord"}},
        {"com.obsproject.obs-studio", {"obs", "com.obsproject.Studio", "obs-studio_obs-studio"}},
        {"com.google.Chrome",
         {"google-chrome", "google-chrome-stable", "com.google.Chrome", "Google-chrome"}},
        {"com.tinyspeck.slackmacgap", {"slack", "slack_slack", "com.slack.Slack"}},
        {"com.spotify.client", {"spotify", "spotify_spotify", "com.spotify.Client"}},
        {"firefox", {"firefox", "firefox_firefox", "org.mozilla.firefox"}},
        {"chromium", {"chromium", "chromium-browser", "chromium_chromium", "org.chromium.Chromium"}},
        {"thunderbird", {"thunderbird", "thunderbird_thunderbird", "net.thunderbird.Thunderbird"}},
        {"org.telegram.desktop", {"org.telegram.desktop", "telegramdesktop"}},
        {"libreoffice-calc", {"libreoffice-calc", "libreoffice_calc", "org.libreoffice.LibreOffice.calc"}},
        {"gimp", {"gimp", "gimp_gimp", "org.gimp.GIMP"}},
    };
    for (const auto& [identifier, packagings] : programs) {
        for (const auto& packaging : packagings) {
            EXPECT_EQ(bundleIdentifierFor(packaging), identifier) << packaging;
        }
    }
}

TEST(BundleIdentifiers, OtherProgramsKeepTheirOwn) {
    for (const auto* id : {"google-chrome-beta", "google-chrome-unstable", "brave-browser-beta",
                           "discord-canary", "firefox-esr", "org.gnome.Maps", "zoomer", "zoom.desktop", ""}) {
        EXPECT_EQ(bundleIdentifierFor(id), id);
    }
}

} // namespace
