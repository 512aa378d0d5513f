#include "platform/linux/apps/AppIdentity.h"

#include "tests/platform/apps/AppsWorld.h"
#include "tests/platform/system/ProcFolder.h"

#include <gmock/gmock.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::AppIdentity;
using LinuxPlatform::ProcessTable;
using TestSupport::ProcessSample;

struct Installed {
    const char* id;
    /// "BIN/" stands for a folder of programs.
    const char* exec;
    const char* otherLines;
};

/// As the packages of these programs install them.
const std::vector<Installed> installed{
    {"firefox", "BIN/firefox %u", "StartupWMClass=firefox\n"},
    {"firefox_firefox", "env BAMF_DESKTOP_FILE_HINT=/firefox_firefox.desktop BIN/snap-firefox %u",
     "X-SnapInstanceName=firefox\n"},
    {"org.mozilla.firefox", "BIN/flatpak run --command=firefox org.mozilla.firefox @@u %u @@",
     "StartupWMClass=firefox\nX-Flatpak=org.mozilla.firefox\n"},
    {"firefox-esr", "BIN/firefox-esr %u", "StartupWMClass=firefox-esr\n"},
    {"chromium", "BIN/chromium %U", "StartupWMClass=chromium\n"},
    {"chrome-cadlkienfkclaiaibeoongdcgmdikeeg-Default",
     "BIN/chromium --app-id=cadlkienfkclaiaibeoongdcgmdikeeg",
     "StartupWMClass=crx_cadlkienfkclaiaibeoongdcgmdikeeg\n"},
    {"org.chromium.Chromium", "BIN/flatpak run --command=/app/bin/chromium org.chromium.Chromium @@u %U @@",
     "X-Flatpak=org.chromium.Chromium\n"},
    {"org.chromium.Chromium.flextop.chrome-mjo-Default", "BIN/flatpak run org.chromium.Chromium --app-id=mjo",
     "StartupWMClass=crx_mjo\nX-Flatpak=org.chromium.Chromium\n"},
    {"google-chrome", "BIN/google-chrome-stable %U", ""},
    {"brave-browser", "BIN/brave-browser-stable %U", ""},
    {"microsoft-edge", "BIN/microsoft-edge-stable %U", ""},
    {"code", "BIN/code %F", "StartupWMClass=Code\n"},
    {"code-url-handler", "BIN/code --open-url %U", "NoDisplay=true\n"},
    {"slack", "BIN/slack %U", "StartupWMClass=Slack\n"},
    {"discord", "BIN/Discord", "StartupWMClass=discord\n"},
    {"com.discordapp.Discord", "BIN/flatpak run --command=com.discordapp.Discord com.discordapp.Discord",
     "StartupWMClass=discord\nX-Flatpak=com.discordapp.Discord\n"},
    {"signal-desktop", "BIN/signal-desktop --no-sandbox %U", "StartupWMClass=Signal\n"},
    {"org.telegram.desktop", "BIN/telegram-desktop -- %u", "StartupWMClass=TelegramDesktop\n"},
    {"Zoom", "BIN/zoom %U", "StartupWMClass=zoom\n"},
    {"teams-for-linux", "BIN/teams-for-linux %U", "StartupWMClass=teams-for-linux\n"},
    {"webex", "BIN/CiscoCollabHost %U", "StartupWMClass=webex\n"},
    {"spotify", "BIN/spotify %U", "StartupWMClass=spotify\n"},
    {"com.obsproject.Studio", "BIN/obs", "StartupWMClass=obs\n"},
    {"libreoffice-startcenter", "BIN/libreoffice %U", "StartupWMClass=libreoffice-startcenter\n"},
    {"libreoffice-writer", "BIN/libreoffice --writer %U", "StartupWMClass=libreoffice-writer\n"},
    {"libreoffice-calc", "BIN/libreoffice --calc %U", "StartupWMClass=libreoffice-calc\n"},
    {"gimp", "BIN/gimp-2.10 %U", ""},
    {"org.gimp.GIMP", "BIN/flatpak run --command=gimp-2.10 org.gimp.GIMP @@u %U @@",
     "X-Flatpak=org.gimp.GIMP\n"},
    {"org.inkscape.Inkscape", "BIN/inkscape %F", "StartupWMClass=Inkscape\n"},
    {"vlc", "BIN/vlc --started-from-file %U", ""},
    {"mpv", "BIN/mpv --player-operation-mode=pseudo-gui -- %U", "StartupWMClass=mpv\n"},
    {"thunderbird", "BIN/thunderbird %u", "StartupWMClass=thunderbird\n"},
    {"org.gnome.Nautilus", "BIN/nautilus --new-window %U", "DBusActivatable=true\n"},
    {"org.gnome.Terminal", "BIN/gnome-terminal", ""},
    {"org.gnome.Maps", "BIN/gnome-maps %U", "DBusActivatable=true\n"},
    {"org.gnome.Evince", "BIN/evince %U", ""},
    {"org.gnome.tweaks", "BIN/gnome-tweaks", ""},
    {"org.kde.konsole", "BIN/konsole", ""},
    {"org.kde.dolphin", "BIN/dolphin %u", ""},
    {"org.kde.okular", "BIN/okular %U", ""},
    {"debian-xterm", "BIN/xterm", "StartupWMClass=XTerm\n"},
    {"debian-uxterm", "BIN/uxterm", "StartupWMClass=UXTerm\n"},
    {"org.xfce.mousepad", "BIN/mousepad %U", ""},
    {"org.xfce.mousepad-settings", "BIN/mousepad --preferences", ""},
    {"thunar", "BIN/thunar %U", ""},
    {"terminator", "BIN/terminator", ""},
    {"virt-manager", "BIN/virt-manager", ""},
    {"steam", "BIN/steam %U", ""},
    {"wine-Programs-Notepad++", R"(env WINEPREFIX=/home/u/.wine BIN/wine 'C:\\\\npp\\\\notepad++.exe')",
     "StartupWMClass=notepad++.exe\n"},
    {"jetbrains-idea", "BIN/idea.sh %f", "StartupWMClass=jetbrains-idea\n"},
    {"netbeans", "BIN/netbeans", ""},
    {"jabref", "BIN/java -jar /usr/share/java/JabRef-5.jar %F", ""},
    {"element-desktop", "BIN/element-desktop %u", "StartupWMClass=Element\n"},
    {"gitk", "BIN/gitk", ""},
    {"org.gnu.pan", "BIN/python3 /usr/share/pan/pan.py %U", ""},
    {"org.keepassxc.KeePassXC", "BIN/keepassxc %f", "StartupWMClass=keepassxc\n"},
    {"appimagekit_0f-Obsidian", "BIN/Obsidian-1.4.16.AppImage --no-sandbox %U", ""},
    {"emacs", "BIN/emacs %F", "StartupWMClass=Emacs\n"},
    {"gvim", "BIN/gvim -f %F", ""},
    {"org.gnome.Evolution", "BIN/evolution %U", ""},
};

