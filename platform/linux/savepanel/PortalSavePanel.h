#pragma once

#include "platform/MainQueue.h"
#include "platform/SavePanel.h"
#include "platform/linux/dbus/BoundedCall.h"
#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusConnection>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// The desktop's own dialog, which its portal opens (org.freedesktop.portal.FileChooser, version 1 and
/// later); another panel where there is no such portal, where it leaves with its dialog open, and where it
/// does not answer: that one is not asked again. Nothing here waits.
class PortalSavePanel : public Platform::SavePanel {
public:
    /// `window` names the window that the dialog belongs to, as portals name windows ("x11:" and its
    /// hexadecimal number); empty for none. `queue` outlives this object.
    PortalSavePanel(QDBusConnection bus, Platform::MainQueue& queue, std::function<QString()> window,
                    std::unique_ptr<Platform::SavePanel> otherwise);

    /// The window is taken at once. What is chosen outside the file system is told by its address, which
    /// cannot be written to.
    void open(const Platform::SavePanelOptions& options,
              std::function<void(const std::optional<std::string>& path)> completion) override;

private:
    struct Opening {
        Platform::SavePanelOptions options;
        QString window;
        /// The unique bus name of the portal that is asked; empty while it has none.
        QString portal;
    };

    bool isPortalSilent() const { return !silentPortal_.isEmpty() && silentPortal_ == portal_.owner(); }
    void askForVersion(const Opening& opening);
    void ask(const Opening& opening);
    void openOther(const Platform::SavePanelOptions& options);

    QDBusConnection bus_;
    Platform::MainQueue& queue_;
    std::function<QString()> window_;
    std::unique_ptr<Platform::SavePanel> otherwise_;
    /// How many of its completions are to come: more than one while an open one is taken over.
    int othersOpen_ = 0;
    BusNameOwner portal_;
    /// The unique bus name of the last one that did not answer.
    QString silentPortal_;
    /// Empty while the portal is not asked.
    std::function<void(const std::optional<std::string>& path)> completion_;
    /// Asks for the version; one for each request.
    std::unique_ptr<BoundedCall> version_;
    std::unique_ptr<PortalRequest> request_;
};

} // namespace LinuxPlatform
