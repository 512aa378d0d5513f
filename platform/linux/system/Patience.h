#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace LinuxPlatform {

/// How long somebody else has for an answer, waited for in short looks. While the whole machine stands still
/// nobody can answer, so a look that took longer than it was to take counts no more than that.
class Patience {
public:
    using Clock = std::chrono::steady_clock;

    explicit Patience(std::chrono::milliseconds whole, std::function<Clock::time_point()> now = Clock::now)
        : now_(std::move(now)),
          left_(whole),
          lookedAt_(now_()) {}

    /// How long to wait from now on until asking again; absent when the patience has ended.
    std::optional<std::chrono::milliseconds> nextLook() {
        constexpr Clock::duration longest = std::chrono::milliseconds(50);
        const auto now = now_();
        left_ -= std::min<Clock::duration>(now - std::exchange(lookedAt_, now), look_);
        if (left_ <= Clock::duration::zero()) {
            return std::nullopt;
        }
        look_ = std::chrono::ceil<std::chrono::milliseconds>(std::min(left_, longest));
        return look_;
    }

private:
    std::function<Clock::time_point()> now_;
    Clock::duration left_;
    Clock::time_point lookedAt_;
    std::chrono::milliseconds look_{0};
};

} // namespace LinuxPlatform
