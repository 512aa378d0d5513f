#include "platform/linux/hotkeys/X11HotKeyService.h"
#include "platform/linux/keyboard/XkbKeyboard.h"
#include "platform/linux/shortcutlists/DesktopShortcuts.h"
#include "platform/linux/shortcutlists/GSettingsShortcuts.h"
#include "platform/linux/shortcutlists/I3Shortcuts.h"
#include "platform/linux/shortcutlists/KdeShortcuts.h"
#include "platform/linux/shortcutlists/XfconfShortcuts.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/X11TestClient.h"

#include <QDBusConnectionInterface>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <cstring>
#include <filesystem>
#include <optional>

#include <sys/socket.h>
#include <sys/un.h>

/// Plays the service of Plasma: Ctrl+Shift+F9 is taken, and Ctrl+Shift+F8 is ours.
class GlobalAccelerators : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.KGlobalAccel")

public Q_SLOTS:
    Q_SCRIPTABLE QStringList action(int key) {
        if (key == (Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_F8).toCombined()) {
            return {QStringLiteral("curtain"), QStringLiteral("shortcut")};
        }
        return key == (Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_F9).toCombined()
                   ? QStringList{QStringLiteral("kwin"), QStringLiteral("Overview")}
                   : QStringList();
    }
};

namespace {

using namespace LinuxPlatform;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

constexpr std::int64_t command = 256;
constexpr std::int64_t shift = 512;
constexpr std::int64_t option = 2048;
constexpr std::int64_t control = 4096;

std::optional<bool> answerOf(ShortcutList& list, const WantedShortcut& wanted) {
    std::optional<bool> result;
    list.ask(wanted, [&](bool isTaken) { result = isTaken; });
    spinUntil([&] { return result.has_value(); });
    return result;
}

bool hasOwner(const char* service) {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(QLatin1String(service));
}

TEST(XfconfShortcuts, NobodyThereMeansNothingTaken) {
    XfconfShortcuts list(QDBusConnection::sessionBus());
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_h}}), false);
}

TEST(XfconfShortcuts, FindsWhatTheUserOrElseTheDesktopSet) {
    std::string program;
    for (const auto& folder : std::filesystem::directory_iterator("/usr/lib")) {
        const auto path = folder.path() / "xfce4/xfconf/xfconfd";
        if (std::filesystem::exists(path)) {
            program = path.string();
        }
    }
    ASSERT_FALSE(program.empty());
    const ChildProcess daemon({program});
    ASSERT_TRUE(spinUntil([] { return hasOwner("org.xfce.Xfconf"); }));
    const auto set = [](const char* property, const char* value) {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.xfce.Xfconf"), QStringLiteral("/org/xfce/Xfconf"),
            QStringLiteral("org.xfce.Xfconf"), QStringLiteral("SetProperty"));
        call.setArguments({QStringLiteral("xfce4-keyboard-shortcuts"), QString::fromUtf8(property),
                           QVariant::fromValue(QDBusVariant(QString::fromUtf8(value)))});
        EXPECT_EQ(QDBusConnection::sessionBus().call(call).type(), QDBusMessage::ReplyMessage);
    };
    set("/commands/default/<Primary><Alt>t", "exo-open");
    set("/xfwm4/default/<Alt>F4", "close_window_key");
    set("/xfwm4/custom/<Super>h", "hide_window_key");
    set("/xfwm4/custom/<Super>j", "");

    XfconfShortcuts list(QDBusConnection::sessionBus());
    EXPECT_EQ(answerOf(list, {control + option, {XKB_KEY_t}}), true) << "a default, nothing of the user's";
    EXPECT_EQ(answerOf(list, {command, {XKB_KEY_h}}), true) << "the user's";
    EXPECT_EQ(answerOf(list, {option, {XKB_KEY_F4}}), false) << "a default that the user's replace";
    EXPECT_EQ(answerOf(list, {command, {XKB_KEY_j}}), false) << "set to nothing";
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_t}}), false);
}

