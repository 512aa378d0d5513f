#include "platform/qt/QtEventMonitors.h"

#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QTest>
#include <QWindow>

#include <cstdint>
#include <vector>

namespace {

using Platform::Event;
namespace EventType = Platform::EventType;

/// The toolkit's news of the keyboard, as they come from it.
class QtEventMonitorsTest : public testing::Test {
protected:
    /// With the toolkit's own news of it behind us.
    static void show(QWindow& window) {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        QCoreApplication::processEvents();
    }

    static void giveTo(QWindow& window) {
        Q_EMIT qGuiApp->focusWindowChanged(&window);
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    }

    static void giveToAnotherProgram() {
        Q_EMIT qGuiApp->focusWindowChanged(nullptr);
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    }

    /// Once a loss counts.
    void expectClicks(int count) {
        queue_.advance(1);
        EXPECT_EQ(clicks_, count);
    }

    TestSupport::HandDrivenQueue queue_;
    QWindow window_;
    QtPlatform::QtEventMonitors monitors_{queue_};
    int clicks_ = 0;
    Platform::Subscription subscription_ = monitors_.addGlobalMonitor(
        1U << EventType::leftMouseDown, [this](const Event& /*event*/) { ++clicks_; });
};

TEST_F(QtEventMonitorsTest, AnotherProgramThatTakesTheKeyboardCountsAsAClickOnIt) {
    show(window_);
    giveTo(window_);
    EXPECT_EQ(clicks_, 0);
    giveToAnotherProgram();
    expectClicks(1);
    giveTo(window_);
    giveToAnotherProgram();
    expectClicks(2);
}

TEST_F(QtEventMonitorsTest, WindowThatWasOpenedAgainHasNotLostTheKeyboardByHavingBeenClosed) {
    show(window_);
    giveTo(window_);
    window_.hide();
    window_.show();
    giveToAnotherProgram();
    expectClicks(0);
    giveTo(window_);
    giveToAnotherProgram();
    expectClicks(1);
}

TEST_F(QtEventMonitorsTest, WindowThatWasClosedAfterAnotherHadTheKeyboardTakesNothing) {
    QWindow other;
    show(window_);
    show(other);
    giveTo(window_);
    giveTo(other);
    window_.hide();
    QCoreApplication::processEvents();
    giveToAnotherProgram();
    expectClicks(1);
}

TEST_F(QtEventMonitorsTest, KeysOfADialogAreForTheDialogAlone) {
    int keys = 0;
    const auto monitor = monitors_.addLocalMonitor(1U << EventType::keyDown, [&](const Event& /*event*/) {
        ++keys;
        return true;
    });
    QWindow dialog;
    dialog.setFlags(Qt::Dialog);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(keys, 0);
    QTest::keyClick(&window_, Qt::Key_Escape);
    EXPECT_EQ(keys, 1);
}

TEST_F(QtEventMonitorsTest, ThePointerAndTouchesAreSeenByWhoeverAskedForThem) {
    std::vector<std::uint64_t> seen;
    const auto record = [&](const Event& event) {
        seen.push_back(event.type);
        return false;
    };
    const auto all = monitors_.addLocalMonitor(
        1U << EventType::mouseMoved | 1U << EventType::leftMouseDown | 1U << EventType::keyDown, record);
    const auto keys = monitors_.addLocalMonitor(1U << EventType::keyDown, [](const auto& /*event*/) {
        ADD_FAILURE() << "no key was pressed";
        return false;
    });
    show(window_);
    QTest::mouseMove(&window_, QPoint(3, 4));
    QTest::mouseClick(&window_, Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_THAT(seen, testing::Contains(EventType::mouseMoved));
    EXPECT_THAT(seen, testing::Contains(EventType::leftMouseDown));
}

TEST_F(QtEventMonitorsTest, KeyboardThatComesBackAtOnceWasNotLost) {
    show(window_);
    giveTo(window_);
    giveToAnotherProgram();
    queue_.advance(0.09);
    giveTo(window_);
    expectClicks(0);
    giveToAnotherProgram();
    expectClicks(1);
}

} // namespace
