#pragma once

#include "platform/linux/camera/pipewire/PipeWireHandles.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <vector>

namespace LinuxPlatform {

/// PipeWire's loop on a thread of its own, to which its objects belong.
class PipeWireThread {
public:
    PipeWireThread();
    PipeWireThread(const PipeWireThread&) = delete;
    PipeWireThread& operator=(const PipeWireThread&) = delete;
    ~PipeWireThread();

    /// Once; any thread.
    void begin();
    /// When it returns, nothing runs on the thread any more.
    void stop();

    /// Calls the task on the thread, between its callbacks and never inside one, and returns when it is done.
    /// Any other thread; right here where the thread does not run.
    void run(const std::function<void()>& task);

    /// Null before the beginning, and where they could not be made.
    pw_loop* loop() const { return loop_ ? pw_thread_loop_get_loop(loop_.get()) : nullptr; }
    pw_context* context() const { return context_.get(); }

private:
    struct Task {
        const std::function<void()>& function;
        std::promise<void> done;
    };

    void runTasks();

    std::once_flag hasBegun_;
    PipeWireOwned<pw_thread_loop> loop_;
    PipeWireOwned<pw_context> context_;
    /// The loop's own.
    spa_source* wakeUp_ = nullptr;
    std::atomic<bool> isRunning_ = false;
    std::mutex mutex_;
    std::vector<Task*> tasks_;
};

/// Calls on the thread, once for every start. Does nothing without a loop.
class PipeWireTimer {
public:
    PipeWireTimer(const PipeWireThread& thread, std::function<void()> task);
    PipeWireTimer(const PipeWireTimer&) = delete;
    PipeWireTimer& operator=(const PipeWireTimer&) = delete;
    ~PipeWireTimer();

    /// In place of an earlier start; soon, but not from within the present callback, after no time at all.
    void start(std::chrono::milliseconds later);
    void stop();

private:
    void set(std::chrono::nanoseconds later);

    pw_loop* loop_;
    std::function<void()> task_;
    spa_source* source_ = nullptr;
};

} // namespace LinuxPlatform
