#pragma once

#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <filesystem>

namespace TestSupport {

/// A way to a bus on which no reply names its sender, as some versions of Qt have it on any bus.
class AnonymousBus {
public:
    /// `bus` outlives this object.
    explicit AnonymousBus(const PrivateBus& bus)
        : relay_({ANONYMOUS_BUS, bus.address().substr(bus.address().find('/')), socket().string()}) {
        spinUntil([this] { return std::filesystem::exists(socket()); }, std::chrono::seconds(20));
    }

    /// A new connection of that name, which is unique in this process.
    QDBusConnection connect(const QString& name) const {
        return QDBusConnection::connectToBus(
            QStringLiteral("unix:path=") + QString::fromStdString(socket().string()), name);
    }

private:
    std::filesystem::path socket() const { return folder_.path() / "anonymous"; }

    TemporaryFolder folder_;
    ChildProcess relay_;
};

} // namespace TestSupport
