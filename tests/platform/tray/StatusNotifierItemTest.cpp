#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/linux/dbus/DBusSignal.h"
#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/RecordingLog.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QVariantList>

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::TrayStatusItem;
using Platform::Rect;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

constexpr std::chrono::seconds patience{20};
constexpr std::uint64_t bothButtons =
    1U << Platform::EventType::leftMouseUp | 1U << Platform::EventType::rightMouseUp;
const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto menuPath = QStringLiteral("/Menu");
const auto menuInterface = QStringLiteral("com.canonical.dbusmenu");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

/// What a panel says of an item of the menu.
struct MenuEvent {
    int identifier = 0;
    QString name;
};

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
    argument.beginStructure();
    argument << event.identifier << event.name << QDBusVariant(0) << 0U;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
    QDBusVariant data;
    unsigned int time = 0;
    argument.beginStructure();
    argument >> event.identifier >> event.name >> data >> time;
    argument.endStructure();
    return argument;
}

/// A panel on a bus connection of its own.
class FakePanel : public TestSupport::BusObject {
public:
    FakePanel()
        : BusObject(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName), watcherName,
                    QStringLiteral("/StatusNotifierWatcher")) {}
    ~FakePanel() override {
        leave();
        QDBusConnection::disconnectFromBus(connectionName);
    }

    /// The bus name of the item that has registered.
    QString item;

    using BusObject::bus;

    /// What the item answers.
    QVariantList call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) {
        auto question = QDBusMessage::createMethodCall(item, path, interface, method);
        question.setArguments(arguments);
        const auto answer = TestSupport::askOverBus(bus(), question, patience);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
        return answer.arguments();
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() == QStringLiteral("RegisterStatusNotifierItem")) {
            item = message.arguments().value(0).toString();
            return bus.send(message.createReply());
        }
        return message.member() == QStringLiteral("Get") &&
               bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    }

private:
    static inline const auto connectionName = QStringLiteral("panel");
};

struct StatusNotifierItemTest : testing::Test {
    FakePanel panel;
    TestSupport::HandDrivenQueue queue;
    TestSupport::RecordingLog log;
    std::optional<QPoint> pointer;
    QPoint implausible{8, 14};
    std::vector<Platform::Menu> opened;
    bool isRightToLeft = false;
    TrayStatusItem item{nullptr,
                        queue,
                        log,
                        {.render = [](const auto&, const QColor&, int) { return QImage(); },
                         .popUpMenu = [this](const auto& menu, const auto&) { opened.push_back(menu); },
                         .pointer = [this] { return pointer; },
                         .isPlausible = [this](const QPoint& place) { return place != implausible; },
                         .textColor = Qt::blue}};
    std::vector<std::uint64_t> clicks;
    std::vector<std::string> chosen;

    void SetUp() override {
        item.setAction(bothButtons, [this](const auto& event) {
            clicks.push_back(event->type);
            if (event->type == Platform::EventType::rightMouseUp) {
                item.popUpMenu(menu());
            }
        });
        item.setMenu([this] { return menu(); });
        item.setImage({"anything", 18, 18, true, {}});
        ASSERT_TRUE(spinUntil([&] { return !panel.item.isEmpty(); }, patience));
    }

    Platform::Menu menu() {
        const auto choice = [this](const char* title) {
            return Platform::MenuItem{title, [this, title] { chosen.emplace_back(title); }};
        };
        return {{choice("Open"), {}, choice("Quit")}, "en", isRightToLeft, {}};
    }

    void click(const char* method, int x, int y) {
        panel.call(QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.kde.StatusNotifierItem"),
                   QString::fromLatin1(method), {x, y});
    }

    QVariantList askMenu(const char* method, const QVariantList& arguments) {
        return panel.call(menuPath, menuInterface, QString::fromLatin1(method), arguments);
    }

    std::string textDirection() {
        const auto answer = panel.call(menuPath, propertiesInterface, QStringLiteral("Get"),
                                       {menuInterface, QStringLiteral("TextDirection")});
        return qvariant_cast<QDBusVariant>(answer.value(0)).variant().toString().toStdString();
    }
};

