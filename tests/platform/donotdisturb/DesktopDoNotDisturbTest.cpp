#include "platform/linux/donotdisturb/DesktopDoNotDisturb.h"

#include "platform/linux/donotdisturb/LxqtQuietRoad.h"
#include "platform/linux/donotdisturb/MakoModes.h"
#include "platform/linux/donotdisturb/QuietServers.h"
#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusMessage>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::DesktopDoNotDisturb;
using LinuxPlatform::LxqtQuietRoad;
using LinuxPlatform::quietMakoModes;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

/// Has the name of a notification server, and says what its own is.
class NamedServer : public TestSupport::BusObject {
public:
    NamedServer(QDBusConnection bus, QString name)
        : BusObject(std::move(bus), QStringLiteral("org.freedesktop.Notifications"),
                    QStringLiteral("/org/freedesktop/Notifications")),
          name_(std::move(name)) {}

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (message.member() != QLatin1String("GetServerInformation")) {
            return false;
        }
        bus().send(message.createReply(
            {name_, QStringLiteral("vendor"), QStringLiteral("1"), QStringLiteral("1.2")}));
        return true;
    }

private:
    QString name_;
};

/// A switch, its user and the moods of its server.
struct Switch {
    std::optional<std::string> state = "off";
    /// What the server says to an order, which it follows when it says so.
    std::optional<bool> obeys = true;
    bool isRemembered = false;
    bool tellsChanges = true;
    bool isHeldUp = false;
    double delay = 0;
    std::vector<std::string> orders{};
    std::function<void()> onOrder;
    std::function<void()> onNews;
    std::vector<std::function<void()>> heldUp;

    void turn(std::optional<std::string> newState) {
        state = std::move(newState);
        if (tellsChanges && onNews) {
            onNews();
        }
    }

    void goOn() {
        isHeldUp = false;
        for (const auto& task : std::exchange(heldUp, {})) {
            task();
        }
    }
};

class SwitchRoad : public LinuxPlatform::QuietRoad {
public:
    explicit SwitchRoad(Switch& theSwitch) : switch_(theSwitch) {
        switch_.onNews = [this] { onNews(); };
    }
    ~SwitchRoad() override {
        switch_.onNews = nullptr;
        switch_.heldUp.clear();
    }
    SwitchRoad(const SwitchRoad&) = delete;
    SwitchRoad& operator=(const SwitchRoad&) = delete;

    std::string name() const override { return "switch"; }
    Platform::DoNotDisturb::Habits habits() const override { return {.hidesShown = true}; }
    bool isRemembered() const override { return switch_.isRemembered; }
    bool tellsChanges() const override { return switch_.tellsChanges; }
    Platform::MainQueue::Seconds delay() const override {
        return Platform::MainQueue::Seconds(switch_.delay);
    }
    bool isQuiet(const std::string& state) const override { return state.starts_with("on"); }
    std::string quietened(const std::string& state) const override { return "on after " + state; }

    void read(std::function<void(std::optional<std::string>)> onState) override {
        orHold([this, onState = std::move(onState)] { onState(switch_.state); });
    }

    void write(const std::string& state, std::function<void(std::optional<bool>)> onDone) override {
        switch_.orders.push_back(state);
        if (switch_.onOrder) {
            switch_.onOrder();
        }
        orHold([this, state, onDone = std::move(onDone)] {
            if (switch_.obeys == true) {
                switch_.state = state;
            }
            onDone(switch_.obeys);
        });
    }

    void beginWaiting() override { switch_.isHeldUp = false; }

private:
    void orHold(std::function<void()> task) {
        if (switch_.isHeldUp) {
            switch_.heldUp.push_back(std::move(task));
        } else {
            task();
        }
    }

    Switch& switch_;
};

