#pragma once

#include "platform/linux/tray/TemplateTint.h"
#include "platform/linux/tray/TrayIcon.h"

#include <QDBusConnection>
#include <QString>

#include <memory>
#include <optional>

namespace LinuxPlatform {

/// A tray icon as an org.kde.StatusNotifierItem on the session bus. It has a bus connection of its own, since
/// the protocol knows no other way to take an item back.
class StatusNotifierItem : public TrayIcon {
public:
    /// `watcher` is the bus name of the watcher to register with, and `registrar` the connection that it is
    /// to hear of the item from; without one, the item's own. The references outlive the item.
    StatusNotifierItem(const QString& watcher, const std::optional<QDBusConnection>& registrar,
                       TrayIconContent content, const TrayToolkit& toolkit, const TemplateTint& tint);
    ~StatusNotifierItem() override;
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

    void setImage(const Platform::Image& image) override;
    void setToolTip(const QString& text) override;
    std::optional<QRect> geometry() const override;
    void updateTint() override;

private:
    class Object;

    std::unique_ptr<Object> object_;
};

} // namespace LinuxPlatform
