#include "Curtain/AppDelegate.h"

#include "Curtain/FixEverything.h"
#include "Curtain/HidingWording.h"
#include "Curtain/MeetingReadinessView.h"
#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

namespace Curtain {
namespace {

using Platform::MainQueue;
namespace EventType = Platform::EventType;

/// An app that returns is given this long to finish coming to the front before it is hidden again.
constexpr MainQueue::Seconds rehideDelay{0.2};
/// Apps that are hiding and a desktop that changes have settled by then.
constexpr MainQueue::Seconds secondRefreshDelay{0.4};
/// What a click opens is open by then.
constexpr MainQueue::Seconds outsideClickDelay{0.12};
/// An open popover is never longer behind what nobody announces: an app that its user hides, a file that
/// comes.
constexpr MainQueue::Seconds liveInterval{1.0};
/// The wizard's window has closed by then.
constexpr MainQueue::Seconds wizardReleaseDelay{0.2};
constexpr MainQueue::Seconds rehideNoticeInterval{4.0};
/// A panel that starts with the session is there by then.
constexpr MainQueue::Seconds panelDeadline{10.0};
/// A share that goes on has been noticed by then.
constexpr MainQueue::Seconds shareNoticed{10.0};
/// Whatever taking privacy mode up brings about has happened by then.
constexpr MainQueue::Seconds resumeSettled{10.0};
/// Once as many starts have ended over it, the next one is to go well without it.
constexpr int mostFailedStarts = 2;
/// A locker that was asked to lock covers the screen by then. Until then the pointer may be under way yet.
constexpr MainQueue::Seconds lockerAppears{5.0};
/// A window manager has hidden by then what it is going to hide.
constexpr int hiddenLooks = 20;
constexpr MainQueue::Seconds hiddenLookInterval{0.1};

constexpr double statusImageSize = 18;
constexpr std::uint64_t statusItemEvents = 1U << EventType::leftMouseUp | 1U << EventType::rightMouseUp;
constexpr std::uint64_t outsideClickEvents = 1U << EventType::leftMouseDown | 1U << EventType::rightMouseDown;
constexpr std::uint64_t keyEvents = 1U << EventType::keyDown;
/// Those that only a present user brings about.
constexpr std::uint64_t presenceEvents =
    1U << EventType::keyDown | 1U << EventType::mouseMoved | 1U << EventType::leftMouseDown;

constexpr double popoverWidth = 700;
constexpr double popoverMaximumHeight = 618;
constexpr double popoverScreenMargin = 8;
constexpr Platform::Size settingsSize{440, 430};

/// The status item's image and, should it be missing, the symbol in its place.
struct StatusLook {
    const char* image;
    const char* symbol;
};
constexpr StatusLook openCurtain{"open", "eye"};
constexpr StatusLook closedCurtain{"close", "eye.slash"};
/// It must not look like a closed curtain, which promises that something is hidden.
constexpr StatusLook curtainInVain{"alert", "exclamationmark.triangle"};

PhotoNews newsOf(Platform::WriteOutcome outcome) {
    switch (outcome) {
    case Platform::WriteOutcome::written:
        return PhotoNews::saved;
    case Platform::WriteOutcome::noSpace:
        return PhotoNews::noSpace;
    case Platform::WriteOutcome::notAllowed:
        return PhotoNews::notAllowed;
    case Platform::WriteOutcome::failed:
        break;
    }
    return PhotoNews::notSaved;
}

/// Why a photo was not saved.
PlatformKey keyOf(PhotoNews news) {
    return news == PhotoNews::noSpace      ? PlatformKey::photoNotSavedNoSpace
           : news == PhotoNews::notAllowed ? PlatformKey::photoNotSavedNotAllowed
                                           : PlatformKey::photoNotSaved;
}

} // namespace

AppDelegate::AppDelegate(Platform::Platform& platform)
    : platform_(platform),
      desktopController_(*platform.processRunner),
      desktopChecker_(desktopController_, *platform.fileManager, *platform.userFolders, *platform.workQueues,
                      *platform.mainQueue),
      catalog_(*platform.workspace, *platform.fileManager, *platform.bundles, platform.applicationFolders),
      cameraServices_{*platform.captureServices, *platform.mediaAuthorization, *platform.mainQueue,
                      *platform.workQueues},
      photoWriter_(*platform.fileManager, *platform.workQueues, *platform.mainQueue),
      journal_(*platform.sessionNote),
      hiding_(*platform.workspace),
      hidingWatch_(*platform.systemVersion, *platform.mainQueue),
      workspaceObserver_(*platform.workspace),
      store_(*platform.userDefaults),
      shortcuts_(*platform.userDefaults, *platform.hotKeyService, *platform.log),
      hotkeys_(shortcuts_),
      notifier_(*platform.userNotificationCenter, *platform.application, *platform.uuids,
                *platform.mainQueue),
      shareMonitor_(*platform.screenWatcherProbe, *platform.workspace, *platform.mainQueue),
      cameraManager_(cameraServices_),
      micMonitor_({*platform.audioServices, *platform.mediaAuthorization, *platform.fileManager,
                   *platform.userFolders, *platform.mainQueue, *platform.workQueues, *platform.log}),
      screenWatcher_(*platform.screenWatcherProbe),
      quietHold_(*platform.doNotDisturb, *platform.userNotificationCenter, screenWatcher_,
                 *platform.mainQueue) {
    // Whoever loads is in the middle of something.
    store_.onDamage = lifetime_.weak([this] {
        platform_.mainQueue->async(
            lifetime_.weak([this, damage = *store_.damage()] { notifier_.notifySettingsLost(damage); }));
    });
}

AppDelegate::~AppDelegate() {
    journal_.clear();
    platform_.popover->setOnDidClose(nullptr);
    platform_.popover->close();
    // It reads objects that end here.
    platform_.popover->setContent({});
}

CurtainCore::HideEngine& AppDelegate::engine() {
    if (!engine_) {
        engine_.emplace(hiding_);
        engine_->onChange = [this] { keepJournal(); };
    }
    return *engine_;
}

SettingsModel& AppDelegate::settingsModel() {
    if (!settingsModel_) {
        settingsModel_ =
            std::make_unique<SettingsModel>(store_, *platform_.locale, *platform_.loginItem, *platform_.log);
        followPrivateApps(*settingsModel_);
    }
    return *settingsModel_;
}

ReadinessCoordinator& AppDelegate::coordinator() {
    if (!coordinator_) {
        coordinator_ = std::make_unique<ReadinessCoordinator>(store_, *platform_.workspace,
                                                              desktopController_, desktopChecker_);
        followPrivateApps(*coordinator_);
    }
    return *coordinator_;
}

void AppDelegate::applicationDidFinishLaunching() {
    const CurtainCore::PreferencesStore::Action action(store_);
    platform_.application->setActivationPolicy(Platform::ActivationPolicy::accessory);
    installReadinessProviders();
    platform_.popover->setOnDidClose(lifetime_.weak([this] { popoverDidClose(); }));
    statusItem_ = platform_.statusBar->makeStatusItem();
    statusItem_->setAction(statusItemEvents, [this](const auto& event) { statusItemClicked(event); });
    statusItem_->setSecondaryAction([this] { toggleModeFromHotkey(); });
    statusItem_->setMenu([this] { return statusMenu(); });
    updateIcon();
    setupPopoverAutoClose();
    workspaceObserver_.onAppAppeared = [this](const std::string& bundleID) { appAppeared(bundleID); };
    workspaceObserver_.start();
    hotkeys_.onToggle = [this] { toggleModeFromHotkey(); };
    hotkeys_.start();
    updateToolTip();
    shortcutObserver_ = shortcuts_.observeShortcutByNameDidChange([this](const auto&) { updateToolTip(); });
    notifier_.languageProvider = [this] { return currentLang(); };
    setupAutoDetection();
    hidingWatch_.onAnswer = [this] { hidingAnswered(); };
    hidingWatch_.isFollowed = [this] { return engine().isActive() || platform_.popover->isShown(); };
    hidingWatch_.begin();
    resumePrivacyMode();
    greet();
}

void AppDelegate::resumePrivacyMode() {
    const auto& earlier = journal_.earlier();
    if (!earlier || engine().isActive()) {
        quietHold_.end();
        return;
    }
    if (journal_.failedStarts() >= mostFailedStarts) {
        quietHold_.end();
        quietHold_.whenSeen([this] { notifier_.notifyNotResumed(); });
        return;
    }
    journal_.willTakeUp();
    platform_.appShield->cover(earlier->privacy.targets);
    engine().resume(earlier->privacy);
    setAutoActivated(earlier->wasAutomatic);
    if (autoActivated_) {
        isShareAwaited_ = true;
        awaitShare();
    }
    if (!sayIfNothingIsHidden()) {
        notifier_.notifyResumed();
    }
    if (earlier->isQuiet) {
        beginQuiet();
    } else {
        quietHold_.end();
    }
    isResumeAwaited_ = areWindowsAwaited_;
    updateIcon();
    refreshReadiness();
}

void AppDelegate::awaitShare() {
    platform_.mainQueue->asyncAfter(shareNoticed, lifetime_.weak([this] { endUnlessShared(); }));
}

void AppDelegate::endUnlessShared() {
    if (!isShareAwaited_) {
        return;
    }
    const auto isShared = screenWatcher_.fn ? screenWatcher_.fn() : false;
    if (!isShared) {
        awaitShare();
        return;
    }
    isShareAwaited_ = false;
    if (!*isShared) {
        undoAutomaticActivation();
    }
}

void AppDelegate::setAutoActivated(bool isAutomatic) {
    autoActivated_ = isAutomatic;
    keepJournal();
}

void AppDelegate::beginQuiet() {
    quietHold_.begin();
    keepJournal();
}

void AppDelegate::keepJournal() {
    if (engine().isActive()) {
        if (journal_.isOnTrial() && !std::exchange(isTrialTimed_, true)) {
            platform_.mainQueue->asyncAfter(resumeSettled, lifetime_.weak([this] {
                journal_.didTakeUp();
                keepJournal();
            }));
        }
        journal_.write({engine().state(), autoActivated_, quietHold_.isOn()});
    } else {
        journal_.clear();
    }
}

void AppDelegate::greet() {
    if (store_.load().hasOnboarded || store_.damage()) {
        return;
    }
    if (statusItem_->hasPanel()) {
        tellHome();
        return;
    }
    greeting_.emplace();
    const auto tellOnce = greeting_->weak([this] {
        endGreeting();
        tellHome();
    });
    panelObserver_ =
        statusItem_->addPanelObserver([this, tellOnce] { platform_.mainQueue->async(tellOnce); });
    platform_.mainQueue->asyncAfter(panelDeadline, tellOnce);
}

void AppDelegate::endGreeting() {
    greeting_.reset();
    panelObserver_ = {};
}

void AppDelegate::tellHome() {
    const auto shortcut = hotkeys_.shortcut();
    notifier_.notifyHome(statusItem_->hasPanel(), shortcut ? shortcut->description(*platform_.keyboard) : "");
}

void AppDelegate::menuOpen() {
    togglePopover();
}

void AppDelegate::open() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (platform_.popover->isShown()) {
        platform_.popover->show(*statusItem_);
    } else {
        togglePopover();
    }
}

