#include "platform/linux/windows/LeavingWindows.h"

namespace LinuxPlatform {
namespace {

/// What has not hidden a window by now is busy, or does not heed the request.
constexpr Platform::MainQueue::Seconds patience{1};

} // namespace

void LeavingWindows::add(std::span<const WindowId> windows) {
    windows_.insert(windows.begin(), windows.end());
    lastAdded_ = queue_.now();
}

void LeavingWindows::remove(const WindowPredicate& hasSettled) {
    std::erase_if(windows_, hasSettled);
}

bool LeavingWindows::contains(WindowId window) const {
    return !isOver() && windows_.contains(window);
}

bool LeavingWindows::isOver() const {
    return !lastAdded_ || queue_.now() - *lastAdded_ >= patience;
}

} // namespace LinuxPlatform
