#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/HidingTrial.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/WindowActivation.h"
#include "platform/linux/windows/WindowEvents.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/toplevels/ForeignToplevels.h"
#include "platform/linux/windows/toplevels/FrontKeeper.h"
#include "platform/linux/windows/toplevels/ToplevelModel.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// The windows of a Wayland session, those of X11 programs too, whose compositor lets other programs minimise
/// them. It tells neither of processes nor of workspaces: an app is one process, and only a window that had
/// the focus is activated. An app that comes back by itself stays where the compositor puts it, which is
/// usually the front.
class ToplevelWindowSystem : public WindowSystem {
public:
    /// Whether the compositor minimises what it is asked to: some speak the protocol and ignore that.
    enum class Minimising { known, untried };

    /// `queue` outlives this object.
    ToplevelWindowSystem(const std::filesystem::path& socket, Platform::MainQueue& queue,
                         Minimising minimising, ForeignToplevels::Patience patience = {});
    ~ToplevelWindowSystem() override;
    ToplevelWindowSystem(const ToplevelWindowSystem&) = delete;
    ToplevelWindowSystem& operator=(const ToplevelWindowSystem&) = delete;

    std::optional<Platform::HidingObstacle> hidingObstacle() override;
    bool knowsEveryWindow() override { return toplevels_.isListed(); }
    std::uint64_t generation() override { return model_.generation(); }
    const std::vector<Window>& windows() override { return model_.windows(); }
    bool exists(WindowId window) const override { return model_.find(window) != nullptr; }
    void hide(std::span<const WindowId> windows) override;
    void show(std::span<const WindowId> windows) override;
    bool isShowAwaited(WindowId window) const override { return toplevels_.isToBeRestored(window); }
    void activate(std::span<const WindowId> windows) override;
    Platform::Subscription addEventHandler(EventHandler handler) override {
        return events_.addHandler(std::move(handler));
    }

private:
    bool isHidden(WindowId window) const;
    bool isBusy() const;
    /// Was asked to hide, and may be in view still.
    bool isLeaving(WindowId window) const;
    void takeChange(WindowId window, const ForeignToplevels::State& state);
    void takeList();
    void takeLoss();
    void noteWhatIsHidden();
    /// All that was asked has been taken, so it is to be seen soon.
    void waitForHiding();
    void hidingIsLate(std::uint64_t request, bool isRepeated);
    void bringToFront(WindowId window);

    Platform::MainQueue& queue_;
    Minimising minimising_;
    /// Absent while the windows are listed.
    std::optional<Platform::MainQueue::Seconds> silentSince_;
    ToplevelModel model_;
    HidingTrial trial_;
    LeavingWindows leaving_;
    FrontKeeper front_;
    WindowActivation activation_;
    WindowEvents events_;
    Platform::Lifetime lifetime_;
    /// Last, since it tells of what happens until its end.
    ForeignToplevels toplevels_;
};

} // namespace LinuxPlatform
