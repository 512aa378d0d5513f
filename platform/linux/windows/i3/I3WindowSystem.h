#pragma once

#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/TakenWindows.h"
#include "platform/linux/windows/WindowActivation.h"
#include "platform/linux/windows/WindowEvents.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/i3/I3Layout.h"
#include "platform/linux/windows/i3/I3Tree.h"
#include "platform/linux/windows/i3/I3TreeWatch.h"
#include "platform/linux/windows/i3/I3WindowList.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace LinuxPlatform {

/// The windows of i3 and sway. A window is hidden by being put into the scratchpad, and comes back to where
/// it stood; what the user keeps there is left alone. Requests are carried out with the layout as it is then,
/// one turn of the event loop later.
class I3WindowSystem : public WindowSystem {
public:
    /// `queue` outlives this object. `x11` tells more of the windows of X11 than the layout does; null
    /// without an X server. `whenSilent` is what keeps windows from being hidden while nobody answers at the
    /// socket. With a record, windows that an earlier run left behind come back to their places. `log`, which
    /// outlives this object, is told of windows that cannot be put back; null where nobody reads it.
    I3WindowSystem(const std::filesystem::path& socket, Platform::MainQueue& queue,
                   std::unique_ptr<WindowSystem> x11, Platform::HidingObstacle whenSilent,
                   std::optional<EarlierValue> record = std::nullopt, Platform::Log* log = nullptr);
    ~I3WindowSystem() override;

    std::optional<Platform::HidingObstacle> hidingObstacle() override;
    bool knowsEveryWindow() override;
    std::uint64_t generation() override;
    const std::vector<Window>& windows() override;
    bool exists(WindowId window) const override;
    void hide(std::span<const WindowId> windows) override;
    void show(std::span<const WindowId> windows) override;
    bool isShowAwaited(WindowId window) const override {
        return toGiveBack_.contains(window) || isReturning(window);
    }
    void activate(std::span<const WindowId> windows) override;
    Platform::Subscription addEventHandler(EventHandler handler) override;

private:
    using Seconds = Platform::MainQueue::Seconds;

    void handleX11Event(WindowEvent event);
    void takeIn(std::unique_ptr<const I3Tree> tree);
    void noteChanges(const I3Tree* before);
    void noteOpened();
    void noteScratchpad();
    void noteWhatIsBack();
    void forgetWhatIsNotLeftBehind();
    bool isHidden(WindowId window) const;

    void carryOut();
    void take();
    void giveBack();
    /// Those with a place, and `commands` for those without one; as many as are moved at once.
    std::vector<I3Return> nextToGiveBack(std::string& commands);
    /// What is still to be given back, without a look at what becomes of it.
    void giveBackTheRest();
    void settleReturned();
    void bringUpWhatIsStillAway(const std::string& refusal);
    void settleUnsized();
    bool isSizeKnown(WindowId window) const;
    void command(const std::string& commands);
    void noteRefusals(const QByteArray& reply);
    bool isReturning(WindowId window) const;
    std::optional<I3Place> placeOf(WindowId window) const;
    I3Place placeOf(const I3Leaf& leaf);
    std::optional<std::uint32_t> processOf(WindowId window);
    WindowActivation::Scene lookAtScene() const;
    void bringToFront(WindowId window);

    Platform::MainQueue& queue_;
    std::unique_ptr<WindowSystem> x11_;
    Platform::HidingObstacle whenSilent_;
    Platform::Log* log_;
    I3TreeWatch watch_;
    /// As it was last told; null before.
    std::unique_ptr<const I3Tree> tree_;
    /// In a row, while something waits for the layout to be known.
    std::size_t looksInVain_ = 0;
    I3WindowList list_;
    /// What each window said of its app when that was announced.
    std::map<WindowId, WindowHints> described_;
    TakenWindows taken_;
    /// Windows that their user keeps in the scratchpad, be they called up from there at present or not.
    std::set<WindowId> scratchpad_;
    /// Those that are taken, by when they came up all the same.
    std::map<WindowId, Seconds> broughtUp_;
    LeavingWindows leaving_;
    WindowActivation activation_;
    WindowEvents events_;
    std::set<WindowId> toTake_;
    std::set<WindowId> toGiveBack_;
    std::optional<WindowId> toFocus_;
    /// Back, but not yet quite as they were.
    std::vector<I3Return> returned_;
    /// Back on a workspace that i3 lays out when somebody looks at it.
    std::vector<I3Return> unsized_;
    std::size_t adjustmentsLeft_ = 0;
    /// Why a command was not carried out since windows were last put back.
    std::optional<std::string> refusal_;
    Platform::Subscription x11Events_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
