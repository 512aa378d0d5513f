#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/CameraPreviewManager.h"
#include "Curtain/DesktopChecker.h"
#include "Curtain/DesktopController.h"
#include "Curtain/HidingWatch.h"
#include "Curtain/HotkeyManager.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/Notifier.h"
#include "Curtain/OnboardingWindowController.h"
#include "Curtain/PhotoWriter.h"
#include "Curtain/ReadinessCoordinator.h"
#include "Curtain/ScreenWatcher.h"
#include "Curtain/SettingsModel.h"
#include "Curtain/SettingsWindowController.h"
#include "Curtain/UserLanguage.h"
#include "Curtain/WorkspaceObserver.h"
#include "Curtain/panel/HomeNotice.h"
#include "Curtain/panel/StatusIcon.h"
#include "Curtain/popover/LiveChecks.h"
#include "Curtain/popover/LockWatch.h"
#include "Curtain/popover/PhotoExport.h"
#include "Curtain/popover/PopoverDismissal.h"
#include "Curtain/popover/ReadinessPopover.h"
#include "Curtain/privacy/PrivacyMode.h"
#include "Curtain/privacy/ShareResponse.h"
#include "core/PreferencesStore.h"
#include "hotkeys/KeyboardShortcuts.h"
#include "platform/Lifetime.h"
#include "platform/Platform.h"

#include <memory>
#include <optional>
#include <string>

namespace Curtain {

class MeetingReadinessView;

/// The one controller: owns every long-lived object, and hands what happens to one of them to the others that
/// it concerns. Main thread only.
class AppDelegate {
public:
    /// What is asked for from outside. A program that ends privacy mode by `off` is told of in a notice.
    enum class PrivacyRequest { on, off, toggle };

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
    /// Ends and starts anew; not while privacy mode is on, nor while notices are still held back after it.
    void restart();
    void openSettings();
    /// What the shortcut does.
    void toggleModeFromHotkey();
    void privacyRequested(PrivacyRequest request);

private:
    /// Nothing happens yet.
    void connectParts();
    void installReadinessProviders();
    void setupStatusItem();
    void setupPopoverAutoClose();
    void setupShortcut();
    void setupAutoDetection();
    void greet();

    void statusItemClicked(const std::optional<Platform::Event>& event);
    void showStatusMenu();
    Platform::Menu statusMenu();

    void togglePopover();
    std::shared_ptr<MeetingReadinessView> makeReadinessView();
    void userDeparted();
    void sessionDidLock();
    void sessionDidUnlock(bool wasLocked);
    void selectCamera(const std::string& cameraID);
    void toggleDesktop();
    void restore();

    std::shared_ptr<SettingsView> makeSettingsView();
    void languageDidChange();

    void appAppeared(const std::string& bundleID);
    void hidingAnswered();
    /// Its list of private apps changes what is hidden while privacy mode is on.
    template <class Source>
    void followPrivateApps(Source& source);
    void privateAppAdded(const std::string& bundleID);
    void privateAppRemoved(const std::string& bundleID);
    void privacyModeDidChange();
    void refreshReadiness();

    void showOnboardingWizard(CurtainCore::OnboardingStep startAt);
    std::shared_ptr<OnboardingViewModel> makeOnboardingModel(CurtainCore::OnboardingStep startAt);
    void finishOnboarding();

    // Later members use earlier ones.
    Platform::Platform& platform_;
    CurtainCore::PreferencesStore store_;
    UserLanguage language_;
    DesktopController desktopController_;
    DesktopChecker desktopChecker_;
    AppCatalog catalog_;
    CameraPreviewManager::Services cameraServices_;
    PhotoWriter photoWriter_;
    /// From the launch on.
    std::unique_ptr<Platform::StatusItem> statusItem_;
    HidingWatch hidingWatch_;
    WorkspaceObserver workspaceObserver_;
    KeyboardShortcuts::KeyboardShortcuts shortcuts_;
    HotkeyManager hotkeys_;
    Notifier notifier_;
    ScreenWatcher screenWatcher_;
    ReadinessCoordinator coordinator_;
    CameraPreviewManager cameraManager_;
    MicrophoneMonitor micMonitor_;
    PrivacyMode privacy_;
    ShareResponse shareResponse_;
    LockWatch lock_;
    LiveChecks checks_;
    PhotoExport photoExport_;
    ReadinessPopover popover_;
    PopoverDismissal dismissal_;
    /// From the first opening of the settings on.
    std::unique_ptr<SettingsModel> settingsModel_;
    SettingsWindowController settings_;
    // From the launch on.
    std::optional<StatusIcon> icon_;
    std::optional<HomeNotice> home_;
    std::unique_ptr<OnboardingWindowController> onboardingWC_;
    Platform::Subscription shortcutObserver_;
    Platform::Subscription quietChanges_;
    Platform::Subscription departureObserver_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
