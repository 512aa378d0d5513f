#pragma once

#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <gtest/gtest.h>

#include <chrono>

namespace TestSupport {

/// Asks over the bus and returns what is answered once all that came over this connection before the answer
/// has been delivered, too. The event loop runs meanwhile. An answer counts as finished as soon as it has
/// been read, when what came before it may still wait for the event loop.
inline QDBusMessage askOverBus(const QDBusConnection& bus, const QDBusMessage& question,
                               std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
    const QDBusPendingCallWatcher watcher(bus.asyncCall(question));
    bool isDelivered = false;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, [&] { isDelivered = true; });
    EXPECT_TRUE(spinUntil([&] { return isDelivered; }, deadline)) << question.member().toStdString();
    // An answer that came before anybody listened for it is told in the next round.
    QCoreApplication::processEvents();
    return watcher.reply();
}

} // namespace TestSupport
