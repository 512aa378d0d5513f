#include "platform/linux/apps/AppIdentity.h"
#include "platform/linux/apps/AppImageRuntime.h"
#include "platform/linux/apps/AppScope.h"
#include "platform/linux/apps/FlatpakSandbox.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/apps/LaunchEnvironment.h"
#include "platform/linux/apps/ProgramNames.h"
#include "platform/linux/apps/SnapConfinement.h"
#include "tests/platform/apps/AppsWorld.h"
#include "tests/platform/system/ProcFolder.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace {

using namespace LinuxPlatform;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::ProcessSample;

struct AppSourcesTest : testing::Test, TestSupport::AppsWorld {
    TestSupport::ProcFolder machine{proc};
    ProcessTable processes{proc};

    AppSourcesTest() { machine.setOwnControlGroup("/user.slice/session-1.scope"); }
};

TEST_F(AppSourcesTest, ProcessesAreReadAsTheyAre) {
    ProcessSample sample;
    sample.executable = "/usr/bin/thing";
    sample.arguments = {"thing", "", "two words"};
    sample.environment = {"NAME=value", "NAMES=others", "EMPTY=", "no assignment"};
    sample.controlGroup = "/user.slice/a.scope";
    sample.parent = 12;
    sample.startTime = 4711;
    machine.add(20, sample);
    machine.add(3, {});
    EXPECT_THAT(processes.ownProcesses(), ElementsAre(3, 20));
    EXPECT_EQ(processes.executable(20), "/usr/bin/thing");
    EXPECT_THAT(processes.arguments(20), ElementsAre("thing", "", "two words"));
    EXPECT_EQ(processes.environmentVariable(20, "NAME"), "value");
    EXPECT_EQ(processes.environmentVariable(20, "EMPTY"), "");
    EXPECT_EQ(processes.environmentVariable(20, "no assignment"), std::nullopt);
    EXPECT_EQ(processes.controlGroup(20), "/user.slice/a.scope");
    EXPECT_EQ(processes.controlGroupOfSelf(), "/user.slice/session-1.scope");
    EXPECT_EQ(processes.parent(20), 12);
    EXPECT_EQ(processes.startTime(20), 4711);
}

TEST_F(AppSourcesTest, NothingIsKnownOfAProcessThatIsGone) {
    EXPECT_THAT(processes.arguments(20), IsEmpty());
    EXPECT_EQ(processes.environmentVariable(20, "NAME"), std::nullopt);
    EXPECT_EQ(processes.controlGroup(20), "");
    EXPECT_EQ(processes.parent(20), std::nullopt);
    EXPECT_EQ(processes.startTime(20), std::nullopt);
    EXPECT_EQ(processes.securityLabel(20), "");
}

