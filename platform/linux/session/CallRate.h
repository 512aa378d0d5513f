#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace LinuxPlatform {

/// How often strangers may call: some times at once, and then as many times a second as lasts.
class CallRate {
public:
    using Clock = std::chrono::steady_clock;

    explicit CallRate(std::function<Clock::time_point()> now = &Clock::now)
        : now_(std::move(now)),
          countedAt_(now_()) {}

    /// Whether one more call may come now; one that may counts.
    bool take() {
        const auto now = now_();
        const auto seconds = std::chrono::duration<double>(now - std::exchange(countedAt_, now)).count();
        left_ = std::min(left_ + seconds * aSecond, atOnce);
        if (left_ < 1) {
            return false;
        }
        left_ -= 1;
        return true;
    }

private:
    /// More than anybody presses keys and buttons.
    static constexpr double atOnce = 30;
    static constexpr double aSecond = 10;

    std::function<Clock::time_point()> now_;
    Clock::time_point countedAt_;
    double left_ = atOnce;
};

} // namespace LinuxPlatform
