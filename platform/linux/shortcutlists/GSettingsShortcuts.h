#pragma once

#include "platform/linux/shortcutlists/Accelerator.h"

#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// The shortcuts of the desktops that keep them with GSettings: GNOME, Cinnamon, MATE, Budgie.
class GSettingsShortcuts : public ShortcutList {
public:
    /// A schema of which every combination counts; those that are not installed are left out. With a list of
    /// paths under `pathsKey`, each is a custom shortcut of `customSchema`.
    struct Schema {
        std::string id;
        std::string pathsKey;
        std::string customSchema;
    };

    explicit GSettingsShortcuts(std::vector<Schema> schemas);

    /// The schemas of the desktop that XDG_CURRENT_DESKTOP names; none for others.
    static std::vector<Schema> schemasOf(std::string_view currentDesktop);

    void ask(const WantedShortcut& wanted, Answer answer) override;

private:
    std::vector<Schema> schemas_;
};

} // namespace LinuxPlatform