class DesktopDoNotDisturbTest : public testing::Test {
protected:
    TestSupport::PrivateBus bus;
    TestSupport::HandDrivenQueue queue;
    TestSupport::MemoryUserDefaults disk;
    Switch theSwitch;
    std::optional<NamedServer> server;
    std::unique_ptr<DesktopDoNotDisturb> doNotDisturb;
    std::vector<QString> names;
    std::string session = "session";
    Platform::Subscription observer;
    int changes = 0;

    ~DesktopDoNotDisturbTest() override {
        doNotDisturb.reset();
        server.reset();
        QDBusConnection::disconnectFromBus("server");
        QDBusConnection::disconnectFromBus("later server");
        QDBusConnection::disconnectFromBus("curtain");
    }

    void startServer(const char* connection = "server") {
        server.emplace(bus.connect(connection), QStringLiteral("one of them"));
    }

    void start() {
        doNotDisturb = std::make_unique<DesktopDoNotDisturb>(
            bus.connect("curtain"), queue, disk, session, [this](const auto& identity) {
                names.push_back(identity.name);
                return std::make_unique<SwitchRoad>(theSwitch);
            });
        observer = doNotDisturb->addObserver([this] { ++changes; });
    }

    bool isServerKnown(std::size_t count = 1) {
        return spinUntil([&] { return names.size() == count; });
    }

    void startWithServer() {
        startServer();
        start();
        ASSERT_TRUE(isServerKnown());
    }

    /// What is held and not given back is left alone at the end, as when the program is killed.
    void killAndStart() {
        doNotDisturb.reset();
        names.clear();
        start();
        ASSERT_TRUE(isServerKnown());
    }
};

TEST_F(DesktopDoNotDisturbTest, NothingIsKnownWithoutAServer) {
    start();
    EXPECT_FALSE(doNotDisturb->isOn());
    doNotDisturb->hold();
    doNotDisturb->giveBack();
    EXPECT_FALSE(doNotDisturb->isHeld());
    EXPECT_THAT(theSwitch.orders, IsEmpty());
}

TEST_F(DesktopDoNotDisturbTest, ReadsFollowsAndTellsChanges) {
    startWithServer();
    EXPECT_EQ(names.front(), "one of them");
    EXPECT_EQ(doNotDisturb->isOn(), false);
    queue.runReady();
    EXPECT_EQ(changes, 1);
    theSwitch.turn("on");
    EXPECT_EQ(doNotDisturb->isOn(), true);
    theSwitch.turn("on");
    theSwitch.turn(std::nullopt);
    EXPECT_EQ(doNotDisturb->isOn(), std::nullopt);
    queue.runReady();
    EXPECT_EQ(changes, 3);
    EXPECT_THAT(theSwitch.orders, IsEmpty());
}

TEST_F(DesktopDoNotDisturbTest, ReadsAgainWhereNobodyTells) {
    theSwitch.tellsChanges = false;
    startWithServer();
    EXPECT_EQ(doNotDisturb->isOn(), false);
    theSwitch.turn("on");
    EXPECT_EQ(doNotDisturb->isOn(), true);
}

TEST_F(DesktopDoNotDisturbTest, IsUnknownOnceTheServerHasEnded) {
    startWithServer();
    EXPECT_EQ(doNotDisturb->isOn(), false);
    server.reset();
    EXPECT_TRUE(spinUntil([&] { return !doNotDisturb->isOn(); }));
}

TEST_F(DesktopDoNotDisturbTest, IsOnOnlyOnceASlowServerHasNoticed) {
    theSwitch.delay = 1.3;
    startWithServer();
    theSwitch.turn("on");
    EXPECT_EQ(doNotDisturb->isOn(), std::nullopt);
    queue.advance(1.2);
    EXPECT_EQ(doNotDisturb->isOn(), std::nullopt);
    queue.advance(0.2);
    EXPECT_EQ(doNotDisturb->isOn(), true);
}

