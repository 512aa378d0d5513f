#include "platform/linux/windows/WindowActivation.h"

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

WindowActivation::WindowActivation(Platform::MainQueue& queue, Look look, Activate activate)
    : queue_(queue),
      look_(std::move(look)),
      activate_(std::move(activate)) {}

void WindowActivation::noteHiding(std::span<const WindowId> windows, std::optional<WindowId> focused) {
    hiddenWithFocus_.noteHiding(windows, focused);
    for (const auto window : windows) {
        requested_.erase(window);
    }
}

void WindowActivation::request(std::span<const WindowId> windows) {
    if (requested_.empty()) {
        queue_.async(lifetime_.weak([this] { choose(); }));
    }
    requested_.insert(windows.begin(), windows.end());
}

void WindowActivation::forget(const WindowPredicate& isGone) {
    hiddenWithFocus_.forget(isGone);
    std::erase_if(requested_, isGone);
}

void WindowActivation::choose() {
    if (requested_.empty()) {
        return;
    }
    const auto scene = look_();
    const auto isCandidate = [&](WindowId window) {
        return requested_.contains(window) && scene.isHere(window);
    };
    const auto topmost = std::find_if(scene.stackingOrder.rbegin(), scene.stackingOrder.rend(), isCandidate);
    const auto focused = hiddenWithFocus_.first(isCandidate);
    const auto chosen = focused || topmost == scene.stackingOrder.rend() ? focused : std::optional(*topmost);
    const auto requested = std::exchange(requested_, {});
    hiddenWithFocus_.forget([&](WindowId window) { return requested.contains(window); });
    if (chosen) {
        activate_(*chosen);
    }
}

} // namespace LinuxPlatform
