#include "platform/linux/donotdisturb/DesktopDoNotDisturb.h"

#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <gio/gio.h>
#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::DesktopDoNotDisturb;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

constexpr auto patience = 20s;
constexpr auto notifications = "org.freedesktop.Notifications";

/// Something that has to run, and the name on the bus by which it is known that it does.
struct Program {
    std::vector<std::string> command;
    const char* busName;
};

/// A server that people use, and the means that it gives them.
struct Server {
    const char* name;
    std::vector<Program> programs;
    QStringList turnOn;
    QStringList turnOff;
    QStringList look;
    /// What `look` then says.
    const char* on;
    /// A file in the folder of configurations, and what is in it.
    std::pair<const char*, const char*> configuration{};

    friend void PrintTo(const Server& server, std::ostream* out) { *out << server.name; }
};

const Program settingsService{{"/usr/libexec/dconf-service"}, "ca.desrt.dconf"};

/// The switch in the settings, where the server itself does not run here.
class SettingsServer : public TestSupport::BusObject {
public:
    explicit SettingsServer(QString name)
        : BusObject(QDBusConnection::sessionBus(), QString::fromLatin1(notifications),
                    QStringLiteral("/org/freedesktop/Notifications")),
          name_(std::move(name)) {}

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        bus.send(message.createReply({name_, QStringLiteral("GNOME")}));
        return true;
    }

private:
    QString name_;
};

/// Counts what another road is asked for its state, and what it answers.
class CountingRoad : public LinuxPlatform::QuietRoad {
public:
    struct Reads {
        int asked = 0;
        int answered = 0;
    };

    CountingRoad(std::unique_ptr<QuietRoad> road, Reads& reads) : road_(std::move(road)), reads_(reads) {
        road_->onNews = [this] {
            if (onNews) {
                onNews();
            }
        };
    }

    std::string name() const override { return road_->name(); }
    Platform::DoNotDisturb::Habits habits() const override { return road_->habits(); }
    bool isRemembered() const override { return road_->isRemembered(); }
    bool tellsChanges() const override { return road_->tellsChanges(); }
    Platform::MainQueue::Seconds delay() const override { return road_->delay(); }
    bool isQuiet(const std::string& state) const override { return road_->isQuiet(state); }
    std::string quietened(const std::string& state) const override { return road_->quietened(state); }
    void beginWaiting() override { road_->beginWaiting(); }

    void read(std::function<void(std::optional<std::string> state)> onState) override {
        ++reads_.asked;
        road_->read([this, onState = std::move(onState)](const auto& state) {
            ++reads_.answered;
            onState(state);
        });
    }

    void write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) override {
        road_->write(state, std::move(onDone));
    }

private:
    std::unique_ptr<QuietRoad> road_;
    Reads& reads_;
};

