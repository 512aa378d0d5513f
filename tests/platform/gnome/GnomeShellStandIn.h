#pragma once

#include "platform/linux/windows/WindowId.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QString>
#include <QVariantList>

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

/// GNOME Shell as far as Curtain's extension asks it, with the extension's own code on top. The test acts as
/// the user of its windows and its panel.
class GnomeShellStandIn {
public:
    static constexpr int on = 1;
    static constexpr int off = 2;
    static constexpr int error = 3;
    static constexpr int outOfDate = 4;
    static constexpr std::uint32_t windowProcess = 4242;

    enum class Bus { ofItsOwn, ofTheSession };

    explicit GnomeShellStandIn(Bus bus = Bus::ofItsOwn) {
        if (bus == Bus::ofItsOwn) {
            bus_.emplace();
        }
        process_.emplace(std::vector<std::string>{"env", "DBUS_SESSION_BUS_ADDRESS=" + address(), "gjs",
                                                  GNOME_SHELL_STAND_IN});
        user_ = connect();
        // The one of the test before may not have left the bus yet.
        EXPECT_TRUE(spinUntil([this] {
            const auto owner = user_->interface()->servicePid(QStringLiteral("org.gnome.Shell"));
            return owner.isValid() && static_cast<pid_t>(owner.value()) == process();
        }));
    }

    QDBusConnection connect() const {
        // Connections are remembered by their names.
        static int count = 0;
        return QDBusConnection::connectToBus(QString::fromStdString(address()),
                                             QStringLiteral("gnome-shell-stand-in-%1").arg(++count));
    }

    pid_t process() const { return process_->id(); }

    /// As the shell knows the extension; only one that is on answers.
    void setExtension(int state) { call(QStringLiteral("SetExtension"), QVariantList{state}); }

    QVariant call(const QString& method, const QVariantList& arguments = {}) const {
        auto request = QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"),
                                                      QStringLiteral("/org/gnome/Shell"),
                                                      QStringLiteral("com.curtain.Test.Shell"), method);
        request.setArguments(arguments);
        // Curtain's side goes on meanwhile.
        const auto answer = askOverBus(*user_, request);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage)
            << method.toStdString() << ": " << answer.errorMessage().toStdString();
        return answer.arguments().value(0);
    }

    QVariant call(const QString& method, LinuxPlatform::WindowId window) const {
        return call(method, QVariantList{QVariant::fromValue<qulonglong>(window)});
    }

    LinuxPlatform::WindowId open(const std::string& name) const {
        return call(QStringLiteral("Open"), QVariantList{QString::fromStdString(name)}).toULongLong();
    }

private:
    std::string address() const {
        return bus_ ? bus_->address() : qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").toStdString();
    }

    std::optional<PrivateBus> bus_;
    std::optional<ChildProcess> process_;
    std::optional<QDBusConnection> user_;
};

} // namespace TestSupport
