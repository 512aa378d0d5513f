#pragma once

#include "platform/Subscription.h"

#include <pulse/mainloop.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace LinuxPlatform {

/// A loop of the sound library on a thread of its own. Its destruction runs the tasks that still wait and
/// ends the thread; not on that thread.
class PulseLoop {
public:
    using Task = std::function<void()>;

    PulseLoop();
    ~PulseLoop();
    PulseLoop(const PulseLoop&) = delete;
    PulseLoop& operator=(const PulseLoop&) = delete;

    /// Runs the task on the loop's thread. Any thread.
    void post(Task task);

    // The loop's thread only:
    pa_mainloop_api* api() const { return pa_mainloop_get_api(loop_.get()); }
    /// Runs the task once, unless the subscription has ended by then.
    Platform::Subscription after(std::chrono::milliseconds delay, Task task);

    /// A task that is due once nobody has put it off for a while. The loop outlives it; its thread only.
    class Timer {
    public:
        Timer(PulseLoop& loop, Task task);
        ~Timer();
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

        /// From now on; allocates nothing, and wakes nobody up.
        void restart(std::chrono::milliseconds delay);
        void stop();

    private:
        pa_mainloop_api* api_;
        Task task_;
        pa_time_event* event_ = nullptr;
    };

    /// Runs the task whenever there is something to read, until the subscription ends.
    Platform::Subscription whenReadable(int descriptor, Task task);

private:
    void run();
    void wakeUp() const;
    void runTasks();

    std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop_;
    /// The loop's own wake-up forgets one that comes just before it waits.
    int wakeUp_;
    std::mutex mutex_;
    std::vector<Task> tasks_;
    /// The loop's thread only.
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace LinuxPlatform
