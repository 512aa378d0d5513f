#pragma once

#include "platform/linux/windows/WindowSystem.h"

#include <memory>
#include <utility>

namespace LinuxPlatform {

/// Windows that can be listed, in a session that hides none of them when it is asked to. They are left
/// alone.
class ListedWindowSystem : public WindowSystem {
public:
    /// `isWholeSession` tells whether there are no other windows than these.
    ListedWindowSystem(std::unique_ptr<WindowSystem> windows, Platform::HidingObstacle obstacle,
                       bool isWholeSession)
        : windows_(std::move(windows)),
          obstacle_(obstacle),
          isWholeSession_(isWholeSession) {}

    std::optional<Platform::HidingObstacle> hidingObstacle() override { return obstacle_; }
    bool knowsEveryWindow() override { return isWholeSession_ && windows_->knowsEveryWindow(); }
    std::uint64_t generation() override { return windows_->generation(); }
    const std::vector<Window>& windows() override { return windows_->windows(); }
    bool exists(WindowId window) const override { return windows_->exists(window); }
    void hide(std::span<const WindowId> /*windows*/) override {}
    void show(std::span<const WindowId> /*windows*/) override {}
    bool isShowAwaited(WindowId /*window*/) const override { return false; }
    void activate(std::span<const WindowId> /*windows*/) override {}
    Platform::Subscription addEventHandler(EventHandler handler) override {
        return windows_->addEventHandler(std::move(handler));
    }

private:
    std::unique_ptr<WindowSystem> windows_;
    Platform::HidingObstacle obstacle_;
    bool isWholeSession_;
};

} // namespace LinuxPlatform
