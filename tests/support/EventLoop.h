#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

namespace TestSupport {

/// Runs the event loop, which blocks between events as that of the product does, until the condition holds;
/// false when it does not in time. The condition is looked at every few milliseconds, since not all of what
/// it depends on is an event.
template <class Condition>
bool spinUntil(const Condition& condition, std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
    const QDeadlineTimer timer(deadline);
    QTimer heartbeat;
    heartbeat.start(std::chrono::milliseconds(2));
    while (!condition()) {
        if (timer.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace TestSupport
