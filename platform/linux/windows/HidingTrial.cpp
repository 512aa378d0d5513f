#include "platform/linux/windows/HidingTrial.h"

#include <algorithm>

namespace LinuxPlatform {

std::uint64_t HidingTrial::begin(std::span<const WindowId> windows) {
    ++lastRequest_;
    for (const auto window : windows) {
        awaited_.emplace(window, lastRequest_);
    }
    return lastRequest_;
}

void HidingTrial::withdraw(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        awaited_.erase(window);
    }
}

void HidingTrial::note(const WindowPredicate& isHidden, const WindowPredicate& isOver) {
    hidden_ += std::erase_if(awaited_, [&](const auto& asked) { return isHidden(asked.first); });
    isLost_ = isLost_ && hidden_ == 0;
    std::erase_if(awaited_, [&](const auto& asked) { return isOver(asked.first); });
}

void HidingTrial::becomeLate(std::uint64_t request) {
    late_ = std::max(late_, request);
}

void HidingTrial::judge(std::uint64_t request) {
    isLost_ = isLost_ || (hidden_ == 0 && !awaited(request).empty());
}

void HidingTrial::startAnew() {
    awaited_.clear();
    hidden_ = 0;
    isLost_ = false;
}

std::vector<WindowId> HidingTrial::awaited(std::uint64_t request) const {
    std::vector<WindowId> windows;
    for (const auto& [window, asked] : awaited_) {
        if (asked <= request) {
            windows.push_back(window);
        }
    }
    return windows;
}

} // namespace LinuxPlatform
