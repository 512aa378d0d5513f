#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/WindowActivation.h"
#include "platform/linux/windows/WindowEvents.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/kwin/KWinListener.h"
#include "platform/linux/windows/kwin/KWinRequests.h"
#include "platform/linux/windows/kwin/KWinScripting.h"
#include "platform/linux/windows/kwin/KWinWindowModel.h"

#include <QDBusConnection>
#include <QString>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// The windows of a session of KWin 5 or 6, its own and those of X11 programs. A script that we give KWin
/// reports them, and carries out what is asked soon after a report; anything else is carried out by another
/// one, which is loaded for that and unloaded again.
class KWinWindowSystem : public WindowSystem {
public:
    /// `queue` outlives this object. `folder` is one of the user's own that KWin can read.
    KWinWindowSystem(const QDBusConnection& bus, Platform::MainQueue& queue, std::filesystem::path folder);
    /// KWin forgets the scripts.
    ~KWinWindowSystem() override;
    KWinWindowSystem(const KWinWindowSystem&) = delete;
    KWinWindowSystem& operator=(const KWinWindowSystem&) = delete;

    std::optional<Platform::HidingObstacle> hidingObstacle() override;
    bool knowsEveryWindow() override;
    std::uint64_t generation() override;
    const std::vector<Window>& windows() override;
    bool exists(WindowId window) const override;
    void hide(std::span<const WindowId> windows) override;
    void show(std::span<const WindowId> windows) override;
    bool isShowAwaited(WindowId window) const override;
    void activate(std::span<const WindowId> windows) override;
    Platform::Subscription addEventHandler(EventHandler handler) override;

private:
    using Seconds = Platform::MainQueue::Seconds;

    enum class State { starting, ready, failed };

    void setState(State state);
    void beginAnew();
    void loadWatcher();
    /// Unless it is loaded before.
    void loadWatcherAfter(Seconds pause);
    void watcherFailed();
    void keepTrying();
    void look();
    bool isBusy() const;

    void receive(const QString& sender, const QByteArray& text);
    void noteDone(qint64 request);
    void takeNoteOf(const KWinWindowModel::Changes& changes);

    void request(KWinRequests::Act act, std::span<const WindowId> windows);
    void sendRequests();
    void answerIsLost();
    void requestsEnded(bool wereCarriedOut);
    void tryAgain(const KWinRequests::Portion& sent);
    WindowActivation::Scene lookAtScene() const;

    Platform::MainQueue& queue_;
    KWinScripting scripting_;
    KWinWindowModel model_;
    KWinListener listener_;
    State state_ = State::starting;
    Seconds stateSince_;
    Seconds lookedAt_;
    /// Names the script whose reports count; those of earlier ones do not.
    std::uint64_t load_ = 0;
    bool isLoading_ = false;
    bool isListed_ = false;
    /// KWin has told of no windows yet.
    bool isNewRun_ = true;
    bool hasHidden_ = false;
    KWinRequests requests_;
    /// What is being carried out.
    KWinRequests::Portion sent_;
    bool isSecondTry_ = false;
    bool isSendingScheduled_ = false;
    /// Since when requests are being carried out.
    std::optional<Seconds> requestedAt_;
    std::uint64_t lastRequest_ = 0;
    bool isRequestDone_ = false;
    /// It went to the watcher that waited for it.
    bool isAnswered_ = false;
    LeavingWindows leaving_;
    WindowActivation activation_;
    WindowEvents events_;
    Platform::Lifetime lifetime_;
    BusNameOwner kwin_;
};

} // namespace LinuxPlatform
