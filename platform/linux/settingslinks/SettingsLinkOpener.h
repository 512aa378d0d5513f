#pragma once

#include "platform/UrlOpener.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// Opens the page of the desktop's own control centre that belongs to a settings address, or else the whole
/// control centre.
class SettingsLinkOpener : public Platform::UrlOpener {
public:
    /// Starts a program, given as its name and arguments, and returns whether it is there to be started.
    using Launch = std::function<bool(const std::vector<std::string>& command)>;

    /// `desktops` is the colon-separated list of XDG_CURRENT_DESKTOP.
    SettingsLinkOpener(const std::string& desktops, Launch launch);

    bool open(const std::string& url) override;

private:
    bool isHere(std::string_view desktop) const;

    std::vector<std::string> desktops_;
    Launch launch_;
};

} // namespace LinuxPlatform