TEST_F(DesktopDoNotDisturbTest, WritesDownBeforeItTurns) {
    startWithServer();
    bool wasWrittenDown = false;
    theSwitch.onOrder = [&] { wasWrittenDown = !disk.values.empty(); };
    doNotDisturb->hold();
    EXPECT_TRUE(wasWrittenDown);
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off"));
    EXPECT_TRUE(doNotDisturb->isHeld());
    EXPECT_EQ(doNotDisturb->isOn(), true);
    doNotDisturb->giveBack();
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off", "off"));
    EXPECT_FALSE(doNotDisturb->isHeld());
    EXPECT_THAT(disk.values, IsEmpty());
}

/// What happens between `hold` and `giveBack`, and what is ordered of the switch.
struct Rule {
    const char* name;
    bool isRemembered = false;
    const char* before = "off";
    std::function<void(DesktopDoNotDisturbTest&)> meanwhile = nullptr;
    std::vector<std::string> orders{};

    friend void PrintTo(const Rule& rule, std::ostream* out) { *out << rule.name; }
};

class HoldingTest : public DesktopDoNotDisturbTest, public testing::WithParamInterface<Rule> {
public:
    using DesktopDoNotDisturbTest::disk;
    using DesktopDoNotDisturbTest::doNotDisturb;
    using DesktopDoNotDisturbTest::isServerKnown;
    using DesktopDoNotDisturbTest::killAndStart;
    using DesktopDoNotDisturbTest::names;
    using DesktopDoNotDisturbTest::queue;
    using DesktopDoNotDisturbTest::server;
    using DesktopDoNotDisturbTest::session;
    using DesktopDoNotDisturbTest::startServer;
    using DesktopDoNotDisturbTest::theSwitch;

    /// The server ends, and another comes, which has the switch at `state`.
    void replaceServer(const char* state) {
        server.reset();
        EXPECT_TRUE(spinUntil([&] { return !theSwitch.onNews; }));
        theSwitch.state = state;
        startServer("later server");
        EXPECT_TRUE(isServerKnown(names.size() + 1));
    }
};

HoldingTest& world(DesktopDoNotDisturbTest& test) {
    return static_cast<HoldingTest&>(test);
}

TEST_P(HoldingTest, IsGivenBackExactly) {
    theSwitch.isRemembered = GetParam().isRemembered;
    theSwitch.state = GetParam().before;
    startWithServer();
    doNotDisturb->hold();
    if (GetParam().meanwhile) {
        GetParam().meanwhile(*this);
    }
    doNotDisturb->giveBack();
    EXPECT_EQ(theSwitch.orders, GetParam().orders);
    EXPECT_FALSE(doNotDisturb->isHeld());
}