/// On a bus of its own, since the virtual desktop has a server already.
class QuietServersTest : public testing::TestWithParam<Server> {
protected:
    static void SetUpTestSuite() {
        // The library of the settings connects once, so all tests have one bus.
        static const TestSupport::PrivateBus bus;
        qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.address()));
        // Else it ends this program when the bus ends.
        g_dbus_connection_set_exit_on_close(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr), FALSE);
    }

    void SetUp() override {
        const auto& [file, text] = GetParam().configuration;
        if (file != nullptr) {
            TestSupport::writeFile(configFolder / file, text);
        }
        for (const auto& [command, busName] : GetParam().programs) {
            ASSERT_TRUE(spinUntil([&] { return !hasOwner(notifications); }, patience));
            if (command.empty()) {
                settingsServer.emplace(QString::fromLatin1(busName));
                continue;
            }
            programs.push_back(std::make_unique<ChildProcess>(command));
            ASSERT_TRUE(spinUntil([&] { return hasOwner(busName); }, patience)) << busName;
        }
        turn(false);
        ASSERT_TRUE(spinUntil([&] { return doNotDisturb.isOn() == false; }, patience));
        before = look();
        ASSERT_NE(before, QString::fromLatin1(GetParam().on));
    }

    ~QuietServersTest() override {
        settingsServer.reset();
        while (!programs.empty()) {
            programs.back()->end(SIGTERM);
            programs.pop_back();
        }
    }

    static bool hasOwner(const char* name) {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(QString::fromLatin1(name));
    }

    static QString output(const QStringList& command) {
        QProcess process;
        process.start(command.first(), command.mid(1));
        process.waitForFinished();
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    void turn(bool isOn) { output(isOn ? GetParam().turnOn : GetParam().turnOff); }
    QString look() { return output(GetParam().look); }
    bool comesToBe(std::optional<bool> isOn) {
        return spinUntil([&] { return doNotDisturb.isOn() == isOn; }, patience);
    }
    /// Answers come in the order of the questions, and what is to be done about one is done with it.
    bool hasDoneWhatItWasAsked() {
        return spinUntil([&, due = reads.asked] { return reads.answered >= due; }, patience);
    }
    bool looksOn() { return look() == QString::fromLatin1(GetParam().on); }

    std::filesystem::path configFolder = std::getenv("XDG_CONFIG_HOME");
    TestSupport::HandDrivenQueue queue;
    TestSupport::MemoryUserDefaults disk;
    std::vector<std::unique_ptr<ChildProcess>> programs;
    std::optional<SettingsServer> settingsServer;
    CountingRoad::Reads reads;
    DesktopDoNotDisturb doNotDisturb{
        QDBusConnection::sessionBus(), queue, disk, "session",
        [this](const LinuxPlatform::NotificationServer& server) {
            return std::make_unique<CountingRoad>(
                LinuxPlatform::quietRoadOf(server, QDBusConnection::sessionBus(), configFolder), reads);
        }};
    QString before;
};

TEST_P(QuietServersTest, IsReadAndFollowed) {
    turn(true);
    EXPECT_TRUE(comesToBe(true));
    turn(false);
    EXPECT_TRUE(comesToBe(false));
}

TEST_P(QuietServersTest, IsHeldAndGivenBackAsItWas) {
    doNotDisturb.hold();
    EXPECT_TRUE(comesToBe(true));
    EXPECT_TRUE(spinUntil([&] { return looksOn(); }, patience)) << look().toStdString();
    doNotDisturb.giveBack();
    EXPECT_TRUE(comesToBe(false));
    EXPECT_TRUE(spinUntil([&] { return look() == before; }, patience)) << look().toStdString();
    EXPECT_THAT(disk.values, testing::IsEmpty());
}

TEST_P(QuietServersTest, IsGivenBackAtTheEndOfTheProgram) {
    {
        DesktopDoNotDisturb ending(QDBusConnection::sessionBus(), queue, disk, "session",
                                   [this](const LinuxPlatform::NotificationServer& server) {
                                       return LinuxPlatform::quietRoadOf(
                                           server, QDBusConnection::sessionBus(), configFolder);
                                   });
        ending.hold();
        ASSERT_TRUE(spinUntil([&] { return ending.isOn() == true && ending.isHeld(); }, patience));
        ending.giveBack();
    }
    EXPECT_EQ(look(), before);
    EXPECT_THAT(disk.values, testing::IsEmpty());
}

TEST_P(QuietServersTest, ThatOfItsUserIsLeftAlone) {
    turn(true);
    EXPECT_TRUE(comesToBe(true));
    const auto own = look();
    doNotDisturb.hold();
    ASSERT_TRUE(hasDoneWhatItWasAsked());
    EXPECT_FALSE(doNotDisturb.isHeld());
    doNotDisturb.giveBack();
    ASSERT_TRUE(hasDoneWhatItWasAsked());
    EXPECT_EQ(doNotDisturb.isOn(), true);
    EXPECT_EQ(look(), own);
    EXPECT_THAT(disk.values, testing::IsEmpty());
    turn(false);
}

