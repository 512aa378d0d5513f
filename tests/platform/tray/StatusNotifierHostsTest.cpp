#include "platform/linux/tray/StatusNotifierHosts.h"

#include "tests/platform/dbus/AnonymousBus.h"
#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QString>
#include <QVariant>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::StatusNotifierHosts;
using testing::ElementsAre;
using TestSupport::spinUntil;

const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// The watcher of a panel, which may have no host, and may keep what it is asked.
class Watcher : public TestSupport::BusObject {
public:
    explicit Watcher(QDBusConnection bus) : BusObject(std::move(bus), watcherName, watcherPath) {}

    bool hasHost = true;
    bool isSilent = false;
    std::vector<QDBusMessage> held;

    std::string name() const { return bus().baseService().toStdString(); }

    void announce(const char* signal) {
        bus().send(QDBusMessage::createSignal(watcherPath, watcherName, QString::fromLatin1(signal)));
    }

    void answerHeld() {
        for (const auto& message : std::exchange(held, {})) {
            answer(message);
        }
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (isSilent) {
            message.setDelayedReply(true);
            held.push_back(message);
        } else {
            answer(message);
        }
        return true;
    }

private:
    void answer(const QDBusMessage& message) {
        bus().send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
    }
};

class StatusNotifierHostsTest : public testing::Test {
protected:
    ~StatusNotifierHostsTest() override {
        hosts_.reset();
        watcher_.reset();
        for (const auto& name : names_) {
            QDBusConnection::disconnectFromBus(name);
        }
    }

    QDBusConnection connect(const QString& name) {
        names_.push_back(name);
        return bus_.connect(name);
    }

    Watcher& startWatcher() {
        static int watchers = 0;
        watcher_.reset();
        watcher_ = std::make_unique<Watcher>(connect(QStringLiteral("watcher-%1").arg(++watchers)));
        return *watcher_;
    }

    void follow(const QDBusConnection& bus) {
        hosts_ = std::make_unique<StatusNotifierHosts>(
            bus, watcherName, [this] { seen_.push_back(hosts_->watcher().toStdString()); });
    }

    void follow() { follow(connect(QStringLiteral("item"))); }

    bool comesToKnow(const std::string& watcher) {
        return spinUntil([&] { return hosts_->isKnown() && hosts_->watcher().toStdString() == watcher; });
    }

    TestSupport::PrivateBus bus_;
    std::vector<QString> names_;
    std::unique_ptr<Watcher> watcher_;
    std::unique_ptr<StatusNotifierHosts> hosts_;
    /// What was said at each change.
    std::vector<std::string> seen_;
};

TEST_F(StatusNotifierHostsTest, WatcherThatIsThereIsKnownByItsUniqueName) {
    const auto name = startWatcher().name();
    follow();
    EXPECT_FALSE(hosts_->isKnown());
    EXPECT_TRUE(comesToKnow(name)) << hosts_->watcher().toStdString();
    EXPECT_THAT(seen_, ElementsAre(name)) << "before it is known, nothing is said";
}

TEST_F(StatusNotifierHostsTest, WithoutAWatcherThereIsNone) {
    follow();
    EXPECT_TRUE(comesToKnow(""));
    EXPECT_THAT(seen_, ElementsAre(""));
}

TEST_F(StatusNotifierHostsTest, WatcherThatEndsAndStartsIsFollowed) {
    follow();
    ASSERT_TRUE(comesToKnow(""));
    const auto first = startWatcher().name();
    ASSERT_TRUE(comesToKnow(first));
    watcher_.reset();
    ASSERT_TRUE(comesToKnow(""));
    const auto second = startWatcher().name();
    ASSERT_TRUE(comesToKnow(second));
    EXPECT_NE(first, second);
}

TEST_F(StatusNotifierHostsTest, HostsOfTheWatcherComeAndGo) {
    auto& watcher = startWatcher();
    watcher.hasHost = false;
    follow();
    ASSERT_TRUE(comesToKnow(""));
    watcher.hasHost = true;
    watcher.announce("StatusNotifierHostRegistered");
    ASSERT_TRUE(comesToKnow(watcher.name()));
    watcher.hasHost = false;
    watcher.announce("StatusNotifierHostUnregistered");
    EXPECT_TRUE(comesToKnow(""));
}

TEST_F(StatusNotifierHostsTest, LateAnswerOfAnEarlierWatcherIsNotThatOfTheNext) {
    auto& first = startWatcher();
    first.isSilent = true;
    follow();
    ASSERT_TRUE(spinUntil([&] { return !first.held.empty(); }));
    EXPECT_FALSE(hosts_->isKnown());
    first.leave();
    const auto earlier = std::move(watcher_);
    ASSERT_TRUE(comesToKnow(""));
    auto& second = startWatcher();
    second.isSilent = true;
    ASSERT_TRUE(spinUntil([&] { return !second.held.empty(); }));
    first.answerHeld();
    second.answerHeld();
    EXPECT_TRUE(comesToKnow(second.name()));
    EXPECT_THAT(seen_, ElementsAre("", second.name()));
}

TEST_F(StatusNotifierHostsTest, WatcherIsKnownWhereNoReplyNamesItsSender) {
    const TestSupport::AnonymousBus anonymous(bus_);
    const auto first = startWatcher().name();
    names_.push_back(QStringLiteral("anonymous"));
    follow(anonymous.connect(names_.back()));
    ASSERT_TRUE(comesToKnow(first)) << hosts_->watcher().toStdString();
    const auto second = startWatcher().name();
    ASSERT_TRUE(comesToKnow(second)) << hosts_->watcher().toStdString();
    watcher_.reset();
    EXPECT_TRUE(comesToKnow(""));
}

} // namespace