void AppDelegate::menuQuit() {
    platform_.application->terminate();
}

void AppDelegate::openSettings() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (platform_.popover->isShown()) {
        platform_.popover->close();
    }
    const bool isFirst = settingsWindow_ == nullptr;
    if (isFirst) {
        settingsView_ = std::make_shared<SettingsView>(SettingsView::Services{
            settingsModel(), catalog_, shortcuts_, *platform_.captureServices, *platform_.urlOpener,
            *platform_.keyboard, *platform_.systemShortcuts, *platform_.locale, *platform_.hotKeyService,
            screenWatcher_, *statusItem_, *platform_.systemVersion, *platform_.workspace});
        QObject::connect(settingsView_.get(), &SettingsView::langChanged, settingsView_.get(),
                         std::function<void()>(lifetime_.weak([this] { languageDidChange(); })));
    }
    if (isFirst || !settingsWindow_->isVisible()) {
        settingsView_->willShow();
    } else {
        // The user is in the middle of something.
        settingsView_->refresh();
    }
    if (isFirst) {
        settingsWindow_ =
            platform_.windows->makeWindow({"qrc:/Curtain/SettingsView.qml", settingsView_}, settingsSize, {});
        settingsWindow_->center();
    }
    hidingWatch_.begin();
    nameSettingsWindow();
    settingsWindow_->makeKeyAndOrderFront();
    settingsWindow_->orderFrontRegardless();
    platform_.application->activate(true);
}

