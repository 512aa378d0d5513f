#pragma once

#include "platform/Subscribers.h"
#include "platform/linux/windows/WindowSystem.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Windows that exist only here; what is asked of them takes effect at once, unless the test says otherwise.
class FakeWindowSystem : public LinuxPlatform::WindowSystem {
public:
    using WindowId = LinuxPlatform::WindowId;

    std::vector<LinuxPlatform::Window> list;
    bool takesEffect = true;
    std::optional<Platform::HidingObstacle> obstacle;
    bool wasSwitchedOn = false;
    bool everyWindowIsKnown = true;
    /// Exist, but no window manager has them in its list.
    std::vector<WindowId> unmanaged;
    /// Were asked to be shown, and the session has not been told so yet.
    std::vector<WindowId> toBeShown;
    std::vector<std::vector<WindowId>> hidden;
    std::vector<std::vector<WindowId>> shown;
    std::vector<std::vector<WindowId>> activated;

    /// A window of a program, whose class is the program's name.
    LinuxPlatform::Window& open(WindowId id, const std::string& windowClass, std::uint32_t process) {
        LinuxPlatform::Window window;
        window.id = id;
        window.birth = ++lastBirth_;
        window.hints.className = windowClass;
        window.hints.process = process;
        list.push_back(window);
        ++generation_;
        return list.back();
    }

    LinuxPlatform::Window& at(WindowId id) {
        ++generation_;
        return *std::ranges::find(list, id, &LinuxPlatform::Window::id);
    }

    void close(WindowId id) {
        std::erase_if(list, [&](const auto& window) { return window.id == id; });
        ++generation_;
    }

    void send(LinuxPlatform::WindowEvent event, WindowId id) { handlers_.tell(event, at(id)); }

    std::optional<Platform::HidingObstacle> hidingObstacle() override { return obstacle; }
    void switchExtensionOn() override { wasSwitchedOn = true; }
    bool knowsEveryWindow() override { return everyWindowIsKnown; }
    std::uint64_t generation() override { return generation_; }
    const std::vector<LinuxPlatform::Window>& windows() override { return list; }

    bool exists(WindowId window) const override {
        return std::ranges::find(list, window, &LinuxPlatform::Window::id) != list.end() ||
               std::ranges::find(unmanaged, window) != unmanaged.end();
    }

    void hide(std::span<const WindowId> windows) override {
        hidden.emplace_back(windows.begin(), windows.end());
        setHidden(windows, true);
    }

    void show(std::span<const WindowId> windows) override {
        shown.emplace_back(windows.begin(), windows.end());
        setHidden(windows, false);
    }

    bool isShowAwaited(WindowId window) const override {
        return std::ranges::find(toBeShown, window) != toBeShown.end();
    }

    void activate(std::span<const WindowId> windows) override {
        activated.emplace_back(windows.begin(), windows.end());
    }

    Platform::Subscription addEventHandler(EventHandler handler) override {
        return handlers_.add(std::move(handler));
    }

private:
    void setHidden(std::span<const WindowId> windows, bool isHidden) {
        for (auto& window : list) {
            const bool isMeant = std::ranges::find(windows, window.id) != windows.end();
            window.isHidden = isMeant && takesEffect ? isHidden : window.isHidden;
        }
        ++generation_;
    }

    std::uint64_t generation_ = 1;
    std::uint64_t lastBirth_ = 0;
    Platform::Subscribers<LinuxPlatform::WindowEvent, LinuxPlatform::Window> handlers_;
};

} // namespace TestSupport
