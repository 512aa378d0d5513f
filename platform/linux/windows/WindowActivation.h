#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/FocusMemory.h"
#include "platform/linux/windows/WindowId.h"

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Chooses the window that comes to the front when windows are given back. Where several apps are given back,
/// they come back one after another: what is asked within one turn of the main queue is answered with one
/// window, so that the others keep their places. Main thread only.
class WindowActivation {
public:
    /// How the windows stand when one of them is chosen.
    struct Scene {
        /// Bottom to top; may leave windows out.
        std::vector<WindowId> stackingOrder;
        /// Whether the window can come to the front without a change of workspace.
        WindowPredicate isHere;
    };
    using Look = std::function<Scene()>;
    using Activate = std::function<void(WindowId)>;

    /// `queue` outlives this object. `look` is called before every choice, `activate` for what was chosen.
    WindowActivation(Platform::MainQueue& queue, Look look, Activate activate);

    /// To be called before `windows` are hidden; `focused` has the focus at that time. They are not activated
    /// unless that is asked for again.
    void noteHiding(std::span<const WindowId> windows, std::optional<WindowId> focused);
    /// As `WindowSystem::activate`.
    void request(std::span<const WindowId> windows);
    /// Windows that do not exist any more: others may get their identifiers.
    void forget(const WindowPredicate& isGone);

private:
    void choose();

    Platform::MainQueue& queue_;
    Look look_;
    Activate activate_;
    FocusMemory hiddenWithFocus_;
    std::set<WindowId> requested_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
