#include "platform/linux/camera/pipewire/PipeWireThread.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <utility>

// The library's headers are C: casts of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace LinuxPlatform {

PipeWireThread::PipeWireThread() {
    pw_init(nullptr, nullptr);
}

PipeWireThread::~PipeWireThread() {
    stop();
    context_.reset();
    loop_.reset();
    pw_deinit();
}

void PipeWireThread::begin() {
    std::call_once(hasBegun_, [this] {
        loop_.reset(pw_thread_loop_new("camera", nullptr));
        if (!loop_) {
            return;
        }
        // No thread of high priority is needed, and asking for one talks to the bus without a deadline.
        context_.reset(pw_context_new(
            loop(), pw_properties_new(PW_KEY_CONFIG_NAME, "client.conf", "module.rt", "false", nullptr), 0));
        wakeUp_ = pw_loop_add_event(
            loop(), [](void* self, std::uint64_t) { static_cast<PipeWireThread*>(self)->runTasks(); }, this);
        isRunning_ = wakeUp_ != nullptr && pw_thread_loop_start(loop_.get()) == 0;
    });
}

void PipeWireThread::stop() {
    isRunning_ = false;
    if (loop_) {
        pw_thread_loop_stop(loop_.get());
    }
}

void PipeWireThread::run(const std::function<void()>& task) {
    if (!isRunning_) {
        task();
        return;
    }
    // The loop's own invocations may be called from inside of others.
    Task waiting{task, {}};
    const auto done = waiting.done.get_future();
    {
        const std::scoped_lock lock(mutex_);
        tasks_.push_back(&waiting);
    }
    pw_loop_signal_event(loop(), wakeUp_);
    done.wait();
}

void PipeWireThread::runTasks() {
    std::vector<Task*> due;
    {
        const std::scoped_lock lock(mutex_);
        due.swap(tasks_);
    }
    for (auto* const task : due) {
        task->function();
        task->done.set_value();
    }
}

PipeWireTimer::PipeWireTimer(const PipeWireThread& thread, std::function<void()> task)
    : loop_(thread.loop()),
      task_(std::move(task)) {
    if (loop_) {
        source_ = pw_loop_add_timer(
            loop_, [](void* self, std::uint64_t) { static_cast<PipeWireTimer*>(self)->task_(); }, this);
    }
}

PipeWireTimer::~PipeWireTimer() {
    if (source_) {
        pw_loop_destroy_source(loop_, source_);
    }
}

void PipeWireTimer::start(std::chrono::milliseconds later) {
    // Nothing at all would stop it.
    set(std::max<std::chrono::nanoseconds>(later, std::chrono::nanoseconds(1)));
}

void PipeWireTimer::stop() {
    set(std::chrono::nanoseconds(0));
}

void PipeWireTimer::set(std::chrono::nanoseconds later) {
    if (source_) {
        constexpr std::int64_t second = 1'000'000'000;
        timespec once{later.count() / second, static_cast<long>(later.count() % second)};
        pw_loop_update_timer(loop_, source_, &once, nullptr, false);
    }
}

} // namespace LinuxPlatform
