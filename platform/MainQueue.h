#pragma once

#include "platform/Subscription.h"

#include <chrono>
#include <functional>
#include <memory>

namespace Platform {

/// Events for the main thread. Belongs to the main thread, but for `signal`.
class DispatchSource {
public:
    virtual ~DispatchSource() = default;

    /// Runs the source's task soon; signals that come before it has begun are one. Any thread; neither waits
    /// nor allocates memory.
    virtual void signal() = 0;
};

/// The main thread's queue and its clock. Tasks run on the main thread, one after another, those due at the
/// same time in the order in which they were handed in.
class MainQueue {
public:
    using Task = std::function<void()>;
    using Seconds = std::chrono::duration<double>;

    virtual ~MainQueue() = default;

    /// Runs the task as soon as the main thread is free. May be called from any thread; the others only from
    /// the main thread.
    virtual void async(Task task) = 0;
    virtual void asyncAfter(Seconds delay, Task task) = 0;
    /// Runs the task every `interval`, the first time after one interval, until the subscription ends.
    virtual Subscription repeating(Seconds interval, Task task) = 0;
    /// `task` runs when the source is signalled, until the source is destroyed.
    virtual std::unique_ptr<DispatchSource> makeSource(Task task) = 0;
    /// Monotonic time since an arbitrary start.
    virtual Seconds now() const = 0;
};

} // namespace Platform
