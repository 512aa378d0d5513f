#include "platform/linux/settingslinks/SettingsLinkOpener.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

namespace SettingsLink = Platform::SettingsLink;

/// A page of a desktop's control centre; "" as the desktop stands for every desktop.
struct Page {
    std::string_view url;
    std::string_view desktop;
    std::string_view program;
    std::string_view argument;
};

/// Earlier pages are tried first.
constexpr std::array pages{
    Page{SettingsLink::cameraPrivacy, "GNOME", "gnome-control-center", "camera"},
    Page{SettingsLink::cameraPrivacy, "KDE", "systemsettings", "kcm_app-permissions"},
    Page{SettingsLink::cameraPrivacy, "X-Cinnamon", "cinnamon-settings", "privacy"},
    Page{SettingsLink::cameraPrivacy, "Pantheon", "io.elementary.settings", "settings://privacy"},
    Page{SettingsLink::privacyAndSecurity, "GNOME", "gnome-control-center", "privacy"},
    Page{SettingsLink::privacyAndSecurity, "KDE", "systemsettings", "kcm_app-permissions"},
    Page{SettingsLink::privacyAndSecurity, "X-Cinnamon", "cinnamon-settings", "privacy"},
    Page{SettingsLink::privacyAndSecurity, "Pantheon", "io.elementary.settings", "settings://privacy"},
    Page{SettingsLink::focus, "GNOME", "gnome-control-center", "notifications"},
    Page{SettingsLink::focus, "KDE", "systemsettings", "kcm_notifications"},
    Page{SettingsLink::focus, "X-Cinnamon", "cinnamon-settings", "notifications"},
    Page{SettingsLink::focus, "MATE", "mate-notification-properties", ""},
    Page{SettingsLink::focus, "LXQt", "lxqt-config-notificationd", ""},
    Page{SettingsLink::focus, "Pantheon", "io.elementary.settings", "settings://notifications"},
    Page{SettingsLink::focus, "", "xfce4-notifyd-config", ""},
};

/// A desktop's whole control centre, for what has no page of its own there.
struct Overview {
    std::string_view desktop;
    std::string_view program;
};

constexpr std::array overviews{
    Overview{"GNOME", "gnome-control-center"},
    Overview{"KDE", "systemsettings"},
    Overview{"X-Cinnamon", "cinnamon-settings"},
    Overview{"MATE", "mate-control-center"},
    Overview{"LXQt", "lxqt-config"},
    Overview{"XFCE", "xfce4-settings-manager"},
    Overview{"Pantheon", "io.elementary.settings"},
};

} // namespace

SettingsLinkOpener::SettingsLinkOpener(const std::string& desktops, Launch launch)
    : launch_(std::move(launch)) {
    std::istringstream list(desktops);
    for (std::string desktop; std::getline(list, desktop, ':');) {
        desktops_.push_back(desktop);
    }
}

bool SettingsLinkOpener::open(const std::string& url) {
    bool isKnown = false;
    for (const auto& page : pages) {
        if (page.url != url) {
            continue;
        }
        isKnown = true;
        if (!page.desktop.empty() && !isHere(page.desktop)) {
            continue;
        }
        std::vector<std::string> command{std::string(page.program)};
        if (!page.argument.empty()) {
            command.emplace_back(page.argument);
        }
        if (launch_(command)) {
            return true;
        }
    }
    return isKnown && std::ranges::any_of(overviews, [this](const Overview& overview) {
               return isHere(overview.desktop) && launch_({std::string(overview.program)});
           });
}

bool SettingsLinkOpener::isHere(std::string_view desktop) const {
    return std::ranges::find(desktops_, desktop) != desktops_.end();
}

} // namespace LinuxPlatform