INSTANTIATE_TEST_SUITE_P(
    Rules, HoldingTest,
    testing::Values(
        Rule{.name = "ItWasOff", .orders = {"on after off", "off"}},
        Rule{.name = "ItWasOffInAnotherWay", .before = "unset", .orders = {"on after unset", "unset"}},
        Rule{.name = "ItWasOn", .before = "on", .orders = {}},
        Rule{.name = "ItWasOnAndItsUserTurnsItOff",
             .before = "on",
             .meanwhile = [](auto& test) { world(test).theSwitch.turn("off"); },
             .orders = {}},
        Rule{.name = "ItsUserTurnsItOff",
             .meanwhile = [](auto& test) { world(test).theSwitch.turn("off"); },
             .orders = {"on after off"}},
        Rule{.name = "ItsUserTurnsItOffAndOn",
             .meanwhile =
                 [](auto& test) {
                     world(test).theSwitch.turn("off");
                     world(test).theSwitch.turn("on after off");
                 },
             .orders = {"on after off"}},
        Rule{.name = "ItsUserTurnsItOtherwise",
             .meanwhile = [](auto& test) { world(test).theSwitch.turn("on for an hour"); },
             .orders = {"on after off"}},
        Rule{.name = "ItsUserTurnsItWithoutAnySign",
             .meanwhile = [](auto& test) { world(test).theSwitch.state = "on for an hour"; },
             .orders = {"on after off"}},
        Rule{.name = "HeldOnceMore",
             .meanwhile = [](auto& test) { world(test).doNotDisturb->hold(); },
             .orders = {"on after off", "off"}},
        Rule{.name = "GivenBackAndHeldOnceMore",
             .meanwhile =
                 [](auto& test) {
                     world(test).doNotDisturb->giveBack();
                     world(test).doNotDisturb->hold();
                 },
             .orders = {"on after off", "off", "on after off", "off"}},
        Rule{.name = "AskedAnewAfterItsUserTurnedItOff",
             .meanwhile =
                 [](auto& test) {
                     world(test).theSwitch.turn("off");
                     world(test).doNotDisturb->hold();
                 },
             .orders = {"on after off", "on after off", "off"}},
        Rule{.name = "Crash",
             .meanwhile = [](auto& test) { world(test).killAndStart(); },
             .orders = {"on after off", "off"}},
        Rule{.name = "CrashAndItsUserTurnsItOff",
             .meanwhile =
                 [](auto& test) {
                     world(test).theSwitch.state = "off";
                     world(test).killAndStart();
                 },
             .orders = {"on after off"}},
        Rule{.name = "CrashAndHeldOnceMore",
             .meanwhile =
                 [](auto& test) {
                     world(test).killAndStart();
                     world(test).doNotDisturb->hold();
                 },
             .orders = {"on after off", "off"}},
        Rule{.name = "CrashAndAnotherLoginWhereTheServerForgets",
             .meanwhile =
                 [](auto& test) {
                     world(test).session = "another";
                     world(test).killAndStart();
                 },
             .orders = {"on after off"}},
        Rule{.name = "CrashAndAnotherLoginWhereItIsRemembered",
             .isRemembered = true,
             .meanwhile =
                 [](auto& test) {
                     world(test).session = "another";
                     world(test).killAndStart();
                 },
             .orders = {"on after off", "off"}},
        Rule{.name = "TheServerStartsAnewAndHasForgotten",
             .meanwhile = [](auto& test) { world(test).replaceServer("off"); },
             .orders = {"on after off", "on after off", "off"}},
        Rule{.name = "TheServerStartsAnewAndRemembers",
             .isRemembered = true,
             .meanwhile = [](auto& test) { world(test).replaceServer("on after off"); },
             .orders = {"on after off", "off"}},
        Rule{.name = "AnotherServerIsQuietByItself",
             .meanwhile = [](auto& test) { world(test).replaceServer("on after off"); },
             .orders = {"on after off"}}),
    [](const auto& rule) { return std::string(rule.param.name); });

TEST_F(DesktopDoNotDisturbTest, AServerThatRefusesIsNotAskedAgain) {
    startWithServer();
    theSwitch.obeys = false;
    doNotDisturb->hold();
    theSwitch.turn("off");
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off"));
    EXPECT_FALSE(doNotDisturb->isHeld());
    EXPECT_EQ(doNotDisturb->isOn(), false);
}

TEST_F(DesktopDoNotDisturbTest, AServerThatDoesNotSayWhetherItObeysIsAskedAgain) {
    startWithServer();
    theSwitch.onOrder = [&] { theSwitch.obeys.reset(); };
    doNotDisturb->hold();
    theSwitch.obeys = true;
    EXPECT_TRUE(doNotDisturb->isHeld()) << "it has not said what became of the order";
    queue.advance(10.0);
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off", "on after off"));
}

