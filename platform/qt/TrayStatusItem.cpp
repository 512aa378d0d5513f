#include "platform/qt/TrayStatusItem.h"

#include "platform/qt/ImageRendering.h"

#include <QApplication>
#include <QCursor>
#include <QPalette>
#include <QScreen>

#include <utility>

namespace QtPlatform {
namespace {

/// Absent for what is no click of ours, such as a middle click or the second half of a double click.
std::optional<std::uint64_t> eventType(QSystemTrayIcon::ActivationReason reason) {
    switch (reason) {
    case QSystemTrayIcon::Trigger:
        return Platform::EventType::leftMouseUp;
    case QSystemTrayIcon::Context:
        return Platform::EventType::rightMouseUp;
    default:
        return std::nullopt;
    }
}

} // namespace

TrayStatusItem::TrayStatusItem() {
    tray_.setToolTip(QStringLiteral("Curtain"));
    QObject::connect(&tray_, &QSystemTrayIcon::activated, &tray_, [this](auto reason) { activated(reason); });
}

void TrayStatusItem::setImage(const Platform::Image& image) {
    tray_.setIcon(renderIcon(image, QApplication::palette().color(QPalette::WindowText)));
    tray_.show();
}

void TrayStatusItem::setAction(std::uint64_t eventMask, Action action) {
    eventMask_ = eventMask;
    action_ = std::move(action);
}

void TrayStatusItem::popUpMenu(const Platform::Menu& menu) {
    menu_ = std::make_unique<QMenu>();
    menu_->setLayoutDirection(menu.isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    for (const auto& item : menu.items) {
        if (item.isSeparator()) {
            menu_->addSeparator();
            continue;
        }
        // An ampersand would be taken for the mark of a mnemonic.
        auto* const action = menu_->addAction(QString::fromStdString(item.title).replace('&', "&&"));
        action->setEnabled(item.action != nullptr);
        if (item.action) {
            QObject::connect(action, &QAction::triggered, action, item.action);
        }
    }
    menu_->popup(menuPosition(menu_->sizeHint()));
}

QPoint TrayStatusItem::menuPosition(QSize size) const {
    const auto icon = tray_.geometry();
    const auto* const screen = QGuiApplication::screenAt(icon.center());
    // Some trays do not say where the icon is.
    if (!icon.isValid() || screen == nullptr) {
        return QCursor::pos();
    }
    const bool isPanelAbove = icon.center().y() < screen->geometry().center().y();
    return {icon.left(), isPanelAbove ? icon.bottom() + 1 : icon.top() - size.height()};
}

void TrayStatusItem::activated(QSystemTrayIcon::ActivationReason reason) {
    const auto type = eventType(reason);
    if (!type || (eventMask_ >> *type & 1U) == 0 || !action_) {
        return;
    }
    const bool isControlHeld = QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier);
    action_(Platform::Event{*type, isControlHeld ? Platform::EventModifier::control : 0});
}

} // namespace QtPlatform
