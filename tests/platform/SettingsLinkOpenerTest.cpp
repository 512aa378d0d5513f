#include "platform/linux/settingslinks/SettingsLinkOpener.h"

#include <gmock/gmock.h>

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

TEST(SettingsLinkOpener, SaysWhenThereIsNoSuchPage) {
    World world{{"gnome-control-center"}, {}};
    EXPECT_FALSE(world.open("XFCE", camera));
    EXPECT_FALSE(world.open("", focus));
    EXPECT_FALSE(world.open("KDE", focus));
    EXPECT_FALSE(world.open("GNOME", "https://example.org"));
    EXPECT_THAT(world.started, IsEmpty());
}

} // namespace
