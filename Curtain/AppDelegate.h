#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/CameraPreviewManager.h"
#include "Curtain/CompatibilityProbe.h"
#include "Curtain/DesktopChecker.h"
#include "Curtain/DesktopController.h"
#include "Curtain/HidingWatch.h"
#include "Curtain/HotkeyManager.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/Notifier.h"
#include "Curtain/OnboardingWindowController.h"
#include "Curtain/PhotoWriter.h"
#include "Curtain/PrivacyJournal.h"
#include "Curtain/QuietHold.h"
#include "Curtain/ReadinessCoordinator.h"
#include "Curtain/ScreenWatcher.h"
#include "Curtain/SettingsModel.h"
#include "Curtain/SettingsView.h"
#include "Curtain/ShareMonitor.h"
#include "Curtain/SystemAppHiding.h"
#include "Curtain/WorkspaceObserver.h"
#include "core/HideEngine.h"
#include "core/PreferencesStore.h"
#include "hotkeys/KeyboardShortcuts.h"
#include "platform/Lifetime.h"
#include "platform/Platform.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

class MeetingReadinessView;
enum class PhotoNews;

/// The one controller: owns every long-lived object, switches privacy mode and shows its state, and opens the
/// popover and the windows. Main thread only.
class AppDelegate {
public:
    /// `platform` outlives the controller.
    explicit AppDelegate(Platform::Platform& platform);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Start-up; nothing opens.
    void applicationDidFinishLaunching();

    /// Opens the popover, or closes it; for a user who has not been through it, the wizard.
    void menuOpen();
    /// Opens what `menuOpen` opens, and never closes it.
    void open();
    void menuQuit();
    void openSettings();
    /// What the shortcut does.
    void toggleModeFromHotkey();
    /// What is asked for from outside. A program that ends privacy mode by `off` is told of in a notice.
    enum class PrivacyRequest { on, off, toggle };
    void privacyRequested(PrivacyRequest request);

private:
    /// Of an app that is looked at until it is hidden.
    struct Return {
        bool wasSeen = false;
        Platform::Lifetime lifetime;
    };

    // Created on first use.
    CurtainCore::HideEngine& engine();
    SettingsModel& settingsModel();
    ReadinessCoordinator& coordinator();

    void installReadinessProviders();
    void setupPopoverAutoClose();
    void setupAutoDetection();

    void statusItemClicked(const std::optional<Platform::Event>& event);
    void togglePopover();
    std::optional<Platform::Screen> popoverScreen();
    void showStatusMenu();
    Platform::Menu statusMenu();
    void startChecks();
    void userDeparted();
    void sessionLockChanged(bool isLocked);
    void awaitReturn();
    void savePanelDidClose();
    void popoverDidClose();
    bool isInMenuBar(const Platform::Point& location) const;
    void handleOutsideClick();
    void closeUnlessPanelIsUsed();
    Platform::View makeReadinessView();

    void appAppeared(const std::string& bundleID);
    /// Posts the notice once the app, having been seen, is hidden, and none where it stays on the screen.
    void noticeOnceHidden(const std::string& bundleID, int looksLeft);
    void noticeRehidden(const std::string& bundleID);
    void handleDetection(CurtainCore::DetectionConfidence confidence);
    void undoAutomaticActivation();
    /// Where an earlier run did not end in good order.
    void resumePrivacyMode();
    /// Of a share that ended while nobody watched, nothing else would tell.
    void awaitShare();
    void endUnlessShared();
    void setAutoActivated(bool isAutomatic);
    void beginQuiet();
    void keepJournal();
    /// Returns false where it was said that it has no effect.
    bool activatePrivacyMode();
    void tellIfListWasLost();
    void deactivatePrivacyMode();
    /// To be called after privacy mode has been switched on. Returns whether it was said that it is in vain.
    bool sayIfNothingIsHidden();
    /// Once for each obstacle, and takes back what was said of one that is gone. Returns whether there is
    /// one.
    bool tellObstacle();
    void hidingAnswered();
    /// Its list of private apps changes what is hidden while privacy mode is on.
    template <class Source>
    void followPrivateApps(Source& source);
    void privateAppAdded(const std::string& bundleID);
    void privateAppRemoved(const std::string& bundleID);
    bool isTarget(const std::string& bundleID);
    void hideWhatWasAwaited();
    /// Those of them that are visible while privacy mode is on, a revealed one included.
    void hideAlso(const std::vector<std::string>& identifiers);
    void hidePrivateApps();
    void fixEverything();
    /// Keeps them from the screen, or asks the user to where the desktop does not say whether it does.
    void seeToNotifications();
    void restore();
    void undo();
    void toggleDesktop();
    void selectCamera(const std::string& cameraID);
    void copyPhoto();
    void savePhoto();
    /// In the review of that photo while it stands there, else, where it is lost, in a notice.
    void tellOfSaving(const std::shared_ptr<const Platform::Picture>& photo, PhotoNews news);
    void tellOfPhoto(PhotoNews news);