void AppDelegate::nameSettingsWindow() {
    if (settingsWindow_) {
        const auto title = PlatformWording::string(CurtainCore::LocKey::settings, currentLang());
        settingsWindow_->setTitle("Curtain — " + std::string(title));
    }
}

void AppDelegate::languageDidChange() {
    const CurtainCore::PreferencesStore::Action action(store_);
    nameSettingsWindow();
    updateToolTip();
    if (onboardingWC_) {
        onboardingWC_->viewModel()->setLang(currentLang());
    }
    if (platform_.popover->isShown()) {
        platform_.popover->setContent(makeReadinessView());
    }
}

void AppDelegate::toggleModeFromHotkey() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (engine().isActive()) {
        deactivatePrivacyMode();
    } else {
        activatePrivacyMode();
    }
    setAutoActivated(false);
    updateIcon();
    refreshReadiness();
}

void AppDelegate::privacyRequested(PrivacyRequest request) {
    const bool wasActive = engine().isActive();
    if (request == (wasActive ? PrivacyRequest::on : PrivacyRequest::off)) {
        return;
    }
    toggleModeFromHotkey();
    // The toggle is what the user's own menus and shortcuts call.
    if (request == PrivacyRequest::off) {
        quietHold_.whenSeen([this] {
            if (!engine().isActive()) {
                notifier_.notifyPrivacyModeEnded();
            }
        });
    }
}

void AppDelegate::installReadinessProviders() {
    QObject::connect(&cameraManager_, &CameraPreviewManager::findingChanged, &cameraManager_,
                     [this] { refreshReadiness(); });
    coordinator().isPrivacyModeActive = [this] { return engine().isActive(); };
    coordinator().isPrivacyModeAutomatic = [this] { return autoActivated_; };
    coordinator().isDoNotDisturbOn = [this] { return platform_.doNotDisturb->isOn(); };
    quietChanges_ = platform_.doNotDisturb->addObserver(lifetime_.weak([this] { coordinator().refresh(); }));
    coordinator().cameraReadinessProvider = [this]() -> ProviderReadiness {
        if (!store_.load().showCameraPreview) {
            return {};
        }
        const auto status = cameraManager_.status();
        // A camera that shows nothing is not ready, whatever it was when it was started.
        return {status != CameraStatus::unavailable,
                status == CameraStatus::available && !cameraManager_.interruption()};
    };
    coordinator().micReadinessProvider = [this]() -> ProviderReadiness {
        if (!store_.load().showMicrophoneCheck) {
            return {};
        }
        const auto status = platform_.mediaAuthorization->status(Platform::MediaType::audio);
        return {true, status == Platform::AuthorizationStatus::authorized};
    };
}

