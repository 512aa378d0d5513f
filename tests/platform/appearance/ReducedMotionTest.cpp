#include "platform/linux/appearance/ReducedMotion.h"

#include "platform/linux/appearance/HighContrast.h"
#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::ReducedMotion;
using TestSupport::spinUntil;
using Key = std::pair<QString, QString>;

const Key common{"org.freedesktop.appearance", "reduced-motion"};
const Key gnome{"org.gnome.desktop.interface", "enable-animations"};
const Key kde{"org.kde.kdeglobals.KDE", "AnimationDurationFactor"};

/// A portal that knows the settings that the test gives it.
class Portal : public TestSupport::BusObject {
public:
    explicit Portal(QDBusConnection bus)
        : BusObject(std::move(bus), "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop") {}

    std::map<Key, QVariant> values;
    int reads = 0;

    void change(const Key& key, const QVariant& value) {
        auto signal = QDBusMessage::createSignal(path(), "org.freedesktop.portal.Settings", "SettingChanged");
        signal.setArguments({key.first, key.second, QVariant::fromValue(QDBusVariant(value))});
        bus().send(signal);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != "Read") {
            return false;
        }
        ++reads;
        const auto arguments = message.arguments();
        const auto found = values.find({arguments[0].toString(), arguments[1].toString()});
        if (found == values.end()) {
            connection.send(
                message.createErrorReply("org.freedesktop.portal.Error.NotFound", "no such setting"));
        } else {
            const auto inner = QVariant::fromValue(QDBusVariant(found->second));
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(inner))));
        }
        return true;
    }
};

class ReducedMotionTest : public testing::Test {
protected:
    ~ReducedMotionTest() override {
        motion.reset();
        portal.reset();
        QDBusConnection::disconnectFromBus("portal");
        QDBusConnection::disconnectFromBus("curtain");
    }

    TestSupport::PrivateBus bus;
    std::optional<Portal> portal{std::in_place, bus.connect("portal")};
    std::optional<ReducedMotion> motion;
    std::vector<bool> answers;

    void start() {
        motion.emplace(bus.connect("curtain"), [this](bool isReduced) { answers.push_back(isReduced); });
        ASSERT_TRUE(spinUntil([this] { return portal->reads == 3; }));
    }

    bool comesToBe(bool isReduced) {
        return spinUntil([&] { return !answers.empty() && answers.back() == isReduced; });
    }
};

TEST_F(ReducedMotionTest, EachDesktopAsksInItsOwnWords) {
    const std::vector<std::pair<Key, QVariant>> wishes{{common, 1U}, {gnome, false}, {kde, QString("0")}};
    for (const auto& [key, value] : wishes) {
        SCOPED_TRACE(key.second.toStdString());
        answers.clear();
        portal->reads = 0;
        portal->values = {{key, value}};
        start();
        EXPECT_TRUE(comesToBe(true));
    }
}

TEST_F(ReducedMotionTest, OrdinaryDesktopsAskForNothing) {
    portal->values = {{common, 0U}, {gnome, true}, {kde, QString("1")}};
    start();
    EXPECT_TRUE(spinUntil([this] { return answers.size() == 3; }));
    EXPECT_THAT(answers, testing::Each(false));
}

TEST_F(ReducedMotionTest, ValuesOfAnotherKindAreNoWish) {
    portal->values = {{common, QString("?")}, {gnome, QString("off")}, {kde, QString("fast")}};
    start();
    EXPECT_TRUE(spinUntil([this] { return answers.size() == 3; }));
    EXPECT_THAT(answers, testing::Each(false));
}

TEST_F(ReducedMotionTest, FollowsChanges) {
    start();
    portal->change(gnome, false);
    EXPECT_TRUE(comesToBe(true));
    portal->change({"org.gnome.desktop.interface", "font-name"}, QString("Sans"));
    portal->change(gnome, true);
    EXPECT_TRUE(comesToBe(false));
    EXPECT_THAT(answers, testing::ElementsAre(true, false));
}

TEST_F(ReducedMotionTest, HighContrastIsToldInTheSameWay) {
    const Key contrast{"org.freedesktop.appearance", "contrast"};
    const Key gnomes{"org.gnome.desktop.a11y.interface", "high-contrast"};
    for (const auto& [key, value] : {std::pair{contrast, QVariant(1U)}, {gnomes, QVariant(true)}}) {
        SCOPED_TRACE(key.second.toStdString());
        answers.clear();
        portal->reads = 0;
        portal->values = {{key, value}};
        const LinuxPlatform::HighContrast high(bus.connect("curtain"),
                                               [this](bool isHigh) { answers.push_back(isHigh); });
        ASSERT_TRUE(spinUntil([this] { return portal->reads == 2; }));
        EXPECT_TRUE(comesToBe(true));
        portal->change(key, key == gnomes ? QVariant(false) : QVariant(0U));
        EXPECT_TRUE(comesToBe(false));
    }
}

} // namespace
