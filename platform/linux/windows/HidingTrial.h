#pragma once

#include "platform/linux/windows/WindowId.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Whether whoever is asked to hide windows does so, which nothing but a trial tells: who has hidden one is
/// trusted from then on, also with those that stay. Main thread only.
class HidingTrial {
public:
    /// The windows are asked for now. Those that may refuse to hide for reasons of their own are not to be
    /// among them. Returns the request's number; they count up from 1.
    std::uint64_t begin(std::span<const WindowId> windows);
    /// Those that are shown again before they were hidden, which says nothing.
    void withdraw(std::span<const WindowId> windows);
    /// To be called with what is seen of the windows now. One that is over, be it that it was closed or that
    /// it came back, says nothing.
    void note(const WindowPredicate& isHidden, const WindowPredicate& isOver);
    /// What was asked with this request and before should have been done by now.
    void becomeLate(std::uint64_t request);
    /// What was asked with this request and before will not be done any more.
    void judge(std::uint64_t request);
    /// Somebody else is asked from now on.
    void startAnew();

    /// Absent from now on are windows that were hidden, and all of which nothing is to be expected.
    bool isAwaited(WindowId window) const { return awaited_.contains(window); }
    /// Those that were asked for with this request or before.
    std::vector<WindowId> awaited(std::uint64_t request) const;
    bool isLate(std::uint64_t request) const { return request <= late_; }
    std::uint64_t lastRequest() const { return lastRequest_; }
    /// How many of those that were asked for have been hidden.
    std::uint64_t hidden() const { return hidden_; }
    /// Nothing has been hidden yet, and it is late.
    bool isInDoubt() const { return hidden_ == 0 && !awaited(late_).empty(); }
    bool isLost() const { return isLost_; }

private:
    /// By which request each of them was asked for first.
    std::map<WindowId, std::uint64_t> awaited_;
    std::uint64_t lastRequest_ = 0;
    std::uint64_t late_ = 0;
    std::uint64_t hidden_ = 0;
    bool isLost_ = false;
};

} // namespace LinuxPlatform