void AppDelegate::setupPopoverAutoClose() {
    clickMonitor_ = platform_.eventMonitors->addGlobalMonitor(
        outsideClickEvents,
        lifetime_.weak([this](const Platform::Event& /*event*/) { handleOutsideClick(); }));
    escMonitor_ = platform_.eventMonitors->addLocalMonitor(keyEvents, [this](const Platform::Event& event) {
        const bool isForPopover = event.keyCode == Platform::KeyCode::escape && platform_.popover->isShown();
        if (isForPopover) {
            platform_.popover->close();
        }
        return isForPopover;
    });
    // Nobody is there to be seen and heard.
    departureObserver_ = platform_.departures->addObserver([this] { userDeparted(); });
    lockObserver_ =
        platform_.departures->addLockObserver([this](bool isLocked) { sessionLockChanged(isLocked); });
}

void AppDelegate::setupAutoDetection() {
    if (notifier_.enabled()) {
        notifier_.becomeDelegate();
    } else {
        platform_.log->writeLine("Curtain: notificaciones desactivadas (sin bundle)");
    }
    notifier_.onUndo = [this] { undo(); };
    notifier_.onReveal = [this](const std::string& bundleID) {
        const CurtainCore::PreferencesStore::Action action(store_);
        returns_.erase(bundleID);
        engine().reveal(bundleID);
        platform_.appShield->cover(engine().targets());
        notifier_.withdrawRehidden(bundleID);
        updateIcon();
        refreshReadiness();
    };
    notifier_.onOpen = [this] { open(); };
    const auto preferences = store_.load();
    if (preferences.autoDetectEnabled) {
        shareMonitor_.triggerBundleIDs = {preferences.triggerBundleIDs.begin(),
                                          preferences.triggerBundleIDs.end()};
        shareMonitor_.onConfidenceChanged = [this](auto confidence) { handleDetection(confidence); };
        shareMonitor_.start();
    }
}

void AppDelegate::statusItemClicked(const std::optional<Platform::Event>& event) {
    const bool isForMenu = event && (event->type == EventType::rightMouseUp ||
                                     (event->modifierFlags & Platform::EventModifier::control) != 0);
    if (isForMenu) {
        showStatusMenu();
    } else {
        togglePopover();
    }
}

void AppDelegate::togglePopover() {
    const CurtainCore::PreferencesStore::Action action(store_);
    auto& popover = *platform_.popover;
    if (popover.isShown()) {
        popover.close();
        return;
    }
    const auto preferences = store_.load();
    if (!preferences.hasOnboarded) {
        showOnboardingWizard(CurtainCore::OnboardingStep::welcome());
        return;
    }
    startChecks();
    followObstacle();
    // Who opens the popover has found it, and the notice may stand over it.
    notifier_.withdrawHome();
    coordinator().refresh();
    popover.setContent(makeReadinessView());
    const auto screen = popoverScreen();
    const double height =
        screen ? std::min(popoverMaximumHeight, screen->visibleFrame.height - popoverScreenMargin)
               : popoverMaximumHeight;
    popover.setContentSize({popoverWidth, height});
    popover.show(*statusItem_);
    if (!popover.isShown()) {
        // Nothing would ever close, and so end what it shows.
        popoverDidClose();
    } else {
        liveRefresh_ = platform_.mainQueue->repeating(liveInterval, [this] { coordinator().refresh(); });
    }
    hidingWatch_.begin();
}

void AppDelegate::startChecks() {
    if (lock_) {
        // Whatever asks for it, nobody is there to see it.
        return;
    }
    const auto preferences = store_.load();
    if (preferences.showCameraPreview) {
        cameraManager_.start(preferences.selectedCameraID);
    } else {
        cameraManager_.stop();
    }
    if (preferences.showMicrophoneCheck) {
        micMonitor_.start();
    } else {
        micMonitor_.stop();
    }
}

void AppDelegate::userDeparted() {
    if (openSavePanels_ == 0 || !platform_.popover->isShown()) {
        platform_.popover->close();
        return;
    }
    // The photo is still needed where the dialog is cancelled.
    checksRest_ = true;
    cameraManager_.stop();
    micMonitor_.stop();
}

void AppDelegate::sessionLockChanged(bool isLocked) {
    if (isLocked) {
        lock_.emplace();
        returnMonitor_ = {};
        platform_.mainQueue->asyncAfter(lockerAppears, lock_->weak([this] { awaitReturn(); }));
        if (onboardingWC_) {
            onboardingWC_->viewModel()->sessionDidLock();
        }
        return;
    }
    const bool wasLocked = lock_.has_value();
    lock_.reset();
    returnMonitor_ = {};
    if (onboardingWC_) {
        onboardingWC_->viewModel()->sessionDidUnlock();
    }
    if (wasLocked && platform_.popover->isShown() && openSavePanels_ == 0) {
        startChecks();
    }
}

/// Not every locker tells of its end, and behind one the program's windows get no input.
void AppDelegate::awaitReturn() {
    returnMonitor_ = platform_.eventMonitors->addLocalMonitor(presenceEvents, [this](const auto& /*event*/) {
        // It cannot go while it is told.
        platform_.mainQueue->async(lock_->weak([this] { sessionLockChanged(false); }));
        return false;
    });
}

