#pragma once

#include "platform/linux/windows/WindowSystem.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace LinuxPlatform {

/// The windows of a session that hides them through something that may be missing. As long as it is, the
/// windows that can be listed without it stand in, and are left alone.
class StandInWindowSystem : public WindowSystem {
public:
    /// `windows` says that it knows every window while it can be used.
    StandInWindowSystem(std::unique_ptr<WindowSystem> windows, std::unique_ptr<WindowSystem> standIn)
        : windows_(std::move(windows)),
          standIn_(std::move(standIn)) {}

    std::optional<Platform::HidingObstacle> hidingObstacle() override { return windows_->hidingObstacle(); }
    void switchExtensionOn() override { windows_->switchExtensionOn(); }
    bool knowsEveryWindow() override { return windows_->knowsEveryWindow(); }
    std::uint64_t generation() override {
        const auto own = std::pair(windows_->generation(), standIn_->generation());
        if (std::exchange(generations_, own) != own) {
            ++generation_;
        }
        return generation_;
    }
    const std::vector<Window>& windows() override { return current().windows(); }
    bool exists(WindowId window) const override {
        return (windows_->knowsEveryWindow() ? windows_ : standIn_)->exists(window);
    }
    bool isShowAwaited(WindowId window) const override { return windows_->isShowAwaited(window); }
    void hide(std::span<const WindowId> windows) override { current().hide(windows); }
    void show(std::span<const WindowId> windows) override { current().show(windows); }
    void activate(std::span<const WindowId> windows) override { current().activate(windows); }

    Platform::Subscription addEventHandler(EventHandler handler) override {
        auto fromStandIn =
            standIn_->addEventHandler([this, handler](WindowEvent event, const Window& window) {
                if (!windows_->knowsEveryWindow()) {
                    handler(event, window);
                }
            });
        auto both = std::make_shared<std::pair<Platform::Subscription, Platform::Subscription>>(
            windows_->addEventHandler(std::move(handler)), std::move(fromStandIn));
        return Platform::Subscription([both] { *both = {}; });
    }

private:
    WindowSystem& current() { return windows_->knowsEveryWindow() ? *windows_ : *standIn_; }

    std::unique_ptr<WindowSystem> windows_;
    std::unique_ptr<WindowSystem> standIn_;
    std::pair<std::uint64_t, std::uint64_t> generations_;
    std::uint64_t generation_ = 0;
};

} // namespace LinuxPlatform