TEST_F(StatusNotifierItemTest, ReadingTheMenuIsNoClickAndOpeningItIs) {
    EXPECT_EQ(askMenu("GetLayout", {0, -1, QStringList()}).value(0), 1U);
    EXPECT_THAT(clicks, IsEmpty());
    EXPECT_EQ(askMenu("AboutToShow", {0}).value(0), false);
    EXPECT_THAT(clicks, ElementsAre(Platform::EventType::rightMouseUp));
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(StatusNotifierItemTest, TheMenuAnswersAboutItsOwnItemsOnly) {
    askMenu("GetLayout", {0, -1, QStringList()});
    constexpr int least = std::numeric_limits<int>::min();
    const auto howMany = [&](const QList<int>& identifiers) {
        const auto answer = askMenu("GetGroupProperties", {QVariant::fromValue(identifiers), QStringList()});
        return qdbus_cast<QVariantList>(qvariant_cast<QDBusArgument>(answer.value(0))).size();
    };
    EXPECT_EQ(howMany({}), 4) << "the menu itself and its three items";
    EXPECT_EQ(howMany({0, 0, 0, least, 1000}), 1);
    EXPECT_EQ(howMany(QList<int>(10000, 0)), 1);
    askMenu("Event", {least, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(StatusNotifierItemTest, OneChoiceClosesTheMenu) {
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    askMenu("GetLayout", {0, -1, QStringList()});
    const auto clicked = QStringLiteral("clicked");
    const QList<MenuEvent> events{{1, QStringLiteral("hovered")}, {3, clicked}, {1, clicked}, {3, clicked}};
    askMenu("EventGroup", {QVariant::fromValue(events)});
    EXPECT_THAT(chosen, ElementsAre("Quit"));
}

TEST_F(StatusNotifierItemTest, TextDirectionIsKnownBeforeTheLayoutAndItsChangeIsAnnounced) {
    isRightToLeft = true;
    EXPECT_EQ(textDirection(), "rtl");
    EXPECT_EQ(askMenu("GetLayout", {0, -1, QStringList()}).value(0), 1U);

    std::vector<QVariantMap> changes;
    const LinuxPlatform::DBusSignal signal(
        panel.bus(), panel.item, menuPath, propertiesInterface, QStringLiteral("PropertiesChanged"),
        [&](const QDBusMessage& message) {
            changes.push_back(qdbus_cast<QVariantMap>(message.arguments().value(1)));
        });
    isRightToLeft = false;
    EXPECT_EQ(askMenu("AboutToShow", {0}).value(0), true);
    ASSERT_TRUE(spinUntil([&] { return !changes.empty(); }, patience));
    EXPECT_THAT(changes, ElementsAre(QVariantMap{{QStringLiteral("TextDirection"), QStringLiteral("ltr")}}));
    EXPECT_EQ(textDirection(), "ltr");
}

TEST_F(StatusNotifierItemTest, SaysWhatItsToolTipIsAndWhenItChanges) {
    const auto itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
    const auto toolTip = [&] {
        const auto answer = panel.call(QStringLiteral("/StatusNotifierItem"), propertiesInterface,
                                       QStringLiteral("Get"), {itemInterface, QStringLiteral("ToolTip")});
        const auto parts = qvariant_cast<QDBusVariant>(answer.value(0)).variant().value<QDBusArgument>();
        QString icon;
        QString title;
        parts.beginStructure();
        parts >> icon;
        // No pixmaps.
        parts.beginArray();
        EXPECT_TRUE(parts.atEnd());
        parts.endArray();
        parts >> title;
        return title.toStdString();
    };
    int changes = 0;
    const LinuxPlatform::DBusSignal signal(panel.bus(), panel.item, QStringLiteral("/StatusNotifierItem"),
                                           itemInterface, QStringLiteral("NewToolTip"),
                                           [&](const QDBusMessage&) { ++changes; });
    item.setToolTip("Curtain — in vain");
    EXPECT_TRUE(spinUntil([&] { return changes == 1; }, patience));
    EXPECT_EQ(toolTip(), "Curtain — in vain");
    item.setToolTip("Curtain — in vain");
    item.setToolTip("Curtain");
    EXPECT_TRUE(spinUntil([&] { return changes == 2; }, patience));
    EXPECT_EQ(toolTip(), "Curtain");
}

TEST_F(StatusNotifierItemTest, ScreenReadersAreToldWhatTheToolTipSays) {
    item.setToolTip("Curtain — on");
    const auto answer =
        panel.call(QStringLiteral("/StatusNotifierItem"), propertiesInterface, QStringLiteral("Get"),
                   {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("IconAccessibleDesc")});
    EXPECT_EQ(qvariant_cast<QDBusVariant>(answer.value(0)).variant().toString().toStdString(),
              "Curtain — on");
}

TEST_F(StatusNotifierItemTest, MiddleClickDoesTheSecondAction) {
    click("SecondaryActivate", 300, 200);
    int second = 0;
    item.setSecondaryAction([&] { ++second; });
    click("SecondaryActivate", 300, 200);
    EXPECT_EQ(second, 1);
    EXPECT_THAT(clicks, IsEmpty());
}

TEST_F(StatusNotifierItemTest, IsWhereThePanelSaidLast) {
    pointer = QPoint(7, 9);
    EXPECT_EQ(item.frame(), std::nullopt);
    click("Activate", 300, 200);
    EXPECT_EQ(item.frame(), (Rect{300, 200, 0, 0}));
    askMenu("GetLayout", {0, -1, QStringList()});
    askMenu("AboutToShow", {0});
    click("Activate", 0, 0);
    EXPECT_EQ(item.frame(), (Rect{300, 200, 0, 0}));
    click("Activate", 0, 5);
    EXPECT_EQ(item.frame(), (Rect{0, 5, 0, 0}));
    EXPECT_EQ(clicks.size(), 4U);
}

TEST_F(StatusNotifierItemTest, DoesNotBelieveAPlaceWhereItCannotBe) {
    click("Activate", 300, 200);
    pointer = QPoint(400, 300);
    click("Activate", implausible.x(), implausible.y());
    EXPECT_EQ(item.frame(), (Rect{400, 300, 0, 0}));
    click("Activate", 390, 310);
    EXPECT_EQ(item.frame(), (Rect{390, 310, 0, 0}));
    pointer.reset();
    click("Activate", implausible.x(), implausible.y());
    EXPECT_EQ(item.frame(), std::nullopt);
}

TEST_F(StatusNotifierItemTest, IsAtThePointerOfTheClickWhenThePanelSaysNoPlace) {
    pointer = QPoint(400, 300);
    click("Activate", 0, 0);
    pointer = QPoint(7, 9);
    EXPECT_EQ(item.frame(), (Rect{400, 300, 0, 0}));
    click("ContextMenu", 0, 0);
    EXPECT_EQ(item.frame(), (Rect{7, 9, 0, 0}));
    pointer.reset();
    click("Activate", 0, 0);
    EXPECT_EQ(item.frame(), std::nullopt);
}

} // namespace
