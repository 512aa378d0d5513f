#include "platform/linux/apps/BundleIdentifiers.h"

#include "platform/linux/apps/AsciiCase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

/// (desktop-entry id, identifier). Only packagings of the same program share an identifier.
constexpr std::array<std::pair<std::string_view, std::string_view>, 26> equivalents{{
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
}};

} // namespace

std::string bundleIdentifierFor(std::string_view desktopEntryId) {
    const auto* const found = std::ranges::find_if(
        equivalents, [&](const auto& entry) { return equalsIgnoringAsciiCase(entry.first, desktopEntryId); });
    return std::string(found == equivalents.end() ? desktopEntryId : found->second);
}

} // namespace LinuxPlatform
