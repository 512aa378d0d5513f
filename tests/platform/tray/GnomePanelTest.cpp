#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/linux/dbus/DBusSignal.h"
#include "platform/linux/tray/StatusNotifierHosts.h"
#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/gnome/GnomeShellStandIn.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/RecordingLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>

#include <gmock/gmock.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::TrayStatusItem;
using testing::ElementsAre;
using testing::IsEmpty;

const auto curtainName = QStringLiteral("com.curtain.Curtain");
const auto extensionName = QStringLiteral("com.curtain.Curtain.GnomeShell");
const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// A panel that takes in every item.
class OtherPanel : public BusObject {
public:
    explicit OtherPanel(const GnomeShellStandIn& shell)
        : BusObject(shell.connect(), watcherName, watcherPath) {}

    int registrations = 0;

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        registrations += message.member() == QStringLiteral("RegisterStatusNotifierItem") ? 1 : 0;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    }
};

struct GnomePanelTest : testing::Test {
    GnomeShellStandIn shell{GnomeShellStandIn::Bus::ofTheSession};
    HandDrivenQueue queue;
    RecordingLog log;
    bool isRightToLeft = false;
    std::vector<std::string> chosen;
    std::vector<std::uint64_t> clicks;
    std::unique_ptr<TrayStatusItem> item;

    GnomePanelTest() { QDBusConnection::sessionBus().registerService(curtainName); }
    ~GnomePanelTest() override { QDBusConnection::sessionBus().unregisterService(curtainName); }
    GnomePanelTest(const GnomePanelTest&) = delete;
    GnomePanelTest& operator=(const GnomePanelTest&) = delete;

    void stand() {
        item = std::make_unique<TrayStatusItem>(
            nullptr, queue, log,
            LinuxPlatform::TrayToolkit{.render = [](const auto&, const QColor&, int) { return QImage(); },
                                       .popUpMenu = [](const auto&, const auto&) {},
                                       .pointer = [] { return std::nullopt; },
                                       .isPlausible = [](const QPoint&) { return false; },
                                       .textColor = Qt::blue});
        item->setAction(1U << Platform::EventType::leftMouseUp | 1U << Platform::EventType::rightMouseUp,
                        [this](const auto& event) {
                            clicks.push_back(event->type);
                            if (event->type == Platform::EventType::rightMouseUp) {
                                item->popUpMenu(menu());
                            }
                        });
        item->setMenu([this] { return menu(); });
        item->setImage({"open", 18, 18, true, {}});
    }

    void standInPanel() {
        shell.setExtension(GnomeShellStandIn::on);
        stand();
        ASSERT_TRUE(showsButton("open", "Curtain"));
    }

    Platform::Menu menu() {
        return {{{"Curtain 1", nullptr},
                 {},
                 {"Open_it", [this] { chosen.emplace_back("open"); }},
                 {"Quit", [this] { chosen.emplace_back("quit"); }}},
                "en",
                isRightToLeft,
                {}};
    }

    std::vector<std::string> texts(const char* question) const {
        std::vector<std::string> texts;
        for (const auto& text : shell.call(QString::fromLatin1(question)).toStringList()) {
            texts.push_back(text.toStdString());
        }
        return texts;
    }

    bool showsButton(const std::string& icon, const std::string& name) const {
        return spinUntil([&] { return texts("Button") == std::vector<std::string>{icon, "", name}; });
    }
    bool showsNoButton() const {
        return spinUntil([&] { return texts("Button").empty(); });
    }
};

TEST_F(GnomePanelTest, ButtonShowsTheIconWhereThereIsNoTray) {
    stand();
    EXPECT_FALSE(item->hasPanel());
    shell.setExtension(GnomeShellStandIn::on);
    EXPECT_TRUE(showsButton("open", "Curtain"));
    EXPECT_TRUE(item->hasPanel());
    item->setImage({"close", 18, 18, true, {}});
    EXPECT_TRUE(showsButton("close", "Curtain"));
    item->setToolTip("Curtain — on");
    EXPECT_TRUE(showsButton("close", "Curtain — on"));
    shell.setExtension(GnomeShellStandIn::off);
    EXPECT_TRUE(showsNoButton());
    EXPECT_TRUE(spinUntil([&] { return !item->hasPanel(); }));
    shell.setExtension(GnomeShellStandIn::on);
    EXPECT_TRUE(showsButton("close", "Curtain — on"));
    item.reset();
    EXPECT_TRUE(showsNoButton());
}

TEST_F(GnomePanelTest, ClickTellsWhereTheButtonIs) {
    standInPanel();
    shell.call(QStringLiteral("ClickButton"), {1200, 31});
    ASSERT_TRUE(spinUntil([&] { return !clicks.empty(); }));
    EXPECT_THAT(clicks, ElementsAre(Platform::EventType::leftMouseUp));
    EXPECT_EQ(item->frame(), (Platform::Rect{1200, 31, 0, 0}));
    int secondClicks = 0;
    item->setSecondaryAction([&] { ++secondClicks; });
    shell.call(QStringLiteral("MiddleClickButton"), {1210, 31});
    EXPECT_TRUE(spinUntil([&] { return secondClicks == 1; }));
    EXPECT_EQ(clicks.size(), 1U);
}

