#include "platform/qt/QtMainQueue.h"

#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace QtPlatform {
namespace {

/// Qt refuses times that are over.
std::chrono::milliseconds timerInterval(Platform::MainQueue::Seconds delay) {
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(delay), std::chrono::milliseconds(0));
}

/// A counter of the kernel's that the event loop watches; events of Qt's own would each be allocated.
class EventSource : public Platform::DispatchSource {
public:
    EventSource(const QObject& queue, Platform::MainQueue::Task task)
        : counter_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          notifier_(counter_, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &queue, [this, task = std::move(task)] {
            std::uint64_t signals = 0;
            [[maybe_unused]] const auto taken = read(counter_, &signals, sizeof signals);
            task();
        });
    }
    ~EventSource() override {
        notifier_.setEnabled(false);
        close(counter_);
    }
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    void signal() override {
        const std::uint64_t one = 1;
        // A counter that is full has a signal waiting.
        [[maybe_unused]] const auto written = write(counter_, &one, sizeof one);
    }

private:
    int counter_;
    QSocketNotifier notifier_;
};

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

std::unique_ptr<Platform::DispatchSource> QtMainQueue::makeSource(Task task) {
    return std::make_unique<EventSource>(context_, std::move(task));
}

Platform::MainQueue::Seconds QtMainQueue::now() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace QtPlatform