struct Sample {
    const char* identifier;
    const char* instanceName;
    const char* className;
    ProcessSample process;
    const char* applicationId = "";
    const char* desktopFile = "";
};

std::ostream& operator<<(std::ostream& out, const Sample& sample) {
    return out << sample.instanceName << ", " << sample.className << " of " << sample.process.executable;
}

ProcessSample runs(const char* executable, std::vector<std::string> arguments = {}) {
    ProcessSample process;
    process.executable = executable;
    process.arguments = std::move(arguments);
    return process;
}

ProcessSample flatpak(const char* app, const char* executable) {
    auto process = runs(executable);
    process.flatpakInfo =
        std::string("[Application]\nname=") + app + "\nruntime=runtime/org.example.Platform/x86_64/1\n";
    process.controlGroup = std::string("/user.slice/app.slice/app-flatpak-") + app + "-9.scope";
    return process;
}

ProcessSample snap(const char* name, const char* executable) {
    auto process = runs(executable);
    process.controlGroup =
        std::string("/user.slice/app.slice/snap.") + name + "-2f3b1d5c-1c1c-4f3a-8f60-0d9d8d6f3b1a.scope";
    process.securityLabel = std::string("snap.") + name + " (enforce)";
    return process;
}

ProcessSample appImage(const char* file, const char* executable) {
    auto process = runs(executable);
    process.environment = {std::string("APPIMAGE=") + file, "APPDIR=/mnt/.mount_a1b2c3"};
    return process;
}