void AppDelegate::savePanelDidClose() {
    --openSavePanels_;
    if (openSavePanels_ == 0 && std::exchange(checksRest_, false)) {
        // Whoever answers it is there again.
        startChecks();
    }
}

/// The one that holds the status item, where its place is known.
std::optional<Platform::Screen> AppDelegate::popoverScreen() {
    if (const auto frame = statusItem_->frame()) {
        if (const auto screen = platform_.screens->at({frame->x, frame->y})) {
            return screen;
        }
    }
    return platform_.screens->main();
}

void AppDelegate::showStatusMenu() {
    if (platform_.popover->isShown()) {
        platform_.popover->close();
    }
    statusItem_->popUpMenu(statusMenu());
}

Platform::Menu AppDelegate::statusMenu() {
    const CurtainCore::PreferencesStore::Action action(store_);
    using CurtainCore::LocKey;
    const auto lang = currentLang();
    const auto text = [&](LocKey key) { return std::string(PlatformWording::string(key, lang)); };
    const Platform::MenuItem separator;
    return {{{"Curtain " + platform_.resources->shortVersion().value_or("?"), nullptr},
             separator,
             {text(LocKey::open), lifetime_.weak([this] { menuOpen(); })},
             {text(LocKey::settings), lifetime_.weak([this] { openSettings(); })},
             separator,
             {text(LocKey::quit), lifetime_.weak([this] { menuQuit(); })}},
            lang,
            CurtainCore::Localizer::isRightToLeft(lang),
            "qrc:/Curtain/StatusMenu.qml"};
}

void AppDelegate::popoverDidClose() {
    liveRefresh_ = {};
    checksRest_ = false;
    cameraManager_.stop();
    micMonitor_.stop();
    cameraManager_.clearCapturedPhoto();
    if (const auto view = readinessView_.lock()) {
        view->rest();
    }
}

/// Whatever is no part of the visible frame belongs to the menu bar, the status item itself included.
bool AppDelegate::isInMenuBar(const Platform::Point& location) const {
    const auto screens = platform_.screens->screens();
    const auto found =
        std::ranges::find_if(screens, [&](const auto& screen) { return screen.frame.contains(location); });
    const auto screen = found != screens.end() ? std::optional(*found) : platform_.screens->main();
    return screen && !screen->visibleFrame.contains(location);
}

void AppDelegate::handleOutsideClick() {
    // A click beside the dialog is not meant for what lies behind it.
    if (!platform_.popover->isShown() || openSavePanels_ > 0) {
        return;
    }
    if (const auto location = platform_.screens->mouseLocation(); location && isInMenuBar(*location)) {
        return;
    }
    platform_.mainQueue->asyncAfter(outsideClickDelay, lifetime_.weak([this] { closeUnlessPanelIsUsed(); }));
}

void AppDelegate::closeUnlessPanelIsUsed() {
    if (!platform_.popover->isShown()) {
        return;
    }
    auto owner = platform_.menuBar->owningApplication();
    if (!owner) {
        owner = platform_.menuBar->frontmostApplication();
    }
    if (owner != Platform::MenuBar::controlCenter) {
        platform_.popover->close();
    }
}

Platform::View AppDelegate::makeReadinessView() {
    MeetingReadinessActions actions{
        .onFixEverything = lifetime_.weak([this] { fixEverything(); }),
        .onHidePrivateApps = lifetime_.weak([this] { hidePrivateApps(); }),
        .onRestore = lifetime_.weak([this] { restore(); }),
        .onUndo = lifetime_.weak([this] { undo(); }),
        .onToggleDesktop = lifetime_.weak([this] { toggleDesktop(); }),
        .onSelectCamera = lifetime_.weak([this](const std::string& cameraID) { selectCamera(cameraID); }),
        .onTakePhoto = lifetime_.weak([this] { cameraManager_.capture(); }),
        .onCopyPhoto = lifetime_.weak([this] { copyPhoto(); }),
        .onSavePhoto = lifetime_.weak([this] { savePhoto(); }),
        .onOpenSettings = lifetime_.weak([this] { openSettings(); }),
        .onQuit = lifetime_.weak([this] { menuQuit(); }),
    };
    const MeetingReadinessView::Services services{coordinator(),
                                                  cameraManager_,
                                                  micMonitor_,
                                                  store_,
                                                  *platform_.captureServices,
                                                  *platform_.workspace,
                                                  catalog_,
                                                  *platform_.urlOpener,
                                                  *platform_.locale,
                                                  *platform_.systemVersion};
    const auto view = std::make_shared<MeetingReadinessView>(services, currentLang(), std::move(actions));
    readinessView_ = view;
    return {"qrc:/Curtain/MeetingReadinessView.qml", view};
}

void AppDelegate::appAppeared(const std::string& bundleID) {
    if (platform_.popover->isShown()) {
        coordinator().refresh();
    }
    if (areWindowsAwaited_ && isTarget(bundleID)) {
        hideAlso({bundleID});
        return;
    }
    platform_.mainQueue->asyncAfter(rehideDelay, lifetime_.weak([this, bundleID] {
        const bool isSeen = engine().isActive() && !hiding_.isHidden(bundleID).value_or(true);
        if (engine().reapply(bundleID)) {
            // One return may be announced more than once, at last when the app is on its way out again.
            const auto underWay = returns_.find(bundleID);
            const bool wasSeen = isSeen || (underWay != returns_.end() && underWay->second.wasSeen);
            returns_.insert_or_assign(bundleID, Return{wasSeen, {}});
            noticeOnceHidden(bundleID, hiddenLooks);
        }
    }));
}

