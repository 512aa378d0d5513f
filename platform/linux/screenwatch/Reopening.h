#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// When to open again what breaks: at once, and then after pauses that grow from a second to a minute, until
/// it has lasted for a minute.
class Reopening {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    static constexpr std::chrono::seconds shortestPause{1};
    static constexpr std::chrono::seconds longestPause{60};

    /// Returns whether this is news: whatever breaks again and again does so once for whom it may concern.
    bool broke(Clock::time_point now) {
        const bool isNews = !tried_ || now - *tried_ >= longestPause;
        if (isNews) {
            pause_ = shortestPause;
            tried_.reset();
        }
        return isNews;
    }

    bool isDue(Clock::time_point now) const { return !tried_ || now - *tried_ >= pause_; }

    /// Whether it opened shows in how long it lasts.
    void tried(Clock::time_point now) {
        if (tried_) {
            pause_ = std::min(2 * pause_, longestPause);
        }
        tried_ = now;
    }

private:
    std::optional<Clock::time_point> tried_;
    std::chrono::seconds pause_ = shortestPause;
};

} // namespace LinuxPlatform