/// With what its process says, and what its windows say in that case.
const std::vector<Sample> samples{
    {"firefox", "Navigator", "firefox", runs("/usr/lib/firefox/firefox")},
    {"firefox", "Navigator", "firefox",
     snap("firefox.firefox", "/snap/firefox/2987/usr/lib/firefox/firefox")},
    {"firefox", "Navigator", "firefox", flatpak("org.mozilla.firefox", "/app/lib/firefox/firefox")},
    {"firefox", "Places", "Firefox", runs("/usr/lib/firefox/firefox")},
    {"firefox", "", "", runs("/usr/lib/firefox/firefox")},
    {"firefox", "", "", flatpak("org.mozilla.firefox", "/app/lib/firefox/firefox")},
    {"firefox-esr", "Navigator", "firefox-esr", runs("/usr/lib/firefox-esr/firefox-esr")},
    {"firefox-esr", "", "", runs("/usr/lib/firefox-esr/firefox-esr")},
    {"chromium", "chromium", "Chromium", runs("/usr/lib/chromium/chromium")},
    {"chromium", "chromium (/home/u/p)", "Chromium", runs("/usr/lib/chromium/chromium")},
    {"chromium", "chromium-browser", "Chromium-browser",
     flatpak("org.chromium.Chromium", "/app/chromium/chrome")},
    {"chrome-cadlkienfkclaiaibeoongdcgmdikeeg-Default", "crx_cadlkienfkclaiaibeoongdcgmdikeeg", "Chromium",
     runs("/usr/lib/chromium/chromium")},
    {"org.chromium.Chromium.flextop.chrome-mjo-Default", "crx_mjo", "Chromium",
     flatpak("org.chromium.Chromium", "/app/chromium/chrome")},
    {"com.google.Chrome", "google-chrome", "Google-chrome", runs("/opt/google/chrome/chrome")},
    {"com.google.Chrome", "", "",
     runs("/opt/google/chrome/chrome", {"/usr/bin/google-chrome-stable", "--profile-directory=Default"})},
    {"brave-browser", "brave-browser", "Brave-browser", runs("/opt/brave.com/brave/brave")},
    {"microsoft-edge", "microsoft-edge", "Microsoft-edge", runs("/opt/microsoft/msedge/msedge")},
    {"code", "code", "Code", runs("/usr/share/code/code")},
    {"code", "", "", runs("/usr/share/code/code")},
    {"com.tinyspeck.slackmacgap", "slack", "Slack", runs("/usr/lib/slack/slack")},
    {"com.hnc.Discord", "discord", "discord", runs("/usr/share/discord/Discord")},
    {"com.hnc.Discord", "discord", "discord", flatpak("com.discordapp.Discord", "/app/discord/Discord")},
    {"com.hnc.Discord", "", "", runs("/usr/share/discord/Discord")},
    {"signal-desktop", "signal", "Signal", runs("/opt/Signal/signal-desktop")},
    {"org.telegram.desktop", "telegram-desktop", "TelegramDesktop", runs("/usr/bin/telegram-desktop")},
    {"us.zoom.xos", "zoom", "zoom", runs("/opt/zoom/zoom")},
    {"us.zoom.xos", "zoom", "zoom", flatpak("us.zoom.Zoom", "/app/extra/zoom/zoom")},
    {"com.microsoft.teams2", "teams-for-linux", "teams-for-linux",
     runs("/opt/teams-for-linux/teams-for-linux")},
    {"com.microsoft.teams2", "teams-for-linux", "teams-for-linux",
     snap("teams-for-linux.teams-for-linux", "/snap/teams-for-linux/400/teams-for-linux")},
    {"com.cisco.webexmeetingsapp", "CiscoCollabHost", "webex", runs("/opt/Webex/bin/CiscoCollabHost")},
    {"com.spotify.client", "spotify", "Spotify", runs("/usr/share/spotify/spotify")},
    {"com.spotify.client", "spotify", "Spotify",
     flatpak("com.spotify.Client", "/app/extra/share/spotify/spotify")},
    {"com.obsproject.obs-studio", "obs", "obs", runs("/usr/bin/obs")},
    {"com.obsproject.obs-studio", "obs", "obs", flatpak("com.obsproject.Studio", "/app/bin/obs")},
    {"libreoffice-writer", "libreoffice", "libreoffice-writer",
     runs("/usr/lib/libreoffice/program/soffice.bin")},
    {"libreoffice-calc", "libreoffice", "libreoffice-calc", runs("/usr/lib/libreoffice/program/soffice.bin")},
    {"libreoffice-startcenter", "libreoffice", "libreoffice-startcenter",
     runs("/usr/lib/libreoffice/program/soffice.bin")},
    {"gimp", "gimp-2.10", "Gimp-2.10", runs("/usr/bin/gimp-2.10")},
    {"gimp", "gimp-2.10", "Gimp-2.10", flatpak("org.gimp.GIMP", "/app/bin/gimp-2.10")},
    {"org.inkscape.Inkscape", "org.inkscape.Inkscape", "Inkscape", runs("/usr/bin/inkscape")},
    {"vlc", "vlc", "vlc", runs("/usr/bin/vlc")},
    {"mpv", "gl", "mpv", runs("/usr/bin/mpv")},
    {"thunderbird", "Mail", "thunderbird", runs("/usr/lib/thunderbird/thunderbird")},
    {"thunderbird", "Msgcompose", "thunderbird", runs("/usr/lib/thunderbird/thunderbird-bin")},
    {"thunderbird", "", "", runs("/usr/lib/thunderbird/thunderbird-bin")},
    {"org.gnome.Nautilus", "org.gnome.Nautilus", "Org.gnome.Nautilus", runs("/usr/bin/nautilus"),
     "org.gnome.Nautilus"},
    {"org.gnome.Nautilus", "", "", runs("/usr/bin/nautilus")},
    {"org.gnome.Terminal", "gnome-terminal-server", "Gnome-terminal",
     runs("/usr/libexec/gnome-terminal-server"), "org.gnome.Terminal"},
    {"org.gnome.Terminal", "gnome-terminal-server", "Gnome-terminal",
     runs("/usr/libexec/gnome-terminal-server")},
    {"org.gnome.Maps", "gjs", "Gjs", runs("/usr/bin/gjs-console", {"/usr/bin/gjs", "/usr/bin/gnome-maps"})},
    {"org.gnome.Maps", "gjs", "Gjs",
     runs("/usr/bin/gjs-console", {"/usr/bin/gjs", "-m", "/usr/share/org.gnome.Maps/org.gnome.Maps"})},
    {"org.gnome.Maps", "org.gnome.Maps", "Org.gnome.Maps", runs("/usr/bin/gjs-console"), "org.gnome.Maps"},
    {"org.gnome.Evince", "evince", "Evince", runs("/usr/bin/evince")},
    {"org.gnome.tweaks", "gnome-tweaks", "Gnome-tweaks",
     runs("/usr/bin/python3.11", {"/usr/bin/python3", "/usr/bin/gnome-tweaks"})},
    {"org.kde.konsole", "konsole", "konsole", runs("/usr/bin/konsole"), "", "org.kde.konsole"},
    {"org.kde.konsole", "konsole", "konsole", runs("/usr/bin/konsole")},
    {"org.kde.dolphin", "dolphin", "dolphin", runs("/usr/bin/dolphin"), "", "org.kde.dolphin.desktop"},
    {"org.kde.okular", "okular", "okular", runs("/usr/bin/okular")},
    {"debian-xterm", "xterm", "XTerm", runs("/usr/bin/xterm")},
    {"debian-uxterm", "xterm", "UXTerm", runs("/usr/bin/xterm")},
    {"org.xfce.mousepad", "mousepad", "Mousepad", runs("/usr/bin/mousepad"), "org.xfce.mousepad"},
    {"org.xfce.mousepad", "mousepad", "Mousepad", runs("/usr/bin/mousepad")},
    {"thunar", "thunar", "Thunar", runs("/usr/bin/thunar")},
    {"terminator", "terminator", "Terminator",
     runs("/usr/bin/python3.11", {"/usr/bin/python3", "/usr/bin/terminator"})},
    {"terminator", "", "", runs("/usr/bin/python3.11", {"/usr/bin/python3", "-u", "/usr/bin/terminator"})},
    {"virt-manager", "virt-manager", "Virt-manager",
     runs("/usr/bin/python3.11", {"python3", "/usr/share/virt-manager/virt-manager.py"})},
    {"virt-manager", "", "",
     runs("/usr/bin/python3.11", {"python3", "/usr/share/virt-manager/virt-manager.py"})},
    {"steam", "steamwebhelper", "steam", runs("/home/u/.steam/ubuntu12_64/steamwebhelper")},
    {"steam_app_570", "steam_app_570", "steam_app_570", runs("/usr/bin/wine64-preloader")},
    {"wine-Programs-Notepad++", "notepad++.exe", "notepad++.exe", runs("/usr/bin/wine64-preloader")},
    {"winword.exe", "winword.exe", "winword.exe",
     runs("/usr/bin/wine64-preloader", {R"(C:\Program Files\Office\WINWORD.EXE)"})},
    {"jetbrains-idea", "jetbrains-idea", "jetbrains-idea",
     runs("/opt/idea/jbr/bin/java", {"/opt/idea/jbr/bin/java", "com.intellij.idea.Main"})},
    {"netbeans", "sun-awt-X11-XFramePeer", "java-lang-Thread",
     runs("/usr/lib/jvm/17/bin/java", {"java", "-cp", "/usr/share/netbeans", "org.netbeans.Main"})},
    {"jabref", "sun-awt-X11-XFramePeer", "java-lang-Thread",
     runs("/usr/lib/jvm/17/bin/java", {"java", "-Xmx1g", "-jar", "/opt/jabref/JabRef-5.jar"})},
    {"element-desktop", "element", "Element", runs("/usr/lib/electron22/electron")},
    {"element-desktop", "electron", "Electron",
     runs("/usr/lib/electron22/electron",
          {"/usr/lib/electron22/electron", "/usr/lib/element-desktop/resources/app.asar"})},
    {"gitk", "gitk", "Gitk", runs("/usr/bin/wish8.6", {"/usr/bin/wish", "/usr/bin/gitk"})},
    {"gitk", "tk", "Tk", runs("/usr/bin/wish8.6", {"/usr/bin/wish", "/usr/bin/gitk"})},
    {"org.gnu.pan", "tk", "Tk", runs("/usr/bin/python3.11", {"python3", "/usr/share/pan/pan.py", "letter"})},
    {"org.keepassxc.KeePassXC", "keepassxc", "KeePassXC", runs("/usr/bin/keepassxc")},
    {"org.keepassxc.KeePassXC", "keepassxc", "KeePassXC",
     appImage("/home/u/KeePassXC-2.7.6-x86_64.AppImage", "/mnt/.mount_a1b2c3/usr/bin/keepassxc")},
    {"appimagekit_0f-Obsidian", "", "",
     appImage("/home/u/Applications/Obsidian-1.4.16.AppImage", "/mnt/.mount_a1b2c3/obsidian")},
    {"emacs", "emacs", "Emacs", runs("/usr/bin/emacs-gtk")},
    {"gvim", "gvim", "Gvim", runs("/usr/bin/vim.gtk3", {"gvim"})},
    {"org.gnome.Evolution", "evolution", "Evolution", runs("/usr/bin/evolution")},
    {"xcalc", "xcalc", "XCalc", runs("/usr/bin/xcalc")},
};

