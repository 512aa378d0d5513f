#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QString>

#include <string>
#include <utility>

namespace TestSupport {

/// A message bus of the test's own, on which nobody is but those that the test brings.
class PrivateBus {
public:
    PrivateBus() : daemon_({"dbus-daemon", "--nofork", "--config-file=" + configuration()}) {
        spinUntil([this] { return std::filesystem::exists(folder_.path() / "bus"); });
    }

    std::string address() const { return "unix:path=" + (folder_.path() / "bus").string(); }

    /// A new connection of that name, which is unique in this process.
    QDBusConnection connect(const QString& name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(address()), name);
    }

private:
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