TEST_P(QuietServersTest, WhatItsUserTurnsMeanwhileIsLeftAlone) {
    doNotDisturb.hold();
    EXPECT_TRUE(comesToBe(true));
    turn(false);
    EXPECT_TRUE(comesToBe(false));
    EXPECT_THAT(disk.values, testing::IsEmpty());
    turn(true);
    EXPECT_TRUE(comesToBe(true));
    doNotDisturb.giveBack();
    ASSERT_TRUE(hasDoneWhatItWasAsked());
    EXPECT_EQ(doNotDisturb.isOn(), true);
    EXPECT_TRUE(looksOn()) << look().toStdString();
    turn(false);
}

QStringList settings(const char* verb, const char* schema, const char* key, const char* value = nullptr) {
    QStringList command{QStringLiteral("gsettings"), QString::fromLatin1(verb), QString::fromLatin1(schema),
                        QString::fromLatin1(key)};
    if (value != nullptr) {
        command << QString::fromLatin1(value);
    }
    return command;
}

Server serverOfSettings(const char* name, const Program& program, const char* schema, const char* key,
                        const char* on) {
    return {.name = name,
            .programs = {settingsService, program},
            .turnOn = settings("set", schema, key, on),
            .turnOff = settings("reset", schema, key),
            .look = settings("get", schema, key),
            .on = on};
}

QStringList xfconf(const char* rest) {
    return QString::fromLatin1("xfconf-query -c xfce4-notifyd -p /do-not-disturb %1")
        .arg(QString::fromLatin1(rest))
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The releases keep it in different folders.
std::string mateNotices() {
    const std::string program = "mate-notification-daemon/mate-notification-daemon";
    return std::filesystem::exists("/usr/libexec/" + program) ? "/usr/libexec/" + program
                                                              : "/usr/lib/" + program;
}

const std::string libraries = "/usr/lib/" CURTAIN_MULTIARCH "/xfce4/";

INSTANTIATE_TEST_SUITE_P(
    X11, QuietServersTest,
    testing::Values(Server{.name = "Dunst",
                           .programs = {{{"dunst"}, notifications}},
                           .turnOn = {"dunstctl", "set-paused", "true"},
                           .turnOff = {"dunstctl", "set-paused", "false"},
                           .look = {"dunstctl", "is-paused"},
                           .on = "true"},
                    Server{.name = "Xfce",
                           .programs = {{{libraries + "xfconf/xfconfd"}, "org.xfce.Xfconf"},
                                        {{libraries + "notifyd/xfce4-notifyd"}, notifications}},
                           .turnOn = xfconf("-n -t bool -s true"),
                           .turnOff = xfconf("-r"),
                           .look = xfconf(""),
                           .on = "true"},
                    serverOfSettings("Mate", {{mateNotices()}, notifications}, "org.mate.NotificationDaemon",
                                     "do-not-disturb", "true"),
                    serverOfSettings("Gnome", {{}, "gnome-shell"}, "org.gnome.desktop.notifications",
                                     "show-banners", "false"),
                    serverOfSettings("Cinnamon", {{}, "cinnamon"}, "org.cinnamon.desktop.notifications",
                                     "display-notifications", "false")),
    [](const auto& server) { return std::string(server.param.name); });

INSTANTIATE_TEST_SUITE_P(Wayland, QuietServersTest,
                         testing::Values(Server{.name = "Mako",
                                                .programs = {{{"mako"}, notifications}},
                                                .turnOn = {"makoctl", "mode", "-a", "do-not-disturb"},
                                                .turnOff = {"makoctl", "mode", "-r", "do-not-disturb"},
                                                .look = {"makoctl", "mode"},
                                                .on = "default\ndo-not-disturb",
                                                .configuration = {"mako/config",
                                                                  "[mode=do-not-disturb]\ninvisible=1\n"}},
                                         Server{.name = "Swaync",
                                                .programs = {settingsService, {{"swaync"}, notifications}},
                                                .turnOn = {"swaync-client", "-dn"},
                                                .turnOff = {"swaync-client", "-df"},
                                                .look = {"swaync-client", "-D"},
                                                .on = "true"}),
                         [](const auto& server) { return std::string(server.param.name); });

} // namespace
