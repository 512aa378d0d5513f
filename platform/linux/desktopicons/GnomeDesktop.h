#pragma once

#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/EarlierValue.h"
#include "platform/linux/desktopicons/IconDesktop.h"

#include <map>

namespace LinuxPlatform {

/// GNOME, where only extensions of the shell draw icons: they are disabled and enabled again.
class GnomeDesktop : public IconDesktop {
public:
    /// `bus` outlives this object.
    GnomeDesktop(DesktopBus& bus, EarlierValue earlier);

    std::string_view windowClass() const override { return {}; }
    /// Hidden when no such extension is at work.
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    /// Enables what `hide` disabled and nothing else: GNOME's default is a desktop without icons.
    bool show(const DesktopScene& scene) override;

private:
    /// Those that are installed, each with whether it is at work; absent when the shell does not say.
    std::optional<std::map<QString, bool>> extensions();
    /// Whether the shell followed; absent when that is not known.
    std::optional<bool> call(const QString& method, const QString& extension);

    DesktopBus& bus_;
    /// The identifiers of what was disabled, one a line.
    EarlierValue earlier_;
};

} // namespace LinuxPlatform
