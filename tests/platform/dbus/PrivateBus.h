#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <string>

namespace TestSupport {

/// A message bus of the test's own, on which nobody is but those that the test brings.
class PrivateBus {
public:
    PrivateBus() : daemon_({"dbus-daemon", "--nofork", "--config-file=" + configuration()}) {
        // Its socket is there before it listens.
        spinUntil([this] { return isUp(); }, std::chrono::seconds(20));
    }

    std::string address() const { return "unix:path=" + (folder_.path() / "bus").string(); }

    /// A new connection of that name, which is unique in this process.
    QDBusConnection connect(const QString& name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(address()), name);
    }

private:
    bool isUp() const {
        const auto name = QStringLiteral("private-bus-probe");
        const bool isConnected = connect(name).isConnected();
        QDBusConnection::disconnectFromBus(name);
        return isConnected;
    }

    std::string configuration() const {
        const auto path = folder_.path() / "bus.conf";
        writeFile(path, "<busconfig><type>session</type><listen>" + address() +
                            "</listen><policy context='default'><allow send_destination='*'/>"
                            "<allow receive_sender='*'/><allow own='*'/></policy></busconfig>");
        return path.string();
    }

    TemporaryFolder folder_;
    ChildProcess daemon_;
};

} // namespace TestSupport
