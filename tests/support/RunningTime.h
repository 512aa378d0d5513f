#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

namespace TestSupport {

/// How long something keeps its caller waiting, in time in which this process could run: a machine that
/// stalls for seconds, and with it whatever is measured on it, adds next to nothing.
template <class Action>
std::chrono::milliseconds runningTimeOf(const Action& action) {
    using Clock = std::chrono::steady_clock;
    // Far more than a busy machine takes to wake a thread up, which is not counted.
    constexpr std::chrono::milliseconds step(50);
    Clock::duration sum{0};
    {
        const std::jthread clock([&](const std::stop_token& end) {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            std::condition_variable_any over;
            while (!end.stop_requested()) {
                const auto begin = Clock::now();
                over.wait_for(lock, end, step, [] { return false; });
                sum += std::min<Clock::duration>(Clock::now() - begin, step);
            }
        });
        action();
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(sum);
}

} // namespace TestSupport
