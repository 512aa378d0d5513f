#include "platform/qt/QtEventMonitors.h"

#include "platform/Lifetime.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QObject>
#include <QVariant>
#include <QWindow>

#include <cstdint>
#include <functional>
#include <utility>

namespace QtPlatform {
namespace {

using Platform::Event;
namespace EventType = Platform::EventType;

constexpr Platform::MainQueue::Seconds longestMomentWithout{0.1};

Event keyEvent(const QKeyEvent& event) {
    Event result;
    result.type = EventType::keyDown;
    if (event.modifiers().testFlag(Qt::ControlModifier)) {
        result.modifierFlags |= Platform::EventModifier::control;
    }
    if (event.key() == Qt::Key_Escape) {
        result.keyCode = Platform::KeyCode::escape;
    }
    return result;
}

/// An open menu keeps the keyboard to itself, like those of the desktop: Escape is for the menu alone.
bool isForMenu(const QObject& receiver) {
    const auto* const window = qobject_cast<const QWindow*>(&receiver);
    auto* item = window == nullptr ? nullptr : window->focusObject();
    while (item != nullptr) {
        const auto* const interface = QAccessible::queryAccessibleInterface(item);
        if (interface != nullptr && interface->role() == QAccessible::PopupMenu) {
            return true;
        }
        // That of an item in a view, asked without the library of views.
        item = item->property("parent").value<QObject*>();
    }
    return false;
}

/// It opened above another window, and takes Escape for itself. The popover, which compositors take for a
/// dialog, has no frame.
bool isForDialog(const QObject& receiver) {
    const auto* const window = qobject_cast<const QWindow*>(&receiver);
    return window != nullptr && window->type() == Qt::Dialog &&
           !window->flags().testFlag(Qt::FramelessWindowHint);
}

std::optional<Event> toEvent(const QObject& receiver, const QEvent& event) {
    switch (event.type()) {
    case QEvent::KeyPress:
        return isForMenu(receiver) || isForDialog(receiver)
                   ? std::nullopt
                   : std::optional(keyEvent(static_cast<const QKeyEvent&>(event)));
    case QEvent::MouseMove:
        return Event{EventType::mouseMoved};
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
        return Event{EventType::leftMouseDown};
    default:
        return std::nullopt;
    }
}

bool isIn(std::uint64_t mask, const Event& event) {
    return (mask >> event.type & 1U) != 0;
}

/// Sees what the application's windows receive, before they do.
class InputFilter : public QObject {
public:
    InputFilter(std::uint64_t mask, std::function<bool(const Event&)> callback)
        : mask_(mask),
          callback_(std::move(callback)) {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* receiver, QEvent* event) override {
        // Only the window: the same event visits its items later.
        const auto input = receiver->isWindowType() ? toEvent(*receiver, *event) : std::nullopt;
        return input && isIn(mask_, *input) && callback_(*input);
    }

private:
    std::uint64_t mask_;
    std::function<bool(const Event&)> callback_;
};

} // namespace

/// Whether one of our windows has the keyboard. That it has gone is told late, maybe after the window that
/// lost it by being closed has been opened again; and some compositors take it from a new window for a
/// moment.
class QtEventMonitors::KeyboardHolder : public QObject {
public:
    KeyboardHolder(Platform::MainQueue& queue, std::function<void()> onLoss)
        : queue_(queue),
          onLoss_(std::move(onLoss)) {
        QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this,
                         [this](QWindow* window) { take(window); });
        QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
                         [this](Qt::ApplicationState state) {
                             if (state != Qt::ApplicationActive && std::exchange(isHeld_, false)) {
                                 noteLossLater();
                             }
                         });
    }

private:
    void take(QWindow* window) {
        if (window == nullptr) {
            return;
        }
        isHeld_ = true;
        ++takings_;
        QObject::disconnect(closing_);
        closing_ = QObject::connect(window, &QWindow::visibleChanged, this,
                                    [this](bool isVisible) { isHeld_ = isHeld_ && isVisible; });
    }

    void noteLossLater() {
        queue_.asyncAfter(longestMomentWithout, lifetime_.weak([this, takings = takings_] {
            if (takings == takings_) {
                onLoss_();
            }
        }));
    }

    Platform::MainQueue& queue_;
    std::function<void()> onLoss_;
    bool isHeld_ = false;
    /// How often one of our windows got it.
    std::uint64_t takings_ = 0;
    QMetaObject::Connection closing_;
    Platform::Lifetime lifetime_;
};

QtEventMonitors::QtEventMonitors(Platform::MainQueue& queue)
    : keyboardHolder_(std::make_unique<KeyboardHolder>(queue, [this] { noteClickElsewhere(); })) {}

QtEventMonitors::~QtEventMonitors() = default;

Platform::Subscription QtEventMonitors::addGlobalMonitor(std::uint64_t eventMask,
                                                         std::function<void(const Event&)> callback) {
    return globalMonitors_.add([eventMask, callback = std::move(callback)](const Event& event) {
        if (isIn(eventMask, event)) {
            callback(event);
        }
    });
}

Platform::Subscription QtEventMonitors::addLocalMonitor(std::uint64_t eventMask,
                                                        std::function<bool(const Event&)> callback) {
    return Platform::Subscription([filter = std::make_shared<InputFilter>(
                                       eventMask, std::move(callback))]() mutable { filter.reset(); });
}

} // namespace QtPlatform