void AppDelegate::noticeOnceHidden(const std::string& bundleID, int looksLeft) {
    const auto isHidden = hiding_.isHidden(bundleID);
    if (!engine().isActive() || !isHidden || platform_.systemVersion->hidingObstacle() ||
        !platform_.workspace->knowsEveryWindow()) {
        returns_.erase(bundleID);
        return;
    }
    auto& lastReturn = returns_[bundleID];
    if (lastReturn.wasSeen && *isHidden) {
        returns_.erase(bundleID);
        noticeRehidden(bundleID);
    } else if (looksLeft > 0) {
        lastReturn.wasSeen |= !*isHidden;
        platform_.mainQueue->asyncAfter(hiddenLookInterval,
                                        lastReturn.lifetime.weak([this, bundleID, looksLeft] {
                                            noticeOnceHidden(bundleID, looksLeft - 1);
                                        }));
    } else {
        returns_.erase(bundleID);
    }
}

void AppDelegate::noticeRehidden(const std::string& bundleID) {
    // A notice names the app, to whoever may be watching.
    if (screenWatcher_.fn && screenWatcher_.fn().value_or(true)) {
        return;
    }
    const auto now = platform_.mainQueue->now();
    const auto last = lastRehideNotice_.find(bundleID);
    if (last != lastRehideNotice_.end() && now - last->second < rehideNoticeInterval) {
        return;
    }
    lastRehideNotice_[bundleID] = now;
    notifier_.notifyRehidden(appName(bundleID), bundleID);
}

void AppDelegate::handleDetection(CurtainCore::DetectionConfidence confidence) {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (confidence != CurtainCore::DetectionConfidence::high) {
        if (!isShareAwaited_) {
            undoAutomaticActivation();
        }
        return;
    }
    isShareAwaited_ = false;
    if (engine().isActive()) {
        return;
    }
    if (store_.load().autoDetectMode == CurtainCore::AutoDetectMode::promptOnly) {
        notifier_.notifyPrompt();
        return;
    }
    const bool hasEffect = activatePrivacyMode();
    setAutoActivated(true);
    updateIcon();
    refreshReadiness();
    if (hasEffect) {
        notifier_.notifyActivated();
    }
    if (FixEverything::needsQuiet(store_.load())) {
        beginQuiet();
    }
}

void AppDelegate::undoAutomaticActivation() {
    if (autoActivated_) {
        undo();
    }
}

bool AppDelegate::activatePrivacyMode() {
    notifier_.withdrawPrivacyModeEnded();
    const auto targets = store_.load().targetBundleIDs();
    platform_.appShield->cover(targets);
    engine().activate(targets);
    tellIfListWasLost();
    return !sayIfNothingIsHidden();
}

void AppDelegate::tellIfListWasLost() {
    if (store_.load().targetApps.empty() && store_.damage()) {
        notifier_.notifyNothingHidden();
    }
}

void AppDelegate::deactivatePrivacyMode() {
    returns_.clear();
    areWindowsAwaited_ = isResumeAwaited_ = false;
    platform_.appShield->cover({});
    engine().deactivate();
    notifier_.withdrawPrivacyNotices();
    quietHold_.end();
}

bool AppDelegate::sayIfNothingIsHidden() {
    toldObstacle_.reset();
    hidingWatch_.begin();
    areWindowsAwaited_ = hidingWatch_.obstacle() == Platform::HidingObstacle::notKnownYet &&
                         !platform_.workspace->knowsEveryWindow();
    return tellObstacle();
}

bool AppDelegate::tellObstacle() {
    const auto obstacle = hidingWatch_.obstacle();
    if (obstacle == Platform::HidingObstacle::notKnownYet) {
        return false;
    }
    if (std::exchange(toldObstacle_, obstacle) == obstacle) {
        return obstacle.has_value();
    }
    if (obstacle) {
        notifier_.notifyPrivacyModeInVain(std::string(HidingWording::reason(*obstacle, currentLang())));
    } else {
        notifier_.withdrawPrivacyModeInVain();
    }
    return obstacle.has_value();
}

void AppDelegate::hidingAnswered() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (engine().isActive()) {
        tellObstacle();
        hideWhatWasAwaited();
    }
    // What hides the apps may also be what hears the shortcut.
    updateIcon();
    coordinator().refresh();
    if (settingsView_) {
        settingsView_->askSession();
    }
}

void AppDelegate::hideWhatWasAwaited() {
    const bool areThere = hidingWatch_.obstacle() != Platform::HidingObstacle::notKnownYet;
    if (areThere && std::exchange(areWindowsAwaited_, false)) {
        if (std::exchange(isResumeAwaited_, false)) {
            engine().hideAgain();
        } else {
            hideAlso(std::vector(engine().targets()));
        }
    }
}

