#pragma once

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace LinuxPlatform {

/// How long somebody else has for an answer, waited for in short looks. While the whole machine stands still
/// nobody can answer, so a look that took longer than it was to take counts no more than that.
class Patience {
public:
    explicit Patience(std::chrono::milliseconds whole) : left_(whole) {}

    /// How long to wait from now on until asking again; absent when the patience has ended.
    std::optional<std::chrono::milliseconds> nextLook() {
        constexpr Clock::duration longest = std::chrono::milliseconds(50);
        const auto now = Clock::now();
        left_ -= std::min<Clock::duration>(now - std::exchange(lookedAt_, now), look_);
        if (left_ <= Clock::duration::zero()) {
            return std::nullopt;
        }
        look_ = std::chrono::ceil<std::chrono::milliseconds>(std::min(left_, longest));
        return look_;
    }

private:
    using Clock = std::chrono::steady_clock;

    Clock::duration left_;
    Clock::time_point lookedAt_ = Clock::now();
    std::chrono::milliseconds look_{0};
};

} // namespace LinuxPlatform
