#pragma once

#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/IconDesktop.h"
#include "platform/linux/session/EarlierValue.h"

#include <map>

namespace LinuxPlatform {

/// GNOME, where only extensions of the shell draw icons: they are disabled and enabled again.
class GnomeDesktop : public IconDesktop {
public:
    /// `bus` outlives this object.
    GnomeDesktop(DesktopBus& bus, EarlierValue earlier);

    std::string_view windowClass() const override { return {}; }
    /// Hidden when no such extension is at work; unknown when one is that seems to draw icons and is not
    /// known, where its windows cannot be seen.
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    /// Enables what `hide` disabled and nothing else: GNOME's default is a desktop without icons.
    bool show(const DesktopScene& scene) override;

private:
    struct Extensions {
        /// The known ones that are installed, each with whether it is at work.
        std::map<QString, bool> known;
        bool isAnotherAtWork = false;
    };

    /// Those that draw icons; absent when the shell does not say.
    std::optional<Extensions> extensions();
    /// Once it was enabled again in another way since the last session, what was remembered then is over.
    void forgetAnotherSession(const QString& enabled);
    /// Whether the shell followed; absent when that is not known.
    std::optional<bool> call(const QString& method, const QString& extension);

    DesktopBus& bus_;
    /// The identifiers of what was disabled, one a line.
    EarlierValue earlier_;
};

} // namespace LinuxPlatform
