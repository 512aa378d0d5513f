#pragma once

#include "platform/linux/windows/WindowSystem.h"

namespace LinuxPlatform {

/// Stands in where the session lets nobody list or hide windows: there are none, for the reason given.
class NoWindowSystem : public WindowSystem {
public:
    explicit NoWindowSystem(Platform::HidingObstacle reason) : reason_(reason) {}

    std::optional<Platform::HidingObstacle> hidingObstacle() override { return reason_; }
    bool knowsEveryWindow() override { return false; }
    std::uint64_t generation() override { return 0; }
    const std::vector<Window>& windows() override { return windows_; }
    bool exists(WindowId /*window*/) const override { return false; }
    void hide(std::span<const WindowId> /*windows*/) override {}
    void show(std::span<const WindowId> /*windows*/) override {}
    bool isShowAwaited(WindowId /*window*/) const override { return false; }
    void activate(std::span<const WindowId> /*windows*/) override {}
    Platform::Subscription addEventHandler(EventHandler /*handler*/) override { return {}; }

private:
    Platform::HidingObstacle reason_;
    std::vector<Window> windows_;
};

} // namespace LinuxPlatform