TEST(KdeShortcuts, AsksTheServiceForEveryMeaningOfTheKey) {
    KdeShortcuts list(QDBusConnection::sessionBus());
    EXPECT_EQ(answerOf(list, {control + shift, {XKB_KEY_F9}}), false) << "nobody there";
    GlobalAccelerators accelerators;
    // A peer of its own: a call to the own connection would not go by way of the bus.
    auto peer = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("accelerators"));
    ASSERT_TRUE(peer.registerObject(QStringLiteral("/kglobalaccel"), &accelerators,
                                    QDBusConnection::ExportScriptableSlots));
    ASSERT_TRUE(peer.registerService(QStringLiteral("org.kde.kglobalaccel")));
    EXPECT_EQ(answerOf(list, {control + shift, {XKB_KEY_h, XKB_KEY_F9}}), true);
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_F9}}), false);
    EXPECT_EQ(answerOf(list, {control + shift, {XKB_KEY_F8}}), false) << "our own";
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_Shift_L}}), false) << "no key of Qt's";
    peer.unregisterService(QStringLiteral("org.kde.kglobalaccel"));
    QDBusConnection::disconnectFromBus(QStringLiteral("accelerators"));
}

TEST(GSettingsShortcuts, FindsCombinationsInListsTextsAndCustomPaths) {
    const TestSupport::TemporaryFolder schemas;
    TestSupport::writeFile(schemas.path() / "test.curtain.gschema.xml", R"(<schemalist>
  <schema id="test.curtain.keys" path="/test/curtain/keys/">
    <key name="close" type="as"><default>['disabled', '&lt;Alt&gt;F4']</default></key>
    <key name="lock" type="s"><default>'&lt;Super&gt;l'</default></key>
    <key name="delay" type="i"><default>7</default></key>
    <key name="custom" type="as"><default>['broken', '/test/curtain/custom0/']</default></key>
  </schema>
  <schema id="test.curtain.custom">
    <key name="binding" type="s"><default>'&lt;Control&gt;k'</default></key>
  </schema>
</schemalist>)");
    ASSERT_EQ(std::system(("glib-compile-schemas " + schemas.path().string()).c_str()), 0);
    // The library reads these when it is first asked.
    ::setenv("GSETTINGS_SCHEMA_DIR", schemas.path().c_str(), 1);
    ::setenv("GSETTINGS_BACKEND", "memory", 1);
    GSettingsShortcuts list(
        {{"test.curtain.keys", "custom", "test.curtain.custom"}, {"test.curtain.not-installed", {}, {}}});
    EXPECT_EQ(answerOf(list, {option, {XKB_KEY_F4}}), true) << "in a list";
    EXPECT_EQ(answerOf(list, {command, {XKB_KEY_l}}), true) << "a single text";
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_k}}), true) << "the default of a custom one";
    EXPECT_EQ(answerOf(list, {control, {XKB_KEY_l}}), false);
}

/// Plays i3: listens, and answers one question when told to.
struct I3Server {
    TestSupport::TemporaryFolder folder;
    std::string path = (folder.path() / "ipc.sock").string();
    int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);

    I3Server() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener, 1), 0);
    }
    ~I3Server() { ::close(listener); }
    I3Server(const I3Server&) = delete;
    I3Server& operator=(const I3Server&) = delete;

    std::optional<bool> ask(const WantedShortcut& wanted, const std::string& reply) const {
        I3Shortcuts list(path);
        std::optional<bool> result;
        list.ask(wanted, [&](bool isTaken) { result = isTaken; });
        const int connection = ::accept(listener, nullptr, nullptr);
        char request[14];
        EXPECT_EQ(::recv(connection, request, sizeof request, MSG_WAITALL), 14);
        EXPECT_EQ(std::string(request, 6), "i3-ipc");
        EXPECT_EQ(request[10], 9) << "the configuration is asked for";
        // In two pieces, as it may come.
        EXPECT_EQ(::send(connection, reply.data(), reply.size() / 2, 0),
                  static_cast<ssize_t>(reply.size() / 2));
        QCoreApplication::processEvents();
        ::send(connection, reply.data() + reply.size() / 2, reply.size() - reply.size() / 2, 0);
        ::close(connection);
        spinUntil([&] { return result.has_value(); });
        return result;
    }

    static std::string message(const QJsonObject& payload) {
        const auto text = QJsonDocument(payload).toJson().toStdString();
        const std::uint32_t numbers[]{static_cast<std::uint32_t>(text.size()), 9};
        return "i3-ipc" + std::string(reinterpret_cast<const char*>(numbers), sizeof numbers) + text;
    }
};

