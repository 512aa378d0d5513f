#pragma once

#include "platform/linux/camera/pipewire/PipeWireHandles.h"

#include <chrono>
#include <functional>
#include <mutex>

namespace LinuxPlatform {

/// PipeWire's loop on a thread of its own. Its objects belong to that thread, or to whoever holds the lock.
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

    /// Null before the beginning, and where they could not be made.
    pw_loop* loop() const { return loop_ ? pw_thread_loop_get_loop(loop_.get()) : nullptr; }
    pw_context* context() const { return context_.get(); }

    class Lock {
    public:
        explicit Lock(const PipeWireThread& thread) : loop_(thread.loop_.get()) {
            if (loop_) {
                pw_thread_loop_lock(loop_);
            }
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() {
            if (loop_) {
                pw_thread_loop_unlock(loop_);
            }
        }

    private:
        pw_thread_loop* loop_;
    };

private:
    std::once_flag hasBegun_;
    PipeWireOwned<pw_thread_loop> loop_;
    PipeWireOwned<pw_context> context_;
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
