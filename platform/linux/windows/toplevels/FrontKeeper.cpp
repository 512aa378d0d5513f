#include "platform/linux/windows/toplevels/FrontKeeper.h"

#include <utility>

namespace LinuxPlatform {

FrontKeeper::FrontKeeper(Platform::MainQueue& queue, WindowPredicate canBeInFront,
                         std::function<void(WindowId)> bringToFront)
    : queue_(queue),
      canBeInFront_(std::move(canBeInFront)),
      bringToFront_(std::move(bringToFront)),
      returning_(queue) {}

void FrontKeeper::noteActivated(WindowId window) {
    if (!returning_.contains(window)) {
        front_ = window;
    }
}

void FrontKeeper::noteShown(std::span<const WindowId> windows, std::optional<WindowId> active) {
    // Of apps that come back one after another, the first has the focus perhaps.
    if (returning_.isOver()) {
        returning_.remove([](WindowId) { return true; });
        front_ = active;
    }
    returning_.add(windows);
    shown_.insert(windows.begin(), windows.end());
    keepLater();
}

void FrontKeeper::noteRequested(const std::string& app) {
    requestedApps_.insert(app);
    keepLater();
}

void FrontKeeper::keepLater() {
    if (!std::exchange(isKeptLater_, true)) {
        queue_.async(lifetime_.weak([this] {
            isKeptLater_ = false;
            keep();
        }));
    }
}

void FrontKeeper::keep() {
    const auto shown = std::exchange(shown_, {});
    const bool isOneAppAskedFor = std::exchange(requestedApps_, {}).size() == 1;
    if (shown.empty() || isOneAppAskedFor || !front_) {
        return;
    }
    if (!shown.contains(*front_) && canBeInFront_(*front_)) {
        bringToFront_(*front_);
    }
}

void FrontKeeper::forget() {
    returning_.remove([](WindowId) { return true; });
    front_.reset();
}

} // namespace LinuxPlatform
