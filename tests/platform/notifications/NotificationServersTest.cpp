#include "platform/linux/notifications/DBusNotificationCenter.h"

#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::DBusNotificationCenter;
using testing::ElementsAre;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

constexpr auto patience = 20s;
constexpr auto defaultAnswer = "com.apple.UNNotificationDefaultActionIdentifier";

QString output(const QStringList& command) {
    QProcess process;
    process.start(command.first(), command.mid(1));
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// The centre against servers that people use, on a real screen.
class NotificationServersTest : public testing::Test, public Platform::UserNotificationCenterDelegate {
protected:
    std::vector<std::string> answers_;
    TestSupport::HandDrivenQueue queue_;

    void didReceive(const Platform::NotificationResponse& response,
                    const std::function<void()>& completion) override {
        answers_.push_back(response.actionIdentifier + " " + response.request.identifier);
        completion();
    }

    void willPresent(const Platform::NotificationRequest&,
                     const std::function<void(std::uint64_t)>& completion) override {
        completion(Platform::NotificationOption::banner | Platform::NotificationOption::sound);
    }

    std::unique_ptr<DBusNotificationCenter> makeCenter(const QDBusConnection& bus) {
        auto center = std::make_unique<DBusNotificationCenter>(bus, queue_, "Curtain", "com.curtain.Curtain");
        center->setDelegate(this);
        center->setNotificationCategories({{"activated", {{"UNDO", "Undo"}}}});
        return center;
    }

    static Platform::NotificationRequest activated(const std::string& identifier) {
        return {identifier, {"Privacy <mode>", "R&D <b>" + identifier, "activated", {}}};
    }

    bool isAnswered(std::size_t count) {
        return spinUntil([&] { return answers_.size() == count; }, patience);
    }
};

class NotificationDaemonTest : public NotificationServersTest {
protected:
    std::unique_ptr<TestSupport::ChildProcess> start() const {
        return std::make_unique<TestSupport::ChildProcess>(
            std::vector<std::string>{"env", "DBUS_SESSION_BUS_ADDRESS=" + bus_.address(),
                                     "/usr/lib/notification-daemon/notification-daemon"});
    }

    /// The windows in which notices are shown now.
    static QStringList windows() {
        return output({QStringLiteral("xdotool"), QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                       QStringLiteral("--name"), QStringLiteral("^Notification$")})
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    static bool areShown(qsizetype count) {
        return spinUntil([&] { return windows().size() == count; }, patience);
    }

    /// Clicks into the only notice, that far from its lower right corner.
    static void click(int fromRight, int fromBottom) {
        const auto window = windows().value(0);
        int width = 0;
        int height = 0;
        for (const auto& line : output({QStringLiteral("xdotool"), QStringLiteral("getwindowgeometry"),
                                        QStringLiteral("--shell"), window})
                                    .split(QLatin1Char('\n'))) {
            if (line.startsWith(QLatin1String("WIDTH="))) {
                width = line.mid(6).toInt();
            } else if (line.startsWith(QLatin1String("HEIGHT="))) {
                height = line.mid(7).toInt();
            }
        }
        output({QStringLiteral("xdotool"), QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                QString::number(width - fromRight), QString::number(height - fromBottom),
                QStringLiteral("click"), QStringLiteral("1")});
    }

    /// Clicks there until there are so many answers: a notice takes no clicks while it flies in.
    bool isAnsweredWhenClicked(int fromRight, int fromBottom, std::size_t answers) {
        return spinUntil(
            [&] {
                click(fromRight, fromBottom);
                return spinUntil([&] { return answers_.size() >= answers; }, 1s);
            },
            patience);
    }

    /// Clicks one notice after the other, since this server shows one at a time.
    void clickAll(std::size_t count) {
        constexpr int toTheText = 250;
        constexpr int toTheTextFromBelow = 70;
        for (std::size_t answers = 1; answers <= count; ++answers) {
            ASSERT_TRUE(areShown(1)) << answers;
            EXPECT_TRUE(isAnsweredWhenClicked(toTheText, toTheTextFromBelow, answers)) << answers;
        }
        EXPECT_EQ(answers_.size(), count);
    }

    TestSupport::PrivateBus bus_;
    QDBusConnection connection_ = bus_.connect(QStringLiteral("notification-daemon"));
    std::unique_ptr<DBusNotificationCenter> center_ = makeCenter(connection_);

    ~NotificationDaemonTest() override {
        center_.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("notification-daemon"));
    }
};

TEST_F(NotificationDaemonTest, ButtonIsClicked) {
    const auto daemon = start();
    center_->add(activated("one"));
    ASSERT_TRUE(areShown(1));
    constexpr int toTheButton = 81;
    constexpr int toTheButtonFromBelow = 38;
    ASSERT_TRUE(isAnsweredWhenClicked(toTheButton, toTheButtonFromBelow, 1));
    EXPECT_THAT(answers_, ElementsAre("UNDO one"));
    EXPECT_TRUE(areShown(0));
}

TEST_F(NotificationDaemonTest, NoticeItselfIsClicked) {
    const auto daemon = start();
    center_->add(activated("one"));
    clickAll(1);
    EXPECT_THAT(answers_, ElementsAre(std::string(defaultAnswer) + " one"));
    EXPECT_TRUE(areShown(0));
}

TEST_F(NotificationDaemonTest, NoticesStackAndTakeTheirPlace) {
    const auto daemon = start();
    center_->add(activated("one"));
    center_->add(activated("two"));
    center_->add(activated("one"));
    center_->add(activated("three"));
    clickAll(3);
    EXPECT_THAT(answers_, testing::UnorderedElementsAre(std::string(defaultAnswer) + " one",
                                                        std::string(defaultAnswer) + " two",
                                                        std::string(defaultAnswer) + " three"));
    EXPECT_TRUE(areShown(0));
}

TEST_F(NotificationDaemonTest, DaemonThatStartsLateOrAgainShowsWhatWaits) {
    center_->add(activated("early"));
    auto daemon = start();
    ASSERT_TRUE(areShown(1));
    daemon->end(SIGKILL);
    ASSERT_TRUE(areShown(0));
    center_->add(activated("late"));
    daemon = start();
    ASSERT_TRUE(areShown(1));
}

TEST_F(NotificationDaemonTest, DaemonThatIsStoppedShowsItAfterwards) {
    const auto daemon = start();
    center_->add(activated("one"));
    ASSERT_TRUE(areShown(1));
    // The program that was started is the daemon itself by now.
    ASSERT_EQ(kill(daemon->id(), SIGSTOP), 0);
    center_->add(activated("two"));
    queue_.advance(10.0);
    ASSERT_EQ(kill(daemon->id(), SIGCONT), 0);
    clickAll(2);
    EXPECT_TRUE(areShown(0));
}

class DunstTest : public NotificationServersTest {
protected:
    std::unique_ptr<DBusNotificationCenter> center_ = makeCenter(QDBusConnection::sessionBus());

    static QString control(const QString& word, const QString& argument) {
        return output({QStringLiteral("dunstctl"), word, argument});
    }

    static bool areShown(int count) {
        return spinUntil(
            [&] {
                return control(QStringLiteral("count"), QStringLiteral("displayed")) ==
                       QString::number(count);
            },
            patience);
    }

    /// Whether the server has dealt with all that the centre has sent, and the centre with the answers.
    static bool isTakenIn() {
        const auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
            QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("GetServerInformation"));
        return TestSupport::askOverBus(QDBusConnection::sessionBus(), question, patience).type() ==
               QDBusMessage::ReplyMessage;
    }
};

TEST_F(DunstTest, NoticesStackTakeTheirPlaceAndAreAnswered) {
    center_->add(activated("one"));
    ASSERT_TRUE(areShown(1));
    center_->add(activated("two"));
    ASSERT_TRUE(areShown(2));
    ASSERT_TRUE(isTakenIn());
    center_->add(activated("one"));
    ASSERT_TRUE(isTakenIn());
    control(QStringLiteral("action"), QStringLiteral("0"));
    ASSERT_TRUE(isAnswered(1));
    EXPECT_TRUE(areShown(1)) << "dunst itself would let it stand";
    control(QStringLiteral("action"), QStringLiteral("0"));
    ASSERT_TRUE(isAnswered(2));
    EXPECT_THAT(answers_, testing::UnorderedElementsAre(std::string(defaultAnswer) + " one",
                                                        std::string(defaultAnswer) + " two"));
    EXPECT_TRUE(areShown(0));
}

} // namespace