TEST_F(DesktopDoNotDisturbTest, AServerThatIsStoppedIsGivenBackWhenItGoesOn) {
    startWithServer();
    theSwitch.isHeldUp = true;
    doNotDisturb->hold();
    doNotDisturb->giveBack();
    EXPECT_THAT(theSwitch.orders, IsEmpty());
    theSwitch.goOn();
    EXPECT_THAT(theSwitch.orders, IsEmpty()) << "by then nobody wants it";
    doNotDisturb->hold();
    theSwitch.isHeldUp = true;
    doNotDisturb->giveBack();
    theSwitch.goOn();
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off", "off"));
    EXPECT_FALSE(doNotDisturb->isHeld());
}

TEST_F(DesktopDoNotDisturbTest, TheEndOfTheProgramWaitsForWhatIsBeingGivenBack) {
    startWithServer();
    doNotDisturb->hold();
    theSwitch.isHeldUp = true;
    doNotDisturb->giveBack();
    doNotDisturb.reset();
    EXPECT_THAT(theSwitch.orders, ElementsAre("on after off", "off"));
    EXPECT_THAT(disk.values, IsEmpty());
}

TEST_F(DesktopDoNotDisturbTest, TheEndOfTheProgramAloneGivesNothingBack) {
    startWithServer();
    doNotDisturb->hold();
    doNotDisturb.reset();
    EXPECT_EQ(theSwitch.state, "on after off");
    EXPECT_FALSE(disk.values.empty());
}

TEST_F(DesktopDoNotDisturbTest, WhatAnEarlierRunLeftIsTouchedOnlyOnRequest) {
    startWithServer();
    doNotDisturb->hold();
    killAndStart();
    EXPECT_TRUE(doNotDisturb->isHeld());
    EXPECT_EQ(theSwitch.state, "on after off");
}

TEST_F(DesktopDoNotDisturbTest, OfDunstsLevelsOnlyTheHighestKeepsEveryNoticeAway) {
    const auto dunst =
        LinuxPlatform::quietRoadOf({QStringLiteral("dunst"), QString()}, bus.connect("curtain"), {});
    for (const auto* const quiet : {"on", "100"}) {
        EXPECT_TRUE(dunst->isQuiet(quiet)) << quiet;
    }
    for (const auto& [state, quietened] :
         {std::pair("off", "on"), std::pair("0", "100"), std::pair("50", "100")}) {
        EXPECT_FALSE(dunst->isQuiet(state)) << state;
        EXPECT_EQ(dunst->quietened(state), quietened);
    }
}

/// The modes of mako, which takes any.
class ModesServer : public TestSupport::BusObject {
public:
    explicit ModesServer(const QDBusConnection& bus)
        : BusObject(bus, {}, QStringLiteral("/fr/emersion/Mako")) {}

    QStringList modes{"default"};

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const bool isOrder = message.member() == QLatin1String("SetModes");
        if (isOrder) {
            modes = message.arguments().value(0).toStringList();
        }
        bus().send(isOrder ? message.createReply() : message.createReply(QVariant(modes)));
        return true;
    }
};

TEST_F(DesktopDoNotDisturbTest, OfMakoTheModeIsTakenOutThatWasPutIn) {
    const TestSupport::TemporaryFolder folder;
    const auto configuration = folder.path() / "mako" / "config";
    TestSupport::writeFile(configuration, "[mode=a]\ninvisible=1\n");
    const auto connection = bus.connect("server");
    const ModesServer mako(connection);
    server.emplace(connection, QStringLiteral("mako"));
    const auto curtain = bus.connect("curtain");
    doNotDisturb =
        std::make_unique<DesktopDoNotDisturb>(curtain, queue, disk, session, [&](const auto& identity) {
            return LinuxPlatform::quietRoadOf(identity, curtain, folder.path());
        });
    ASSERT_TRUE(spinUntil([&] { return doNotDisturb->isOn() == false; }));
    doNotDisturb->hold();
    ASSERT_TRUE(spinUntil([&] { return doNotDisturb->isOn() == true; }));
    ASSERT_EQ(mako.modes, QStringList({"default", "a"}));
    TestSupport::writeFile(configuration, "[mode=b]\ninvisible=1\n[mode=a]\ninvisible=1\n");
    doNotDisturb->giveBack();
    EXPECT_TRUE(spinUntil([&] { return !doNotDisturb->isHeld(); }));
    EXPECT_EQ(mako.modes, QStringList({"default"}));
    doNotDisturb.reset();
}

