#include "platform/linux/windows/WindowEvents.h"

namespace LinuxPlatform {

WindowEvents::WindowEvents(Platform::MainQueue& queue, const LeavingWindows& leaving, FindWindow find)
    : queue_(queue),
      leaving_(leaving),
      find_(std::move(find)) {}

void WindowEvents::announce(WindowEvent event, WindowId window) {
    if (undelivered_.empty()) {
        queue_.async(lifetime_.weak([this] { deliver(); }));
    }
    undelivered_.emplace_back(event, window);
}

Platform::Subscription WindowEvents::addHandler(WindowSystem::EventHandler handler) {
    return handlers_.add(std::move(handler));
}

void WindowEvents::deliver() {
    for (const auto& [event, id] : std::exchange(undelivered_, {})) {
        const auto window = find_(id);
        if (!window) {
            continue;
        }
        // It was asked to hide after that.
        const bool isOver = event == WindowEvent::activated && (window->isHidden || leaving_.contains(id));
        if (!isOver) {
            handlers_.tell(event, *window);
        }
    }
}

} // namespace LinuxPlatform