TEST(I3Shortcuts, FindsABindingOfTheConfiguration) {
    const I3Server server;
    const auto reply = I3Server::message(
        {{QStringLiteral("config"), QStringLiteral("set $mod Mod4\nbindsym $mod+Shift+h exec x\n")}});
    EXPECT_EQ(server.ask({command + shift, {XKB_KEY_h, XKB_KEY_H}}, reply), true);
    EXPECT_EQ(server.ask({command, {XKB_KEY_h, XKB_KEY_H}}, reply), false);
}

TEST(I3Shortcuts, FindsABindingOfAnIncludedFile) {
    const I3Server server;
    const auto file = [](const char* text) {
        return QJsonObject{{QStringLiteral("variable_replaced_contents"), QString::fromUtf8(text)}};
    };
    const auto reply =
        I3Server::message({{QStringLiteral("config"), QStringLiteral("include other\n")},
                           {QStringLiteral("included_configs"),
                            QJsonArray{file("include other\n"), file("bindsym Mod4+h kill\n")}}});
    EXPECT_EQ(server.ask({command, {XKB_KEY_h}}, reply), true);
}

TEST(I3Shortcuts, ReadsAConfigurationInAnotherEncodingThanUtf8) {
    const I3Server server;
    auto reply =
        I3Server::message({{QStringLiteral("config"), QStringLiteral("# caf?\nbindsym Mod4+h kill\n")}});
    reply.at(reply.find('?')) = '\xe9';
    EXPECT_EQ(server.ask({command, {XKB_KEY_h}}, reply), true);
}

TEST(I3Shortcuts, AnAnswerThatIsNoneMeansNothingTaken) {
    const I3Server server;
    EXPECT_EQ(server.ask({command, {XKB_KEY_h}}, "i3-ipcgarbage that is not a header at all"), false);
    EXPECT_EQ(server.ask({command, {XKB_KEY_h}}, "i3"), false);
    EXPECT_EQ(server.ask({command, {XKB_KEY_h}}, ""), false);
    I3Shortcuts nobody("/nowhere/ipc.sock");
    EXPECT_EQ(answerOf(nobody, {command, {XKB_KEY_h}}), false);
    I3Shortcuts otherSession("");
    EXPECT_EQ(answerOf(otherSession, {command, {XKB_KEY_h}}), false);
}

TEST(DesktopShortcuts, FindsAGrabOfAnotherClientAndLeavesTheOwnAlone) {
    const auto connection = X11Connection::open();
    ASSERT_NE(connection, nullptr);
    QtPlatform::QtMainQueue queue;
    TestSupport::RecordingLog log;
    X11HotKeyService service(*connection, queue, log, Platform::HotKeyReach::everywhere);
    XkbKeyboard keyboard(connection.get(), "");
    DesktopShortcuts shortcuts(service, queue, [&](std::int64_t key) { return keyboard.symbols(key); }, {});
    const auto isTaken = [&] {
        std::optional<bool> result;
        shortcuts.isTaken({4, control + option}, [&](bool taken) { result = taken; });
        spinUntil([&] { return result.has_value(); });
        return result;
    };
    EXPECT_EQ(isTaken(), false);
    {
        const auto other = X11Connection::open();
        X11HotKeyService holder(*other, queue, log, Platform::HotKeyReach::everywhere);
        ASSERT_EQ(holder.registerHotKey({4, control + option}, {1, 1}), 0);
        EXPECT_EQ(isTaken(), true);
    }
    EXPECT_TRUE(spinUntil([&] { return isTaken() == false; })) << "nothing of the trial may stay";
}

