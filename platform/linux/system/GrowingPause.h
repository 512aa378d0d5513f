#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace LinuxPlatform {

/// Pauses between attempts, each twice as long as the one before.
class GrowingPause {
public:
    using Time = std::chrono::milliseconds;

    constexpr GrowingPause(Time first, Time longest) : first_(first), longest_(longest), next_(first) {}

    Time next() { return std::exchange(next_, std::min(next_ * 2, longest_)); }
    /// The one that `next` would return.
    Time present() const { return next_; }
    void reset() { next_ = first_; }

private:
    Time first_;
    Time longest_;
    Time next_;
};

} // namespace LinuxPlatform
