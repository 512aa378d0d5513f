#include "platform/linux/windows/StackingMemory.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>

namespace LinuxPlatform {

bool StackingMemory::knows(std::span<const WindowId> windows) const {
    return std::ranges::all_of(
        windows, [this](WindowId window) { return std::ranges::find(order_, window) != order_.end(); });
}

void StackingMemory::noteHiding(std::span<const WindowId> windows, std::span<const WindowId> order) {
    // What is new lies where it does now, above its neighbour below.
    auto place = order_.begin();
    for (const auto window : order) {
        const auto known = std::ranges::find(order_, window);
        place = known == order_.end() ? order_.insert(place, window) + 1 : known + 1;
    }
    hidden_.insert(windows.begin(), windows.end());
}

std::vector<WindowId> StackingMemory::arrange(std::vector<WindowId> order,
                                              const std::set<WindowId>& returned) const {
    std::map<WindowId, std::size_t> places;
    for (std::size_t place = 0; place < order_.size(); ++place) {
        places.emplace(order_[place], place);
    }
    // Each with its place; from the top, so that what lay above it stands in its place already.
    std::map<std::size_t, WindowId, std::greater<>> displaced;
    for (const auto window : order) {
        if (returned.contains(window) && places.contains(window)) {
            displaced.emplace(places.at(window), window);
        }
    }
    std::erase_if(order,
                  [&](WindowId window) { return returned.contains(window) && places.contains(window); });
    for (const auto& [place, window] : displaced) {
        const auto isAbove = [&, below = place](WindowId other) {
            const auto found = places.find(other);
            return found == places.end() || found->second > below;
        };
        order.insert(std::ranges::find_if(order, isAbove), window);
    }
    return order;
}

void StackingMemory::forgetHiding(const WindowPredicate& isBack) {
    std::erase_if(hidden_, isBack);
    if (hidden_.empty()) {
        order_.clear();
    }
}

void StackingMemory::forget(std::span<const WindowId> gone) {
    const auto isGone = [&](WindowId window) { return std::ranges::find(gone, window) != gone.end(); };
    std::erase_if(order_, isGone);
    forgetHiding(isGone);
}

} // namespace LinuxPlatform