/// A configuration of mako and the modes in it that hide every notice.
struct MakoCase {
    const char* configuration;
    std::vector<std::string> modes;
};

TEST(MakoModesTest, AreThoseThatHideEveryNotice) {
    const std::vector<MakoCase> cases{
        {"", {}},
        {"invisible=1\n", {}},
        {"[mode=do-not-disturb]\ninvisible=1\n", {"do-not-disturb"}},
        {"[mode=dnd]\r\n  invisible = true \r\n", {"dnd"}},
        {"[mode=a]\ninvisible=0\n[mode=b]\n# invisible=1\n[mode=c]\nborder-size=1\ninvisible=1", {"c"}},
        {"[mode=a]\ninvisible=1\n[mode=b]\ninvisible=1\n", {"a", "b"}},
        {"[mode=a]\ninvisible=1\n[mode=a]\ninvisible=0\n", {}},
        {"[urgency=low mode=a]\ninvisible=1\n[mode=a app-name=x]\ninvisible=1\n", {}},
        {"[mode=\"a b\"]\ninvisible=1\n[mode=]\ninvisible=1\n", {}},
        {"[mode=a]\n[grouped]\ninvisible=1\n", {}},
    };
    for (const auto& [configuration, modes] : cases) {
        EXPECT_EQ(quietMakoModes(configuration), modes) << configuration;
    }
}

class LxqtQuietRoadTest : public testing::Test {
protected:
    TestSupport::TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "lxqt" / "notifications.conf";
    LxqtQuietRoad road{file};

    std::optional<std::string> state() {
        std::optional<std::string> result;
        road.read([&](const auto& answer) { result = answer; });
        return result;
    }

    bool write(const std::string& newState) {
        bool isDone = false;
        road.write(newState, [&](const auto& answer) { isDone = answer == true; });
        return isDone;
    }
};

TEST_F(LxqtQuietRoadTest, TakesTheLineOutAgainThatWasNotThere) {
    TestSupport::writeFile(file, "[General]\n__userfile__=true\nplacement=top-right\n");
    const auto before = TestSupport::readFile(file);
    ASSERT_EQ(state(), "unset");
    EXPECT_FALSE(road.isQuiet(*state()));
    ASSERT_TRUE(write(road.quietened(*state())));
    EXPECT_TRUE(road.isQuiet(*state()));
    EXPECT_THAT(TestSupport::readFile(file), testing::HasSubstr("doNotDisturb=true"));
    ASSERT_TRUE(write("unset"));
    EXPECT_EQ(TestSupport::readFile(file), before);
}

TEST_F(LxqtQuietRoadTest, KeepsWhatOthersWroteMeanwhile) {
    TestSupport::writeFile(file, "[General]\ndoNotDisturb=false\n");
    ASSERT_EQ(state(), "false");
    TestSupport::writeFile(file, "[General]\ndoNotDisturb=false\nspacing=7\n");
    ASSERT_TRUE(write("true"));
    EXPECT_THAT(TestSupport::readFile(file), testing::HasSubstr("spacing=7"));
}

TEST_F(LxqtQuietRoadTest, MakesAMissingFileAndTouchesNoneThatIsNotUnderstood) {
    EXPECT_EQ(state(), "unset");
    EXPECT_TRUE(write("true"));
    EXPECT_EQ(state(), "true");
    TestSupport::writeFile(file, "no settings at all\n");
    EXPECT_EQ(state(), std::nullopt);
    EXPECT_FALSE(write("true"));
    EXPECT_EQ(TestSupport::readFile(file), "no settings at all\n");
}

} // namespace