    void nameSettingsWindow();
    void languageDidChange();
    /// Says to somebody who has just started it for the first time where it is.
    void greet();
    void endGreeting();
    void tellHome();
    void showOnboardingWizard(CurtainCore::OnboardingStep startAt);
    void finishOnboarding();

    std::string currentLang() const;
    /// Whether privacy mode is on, and it is known that nothing can be hidden.
    bool isInVain();
    void updateIcon();
    /// The icon depends on it while privacy mode is on.
    void followObstacle();
    void updateToolTip();
    std::optional<Platform::Image> statusImage(const std::string& name) const;
    Platform::Image symbolImage(const std::string& name) const;
    void refreshReadiness();
    std::string appName(const std::string& bundleID) const;

    Platform::Platform& platform_;
    DesktopController desktopController_;
    DesktopChecker desktopChecker_;
    AppCatalog catalog_;
    CameraPreviewManager::Services cameraServices_;
    PhotoWriter photoWriter_;

    std::unique_ptr<Platform::StatusItem> statusItem_;
    PrivacyJournal journal_;
    SystemAppHiding hiding_;
    HidingWatch hidingWatch_;
    /// What was said of privacy mode since it was switched on.
    std::optional<Platform::HidingObstacle> toldObstacle_;
    /// That of the popover, which owns it.
    std::weak_ptr<MeetingReadinessView> readinessView_;
    std::optional<CurtainCore::HideEngine> engine_;
    WorkspaceObserver workspaceObserver_;
    CurtainCore::PreferencesStore store_;
    KeyboardShortcuts::KeyboardShortcuts shortcuts_;
    std::unique_ptr<SettingsModel> settingsModel_;
    std::shared_ptr<SettingsView> settingsView_;
    std::unique_ptr<Platform::Window> settingsWindow_;
    HotkeyManager hotkeys_;
    Platform::Subscription shortcutObserver_;
    Notifier notifier_;
    ShareMonitor shareMonitor_;
    /// Privacy mode was switched on by detection, not by the user.
    bool autoActivated_ = false;
    std::unique_ptr<ReadinessCoordinator> coordinator_;
    CameraPreviewManager cameraManager_;
    MicrophoneMonitor micMonitor_;
    std::unique_ptr<OnboardingWindowController> onboardingWC_;
    Platform::Subscription quietChanges_;
    Platform::Subscription escMonitor_;
    Platform::Subscription clickMonitor_;
    Platform::Subscription departureObserver_;
    Platform::Subscription lockObserver_;
    /// While the session is locked, when nothing live starts.
    std::optional<Platform::Lifetime> lock_;
    Platform::Subscription returnMonitor_;
    /// Whether it is known when the journal's trial is over.
    bool isTrialTimed_ = false;
    int openSavePanels_ = 0;
    /// Whether camera and microphone are off until the dialog for saving has been answered.
    bool checksRest_ = false;
    /// While the popover is open.
    Platform::Subscription liveRefresh_;
    /// While it waits for a panel.
    std::optional<Platform::Lifetime> greeting_;
    Platform::Subscription panelObserver_;
    ScreenWatcher screenWatcher_;
    QuietHold quietHold_;
    /// By bundle identifier.
    std::map<std::string, Platform::MainQueue::Seconds> lastRehideNotice_;
    /// The last of each app, by bundle identifier.
    std::map<std::string, Return> returns_;
    /// Privacy mode was switched on before the session had told of its windows: what is seen first then was
    /// there all the time, and did not come back.
    bool areWindowsAwaited_ = false;
    /// That was so when an earlier run's privacy mode was taken up, whose windows are to be hidden once more.
    bool isResumeAwaited_ = false;
    /// An earlier run's automatic privacy mode was taken up, and the share that it is for, if it goes on, has
    /// not been noticed yet.
    bool isShareAwaited_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
