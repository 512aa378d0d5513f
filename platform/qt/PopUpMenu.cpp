#include "platform/qt/PopUpMenu.h"

#include "platform/qt/MenuModel.h"
#include "platform/qt/ScreenGeometry.h"

#include <QCursor>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace QtPlatform {
namespace {

/// Where a menu of that size opens, within the screen, in points.
QPoint position(const QRect& place, const QSize& menu, bool isRightToLeft) {
    const auto* screen = ScreenGeometry::screenAt(place.center());
    QRect owner;
    if (place.isNull() || screen == nullptr) {
        owner = {QCursor::pos(), QSize(1, 1)};
        screen = QGuiApplication::screenAt(owner.topLeft());
    } else {
        owner = ScreenGeometry::inPoints(place, *screen).toAlignedRect();
    }
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    const auto area = screen->geometry();
    const bool isInUpperHalf = owner.center().y() < area.center().y();
    const int below = place.isNull() ? owner.top() : owner.bottom() + 1;
    const QPoint wanted(isRightToLeft ? owner.right() + 1 - menu.width() : owner.left(),
                        isInUpperHalf ? below : owner.top() - menu.height());
    return {std::clamp(wanted.x(), area.left(), std::max(area.left(), area.right() + 1 - menu.width())),
            std::clamp(wanted.y(), area.top(), std::max(area.top(), area.bottom() + 1 - menu.height()))};
}

/// A window that no window manager touches. It has the mouse and the keyboard while it is seen, so that it
/// can be used without taking the focus from the user's own window.
class MenuWindow : public QQuickWindow {
public:
    MenuWindow(ViewEngine& engine, Platform::View view)
        : view_(std::move(view)),
          item_(engine.makeItem(view_)) {
        setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                 Qt::X11BypassWindowManagerHint);
        setTitle(QStringLiteral("Curtain"));
        const QSizeF size(item_->implicitWidth(), item_->implicitHeight());
        resize(size.toSize());
        item_->setParentItem(contentItem());
        item_->setSize(size);
        item_->setFocus(true);
    }

protected:
    void exposeEvent(QExposeEvent* event) override {
        QQuickWindow::exposeEvent(event);
        if (isExposed() && !std::exchange(isGrabbing_, true)) {
            setMouseGrabEnabled(true);
            setKeyboardGrabEnabled(true);
            // The server tells nobody of a focus, since there is none.
            QFocusEvent focus(QEvent::FocusIn, Qt::PopupFocusReason);
            QCoreApplication::sendEvent(this, &focus);
        }
    }

    void mousePressEvent(QMouseEvent* event) override {
        if (QRectF(QPointF(), size()).contains(event->position())) {
            QQuickWindow::mousePressEvent(event);
        } else {
            close();
        }
    }

private:
    Platform::View view_;
    std::unique_ptr<QQuickItem> item_;
    bool isGrabbing_ = false;
};

} // namespace

PopUpMenu::PopUpMenu(ViewEngine& engine) : engine_(engine) {}

PopUpMenu::~PopUpMenu() = default;

void PopUpMenu::show(const Platform::Menu& menu, const QRect& place) {
    // The model lives as long as the window.
    const auto model = std::make_shared<MenuModel>(menu, [this] { window_->close(); });
    window_ = std::make_unique<MenuWindow>(engine_, Platform::View{menu.view, model});
    window_->setPosition(position(place, window_->size(), menu.isRightToLeft));
    window_->show();
}

} // namespace QtPlatform