TEST_F(GnomePanelTest, MenuIsCurtainsOwn) {
    standInPanel();
    const auto shows = [&](const std::vector<std::string>& entries) {
        shell.call(QStringLiteral("OpenMenu"));
        return spinUntil([&] { return texts("Menu") == entries; });
    };
    EXPECT_TRUE(shows({"ltr", "(Curtain 1)", "-", "Open_it", "Quit"}));
    EXPECT_THAT(clicks, ElementsAre(Platform::EventType::rightMouseUp));
    shell.call(QStringLiteral("Choose"), {QStringLiteral("Open_it")});
    EXPECT_TRUE(spinUntil([&] { return !chosen.empty(); }));
    isRightToLeft = true;
    EXPECT_TRUE(shows({"rtl", "(Curtain 1)", "-", "Open_it", "Quit"}));
    shell.call(QStringLiteral("Choose"), {QStringLiteral("Quit")});
    EXPECT_TRUE(spinUntil([&] { return chosen.size() == 2; }));
    EXPECT_THAT(chosen, ElementsAre("open", "quit"));
}

TEST_F(GnomePanelTest, TrayIsPreferredAndThereIsOneIcon) {
    standInPanel();
    {
        const OtherPanel tray(shell);
        EXPECT_TRUE(showsNoButton());
        EXPECT_TRUE(spinUntil([&] { return tray.registrations == 1; }));
    }
    EXPECT_TRUE(showsButton("open", "Curtain"));
    item.reset();
    const OtherPanel tray(shell);
    stand();
    EXPECT_TRUE(spinUntil([&] { return tray.registrations == 1; }));
    EXPECT_THAT(texts("Button"), IsEmpty());
}

TEST_F(GnomePanelTest, NobodyElseGetsAButton) {
    standInPanel();
    auto other = shell.connect();
    auto request = QDBusMessage::createMethodCall(extensionName, watcherPath, watcherName,
                                                  QStringLiteral("RegisterStatusNotifierItem"));
    request.setArguments({other.baseService()});
    EXPECT_EQ(askOverBus(other, request).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    EXPECT_THAT(texts("Button"), ElementsAre("open", "", "Curtain"));
}

TEST_F(GnomePanelTest, ExtensionFromBeforeItHadAButtonIsNoPanel) {
    shell.setExtension(GnomeShellStandIn::on);
    shell.call(QStringLiteral("LosePanel"));
    stand();
    // Asks what the item has asked before.
    const LinuxPlatform::StatusNotifierHosts extension(QDBusConnection::sessionBus(), extensionName, [] {});
    ASSERT_TRUE(spinUntil([&] { return extension.isKnown(); }));
    queue.advance(1);
    EXPECT_FALSE(item->hasPanel());
    const OtherPanel tray(shell);
    ASSERT_TRUE(spinUntil([&] { return tray.registrations == 1; }));
    EXPECT_THAT(texts("Button"), IsEmpty());
}

TEST_F(GnomePanelTest, CurtainHearsWhenTheSessionIsLocked) {
    int uses = 0;
    int locks = 0;
    const auto count = [](const char* name, int& number) {
        return std::make_unique<LinuxPlatform::DBusSignal>(
            QDBusConnection::sessionBus(), extensionName, QStringLiteral("/com/curtain/Curtain/GnomeShell"),
            extensionName, QString::fromLatin1(name), [&number](const auto&) { ++number; });
    };
    const auto used = count("Used", uses);
    const auto locked = count("Locked", locks);
    // The extension knows of Curtain's name by then.
    standInPanel();
    shell.call(QStringLiteral("Lock"));
    EXPECT_TRUE(spinUntil([&] { return locks == 1; }));
    EXPECT_EQ(uses, 0);
}

TEST_F(GnomePanelTest, CurtainHearsWhenItsUserTurnsToTheShell) {
    int uses = 0;
    const LinuxPlatform::DBusSignal signal(QDBusConnection::sessionBus(), extensionName,
                                           QStringLiteral("/com/curtain/Curtain/GnomeShell"), extensionName,
                                           QStringLiteral("Used"), [&](const auto&) { ++uses; });
    // The extension knows of Curtain's name by then.
    standInPanel();
    shell.call(QStringLiteral("Use"));
    EXPECT_TRUE(spinUntil([&] { return uses == 1; }));
    // It is told nobody else.
    auto bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(bus.unregisterService(curtainName));
    shell.call(QStringLiteral("Use"));
    ASSERT_TRUE(bus.registerService(curtainName));
    shell.call(QStringLiteral("Use"));
    EXPECT_TRUE(spinUntil([&] { return uses > 1; }));
    EXPECT_EQ(uses, 2);
}

} // namespace
} // namespace TestSupport
