#include "platform/qt/PopUpMenu.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>

#include <algorithm>

namespace QtPlatform {
namespace {

/// From pixels to Qt's units; the corner of a screen is where its pixels begin.
QRect inPoints(const QRect& pixels, const QScreen& screen) {
    const auto corner = screen.geometry().topLeft();
    const auto ratio = screen.devicePixelRatio();
    const QPointF offset = QPointF(pixels.topLeft() - corner) / ratio;
    return QRectF(QPointF(corner) + offset, QSizeF(pixels.size()) / ratio).toAlignedRect();
}

const QScreen* screenAt(const QPoint& pixel) {
    const auto screens = QGuiApplication::screens();
    const auto found = std::ranges::find_if(screens, [&](const auto* screen) {
        return QRect(screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio())
            .contains(pixel);
    });
    return found == screens.end() ? nullptr : *found;
}

QPoint position(const QRect& place, const QSize& menu) {
    const auto* const screen = screenAt(place.center());
    if (place.isNull() || screen == nullptr) {
        return QCursor::pos();
    }
    const auto owner = inPoints(place, *screen);
    const bool isInUpperHalf = owner.center().y() < screen->geometry().center().y();
    return {owner.left(), isInUpperHalf ? owner.bottom() + 1 : owner.top() - menu.height()};
}

} // namespace

PopUpMenu::PopUpMenu() = default;

PopUpMenu::~PopUpMenu() = default;

void PopUpMenu::show(const Platform::Menu& menu, const QRect& place) {
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
    menu_->popup(position(place, menu_->sizeHint()));
}

} // namespace QtPlatform
