#pragma once

#include <atomic>
#include <chrono>
#include <stop_token>
#include <thread>

namespace TestSupport {

/// How long something keeps its caller waiting, in time in which this process could run: a machine that
/// stalls for seconds, and with it whatever is measured on it, adds next to nothing.
template <class Action>
std::chrono::milliseconds runningTimeOf(const Action& action) {
    constexpr std::chrono::milliseconds step(5);
    std::atomic<int> steps = 0;
    {
        const std::jthread clock([&](const std::stop_token& end) {
            while (!end.stop_requested()) {
                std::this_thread::sleep_for(step);
                ++steps;
            }
        });
        action();
    }
    return steps.load() * step;
}

} // namespace TestSupport