struct RealWorldAppsTest : testing::Test, TestSupport::AppsWorld {
    RealWorldAppsTest() {
        for (const auto& [id, exec, otherLines] : installed) {
            std::string command = exec;
            for (auto start = command.find("BIN/"); start != std::string::npos;
                 start = command.find("BIN/")) {
                addProgram(command.substr(start + 4, command.find(' ', start) - start - 4));
                command.replace(start, 3, bin.string());
            }
            install(system / (std::string(id) + ".desktop"),
                    std::string("Name=") + id + "\nExec=" + command + "\n" + otherLines);
        }
    }

    TestSupport::ProcFolder processes{proc};
    AppIdentity identity{entries, ProcessTable(proc)};
};

TEST_F(RealWorldAppsTest, EveryEntryIsRead) {
    EXPECT_EQ(entries.all().size(), installed.size());
}

TEST_F(RealWorldAppsTest, WindowsBelongToTheirApps) {
    std::uint32_t process = 100;
    for (const auto& sample : samples) {
        processes.add(++process, sample.process);
        const auto app = identity.identify(
            {sample.instanceName, sample.className, sample.desktopFile, sample.applicationId, process});
        EXPECT_EQ(app ? app->bundleIdentifier : "absent", sample.identifier) << sample;
    }
}

TEST_F(RealWorldAppsTest, AProgramIsTheSameAppHoweverItWasStarted) {
    std::uint32_t process = 100;
    for (const auto& sample : samples) {
        const auto identify = [&](const ProcessSample& sampled) {
            processes.add(++process, sampled);
            const auto app = identity.identify(
                {sample.instanceName, sample.className, sample.desktopFile, sample.applicationId, process});
            return app ? app->bundleIdentifier : "absent";
        };
        auto fromTerminal = sample.process;
        fromTerminal.environment.emplace_back("GIO_LAUNCHED_DESKTOP_FILE=" +
                                              (system / "org.gnome.Terminal.desktop").string());
        fromTerminal.environment.emplace_back("GIO_LAUNCHED_DESKTOP_FILE_PID=99");
        EXPECT_EQ(identify(fromTerminal), sample.identifier) << sample;
        if (sample.process.controlGroup.empty()) {
            auto inScope = sample.process;
            processes.add(99, {});
            inScope.controlGroup = "/user.slice/app.slice/app-gnome-org.gnome.Terminal-98.scope";
            processes.remove(98);
            processes.add(98, inScope);
            EXPECT_EQ(identify(inScope), sample.identifier) << sample;
            processes.remove(99);
        }
    }
}

} // namespace
