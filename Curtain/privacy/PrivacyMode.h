#pragma once

#include "Curtain/DesktopController.h"
#include "Curtain/HidingWatch.h"
#include "Curtain/Notifier.h"
#include "Curtain/PrivacyJournal.h"
#include "Curtain/QuietHold.h"
#include "Curtain/SystemAppHiding.h"
#include "Curtain/UserLanguage.h"
#include "Curtain/privacy/ReturningApps.h"
#include "core/HideEngine.h"
#include "core/PreferencesStore.h"
#include "platform/AppShield.h"
#include "platform/DoNotDisturb.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/SessionNote.h"
#include "platform/SystemVersion.h"
#include "platform/UserNotificationCenter.h"
#include "platform/Workspace.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

/// Privacy mode with all that goes with it: the private apps are covered and hidden, notices are held back,
/// an obstacle is said, and the next run finds written down what this one does. Main thread only.
class PrivacyMode {
public:
    /// All of them outlive privacy mode.
    struct Services {
        CurtainCore::PreferencesStore& store;
        const DesktopController& desktop;
        const ScreenWatcher& screenWatcher;
        HidingWatch& hidingWatch;
        Notifier& notifier;
        const UserLanguage& language;
        Platform::Workspace& workspace;
        Platform::AppShield& shield;
        Platform::SessionNote& note;
        Platform::SystemVersion& system;
        Platform::DoNotDisturb& doNotDisturb;
        Platform::UserNotificationCenter& center;
        Platform::MainQueue& mainQueue;
    };

    explicit PrivacyMode(const Services& services);

    /// It was switched, or asked to hide or show more.
    std::function<void()> onChange;

    bool isOn() const { return engine_.isActive(); }
    /// Whether nothing would be shown if the program ended now: it is off, and notices are no longer held
    /// back.
    bool isAtRest() const { return !isOn() && !quietHold_.isHeld(); }
    /// Detection switched it on last, not the user.
    bool isAutomatic() const { return isAutomatic_; }
    /// Whether it is on, and it is known that nothing can be hidden.
    bool isInVain() const;

    /// Takes up what an earlier run left, where that did not end in good order. Returns whether it did.
    bool resume();
    /// The program ends in good order.
    void leaveNothingToResume() { journal_.clear(); }

    void toggle();
    /// Hides the private apps, also those that are in view while it is on.
    void hidePrivateApps();
    void fixEverything();
    /// Because of a share that was noticed.
    void switchOnForShare();
    /// Also where it is off: nothing is automatic any more.
    void switchOff();
    /// Nothing where it is off.
    void undo();
    /// Shows an app until the next switch-on.
    void reveal(const std::string& bundleID);
    /// Says in a notice that it is off, once notices can be seen, unless it is on by then.
    void tellOfEnd();

    /// An app became private, or no longer is, while it is on. Neither calls `onChange`.
    void takeIn(const std::string& bundleID) { hideAlso({bundleID}); }
    void takeOut(const std::string& bundleID);
    void appAppeared(const std::string& bundleID);
    /// The session has answered differently whether apps can be hidden.
    void hidingAnswered();

private:
    void changed() const;
    void setAutomatic(bool isAutomatic);
    void beginQuiet();
    void keepJournal();

    /// Returns false where it was said that it has no effect.
    bool activate();
    void deactivate();
    void tellIfListWasLost();
    /// To be called after it has been switched on. Returns whether it was said that it is in vain.
    bool sayIfNothingIsHidden();
    /// Once for each obstacle, and takes back what was said of one that is gone. Returns whether there is
    /// one.
    bool tellObstacle();

    bool isTarget(const std::string& bundleID) const;
    /// Those of them that are visible while it is on, a revealed one included.
    void hideAlso(const std::vector<std::string>& identifiers);
    void hideWhatWasAwaited();

    Services services_;
    PrivacyJournal journal_;
    SystemAppHiding hiding_;
    CurtainCore::HideEngine engine_;
    QuietHold quietHold_;
    ReturningApps returning_;
    bool isAutomatic_ = false;
    /// Notices are to be kept off the screen with it.
    bool isQuiet_ = false;
    /// What was said of it since it was switched on.
    std::optional<Platform::HidingObstacle> toldObstacle_;
    /// Whether it is known when the journal's trial is over.
    bool isTrialTimed_ = false;
    /// It was switched on before the session had told of its windows: what is seen first then was there all
    /// the time, and did not come back.
    bool areWindowsAwaited_ = false;
    /// That was so when an earlier run's privacy mode was taken up, whose windows are to be hidden once more.
    bool isResumeAwaited_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
