#include "platform/qt/QtMainQueue.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace QtPlatform {
namespace {

/// Qt refuses times that are over.
std::chrono::milliseconds timerInterval(Platform::MainQueue::Seconds delay) {
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(delay), std::chrono::milliseconds(0));
}

} // namespace

void QtMainQueue::async(Task task) {
    QMetaObject::invokeMethod(&context_, std::move(task), Qt::QueuedConnection);
}

void QtMainQueue::asyncAfter(Seconds delay, Task task) {
    QTimer::singleShot(timerInterval(delay), Qt::PreciseTimer, &context_, std::move(task));
}

Platform::Subscription QtMainQueue::repeating(Seconds interval, Task task) {
    const auto timer = std::make_shared<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, &context_, std::move(task));
    timer->start(timerInterval(interval));
    // The task may end its own subscription while the timer is calling it.
    return Platform::Subscription([timer] {
        timer->stop();
        QMetaObject::invokeMethod(
            timer.get(), [keptAlive = timer] {}, Qt::QueuedConnection);
    });
}

Platform::MainQueue::Seconds QtMainQueue::now() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace QtPlatform
