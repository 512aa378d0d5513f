#include "platform/qt/views/PopUpMenu.h"

#include "platform/qt/items/MenuModel.h"
#include "platform/qt/screens/ScreenGeometry.h"

#include <QCursor>
#include <QDeadlineTimer>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QPointerEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>
#include <QtMath>

#include <algorithm>
#include <chrono>
#include <utility>

namespace QtPlatform {
namespace {

using namespace std::chrono_literals;

/// For as long as this the mouse or the keyboard may be another program's when the menu opens: a panel may
/// hold them until the button is let go.
constexpr auto patience = 1s;
constexpr auto retryInterval = 20ms;

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
        const QSize size(qCeil(item_->implicitWidth()), qCeil(item_->implicitHeight()));
        resize(size);
        item_->setParentItem(contentItem());
        item_->setSize(size);
        item_->setFocus(true);
        retry_.setInterval(retryInterval);
        retry_.callOnTimeout(this, [this] { grabOrClose(); });
    }

protected:
    void exposeEvent(QExposeEvent* event) override {
        // Whoever sees the menu can use it, so the first picture comes after this.
        if (isExposed() && !std::exchange(hasBeenExposed_, true)) {
            end_.setRemainingTime(patience);
            retry_.start();
            grabOrClose();
        }
        QQuickWindow::exposeEvent(event);
    }

    void hideEvent(QHideEvent* event) override {
        retry_.stop();
        QQuickWindow::hideEvent(event);
    }

    bool event(QEvent* event) override {
        if (isPressElsewhere(*event)) {
            close();
            return true;
        }
        return QQuickWindow::event(event);
    }

private:
    void grabOrClose() {
        // This answers yes even where the server refuses, so it is asked all the time.
        setMouseGrabEnabled(true);
        if (!hasKeyboard_ && setKeyboardGrabEnabled(true)) {
            hasKeyboard_ = true;
            // The server tells nobody of a focus, since there is none.
            QFocusEvent focus(QEvent::FocusIn, Qt::PopupFocusReason);
            QCoreApplication::sendEvent(this, &focus);
        }
        if (end_.hasExpired()) {
            retry_.stop();
            if (!hasKeyboard_) {
                // The server takes the mouse back when the window goes.
                close();
            }
        }
    }

    bool isPressElsewhere(const QEvent& event) const {
        if (event.type() != QEvent::MouseButtonPress && event.type() != QEvent::TouchBegin &&
            event.type() != QEvent::TabletPress) {
            return false;
        }
        const auto place = static_cast<const QPointerEvent&>(event).points().front().position();
        return !QRectF(QPointF(), size()).contains(place);
    }

    Platform::View view_;
    std::unique_ptr<QQuickItem> item_;
    bool hasBeenExposed_ = false;
    bool hasKeyboard_ = false;
    QTimer retry_;
    QDeadlineTimer end_;
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
