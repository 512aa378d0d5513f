#include "platform/qt/PopUpMenu.h"

#include "platform/qt/ScreenGeometry.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>

namespace QtPlatform {
namespace {

QPoint position(const QRect& place, const QSize& menu) {
    const auto* const screen = ScreenGeometry::screenAt(place.center());
    if (place.isNull() || screen == nullptr) {
        return QCursor::pos();
    }
    const auto owner = ScreenGeometry::inPoints(place, *screen).toAlignedRect();
    const bool isInUpperHalf = owner.center().y() < screen->geometry().center().y();
    return {owner.left(), isInUpperHalf ? owner.bottom() + 1 : owner.top() - menu.height()};
}

} // namespace

PopUpMenu::PopUpMenu() = default;

PopUpMenu::~PopUpMenu() = default;

void PopUpMenu::show(const Platform::Menu& menu, const QRect& place) {
    menu_ = std::make_unique<QMenu>();
    menu_->setWindowTitle(QStringLiteral("Curtain"));
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
    menu_->popup(position(place, menu_->sizeHint()));
}

} // namespace QtPlatform
