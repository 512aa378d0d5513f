#include "platform/linux/audio/PulseLoop.h"

#include <pulse/timeval.h>

#include <csignal>
#include <cstdint>
#include <utility>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

struct Once {
    pa_mainloop_api* api;
    pa_time_event* event = nullptr;
    PulseLoop::Task task;
};

struct Reader : std::enable_shared_from_this<Reader> {
    Reader(pa_mainloop_api* itsApi, PulseLoop::Task itsTask) : api(itsApi), task(std::move(itsTask)) {}

    pa_mainloop_api* api;
    pa_io_event* event = nullptr;
    PulseLoop::Task task;
};

timeval timeAfter(std::chrono::milliseconds delay) {
    timeval due{};
    pa_gettimeofday(&due);
    pa_timeval_add(&due, static_cast<pa_usec_t>(std::chrono::microseconds(delay).count()));
    return due;
}

} // namespace

PulseLoop::Timer::Timer(PulseLoop& loop, Task task) : api_(loop.api()), task_(std::move(task)) {}

PulseLoop::Timer::~Timer() {
    if (event_ != nullptr) {
        api_->time_free(event_);
    }
}

void PulseLoop::Timer::restart(std::chrono::milliseconds delay) {
    const auto due = timeAfter(delay);
    if (event_ != nullptr) {
        api_->time_restart(event_, &due);
        return;
    }
    event_ = api_->time_new(
        api_, &due,
        [](pa_mainloop_api*, pa_time_event* /*event*/, const timeval*, void* data) {
            static_cast<Timer*>(data)->task_();
        },
        this);
}

void PulseLoop::Timer::stop() {
    if (event_ != nullptr) {
        api_->time_restart(event_, nullptr);
    }
}

PulseLoop::PulseLoop()
    : loop_(pa_mainloop_new(), &pa_mainloop_free),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    api()->io_new(
        api(), wakeUp_, PA_IO_EVENT_INPUT,
        [](pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t, void* data) {
            static_cast<PulseLoop*>(data)->runTasks();
        },
        this);
    // Signals are the main thread's; a new thread inherits what is blocked.
    sigset_t all{};
    sigset_t before{};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(thread_.native_handle(), "curtain-audio");
}

PulseLoop::~PulseLoop() {
    // The last task there is.
    post([this] { isEnding_ = true; });
    thread_.join();
    close(wakeUp_);
}

void PulseLoop::post(Task task) {
    {
        const std::scoped_lock lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wakeUp();
}

void PulseLoop::wakeUp() const {
    const std::uint64_t one = 1;
    // A counter that is full wakes up as well.
    [[maybe_unused]] const auto written = write(wakeUp_, &one, sizeof one);
}

Platform::Subscription PulseLoop::after(std::chrono::milliseconds delay, Task task) {
    auto timer = std::make_shared<Once>(Once{api(), nullptr, std::move(task)});
    const auto due = timeAfter(delay);
    timer->event = timer->api->time_new(
        timer->api, &due,
        [](pa_mainloop_api*, pa_time_event* /*event*/, const timeval*, void* data) {
            // The task may end its own subscription, and the timer with it.
            if (const auto dueTask = std::exchange(static_cast<Once*>(data)->task, nullptr)) {
                dueTask();
            }
        },
        timer.get());
    return Platform::Subscription([timer] { timer->api->time_free(timer->event); });
}

Platform::Subscription PulseLoop::whenReadable(int descriptor, Task task) {
    auto reader = std::make_shared<Reader>(api(), std::move(task));
    reader->event = reader->api->io_new(
        reader->api, descriptor, PA_IO_EVENT_INPUT,
        [](pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t, void* data) {
            // The task may end its own subscription.
            const auto self = static_cast<Reader*>(data)->shared_from_this();
            self->task();
        },
        reader.get());
    return Platform::Subscription([reader] { reader->api->io_free(reader->event); });
}

void PulseLoop::run() {
    while (!isEnding_) {
        pa_mainloop_iterate(loop_.get(), 1, nullptr);
    }
}

void PulseLoop::runTasks() {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto taken = read(wakeUp_, &count, sizeof count);
    std::vector<Task> tasks;
    {
        const std::scoped_lock lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const auto& task : tasks) {
        task();
    }
}

} // namespace LinuxPlatform
