#pragma once

#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/Subscribers.h"
#include "platform/linux/appearance/DesktopColorScheme.h"
#include "platform/linux/tray/StatusNotifierHosts.h"
#include "platform/linux/tray/TemplateTint.h"
#include "platform/linux/tray/TrayIcon.h"
#include "platform/linux/tray/XembedTray.h"
#include "platform/linux/x11/X11Connection.h"

#include <QDBusConnection>
#include <QRect>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace LinuxPlatform {

/// A status item as an icon in whichever tray the desktop has: one that shows StatusNotifierItems if there is
/// one, else GNOME Shell's panel if Curtain's extension is in there, else a tray that embeds X windows. It
/// follows trays that come late, go and come back.
class TrayStatusItem : public Platform::StatusItem {
public:
    /// `x11` is null when there is no X server. All but the toolkit outlive the item.
    TrayStatusItem(X11Connection* x11, Platform::MainQueue& queue, Platform::Log& log, TrayToolkit toolkit);

    void setImage(const Platform::Image& image) override;
    void setToolTip(const std::string& text) override;
    void setAction(std::uint64_t eventMask, Action action) override;
    void setSecondaryAction(std::function<void()> action) override;
    void setMenu(std::function<Platform::Menu()> menu) override;
    std::optional<Platform::Rect> frame() const override;
    bool hasPanel() const override { return !place_.isNowhere(); }
    Platform::Subscription addPanelObserver(std::function<void()> handler) override;
    void popUpMenu(const Platform::Menu& menu) override;

private:
    /// Where the icon is shown; nowhere when both are empty.
    struct Place {
        QString watcher;
        /// Whether that is Curtain's extension in GNOME Shell.
        bool isExtension = false;
        xcb_window_t manager = XCB_WINDOW_NONE;

        bool isNowhere() const { return watcher.isEmpty() && manager == XCB_WINDOW_NONE; }
        bool operator==(const Place&) const = default;
    };

    Place bestPlace() const;
    void takeBestPlace();
    void stand();
    void clicked(const Platform::Event& event, const QRect& place);
    std::optional<Platform::Menu> menuOfRightClick();
    void followColorScheme();

    X11Connection* x11_;
    Platform::Log& log_;
    TrayToolkit toolkit_;
    QDBusConnection bus_;
    TemplateTint tint_;
    std::optional<DesktopColorScheme> colorScheme_;
    StatusNotifierHosts hosts_;
    StatusNotifierHosts extension_;
    std::optional<XembedTray> xembed_;
    bool isHostAwaited_ = true;
    bool hasBeenShown_ = false;
    std::optional<Platform::Image> image_;
    QString toolTip_;
    std::uint64_t eventMask_ = 0;
    Action action_;
    std::function<void()> secondaryAction_;
    std::function<Platform::Menu()> menu_;
    /// Where the panel said that the last click was; null when it never said so.
    QRect lastClick_;
    /// Where the pointer was at the last click for which the panel said no place.
    std::optional<QPoint> lastPointer_;
    /// Where the menu goes instead of onto the screen while somebody else draws it.
    std::optional<Platform::Menu>* menuReceiver_ = nullptr;
    Place place_;
    std::unique_ptr<TrayIcon> icon_;
    Platform::Subscribers<> panelObservers_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
