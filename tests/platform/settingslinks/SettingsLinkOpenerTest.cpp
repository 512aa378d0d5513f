#include "platform/linux/settingslinks/SettingsLinkOpener.h"

#include <gmock/gmock.h>

#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::SettingsLinkOpener;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* camera = "x-apple.systempreferences:com.apple.preference.security?Privacy_Camera";
constexpr const char* focus = "x-apple.systempreferences:com.apple.Focus-Settings.extension";
constexpr const char* privacy = "x-apple.systempreferences:com.apple.preference.security";

struct World {
    std::set<std::string> installed;
    std::vector<std::string> started;

    bool open(const std::string& desktops, const std::string& url) {
        SettingsLinkOpener opener(desktops, [this](const std::vector<std::string>& command) {
            if (!installed.contains(command.front())) {
                return false;
            }
            started = command;
            return true;
        });
        return opener.open(url);
    }
};

TEST(SettingsLinkOpener, OpensThePageOfTheDesktop) {
    World world{{"gnome-control-center", "systemsettings", "xfce4-notifyd-config"}, {}};
    EXPECT_TRUE(world.open("ubuntu:GNOME", focus));
    EXPECT_THAT(world.started, ElementsAre("gnome-control-center", "notifications"));
    EXPECT_TRUE(world.open("KDE", focus));
    EXPECT_THAT(world.started, ElementsAre("systemsettings", "kcm_notifications"));
    EXPECT_TRUE(world.open("XFCE", focus));
    EXPECT_THAT(world.started, ElementsAre("xfce4-notifyd-config"));
    EXPECT_TRUE(world.open("GNOME", camera));
    EXPECT_THAT(world.started, ElementsAre("gnome-control-center", "camera"));
    EXPECT_TRUE(world.open("GNOME", privacy));
    EXPECT_THAT(world.started, ElementsAre("gnome-control-center", "privacy"));
}

/// What a desktop opens for each address; the first program is the one of its control centre.
struct Desktop {
    std::string name;
    std::vector<std::string> overview;
    std::vector<std::string> camera;
    std::vector<std::string> privacy;
    std::vector<std::string> focus;
};

void PrintTo(const Desktop& desktop, std::ostream* stream) {
    *stream << desktop.name;
}

const std::vector<Desktop> desktops{
    {"GNOME",
     {"gnome-control-center"},
     {"gnome-control-center", "camera"},
     {"gnome-control-center", "privacy"},
     {"gnome-control-center", "notifications"}},
    {"KDE",
     {"systemsettings"},
     {"systemsettings", "kcm_app-permissions"},
     {"systemsettings", "kcm_app-permissions"},
     {"systemsettings", "kcm_notifications"}},
    {"X-Cinnamon",
     {"cinnamon-settings"},
     {"cinnamon-settings", "privacy"},
     {"cinnamon-settings", "privacy"},
     {"cinnamon-settings", "notifications"}},
    {"MATE",
     {"mate-control-center"},
     {"mate-control-center"},
     {"mate-control-center"},
     {"mate-notification-properties"}},
    {"LXQt", {"lxqt-config"}, {"lxqt-config"}, {"lxqt-config"}, {"lxqt-config-notificationd"}},
    {"XFCE",
     {"xfce4-settings-manager"},
     {"xfce4-settings-manager"},
     {"xfce4-settings-manager"},
     {"xfce4-notifyd-config"}},
    {"Pantheon",
     {"io.elementary.settings"},
     {"io.elementary.settings", "settings://privacy"},
     {"io.elementary.settings", "settings://privacy"},
     {"io.elementary.settings", "settings://notifications"}},
};

using SettingsLinksOfDesktop = testing::TestWithParam<Desktop>;

TEST_P(SettingsLinksOfDesktop, OpensTheNearestPageOfItsOwn) {
    const auto& desktop = GetParam();
    World world;
    for (const auto& one : desktops) {
        for (const auto& command : {one.overview, one.camera, one.privacy, one.focus}) {
            world.installed.insert(command.front());
        }
    }
    EXPECT_TRUE(world.open(desktop.name, camera));
    EXPECT_EQ(world.started, desktop.camera);
    EXPECT_TRUE(world.open(desktop.name, privacy));
    EXPECT_EQ(world.started, desktop.privacy);
    EXPECT_TRUE(world.open(desktop.name, focus));
    EXPECT_EQ(world.started, desktop.focus);
}

TEST_P(SettingsLinksOfDesktop, OpensTheControlCentreWhereThereIsNothingNearer) {
    const auto& desktop = GetParam();
    World world{{desktop.overview.front()}, {}};
    EXPECT_TRUE(world.open(desktop.name, privacy));
    EXPECT_EQ(world.started.front(), desktop.overview.front());
    EXPECT_TRUE(world.open(desktop.name, focus));
    EXPECT_EQ(world.started.front(), desktop.overview.front());
    world.started.clear();
    EXPECT_FALSE(world.open(desktop.name, "https://example.org"));
    EXPECT_FALSE(world.open("Enlightenment", privacy));
    EXPECT_THAT(world.started, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Desktops, SettingsLinksOfDesktop, testing::ValuesIn(desktops),
                         [](const auto& desktop) {
                             auto name = desktop.param.name;
                             std::erase(name, '-');
                             return name;
                         });

TEST(SettingsLinkOpener, SaysWhenThereIsNoSuchPage) {
    World world{{"gnome-control-center"}, {}};
    EXPECT_FALSE(world.open("XFCE", camera));
    EXPECT_FALSE(world.open("", focus));
    EXPECT_FALSE(world.open("KDE", focus));
    EXPECT_FALSE(world.open("GNOME", "https://example.org"));
    EXPECT_THAT(world.started, IsEmpty());
}

} // namespace
