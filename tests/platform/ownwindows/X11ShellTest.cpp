#include "platform/linux/ownwindows/X11EventMonitors.h"
#include "platform/linux/ownwindows/X11MenuBar.h"
#include "platform/linux/ownwindows/X11WindowManagerClient.h"
#include "platform/qt/QtEventMonitors.h"
#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/ScreenGeometry.h"
#include "platform/qt/views/QtPopover.h"
#include "platform/qt/views/QtWindows.h"
#include "platform/qt/views/ViewEngine.h"
#include "tests/platform/desktopicons/EmptyDesktop.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/X11TestClient.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QWindow>

#include <gmock/gmock.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::X11Connection;
using Platform::Rect;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

constexpr const char* plainView = "qrc:/tests/PlainView.qml";
constexpr std::uint64_t bothButtons =
    1U << Platform::EventType::leftMouseDown | 1U << Platform::EventType::rightMouseDown;

/// A status item of which only the place counts.
class ItemAt : public Platform::StatusItem {
public:
    explicit ItemAt(std::optional<Rect> frame) : frame_(frame) {}

    void setImage(const Platform::Image& /*image*/) override {}
    void setAction(std::uint64_t /*eventMask*/, Action /*action*/) override {}
    void setToolTip(const std::string& /*text*/) override {}
    void setSecondaryAction(std::function<void()> /*action*/) override {}
    void setMenu(std::function<Platform::Menu()> /*menu*/) override {}
    std::optional<Rect> frame() const override { return frame_; }
    bool hasPanel() const override { return frame_.has_value(); }
    Platform::Subscription addPanelObserver(std::function<void()> /*handler*/) override { return {}; }
    void popUpMenu(const Platform::Menu& /*menu*/) override {}

private:
    std::optional<Rect> frame_;
};

struct X11ShellTest : testing::Test {
    PlatformTests::EmptyDesktop emptyDesktop;
    X11TestClient client;
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    LinuxPlatform::X11WindowManagerClient windowManager{*connection};
    QtPlatform::WindowManagerLink link{
        .isComposited = [this] { return windowManager.isComposited(); },
        .markAsPopover =
            [this](WId window) { windowManager.markAsPopover(static_cast<xcb_window_t>(window)); },
        .setInputRegion =
            [this](WId window, const QRect& pixels) {
                windowManager.setInputRegion(static_cast<xcb_window_t>(window), pixels);
            },
        .activate = [this](WId window) { windowManager.activate(static_cast<xcb_window_t>(window)); },
        .panels = [this] { return windowManager.panels(); },
        .isPointerKnown = true,
    };
    QtPlatform::QtScreens screens{link};
    QtPlatform::ViewEngine engine;

    ~X11ShellTest() override {
        QCoreApplication::processEvents();
        movePointer(5, 5);
    }

    /// A panel along the top edge, as wide as the screen.
    xcb_window_t openPanel(std::uint32_t height) {
        const auto panel = client.create("panel", "Panel");
        client.setNumbers(panel, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                          std::vector{client.atom("_NET_WM_WINDOW_TYPE_DOCK")});
        const auto width = static_cast<std::uint32_t>(QGuiApplication::primaryScreen()->geometry().width());
        client.setNumbers(panel, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL,
                          std::vector<std::uint32_t>{0, 0, height, 0, 0, 0, 0, 0, 0, width - 1, 0, 0});
        client.map(panel);
        EXPECT_TRUE(spinUntil([&] { return client.isListed(panel); }));
        return panel;
    }

    void movePointer(int x, int y) {
        xcb_warp_pointer(client.get(), XCB_NONE, client.root(), 0, 0, 0, 0, static_cast<std::int16_t>(x),
                         static_cast<std::int16_t>(y));
        client.sync();
    }

