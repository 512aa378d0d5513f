#pragma once

#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/IconDesktop.h"
#include "platform/linux/session/EarlierValue.h"

#include <QJsonArray>

namespace LinuxPlatform {

/// Plasma, whose desktops show a folder: a filter in front of it hides everything. The desktops are reached
/// through the scripts that the shell runs for others.
class PlasmaDesktop : public IconDesktop {
public:
    /// `bus` outlives this object.
    PlasmaDesktop(DesktopBus& bus, EarlierValue earlier);

    std::string_view windowClass() const override { return "plasmashell"; }
    /// Hidden also when no desktop shows a folder.
    DesktopIcons icons(const DesktopScene& scene) override;
    void hide(const DesktopScene& scene) override;
    bool show(const DesktopScene& scene) override;

private:
    /// Once a desktop was shown again in another way since the last session, what was remembered then is
    /// over.
    void forgetAnotherSession(int shown);
    /// What is remembered, as far as it makes sense.
    QJsonArray earlierFilters() const;
    /// The filters of the desktops that show a folder; absent when the shell does not say.
    std::optional<QJsonArray> filters();
    /// Whether any was set; absent when that is not known.
    std::optional<bool> setFilters(const QJsonArray& filters);
    /// The reply holds what the script prints.
    QDBusMessage evaluate(const QString& script);

    DesktopBus& bus_;
    /// The filters of the desktops that were changed.
    EarlierValue earlier_;
};

} // namespace LinuxPlatform
