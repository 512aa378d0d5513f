#include "platform/linux/apps/BundleIdentifiers.h"

#include "platform/linux/system/AsciiCase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

/// (desktop-entry id, identifier). Only packagings of the same program share an identifier; other channels of
/// it, such as a beta, are programs of their own.
constexpr std::array<std::pair<std::string_view, std::string_view>, 99> equivalents{{
    {"zoom", "us.zoom.xos"},
    {"us.zoom.Zoom", "us.zoom.xos"},
    {"zoom-client_zoom-client", "us.zoom.xos"},
    {"teams", "com.microsoft.teams"},
    {"com.microsoft.Teams", "com.microsoft.teams"},
    {"teams-for-linux", "com.microsoft.teams2"},
    {"teams-for-linux_teams-for-linux", "com.microsoft.teams2"},
    {"com.github.IsmaelMartinez.teams_for_linux", "com.microsoft.teams2"},
    {"webex", "com.cisco.webexmeetingsapp"},
    {"com.webex.Webex", "com.cisco.webexmeetingsapp"},
    {"discord", "com.hnc.Discord"},
    {"discord_discord", "com.hnc.Discord"},
    {"com.discordapp.Discord", "com.hnc.Discord"},
    {"obs", "com.obsproject.obs-studio"},
    {"com.obsproject.Studio", "com.obsproject.obs-studio"},
    {"obs-studio_obs-studio", "com.obsproject.obs-studio"},
    {"google-chrome", "com.google.Chrome"},
    {"google-chrome-stable", "com.google.Chrome"},
    {"com.google.Chrome", "com.google.Chrome"},
    {"slack", "com.tinyspeck.slackmacgap"},
    {"slack_slack", "com.tinyspeck.slackmacgap"},
    {"com.slack.Slack", "com.tinyspeck.slackmacgap"},
    {"spotify", "com.spotify.client"},
    {"spotify_spotify", "com.spotify.client"},
    {"com.spotify.Client", "com.spotify.client"},
    {"firefox_firefox", "firefox"},
    {"org.mozilla.firefox", "firefox"},
    {"thunderbird_thunderbird", "thunderbird"},
    {"org.mozilla.Thunderbird", "thunderbird"},
    {"net.thunderbird.Thunderbird", "thunderbird"},
    {"chromium-browser", "chromium"},
    {"chromium_chromium", "chromium"},
    {"org.chromium.Chromium", "chromium"},
    {"brave_brave", "brave-browser"},
    {"com.brave.Browser", "brave-browser"},
    {"com.microsoft.Edge", "microsoft-edge"},
    {"microsoft-edge-stable", "microsoft-edge"},
    {"vivaldi", "vivaldi-stable"},
    {"vivaldi_vivaldi-stable", "vivaldi-stable"},
    {"com.vivaldi.Vivaldi", "vivaldi-stable"},
    {"opera_opera", "opera"},
    {"com.opera.Opera", "opera"},
    {"signal", "signal-desktop"},
    {"signal-desktop_signal-desktop", "signal-desktop"},
    {"org.signal.Signal", "signal-desktop"},
    {"telegramdesktop", "org.telegram.desktop"},
    {"telegram-desktop", "org.telegram.desktop"},
    {"telegram-desktop_telegram-desktop", "org.telegram.desktop"},
    {"element-desktop_element-desktop", "element-desktop"},
    {"im.riot.Riot", "element-desktop"},
    {"skype_skypeforlinux", "skypeforlinux"},
    {"com.skype.Client", "skypeforlinux"},
    {"mattermost-desktop_mattermost-desktop", "mattermost-desktop"},
    {"com.mattermost.Desktop", "mattermost-desktop"},
    {"code_code", "code"},
    {"com.visualstudio.code", "code"},
    {"codium_codium", "codium"},
    {"com.vscodium.codium", "codium"},
    {"libreoffice_writer", "libreoffice-writer"},
    {"org.libreoffice.LibreOffice.writer", "libreoffice-writer"},
    {"libreoffice_calc", "libreoffice-calc"},
    {"org.libreoffice.LibreOffice.calc", "libreoffice-calc"},
    {"libreoffice_impress", "libreoffice-impress"},
    {"org.libreoffice.LibreOffice.impress", "libreoffice-impress"},
    {"libreoffice_draw", "libreoffice-draw"},
    {"org.libreoffice.LibreOffice.draw", "libreoffice-draw"},
    {"libreoffice_base", "libreoffice-base"},
    {"org.libreoffice.LibreOffice.base", "libreoffice-base"},
    {"libreoffice_libreoffice", "libreoffice-startcenter"},
    {"org.libreoffice.LibreOffice", "libreoffice-startcenter"},
    {"gimp_gimp", "gimp"},
    {"org.gimp.GIMP", "gimp"},
    {"inkscape", "org.inkscape.Inkscape"},
    {"inkscape_inkscape", "org.inkscape.Inkscape"},
    {"krita", "org.kde.krita"},
    {"krita_krita", "org.kde.krita"},
    {"vlc_vlc", "vlc"},
    {"org.videolan.VLC", "vlc"},
    {"io.mpv.Mpv", "mpv"},
    {"audacity_audacity", "audacity"},
    {"org.audacityteam.Audacity", "audacity"},
    {"blender_blender", "blender"},
    {"org.blender.Blender", "blender"},
    {"steam_steam", "steam"},
    {"com.valvesoftware.Steam", "steam"},
    {"keepassxc", "org.keepassxc.KeePassXC"},
    {"keepassxc_keepassxc", "org.keepassxc.KeePassXC"},
    {"bitwarden_bitwarden", "bitwarden"},
    {"com.bitwarden.desktop", "bitwarden"},
    {"1password_1password", "1password"},
    {"com.onepassword.OnePassword", "1password"},
    {"obsidian_obsidian", "obsidian"},
    {"md.obsidian.Obsidian", "obsidian"},
    {"postman_postman", "postman"},
    {"com.getpostman.Postman", "postman"},
    {"com.transmissionbt.Transmission", "transmission-gtk"},
    {"com.transmissionbt.transmission", "transmission-gtk"},
    {"filezilla_filezilla", "filezilla"},
    {"org.filezillaproject.Filezilla", "filezilla"},
}};

} // namespace

std::string bundleIdentifierFor(std::string_view desktopEntryId) {
    const auto* const found = std::ranges::find_if(
        equivalents, [&](const auto& entry) { return equalsIgnoringAsciiCase(entry.first, desktopEntryId); });
    return std::string(found == equivalents.end() ? desktopEntryId : found->second);
}

} // namespace LinuxPlatform
