#include "platform/linux/windows/FocusMemory.h"

#include <algorithm>

namespace LinuxPlatform {

void FocusMemory::noteHiding(std::span<const WindowId> windows, std::optional<WindowId> focused) {
    const bool isKnown = !focused || std::ranges::find(windows_, *focused) != windows_.end();
    if (!isKnown && std::ranges::find(windows, *focused) != windows.end()) {
        windows_.push_back(*focused);
    }
}

std::optional<WindowId> FocusMemory::first(const WindowPredicate& isMeant) const {
    const auto found = std::ranges::find_if(windows_, isMeant);
    return found == windows_.end() ? std::nullopt : std::optional(*found);
}

void FocusMemory::forget(const WindowPredicate& isMeant) {
    std::erase_if(windows_, isMeant);
}

} // namespace LinuxPlatform
