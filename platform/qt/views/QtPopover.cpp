#include "platform/qt/views/QtPopover.h"

#include "platform/qt/screens/PopoverPlacement.h"
#include "platform/qt/screens/ScreenGeometry.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace QtPlatform {
namespace {

/// How far the shadow reaches beyond the content, as its picture is drawn.
constexpr QMargins shadowMargins(40, 32, 40, 48);
constexpr const char* shadowSource = "qrc:/Curtain/Items/PopoverShadow.qml";

/// How far the window reaches beyond its content, for the shadow: window managers push windows off the
/// panels.
QMargins marginsAround(const QRect& content, const QRect& frame) {
    const auto room = [](int wanted, int available) { return std::clamp(available, 0, wanted); };
    return {room(shadowMargins.left(), content.left() - frame.left()),
            room(shadowMargins.top(), content.top() - frame.top()),
            room(shadowMargins.right(), frame.right() - content.right()),
            room(shadowMargins.bottom(), frame.bottom() - content.bottom())};
}

} // namespace

/// Tells when it is hidden, whoever hides it.
class QtPopover::PopoverWindow : public QQuickWindow {
public:
    explicit PopoverWindow(QtPopover& owner) : owner_(owner) {
        // Some compositors give tool windows no keyboard, and lay tiles of others than dialogs.
        const auto kind = owner_.windowManager_.isCompositor ? Qt::Dialog : Qt::Tool;
        setFlags(kind | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint);
        setTitle(QStringLiteral("Curtain"));
        QObject::connect(this, &QWindow::visibleChanged, this, [this](bool isNowVisible) {
            if (!isNowVisible && owner_.onDidClose_) {
                // The callback may replace itself.
                const auto callback = owner_.onDidClose_;
                callback();
            }
        });
    }

protected:
    void exposeEvent(QExposeEvent* event) override {
        QQuickWindow::exposeEvent(event);
        // Before, the window manager may not know the window yet.
        if (isExposed() && owner_.isActivationDue_) {
            owner_.isActivationDue_ = false;
            owner_.activate();
        }
    }

private:
    QtPopover& owner_;
};

QtPopover::QtPopover(ViewEngine& engine, const QtScreens& screens, WindowManagerLink windowManager)
    : engine_(engine),
      screens_(screens),
      windowManager_(std::move(windowManager)) {}

QtPopover::~QtPopover() {
    onDidClose_ = nullptr;
}

bool QtPopover::isShown() const {
    return window_ && window_->isVisible();
}

void QtPopover::setContent(Platform::View content) {
    if (!window_ && content.source.empty()) {
        return;
    }
    makeWindow();
    view_->setContent(std::move(content));
}

void QtPopover::setContentSize(const Platform::Size& size) {
    contentSize_ = size;
}

void QtPopover::show(Platform::StatusItem& relativeTo) {
    makeWindow();
    const bool isTranslucent = !windowManager_.isComposited || windowManager_.isComposited();
    const auto anchor = anchorAt(relativeTo);
    const auto frame = screens_.freePart(*anchor.screen);
    const QSizeF wanted(contentSize_.width, contentSize_.height);
    const double scale = PopoverPlacement::scale(wanted, frame);
    const QSize size = (wanted * scale).toSize();
    const QRect content(PopoverPlacement::topLeft(anchor.item, size, anchor.screen->geometry(), frame,
                                                  QGuiApplication::isRightToLeft())
                            .toPoint(),
                        size);
    const auto margins = isTranslucent ? marginsAround(content, frame.toRect()) : QMargins();
    if (windowManager_.isCompositor && !window_->isVisible()) {
        // Some move a window that is shown again away from its place.
        window_->destroy();
    }
    window_->setColor(isTranslucent ? QColor(Qt::transparent) : QColor(Qt::white));
    window_->setGeometry(content.marginsAdded(margins));
    shadow_->setVisible(isTranslucent);
    shadow_->setPosition(QPointF(margins.left() - shadowMargins.left(), margins.top() - shadowMargins.top()));
    shadow_->setSize(size.grownBy(shadowMargins));
    view_->setGeometry({static_cast<double>(margins.left()), static_cast<double>(margins.top())},
                       contentSize_, scale);
    window_->create();
    if (windowManager_.markAsPopover) {
        windowManager_.markAsPopover(window_->winId());
    }
    if (windowManager_.place) {
        // Nobody is to see it jump.
        window_->contentItem()->setOpacity(0);
        windowManager_.place(window_->winId(),
                             ScreenGeometry::inPixels(window_->position(), *window_->screen()),
                             lifetime_.weak([this] { window_->contentItem()->setOpacity(1); }));
    }
    isActivationDue_ = true;
    window_->show();
    window_->raise();
    if (windowManager_.setInputRegion) {
        const auto ratio = window_->devicePixelRatio();
        const QRectF clickable(margins.left() * ratio, margins.top() * ratio, size.width() * ratio,
                               size.height() * ratio);
        windowManager_.setInputRegion(window_->winId(), clickable.toAlignedRect());
    }
    activate();
}

void QtPopover::activate() {
    window_->requestActivate();
    if (windowManager_.activate) {
        windowManager_.activate(window_->winId());
    }
}

void QtPopover::close() {
    if (window_) {
        window_->hide();
    }
}

void QtPopover::setOnDidClose(std::function<void()> callback) {
    onDidClose_ = std::move(callback);
}

void QtPopover::makeWindow() {
    if (window_) {
        return;
    }
    window_ = std::make_unique<PopoverWindow>(*this);
    // Both a translucent and an opaque window: which of them it is going to be is known when it is shown.
    auto format = window_->requestedFormat();
    constexpr int alphaBits = 8;
    format.setAlphaBufferSize(alphaBits);
    window_->setFormat(format);
    shadow_ = engine_.makeItem({shadowSource, std::make_shared<QObject>()});
    shadow_->setParentItem(window_->contentItem());
    view_ = std::make_unique<HostedView>(engine_, *window_);
}

QtPopover::Anchor QtPopover::anchorAt(const Platform::StatusItem& item) const {
    if (const auto frame = item.frame()) {
        const QRect pixels(static_cast<int>(frame->x), static_cast<int>(frame->y),
                           static_cast<int>(frame->width), static_cast<int>(frame->height));
        if (const auto* const screen = ScreenGeometry::screenAt(pixels.topLeft())) {
            return {screen, ScreenGeometry::inPoints(pixels, *screen)};
        }
    }
    return {ScreenGeometry::userScreen(windowManager_.isPointerKnown), std::nullopt};
}

} // namespace QtPlatform