template <class Source>
void AppDelegate::followPrivateApps(Source& source) {
    QObject::connect(&source, &Source::privateAppAdded, &source,
                     [this](const std::string& bundleID) { privateAppAdded(bundleID); });
    QObject::connect(&source, &Source::privateAppRemoved, &source,
                     [this](const std::string& bundleID) { privateAppRemoved(bundleID); });
}

void AppDelegate::privateAppAdded(const std::string& bundleID) {
    if (!engine().isActive()) {
        return;
    }
    hideAlso({bundleID});
    refreshReadiness();
}

void AppDelegate::privateAppRemoved(const std::string& bundleID) {
    if (!engine().isActive()) {
        return;
    }
    returns_.erase(bundleID);
    engine().removeTarget(bundleID);
    platform_.appShield->cover(engine().targets());
    notifier_.withdrawRehidden(bundleID);
    refreshReadiness();
}

bool AppDelegate::isTarget(const std::string& bundleID) {
    return std::ranges::find(engine().targets(), bundleID) != engine().targets().end();
}

void AppDelegate::hideAlso(const std::vector<std::string>& identifiers) {
    auto covered = engine().targets();
    std::ranges::copy_if(identifiers, std::back_inserter(covered),
                         [this](const auto& identifier) { return !isTarget(identifier); });
    platform_.appShield->cover(covered);
    for (const auto& identifier : identifiers) {
        engine().addTarget(identifier);
    }
}

void AppDelegate::hidePrivateApps() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (engine().isActive()) {
        hideAlso(store_.load().targetBundleIDs());
    } else {
        activatePrivacyMode();
    }
    updateIcon();
    refreshReadiness();
}

void AppDelegate::fixEverything() {
    const CurtainCore::PreferencesStore::Action action(store_);
    const bool wasActive = engine().isActive();
    if (wasActive) {
        hideAlso(store_.load().targetBundleIDs());
    } else {
        notifier_.withdrawPrivacyModeEnded();
        platform_.appShield->cover(store_.load().targetBundleIDs());
    }
    const bool notificationsNeedAttention = FixEverything::run(engine(), store_, desktopController_);
    if (!wasActive) {
        tellIfListWasLost();
        sayIfNothingIsHidden();
    }
    updateIcon();
    refreshReadiness();
    if (notificationsNeedAttention) {
        seeToNotifications();
    }
}

void AppDelegate::seeToNotifications() {
    if (platform_.doNotDisturb->isOn() != true) {
        notifier_.notifyPrompt();
    }
    beginQuiet();
}

void AppDelegate::restore() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (desktopController_.iconsHidden()) {
        desktopController_.setIconsHidden(false);
    }
    if (engine().isActive()) {
        deactivatePrivacyMode();
    }
    setAutoActivated(false);
    updateIcon();
    refreshReadiness();
}

void AppDelegate::undo() {
    const CurtainCore::PreferencesStore::Action action(store_);
    if (engine().isActive()) {
        deactivatePrivacyMode();
        setAutoActivated(false);
        updateIcon();
        refreshReadiness();
    }
}

void AppDelegate::toggleDesktop() {
    desktopController_.setIconsHidden(!desktopController_.iconsHidden());
    coordinator().refresh();
}

void AppDelegate::selectCamera(const std::string& cameraID) {
    const CurtainCore::PreferencesStore::Action action(store_);
    auto preferences = store_.load();
    preferences.selectedCameraID = cameraID;
    store_.save(preferences);
    if (!lock_) {
        cameraManager_.start(cameraID);
    }
}

void AppDelegate::copyPhoto() {
    const auto& data = cameraManager_.capturedData();
    if (data && cameraManager_.capturedPhoto()) {
        platform_.pasteboard->clearContents();
        const bool isCopied = platform_.pasteboard->writeImage(*data);
        tellOfPhoto(isCopied ? PhotoNews::copied : PhotoNews::notCopied);
    }
}

void AppDelegate::savePhoto() {
    const auto data = cameraManager_.capturedData();
    if (!data) {
        return;
    }
    platform_.application->activate(true);
    const auto name = "Curtain " + platform_.wallClock->localTimestamp(platform_.wallClock->now()) + ".jpg";
    const auto lang = currentLang();
    const auto text = [&](auto key) { return std::string(PlatformWording::string(key, lang)); };
    ++openSavePanels_;
    auto tell =
        lifetime_.weak([this, photo = std::weak_ptr(cameraManager_.capturedPhoto())](
                           Platform::WriteOutcome outcome) { tellOfSaving(photo.lock(), newsOf(outcome)); });
    platform_.savePanel->open(
        {name,
         platform_.userFolders->pictures(),
         "image/jpeg",
         text(CurtainCore::LocKey::saveFile),
         {"qrc:/Curtain/SavePanel.qml", text(CurtainCore::LocKey::cancel), text(PlatformKey::nameInUse), lang,
          CurtainCore::Localizer::isRightToLeft(lang)}},
        lifetime_.weak([this, data = *data, tell = std::move(tell)](const std::optional<std::string>& path) {
            savePanelDidClose();
            if (path) {
                photoWriter_.write(data, *path, tell);
            }
        }));
}

