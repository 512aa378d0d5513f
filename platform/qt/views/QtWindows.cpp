#include "platform/qt/views/QtWindows.h"

#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/ScreenGeometry.h"
#include "platform/qt/views/HostedView.h"

#include <QGuiApplication>
#include <QIcon>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>

#include <utility>

namespace QtPlatform {
namespace {

/// As high as one may be.
constexpr double titleBar = 40;

Qt::WindowFlags flagsFor(const Platform::WindowStyle& style) {
    auto flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    flags.setFlag(Qt::WindowCloseButtonHint, style.isClosable);
    flags.setFlag(Qt::WindowMinimizeButtonHint, style.isMinimizable);
    flags.setFlag(Qt::WindowMaximizeButtonHint, style.isResizable);
    flags.setFlag(Qt::WindowStaysOnTopHint, style.isKeptAbove);
    return flags;
}

/// Tells before it closes, whoever closes it, and lets itself be dragged where nothing takes the mouse.
class FramedWindow : public QQuickWindow {
public:
    explicit FramedWindow(bool isMovableByBackground) : isMovableByBackground_(isMovableByBackground) {}

    std::function<void()> onWillClose;

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::Close && isVisible() && onWillClose) {
            const auto callback = onWillClose;
            callback();
        }
        const bool isRecognized = QQuickWindow::event(event);
        // mousePressEvent is called before the items see the press, so only here it is known that none took
        // it.
        if (isMovableByBackground_ && event->type() == QEvent::MouseButtonPress && !event->isAccepted() &&
            static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
            startSystemMove();
        }
        return isRecognized;
    }

private:
    bool isMovableByBackground_;
};

class QtWindow : public Platform::Window {
public:
    QtWindow(ViewEngine& engine, const QtScreens& screens, WindowManagerLink windowManager,
             Platform::View content, const Platform::Size& size, const Platform::WindowStyle& style)
        : screens_(screens),
          windowManager_(std::move(windowManager)),
          window_(style.isMovableByBackground),
          size_(size),
          isResizable_(style.isResizable),
          view_(engine, window_) {
        window_.setFlags(flagsFor(style));
        window_.setIcon(QIcon(QStringLiteral(":/curtain/app-icon.svg")));
        view_.setGeometry({0, 0}, size_, 1);
        view_.setContent(std::move(content));
    }
    ~QtWindow() override { window_.close(); }
    QtWindow(const QtWindow&) = delete;
    QtWindow& operator=(const QtWindow&) = delete;

    bool isVisible() const override { return window_.isVisible(); }

    void setTitle(const std::string& title) override { window_.setTitle(QString::fromStdString(title)); }

    void center() override {
        fitToScreen();
        const auto* const screen = ScreenGeometry::userScreen(windowManager_.isPointerKnown);
        if (screen == nullptr) {
            return;
        }
        QRect frame(QPoint(), window_.size());
        frame.moveCenter(screen->availableGeometry().center());
        window_.setPosition(frame.topLeft());
    }

    void makeKeyAndOrderFront() override {
        fitToScreen();
        window_.show();
        window_.raise();
        window_.requestActivate();
    }

    void orderFrontRegardless() override {
        window_.raise();
        if (windowManager_.activate && window_.isVisible()) {
            windowManager_.activate(window_.winId());
        }
    }

    void close() override { window_.close(); }

    void setOnWillClose(std::function<void()> callback) override {
        window_.onWillClose = std::move(callback);
    }

private:
    /// The screen may be another one each time the window opens.
    void fitToScreen() {
        if (window_.isVisible()) {
            return;
        }
        const auto* const screen = ScreenGeometry::userScreen(windowManager_.isPointerKnown);
        const QSizeF room =
            screen != nullptr ? screens_.freePart(*screen).size() - QSizeF(0, titleBar) : QSizeF();
        const QSizeF wanted(size_.width, size_.height);
        const double scale = ScreenGeometry::fittingScale(wanted, room);
        const QSize fixed = (wanted * scale).toSize();
        if (!isResizable_) {
            window_.setMinimumSize(fixed);
            window_.setMaximumSize(fixed);
        }
        window_.resize(fixed);
        view_.setGeometry({0, 0}, size_, scale);
    }

    const QtScreens& screens_;
    WindowManagerLink windowManager_;
    FramedWindow window_;
    Platform::Size size_;
    bool isResizable_;
    HostedView view_;
};

} // namespace

QtWindows::QtWindows(ViewEngine& engine, const QtScreens& screens, WindowManagerLink windowManager)
    : engine_(engine),
      screens_(screens),
      windowManager_(std::move(windowManager)) {}

std::unique_ptr<Platform::Window> QtWindows::makeWindow(Platform::View content,
                                                        const Platform::Size& contentSize,
                                                        const Platform::WindowStyle& style) {
    return std::make_unique<QtWindow>(engine_, screens_, windowManager_, std::move(content), contentSize,
                                      style);
}

} // namespace QtPlatform
