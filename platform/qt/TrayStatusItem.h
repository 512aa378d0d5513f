#pragma once

#include "platform/StatusItem.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include <memory>
#include <string>

namespace QtPlatform {

/// A status item as an icon in the desktop's tray.
class TrayStatusItem : public Platform::StatusItem {
public:
    TrayStatusItem();

    void setImage(const Platform::Image& image) override;
    void setAction(std::uint64_t eventMask, Action action) override;
    void popUpMenu(const Platform::Menu& menu) override;

private:
    QPoint menuPosition(QSize size) const;
    void activated(QSystemTrayIcon::ActivationReason reason);

    QSystemTrayIcon tray_;
    std::uint64_t eventMask_ = 0;
    Action action_;
    std::unique_ptr<QMenu> menu_;
};

} // namespace QtPlatform