TEST_F(AppSourcesTest, FilesThatNobodyWritesDoNotHoldUs) {
    std::filesystem::create_directories(proc / "20/root");
    ASSERT_EQ(mkfifo((proc / "20/environ").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((proc / "20/root/.flatpak-info").c_str(), 0600), 0);
    EXPECT_EQ(processes.environmentVariable(20, "NAME"), std::nullopt);
    EXPECT_EQ(FlatpakSandbox(processes).app(20), std::nullopt);
}

TEST_F(AppSourcesTest, SeparateControlGroupHierarchiesAreUnderstood) {
    TestSupport::writeFile(proc / "20/cgroup",
                           "12:pids:/user.slice/other\n1:name=systemd:/user.slice/app-a-1.scope\n0::/\n");
    EXPECT_EQ(processes.controlGroup(20), "/user.slice/app-a-1.scope");
}

TEST_F(AppSourcesTest, AnInterpretersProgramIsNamed) {
    struct Case {
        std::vector<std::string> command;
        std::optional<std::string> name;
    };
    const std::vector<Case> cases{
        {{"/usr/bin/python3", "/usr/bin/terminator"}, "terminator"},
        {{"python3.11", "-u", "-W", "ignore", "./tool.py", "file.txt"}, "tool"},
        {{"python3", "-m", "gajim"}, "gajim"},
        {{"python3", "-m", "editor.gui.__main__"}, "editor"},
        {{"python3", "-c", "import this"}, std::nullopt},
        {{"python3", "-m"}, std::nullopt},
        {{"python3"}, std::nullopt},
        {{"python3", "/usr/share/thing/main.py"}, "thing"},
        {{"python3", "main.py"}, "main"},
        {{"python3", "./main.py"}, "main"},
        {{"python3", "/usr/bin/app"}, "app"},
        {{"perl", "-w", "-I", "/lib", "/usr/bin/shutter"}, "shutter"},
        {{"ruby3.1", "-e", "puts 1"}, std::nullopt},
        {{"node", "--require", "x.js", "/opt/thing/index.js"}, "thing"},
        {{"java", "-cp", "a.jar:b.jar", "-Xmx1g", "-jar", "/opt/Jitsi.jar"}, "Jitsi"},
        {{"java", "-classpath", "a.jar", "org.example.editor.Main"}, "editor"},
        {{"/opt/jdk/bin/java", "-m", "org.example.viewer/org.example.viewer.Main"}, "viewer"},
        {{"mono", "/usr/lib/keepass2/KeePass.exe"}, "KeePass"},
        {{"dotnet", "exec", "/opt/thing/Thing.dll"}, "Thing"},
        {{"wine64-preloader", R"(C:\Program Files\Office\WINWORD.EXE)"}, "WINWORD"},
        {{"electron", "--no-sandbox", "/usr/lib/signal/resources/app.asar"}, "signal"},
        {{"/usr/lib/electron22/electron", "/usr/share/thing"}, "thing"},
        {{"gjs", "-m", "/usr/share/org.gnome.Weather/org.gnome.Weather"}, "org.gnome.Weather"},
        {{"sh", "-c", "thing"}, std::nullopt},
        {{"/bin/sh", "/usr/bin/thing.sh"}, "thing"},
        {{"wish8.6", "/usr/bin/gitk"}, "gitk"},
        {{"/usr/bin/firefox", "page.html"}, std::nullopt},
        {{"python3", ""}, std::nullopt},
        {{"python3", "/"}, std::nullopt},
        {{}, std::nullopt},
    };
    for (const auto& [command, name] : cases) {
        EXPECT_EQ(interpretedProgram(command), name) << testing::PrintToString(command);
    }
}

TEST_F(AppSourcesTest, AProgramHasTheNamesOfItsFileAndOfWhatItWasCalled) {
    machine.add(1,
                {.executable = "/opt/google/chrome/chrome", .arguments = {"/usr/bin/google-chrome", "-x"}});
    machine.add(2, {.executable = "/usr/bin/gimp-2.10", .arguments = {"gimp-2.10"}});
    machine.add(3, {.executable = "/usr/lib/libreoffice/soffice.bin", .arguments = {"soffice.bin"}});
    machine.add(4, {.executable = "/usr/bin/python3.11", .arguments = {"terminator", "/usr/bin/terminator"}});
    machine.add(5, {.executable = "/usr/bin/7-zip", .arguments = {}});
    const ProgramNames names(processes);
    EXPECT_THAT(names.of(1), ElementsAre("chrome", "google-chrome"));
    EXPECT_THAT(names.of(2), ElementsAre("gimp-2.10", "gimp"));
    EXPECT_THAT(names.of(3), ElementsAre("soffice.bin", "soffice"));
    EXPECT_THAT(names.of(4), ElementsAre("terminator"));
    EXPECT_THAT(names.of(5), ElementsAre("7-zip"));
    EXPECT_THAT(names.of(99), IsEmpty());
}

TEST_F(AppSourcesTest, ALaunchCountsForTheProcessThatWasLaunched) {
    const auto launched = [](const std::string& file, const std::string& process) {
        ProcessSample sample;
        sample.environment = {"GIO_LAUNCHED_DESKTOP_FILE=" + file,
                              "GIO_LAUNCHED_DESKTOP_FILE_PID=" + process};
        return sample;
    };
    machine.add(1, launched("/a.desktop", "1"));
    machine.add(2, launched("/a.desktop", "1"));
    machine.add(3, launched("/a.desktop", ""));
    machine.add(4, launched("", "4"));
    machine.add(5, {.environment = {"GIO_LAUNCHED_DESKTOP_FILE_PID=5"}});
    const LaunchEnvironment launches(processes);
    EXPECT_EQ(launches.desktopFile(1), "/a.desktop");
    for (const std::uint32_t process : {2U, 3U, 4U, 5U, 6U}) {
        EXPECT_EQ(launches.desktopFile(process), std::nullopt) << process;
    }
}

TEST_F(AppSourcesTest, ASandboxNamesItsApp) {
    machine.add(1, {.flatpakInfo = "[Application]\nname=org.example.App\n[Instance]\ninstance-id=7\n"});
    machine.add(2, {.flatpakInfo = "[Runtime]\nruntime=runtime/org.example.Platform\n"});
    machine.add(3, {.flatpakInfo = "[Application]\nname=\n"});
    machine.add(4, {.flatpakInfo = "no key file"});
    const FlatpakSandbox flatpak(processes);
    EXPECT_EQ(flatpak.app(1), "org.example.App");
    for (const std::uint32_t process : {2U, 3U, 4U, 5U}) {
        EXPECT_EQ(flatpak.app(process), std::nullopt) << process;
    }
}

TEST_F(AppSourcesTest, ASnapIsKnownByItsMarks) {
    const std::string uuid = "-2f3b1d5c-1c1c-4f3a-8f60-0d9d8d6f3b1a.scope";
    machine.add(1, {.executable = "/usr/bin/python3", .securityLabel = "snap.thing.gui (enforce)"});
    machine.add(2, {.executable = "/snap/office/7/bin/writer",
                    .controlGroup = "/a/snap.office.writer" + uuid,
                    .securityLabel = "unconfined"});
    machine.add(3, {.executable = "/var/lib/snapd/snap/office/7/bin/office"});
    machine.add(4, {.executable = "/usr/bin/xclock",
                    .controlGroup = "/a/snap.code.code" + uuid,
                    .securityLabel = "snap.code.code (complain)"});
    machine.add(5, {.executable = "/snap/office"});
    machine.add(6, {.executable = "/usr/bin/x", .securityLabel = "snap.broken (enforce)"});
    const SnapConfinement snaps(processes);
    EXPECT_EQ(snaps.app(1), (SnapApp{"thing", "gui"}));
    EXPECT_EQ(snaps.app(2), (SnapApp{"office", "writer"}));
    EXPECT_EQ(snaps.app(3), (SnapApp{"office", "office"}));
    for (const std::uint32_t process : {4U, 5U, 6U, 7U}) {
        EXPECT_EQ(snaps.app(process), std::nullopt) << process;
    }
}

TEST_F(AppSourcesTest, AnImageIsKnownByItsFileAndItsEntry) {
    const std::vector<std::string> environment{"APPIMAGE=/home/u/Thing.AppImage", "APPDIR=/mnt/.mount_x"};
    machine.add(1, {.executable = "/mnt/.mount_x/usr/bin/thing", .environment = environment});
    machine.addFileSeenBy(1, "/mnt/.mount_x/org.example.Thing.desktop");
    machine.addFileSeenBy(1, "/mnt/.mount_x/thing.png");
    machine.add(2, {.executable = "/usr/bin/xdg-open", .environment = environment});
    machine.add(3, {.executable = "/mnt/.mount_xy/thing", .environment = environment});
    machine.add(4, {.executable = "/home/u/Thing.AppImage", .environment = environment});
    const AppImageRuntime images(processes);
    EXPECT_EQ(images.image(1), (AppImage{"/home/u/Thing.AppImage", "org.example.Thing"}));
    EXPECT_EQ(images.image(4), (AppImage{"/home/u/Thing.AppImage", ""}));
    for (const std::uint32_t process : {2U, 3U, 5U}) {
        EXPECT_EQ(images.image(process), std::nullopt) << process;
    }
}

TEST_F(AppSourcesTest, UnitsNameTheirApps) {
    struct Case {
        const char* group;
        std::vector<std::string> ids;
        std::optional<std::uint32_t> process;
    };
    const std::vector<Case> cases{
        {"/app.slice/app-gnome-org.gnome.Maps-4711.scope", {"org.gnome.Maps", "gnome-org.gnome.Maps"}, 4711},
        {"/app.slice/app-gnome-google\\x2dchrome-12.scope", {"google-chrome", "gnome-google-chrome"}, 12},
        {"/app.slice/app-org.kde.okular-9f3a.scope", {"org.kde.okular"}, std::nullopt},
        {"/app.slice/app-org.kde.okular@9f3a0815.service", {"org.kde.okular"}, std::nullopt},
        {"/app.slice/app-org.telegram.desktop@autostart.service/", {"org.telegram.desktop"}, std::nullopt},
        {"/app.slice/app-firefox.service", {"firefox"}, std::nullopt},
        {"/app.slice/app-flatpak-org.mozilla.firefox-77.scope",
         {"org.mozilla.firefox", "flatpak-org.mozilla.firefox"},
         77},
        {"/app.slice/app-debian-xterm-5.scope", {"xterm", "debian-xterm"}, 5},
        {"/app.slice/dbus-:1.2-org.gnome.Nautilus@0.service", {"org.gnome.Nautilus"}, std::nullopt},
        {"/app.slice/snap.office.writer-2f3b1d5c-1c1c-4f3a-8f60-0d9d8d6f3b1a.scope",
         {"office_writer"},
         std::nullopt},
        {"/app.slice/snap.office.writer.2f3b1d5c-1c1c-4f3a-8f60-0d9d8d6f3b1a.scope",
         {"office_writer"},
         std::nullopt},
        {"app-a\\x-1.scope", {"a\\x"}, 1},
    };
    for (const auto& [group, ids, process] : cases) {
        const auto unit = AppUnit::ofControlGroup(group);
        ASSERT_TRUE(unit) << group;
        EXPECT_EQ(unit->desktopEntryIds, ids) << group;
        EXPECT_EQ(unit->process, process) << group;
    }
    for (const auto* group : {"", "/", "/user.slice/session-2.scope", "/user@1000.service/init.scope",
                              "/app.slice/vte-spawn-1.scope", "/app.slice/app-org.gnome.Terminal.slice",
                              "app-.scope", "app-.service", "snap.x.scope", "dbus-:1.scope",
                              "dbus-:1.service", "/app.slice/gnome-terminal-server.service"}) {
        EXPECT_FALSE(AppUnit::ofControlGroup(group)) << group;
    }
}

TEST_F(AppSourcesTest, AUnitIsThatOfItsLeader) {
    const std::string named = "/app.slice/app-gnome-xterm-10.scope";
    const std::string unnamed = "/app.slice/app-xterm@0f.service";
    machine.add(10, {.controlGroup = named, .parent = 1});
    machine.add(11, {.controlGroup = named, .parent = 10});
    machine.add(12, {.controlGroup = named, .parent = 1});
    machine.add(20, {.controlGroup = unnamed, .parent = 1});
    machine.add(21, {.controlGroup = unnamed, .parent = 20});
    const AppScope scopes(processes);
    EXPECT_TRUE(scopes.ledBy(10));
    EXPECT_FALSE(scopes.ledBy(11));
    EXPECT_FALSE(scopes.ledBy(12)) << "its parent has ended, but the leader is there";
    EXPECT_TRUE(scopes.ledBy(20));
    EXPECT_FALSE(scopes.ledBy(21));
    machine.remove(10);
    EXPECT_TRUE(scopes.ledBy(12)) << "what the leader left behind";
}

struct ProcessIdentityTest : AppSourcesTest {
    AppIdentity identity{entries, ProcessTable(proc)};

    ProcessIdentityTest() {
        for (const auto* program : {"player", "flatpak", "xterm", "launcher"}) {
            addProgram(program);
        }
        add("org.example.Player", "Name=Player\nExec=player\nStartupWMClass=Player\n");
        add("org.example.Other",
            "Name=Other\nExec=flatpak run org.example.Other\nX-Flatpak=org.example.Other\n");
        add("xterm", "Name=XTerm\nExec=xterm\n");
        add("launcher", "Name=Launched\nExec=launcher --flag\n");
    }

    void add(const std::string& id, const std::string& lines) { install(system / (id + ".desktop"), lines); }

    std::string identify(std::uint32_t process, const std::string& windowClass = "") {
        const auto app = identity.identify({"", windowClass, "", "", process});
        return app ? app->bundleIdentifier : "absent";
    }
};

TEST_F(ProcessIdentityTest, ASandboxIsSurerThanAClass) {
    machine.add(1, {.flatpakInfo = "[Application]\nname=org.example.Other\n"});
    EXPECT_EQ(identify(1, "Player"), "org.example.Other");
    machine.add(2, {.flatpakInfo = "[Application]\nname=org.example.NotInstalled\n"});
    EXPECT_EQ(identify(2, "Player"), "org.example.NotInstalled");
}

TEST_F(ProcessIdentityTest, AScriptLendsItsAppToTheProgramThatItStarts) {
    machine.add(1, {.executable = "/usr/bin/dash",
                    .arguments = {"/bin/sh", "/opt/launched/start"},
                    .environment = {"GIO_LAUNCHED_DESKTOP_FILE=" + (system / "launcher.desktop").string(),
                                    "GIO_LAUNCHED_DESKTOP_FILE_PID=1"}});
    machine.add(2, {.executable = "/opt/launched/engine", .parent = 1});
    EXPECT_EQ(identify(2), "launcher");
    machine.add(3, {.executable = "/usr/bin/dash", .arguments = {"/bin/sh", "/usr/bin/player"}});
    machine.add(4, {.executable = "/opt/player/engine", .parent = 3});
    EXPECT_EQ(identify(4), "org.example.Player");
}

TEST_F(ProcessIdentityTest, ATerminalDoesNotLendItsAppToTheProgramsInIt) {
    machine.add(1, {.executable = "/usr/bin/xterm",
                    .environment = {"GIO_LAUNCHED_DESKTOP_FILE=" + (system / "xterm.desktop").string(),
                                    "GIO_LAUNCHED_DESKTOP_FILE_PID=1"},
                    .controlGroup = "/app.slice/app-gnome-xterm-1.scope"});
    machine.add(2, {.executable = "/usr/bin/bash",
                    .arguments = {"bash"},
                    .controlGroup = "/app.slice/app-gnome-xterm-1.scope",
                    .parent = 1});
    machine.add(3, {.executable = "/usr/bin/unheard-of",
                    .controlGroup = "/app.slice/app-gnome-xterm-1.scope",
                    .parent = 2});
    EXPECT_EQ(identify(3), "unheard-of");
    EXPECT_EQ(identify(1), "xterm");
}

TEST_F(ProcessIdentityTest, AUnitNamesAProgramThatNothingElseNames) {
    machine.add(5, {.executable = "/opt/engine", .controlGroup = "/app.slice/app-gnome-launcher-5.scope"});
    EXPECT_EQ(identify(5), "launcher");
}

TEST_F(ProcessIdentityTest, AChainOfScriptsThatNeverEndsIsLeft) {
    machine.add(7, {.executable = "/usr/bin/dash", .arguments = {"sh"}, .parent = 8});
    machine.add(8, {.executable = "/usr/bin/dash", .arguments = {"sh"}, .parent = 7});
    machine.add(9, {.executable = "/opt/engine", .parent = 8});
    EXPECT_EQ(identify(9), "engine");
}

TEST_F(ProcessIdentityTest, AnImageWithoutAnEntryIsCalledAsItCallsItself) {
    machine.add(1, {.executable = "/mnt/.mount_x/thing",
                    .environment = {"APPIMAGE=/home/u/Thing-1.2.AppImage", "APPDIR=/mnt/.mount_x"}});
    machine.addFileSeenBy(1, "/mnt/.mount_x/org.example.Thing.desktop");
    EXPECT_EQ(identify(1, "thing-window"), "org.example.Thing");
}

TEST_F(ProcessIdentityTest, AClassOfManyProgramsDoesNotMakeThemOne) {
    machine.add(1, {.executable = "/usr/bin/python3.11", .arguments = {"python3", "/opt/one.py"}});
    machine.add(2, {.executable = "/usr/bin/python3.11", .arguments = {"python3", "/opt/two.py"}});
    machine.add(3, {.executable = "/usr/bin/python3.11", .arguments = {"python3", "-c", "text"}});
    EXPECT_EQ(identify(1, "Tk"), "one");
    EXPECT_EQ(identify(2, "Tk"), "two");
    EXPECT_EQ(identify(3, "Tk"), "tk") << "better than nothing";
}

} // namespace