/// Runs setxkbmap, which changes the layout of the server.
struct XkbKeyboardTest : testing::Test {
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    XkbKeyboard keyboard{connection.get(), ""};

    ~XkbKeyboardTest() override { setLayout("us"); }

    static void setLayout(const std::string& layout) {
        ASSERT_EQ(std::system(("setxkbmap " + layout).c_str()), 0);
    }
};

constexpr std::int64_t keyH = 4;
constexpr std::int64_t keyZ = 6;
constexpr std::int64_t keyI = 34;

TEST_F(XkbKeyboardTest, KeysAreToldByTheirPosition) {
    setLayout("us");
    EXPECT_EQ(keyboard.keyCode(43), keyH);
    EXPECT_EQ(keyboard.keyCode(52), keyZ);
    EXPECT_EQ(keyboard.keyCode(75), 101) << "F9";
    EXPECT_EQ(keyboard.keyCode(119), 117) << "the forward delete";
    EXPECT_EQ(keyboard.keyCode(50), std::nullopt) << "a modifier";
    EXPECT_EQ(keyboard.keyCode(0), std::nullopt);
    EXPECT_EQ(keyboard.keyCode(100'000), std::nullopt);
    setLayout("de");
    EXPECT_EQ(keyboard.keyCode(52), keyZ) << "where a US keyboard has its Z";
}

TEST_F(XkbKeyboardTest, LabelsAreThoseOfTheLayout) {
    setLayout("us");
    EXPECT_EQ(keyboard.keyLabel(keyZ), "Z");
    EXPECT_EQ(keyboard.keyLabel(18), "1");
    setLayout("de");
    EXPECT_EQ(keyboard.keyLabel(keyZ), "Y");
    EXPECT_EQ(keyboard.keyLabel(33), "Ü");
    EXPECT_EQ(keyboard.keyLabel(27), "ß");
    EXPECT_EQ(keyboard.keyLabel(24), "´") << "a dead key";
    setLayout("ru");
    EXPECT_EQ(keyboard.keyLabel(keyH), "Р");
    setLayout("tr");
    EXPECT_EQ(keyboard.keyLabel(39), "İ");
    EXPECT_EQ(keyboard.keyLabel(keyI), "I");
}

TEST_F(XkbKeyboardTest, KeysThatWriteNothingHaveNoLabel) {
    setLayout("us");
    for (const std::int64_t key : {49, 36, 48, 101, 117, 123, 82, 76}) {
        EXPECT_EQ(keyboard.keyLabel(key), std::nullopt) << key;
    }
    EXPECT_EQ(keyboard.keyLabel(-1), std::nullopt);
    EXPECT_EQ(keyboard.keyLabel(127), std::nullopt);
}

TEST_F(XkbKeyboardTest, SymbolsAreThoseOfEveryLayout) {
    setLayout("us,ru");
    EXPECT_THAT(keyboard.symbols(keyH), testing::UnorderedElementsAre(
                                            XKB_KEY_h, XKB_KEY_H, XKB_KEY_Cyrillic_er, XKB_KEY_Cyrillic_ER));
    EXPECT_THAT(keyboard.symbols(127), testing::IsEmpty());
}

TEST(XkbKeyboard, WorksWithoutAnXServer) {
    XkbKeyboard keyboard(nullptr, "KDE");
    EXPECT_EQ(keyboard.keyCode(43), keyH);
    EXPECT_EQ(keyboard.keyLabel(keyH), "H");
    EXPECT_EQ(keyboard.modifierStyle().command, "Meta");
    keyboard.beep();
}

TEST(XkbKeyboard, WritesModifiersAsTheDesktopDoes) {
    EXPECT_EQ(XkbKeyboard(nullptr, "ubuntu:GNOME").modifierStyle().command, "Super");
    EXPECT_FALSE(XkbKeyboard(nullptr, "").modifierStyle().isCommandFirst);
    EXPECT_TRUE(XkbKeyboard(nullptr, "kde").modifierStyle().isCommandFirst);
}

} // namespace

#include "ShortcutListsTest.moc"