    void click(std::uint8_t button) {
        xcb_test_fake_input(client.get(), XCB_BUTTON_PRESS, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(client.get(), XCB_BUTTON_RELEASE, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        client.sync();
    }

    /// The server has done what it was asked over the connection under test: it may do first what comes over
    /// another one later.
    void waitForServer() {
        connection->reply<xcb_get_input_focus_reply>(xcb_get_input_focus(connection->get()));
    }

    static QWindow* shownWindow() {
        const auto windows = QGuiApplication::topLevelWindows();
        const auto found = std::ranges::find_if(windows, [](auto* window) { return window->isVisible(); });
        return found == windows.end() ? nullptr : *found;
    }
};

TEST_F(X11ShellTest, PanelsAreNoPartOfTheVisibleFrame) {
    const auto panel = openPanel(40);
    const auto screen = screens.main();
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->visibleFrame.y, 40);
    EXPECT_EQ(screen->visibleFrame.height, screen->frame.height - 40);
    EXPECT_EQ(screen->visibleFrame.width, screen->frame.width);
    client.destroy(panel);
    EXPECT_TRUE(spinUntil([&] { return screens.main()->visibleFrame == screens.main()->frame; }));
}

TEST_F(X11ShellTest, ThePopoverHangsBelowItsItemWithTheKeyboardAndWithoutATaskListEntry) {
    const auto panel = openPanel(40);
    QtPlatform::QtPopover popover(engine, screens, link);
    EXPECT_FALSE(popover.isShown());
    popover.setContent({plainView, std::make_shared<QObject>()});
    popover.setContentSize({300, 200});
    ItemAt item(Rect{500, 8, 24, 24});
    popover.show(item);
    EXPECT_TRUE(popover.isShown());
    auto* const window = shownWindow();
    ASSERT_NE(window, nullptr);
    const auto identifier = static_cast<xcb_window_t>(window->winId());
    ASSERT_TRUE(spinUntil([&] { return client.activeWindow() == identifier; }));
    // A compositor lets the shadow lie around it, as far as the panel.
    const QMargins shadow = windowManager.isComposited() ? QMargins(40, 6, 40, 48) : QMargins();
    const QRect place(362, 46, 300, 200);
    EXPECT_TRUE(spinUntil([&] { return window->geometry().marginsRemoved(shadow) == place; }))
        << "it is at " << window->x() << ", " << window->y() << ", " << window->width() << " by "
        << window->height();
    const auto states = client.numbers(identifier, "_NET_WM_STATE");
    EXPECT_THAT(states, Contains(client.atom("_NET_WM_STATE_SKIP_TASKBAR")));
    EXPECT_THAT(states, Contains(client.atom("_NET_WM_STATE_ABOVE")));
    popover.close();
    EXPECT_FALSE(popover.isShown());
    client.destroy(panel);
}

TEST_F(X11ShellTest, WhatIsTooLargeForTheScreenIsDrawnSmaller) {
    const auto screen = QGuiApplication::primaryScreen()->geometry();
    const Platform::Size tooLarge{1.5 * screen.width(), static_cast<double>(screen.height())};
    QtPlatform::QtPopover popover(engine, screens, link);
    popover.setContent({plainView, std::make_shared<QObject>()});
    popover.setContentSize(tooLarge);
    ItemAt item(std::nullopt);
    popover.show(item);
    auto* const shown = qobject_cast<QQuickWindow*>(shownWindow());
    ASSERT_NE(shown, nullptr);
    EXPECT_TRUE(screen.contains(shown->geometry()));
    const auto* const view = shown->contentItem()->childItems().last();
    EXPECT_EQ(view->size(), QSizeF(tooLarge.width, tooLarge.height));
    const auto drawn = view->mapRectToScene(QRectF(QPointF(), view->size()));
    EXPECT_TRUE(QRectF(QPointF(), shown->size()).adjusted(-1, -1, 1, 1).contains(drawn));
    EXPECT_GT(drawn.width(), screen.width() - 20);
    popover.close();

    QtPlatform::QtWindows windows(engine, screens, link);
    const Platform::Size asHigh{400, static_cast<double>(screen.height())};
    auto window = windows.makeWindow({plainView, std::make_shared<QObject>()}, asHigh, {});
    window->makeKeyAndOrderFront();
    auto* const framed = shownWindow();
    ASSERT_NE(framed, nullptr);
    EXPECT_EQ(framed->height(), screen.height() - 40) << "a title bar has room";
    window->close();
    const auto panel = openPanel(60);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(framed->height(), screen.height() - 100);
    window->close();
    client.destroy(panel);
}

TEST_F(X11ShellTest, EveryClosingOfThePopoverIsToldOnce) {
    QtPlatform::QtPopover popover(engine, screens, link);
    int closings = 0;
    popover.setOnDidClose([&] { ++closings; });
    popover.setContent({plainView, std::make_shared<QObject>()});
    popover.setContentSize({300, 200});
    ItemAt item(std::nullopt);
    popover.close();
    EXPECT_EQ(closings, 0);
    popover.show(item);
    auto* const window = shownWindow();
    ASSERT_NE(window, nullptr);
    const auto identifier = static_cast<xcb_window_t>(window->winId());
    ASSERT_TRUE(spinUntil([&] { return client.activeWindow() == identifier; }));
    popover.close();
    popover.close();
    EXPECT_EQ(closings, 1);
    ASSERT_TRUE(spinUntil([&] { return !client.isListed(identifier); }));
    // The window manager closes it too, for instance by a key.
    popover.show(item);
    ASSERT_TRUE(spinUntil([&] { return client.activeWindow() == window->winId(); }));
    client.ask(static_cast<xcb_window_t>(window->winId()), "_NET_CLOSE_WINDOW", {0, 2});
    EXPECT_TRUE(spinUntil([&] { return closings == 2; }));
    EXPECT_FALSE(popover.isShown());
}

TEST_F(X11ShellTest, AViewOfTheSameSourceIsKept) {
    QtPlatform::QtPopover popover(engine, screens, link);
    const auto first = std::make_shared<QObject>();
    popover.setContent({plainView, first});
    const std::weak_ptr<QObject> model = std::make_shared<QObject>();
    popover.setContent({plainView, std::make_shared<QObject>()});
    EXPECT_EQ(first.use_count(), 1);
}

TEST_F(X11ShellTest, APopoverThatIsEmptiedLetsItsModelGo) {
    QtPlatform::QtPopover popover(engine, screens, link);
    popover.setContent({});
    const auto model = std::make_shared<QObject>();
    popover.setContent({plainView, model});
    popover.setContent({});
    EXPECT_EQ(model.use_count(), 1);
    popover.setContent({plainView, model});
    EXPECT_GT(model.use_count(), 1);
}

TEST_F(X11ShellTest, TheScreenAtAPixelAndThePixelUnderThePointer) {
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(screens.at({5, 5}), all.front());
    EXPECT_EQ(screens.at({-5, 5}), std::nullopt);
    xcb_warp_pointer(client.get(), XCB_WINDOW_NONE, client.root(), 0, 0, 0, 0, 123, 45);
    client.sync();
    EXPECT_TRUE(spinUntil([] { return QtPlatform::ScreenGeometry::pointer() == QPoint(123, 45); }));
}

TEST_F(X11ShellTest, ClicksAreSeenWhereverTheyGoButOnOwnWindows) {
    TestSupport::HandDrivenQueue queue;
    LinuxPlatform::X11EventMonitors monitors(*connection,
                                             std::make_unique<QtPlatform::QtEventMonitors>(queue));
    std::vector<std::uint64_t> seen;
    auto subscription =
        monitors.addGlobalMonitor(bothButtons, [&](const auto& event) { seen.push_back(event.type); });
    waitForServer();
    movePointer(100, 100);
    click(1);
    click(3);
    click(2);
    ASSERT_TRUE(spinUntil([&] { return seen.size() >= 2; })) << testing::PrintToString(seen);
    EXPECT_THAT(seen, ElementsAre(Platform::EventType::leftMouseDown, Platform::EventType::rightMouseDown));

    seen.clear();
    QWindow own;
    own.setFlags(Qt::BypassWindowManagerHint);
    own.setGeometry(600, 400, 100, 100);
    own.show();
    ASSERT_TRUE(spinUntil([&] { return own.isExposed(); }));
    movePointer(650, 450);
    click(1);
    client.sync();
    // Whatever the server has sent about that click has arrived with the answer to a later question.
    waitForServer();
    connection->dispatchEvents();
    EXPECT_THAT(seen, IsEmpty());
    movePointer(100, 100);
    click(3);
    ASSERT_TRUE(spinUntil([&] { return !seen.empty(); }));
    EXPECT_THAT(seen, ElementsAre(Platform::EventType::rightMouseDown));

    subscription = {};
    seen.clear();
    click(1);
    QCoreApplication::processEvents();
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(X11ShellTest, ThePanelsOwnMenusBelongToThePanel) {
    LinuxPlatform::X11MenuBar bar(*connection);
    EXPECT_EQ(bar.owningApplication(), std::nullopt);
    const auto panel = openPanel(40);
    EXPECT_EQ(bar.owningApplication(), std::nullopt);
    const auto menu = xcb_generate_id(client.get());
    const std::uint32_t overrideRedirect = 1;
    xcb_create_window(client.get(), XCB_COPY_FROM_PARENT, menu, client.root(), 10, 50, 80, 80, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                      &overrideRedirect);
    client.map(menu);
    EXPECT_EQ(bar.owningApplication(), Platform::MenuBar::controlCenter);
    client.setNumbers(menu, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                      std::vector{client.atom("_NET_WM_WINDOW_TYPE_TOOLTIP")});
    EXPECT_EQ(bar.owningApplication(), std::nullopt);
    client.destroy(menu);
    client.destroy(panel);
}

TEST_F(X11ShellTest, ThePanelsWindowThatHasTheKeyboardIsThePanelsUnlessItIsTheDesktop) {
    LinuxPlatform::X11MenuBar bar(*connection);
    const auto panel = openPanel(40);
    const auto window = client.open("panel", "Panel");
    ASSERT_TRUE(spinUntil([&] { return client.activeWindow() == window; }));
    EXPECT_EQ(bar.frontmostApplication(), Platform::MenuBar::controlCenter);
    client.setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                      std::vector{client.atom("_NET_WM_WINDOW_TYPE_DESKTOP")});
    EXPECT_EQ(bar.frontmostApplication(), std::nullopt);
    client.destroy(window);
    client.destroy(panel);
}

TEST_F(X11ShellTest, WindowsHaveAFixedSizeAndComeToTheFrontWithTheKeyboard) {
    const auto other = client.open("other", "Other");
    ASSERT_TRUE(spinUntil([&] { return client.activeWindow() == other; }));
    QtPlatform::QtWindows windows(engine, screens, link);
    auto window = windows.makeWindow({plainView, std::make_shared<QObject>()}, {420, 460}, {});
    EXPECT_FALSE(window->isVisible());
    window->setTitle("Curtain — Settings");
    window->center();
    window->makeKeyAndOrderFront();
    window->orderFrontRegardless();
    auto* const shown = shownWindow();
    ASSERT_NE(shown, nullptr);
    EXPECT_TRUE(spinUntil([&] { return client.activeWindow() == shown->winId(); }));
    EXPECT_EQ(shown->size(), QSize(420, 460));
    EXPECT_EQ(shown->minimumSize(), shown->maximumSize());
    EXPECT_EQ(shown->title(), QStringLiteral("Curtain — Settings"));

    std::vector<std::string> events;
    window->setOnWillClose([&] { events.push_back(window->isVisible() ? "visible" : "hidden"); });
    window->close();
    EXPECT_THAT(events, ElementsAre("visible"));
    EXPECT_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    int closings = 0;
    window->setOnWillClose([&] { ++closings; });
    window.reset();
    EXPECT_EQ(closings, 1);
    client.destroy(other);
}

} // namespace