void AppDelegate::tellOfSaving(const std::shared_ptr<const Platform::Picture>& photo, PhotoNews news) {
    if (photo && photo == cameraManager_.capturedPhoto()) {
        tellOfPhoto(news);
    } else if (news != PhotoNews::saved) {
        // Whoever has put the photo away takes it for saved.
        notifier_.notifyPhotoNotSaved(keyOf(news));
    }
}

void AppDelegate::tellOfPhoto(PhotoNews news) {
    if (const auto view = readinessView_.lock()) {
        view->tellOfPhoto(news);
    }
}

void AppDelegate::showOnboardingWizard(CurtainCore::OnboardingStep startAt) {
    if (onboardingWC_ && onboardingWC_->isOver()) {
        // What stood in the way then need not do so now.
        onboardingWC_.reset();
    }
    if (!onboardingWC_) {
        const OnboardingViewModel::Services services{
            cameraManager_,
            micMonitor_,
            desktopChecker_,
            CompatibilityProbe({*platform_.systemVersion, *platform_.captureServices,
                                *platform_.audioServices, *platform_.workspace}),
            *platform_.mediaAuthorization,
            cameraServices_,
            *platform_.urlOpener};
        auto viewModel = std::make_shared<OnboardingViewModel>(services, currentLang(), startAt);
        viewModel->onFinish = lifetime_.weak([this] { finishOnboarding(); });
        if (lock_) {
            viewModel->sessionDidLock();
        }
        onboardingWC_ = std::make_unique<OnboardingWindowController>(
            *platform_.windows, *platform_.application, std::move(viewModel));
    }
    endGreeting();
    notifier_.withdrawHome();
    // It may have been another when the wizard was closed half-way.
    onboardingWC_->viewModel()->setLang(currentLang());
    onboardingWC_->show();
}

void AppDelegate::finishOnboarding() {
    const CurtainCore::PreferencesStore::Action action(store_);
    auto preferences = store_.load();
    preferences.hasOnboarded = true;
    store_.save(preferences);
    if (notifier_.enabled()) {
        notifier_.requestAuthorization([] {});
    }
    if (onboardingWC_) {
        onboardingWC_->close();
    }
    tellHome();
    coordinator().refresh();
    platform_.mainQueue->asyncAfter(wizardReleaseDelay, lifetime_.weak([this] { onboardingWC_.reset(); }));
}

std::string AppDelegate::currentLang() const {
    const auto system = platform_.locale->preferredLanguageCode();
    return std::string(CurtainCore::Localizer::resolve(store_.load().language, system));
}

void AppDelegate::updateIcon() {
    const auto& look = !engine().isActive() ? openCurtain : isInVain() ? curtainInVain : closedCurtain;
    const auto image = statusImage(look.image);
    statusItem_->setImage(image ? *image : symbolImage(look.symbol));
    updateToolTip();
}

void AppDelegate::followObstacle() {
    if (engine().isActive()) {
        updateIcon();
    }
}

bool AppDelegate::isInVain() {
    return engine().isActive() && hidingWatch_.isHidingImpossible();
}

void AppDelegate::updateToolTip() {
    const auto lang = currentLang();
    auto text = PlatformWording::opening("Curtain", lang);
    const auto add = [&](std::string_view words) { text.append(" — ").append(words); };
    if (isInVain()) {
        add(PlatformWording::string(PlatformKey::privacyModeInVain, lang));
        add(HidingWording::reason(*hidingWatch_.obstacle(), lang));
    } else {
        add(engine().isActive() ? PlatformWording::string(CurtainCore::LocKey::privacyOnTitle, lang)
                                : PlatformWording::string(PlatformKey::privacyModeEndedTitle, lang));
        if (const auto shortcut = hotkeys_.shortcut();
            shortcut && platform_.hotKeyService->reach() == Platform::HotKeyReach::everywhere) {
            text.append(" (").append(shortcut->description(*platform_.keyboard)).append(")");
        }
        if (engine().isActive() && autoActivated_) {
            add(PlatformWording::string(CurtainCore::LocKey::privacyOnBody, lang));
        }
    }
    statusItem_->setToolTip(text);
}

std::optional<Platform::Image> AppDelegate::statusImage(const std::string& name) const {
    const auto path = platform_.resources->pathForResource(name, "pdf");
    if (!path) {
        return std::nullopt;
    }
    return Platform::Image{*path, statusImageSize, statusImageSize, true, {}};
}

Platform::Image AppDelegate::symbolImage(const std::string& name) const {
    return {platform_.resources->pathForSystemSymbol(name).value_or(std::string{}), 0, 0, true, "Curtain"};
}

void AppDelegate::refreshReadiness() {
    coordinator().refresh();
    platform_.mainQueue->asyncAfter(secondRefreshDelay, lifetime_.weak([this] { coordinator().refresh(); }));
}

std::string AppDelegate::appName(const std::string& bundleID) const {
    const auto instances = platform_.workspace->runningApplicationsWithBundleIdentifier(bundleID);
    if (!instances.empty()) {
        if (const auto name = instances.front()->localizedName()) {
            return *name;
        }
    }
    const auto targets = store_.load().targetApps;
    const auto target =
        std::ranges::find_if(targets, [&](const auto& candidate) { return candidate.bundleID == bundleID; });
    return target != targets.end() ? target->displayName : bundleID;
}

} // namespace Curtain
