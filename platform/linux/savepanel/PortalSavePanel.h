#pragma once

#include "platform/SavePanel.h"
#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// The desktop's own dialog, which its portal opens (org.freedesktop.portal.FileChooser, version 1 and
/// later); another panel where there is no such portal. Nothing here waits.
class PortalSavePanel : public Platform::SavePanel {
public:
    /// `window` names the window that the dialog belongs to, as portals name windows ("x11:" and its
    /// hexadecimal number); empty for none.
    PortalSavePanel(QDBusConnection bus, std::function<QString()> window,
                    std::unique_ptr<Platform::SavePanel> otherwise);

    /// What is chosen outside the file system is told by its address, which cannot be written to.
    void open(const Platform::SavePanelOptions& options,
              std::function<void(const std::optional<std::string>& path)> completion) override;

private:
    void askForVersion(const Platform::SavePanelOptions& options);
    void ask(const Platform::SavePanelOptions& options);
    void openOther(const Platform::SavePanelOptions& options);

    QDBusConnection bus_;
    std::function<QString()> window_;
    std::unique_ptr<Platform::SavePanel> otherwise_;
    /// Empty while the portal is not asked.
    std::function<void(const std::optional<std::string>& path)> completion_;
    /// Receives the version; one for each request.
    std::unique_ptr<QObject> version_;
    std::unique_ptr<PortalRequest> request_;
};

} // namespace LinuxPlatform
