#include "Curtain/AppDelegate.h"

#include "Curtain/CompatibilityProbe.h"
#include "Curtain/MeetingReadinessView.h"
#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace Curtain {
namespace {

using Action = CurtainCore::PreferencesStore::Action;
using Platform::MainQueue;
namespace EventType = Platform::EventType;

/// Apps that are hiding and a desktop that changes have settled by then.
constexpr MainQueue::Seconds secondRefreshDelay{0.4};
/// The wizard's window has closed by then.
constexpr MainQueue::Seconds wizardReleaseDelay{0.2};

constexpr std::uint64_t statusItemEvents = 1U << EventType::leftMouseUp | 1U << EventType::rightMouseUp;

} // namespace

AppDelegate::AppDelegate(Platform::Platform& platform)
    : platform_(platform),
      store_(*platform.userDefaults),
      language_(store_, *platform.locale),
      desktopController_(*platform.processRunner),
      desktopChecker_(desktopController_, *platform.fileManager, *platform.userFolders, *platform.workQueues,
                      *platform.mainQueue),
      catalog_(*platform.workspace, *platform.fileManager, *platform.bundles, platform.applicationFolders),
      cameraServices_{*platform.captureServices, *platform.mediaAuthorization, *platform.mainQueue,
                      *platform.workQueues},
      photoWriter_(*platform.fileManager, *platform.workQueues, *platform.mainQueue),
      hidingWatch_(*platform.systemVersion, *platform.mainQueue),
      workspaceObserver_(*platform.workspace),
      shortcuts_(*platform.userDefaults, *platform.hotKeyService, *platform.log),
      hotkeys_(shortcuts_),
      notifier_(*platform.userNotificationCenter, *platform.application, *platform.uuids,
                *platform.mainQueue),
      screenWatcher_(*platform.screenWatcherProbe),
      coordinator_(store_, *platform.workspace, desktopController_, desktopChecker_),
      cameraManager_(cameraServices_),
      micMonitor_({*platform.audioServices, *platform.mediaAuthorization, *platform.fileManager,
                   *platform.userFolders, *platform.mainQueue, *platform.workQueues, *platform.log}),
      privacy_({store_, desktopController_, screenWatcher_, hidingWatch_, notifier_, language_,
                *platform.workspace, *platform.appShield, *platform.sessionNote, *platform.systemVersion,
                *platform.doNotDisturb, *platform.userNotificationCenter, *platform.mainQueue}),
      shareResponse_({privacy_, store_, notifier_, screenWatcher_, *platform.screenWatcherProbe,
                      *platform.workspace, *platform.mainQueue}),
      lock_(*platform.departures, *platform.eventMonitors, *platform.mainQueue),
      checks_({store_, cameraManager_, micMonitor_, *platform.mediaAuthorization, lock_}),
      photoExport_({cameraManager_, photoWriter_, notifier_, language_, *platform.pasteboard,
                    *platform.savePanel, *platform.userFolders, *platform.wallClock, *platform.application}),
      popover_({*platform.popover, *platform.screens, *platform.mainQueue, coordinator_, checks_}),
      dismissal_({*platform.popover, *platform.eventMonitors, *platform.screens, *platform.menuBar,
                  *platform.mainQueue}),
      settings_(*platform.windows, language_) {
    // Whoever loads is in the middle of something.
    store_.onDamage = lifetime_.weak([this] {
        platform_.mainQueue->async(
            lifetime_.weak([this, damage = *store_.damage()] { notifier_.notifySettingsLost(damage); }));
    });
}

AppDelegate::~AppDelegate() {
    privacy_.leaveNothingToResume();
}

void AppDelegate::applicationDidFinishLaunching() {
    const Action action(store_);
    platform_.application->setActivationPolicy(Platform::ActivationPolicy::accessory);
    connectParts();
    installReadinessProviders();
    popover_.start();
    setupStatusItem();
    setupPopoverAutoClose();
    workspaceObserver_.onAppAppeared = [this](const std::string& bundleID) { appAppeared(bundleID); };
    workspaceObserver_.start();
    setupShortcut();
    setupAutoDetection();
    hidingWatch_.onAnswer = [this] { hidingAnswered(); };
    hidingWatch_.isFollowed = [this] { return privacy_.isOn() || popover_.isShown(); };
    hidingWatch_.begin();
    if (privacy_.resume() && privacy_.isAutomatic()) {
        shareResponse_.awaitShare();
    }
    greet();
}

void AppDelegate::connectParts() {
    privacy_.onChange = [this] { privacyModeDidChange(); };
    followPrivateApps(coordinator_);
    popover_.makeView = [this] { return makeReadinessView(); };
    photoExport_.onNews = [this](PhotoNews news) { popover_.tellOfPhoto(news); };
    photoExport_.onPanelsClosed = [this] { checks_.endRest(); };
    dismissal_.isDialogOpen = [this] { return photoExport_.isPanelOpen(); };
    lock_.onLock = [this] { sessionDidLock(); };
    lock_.onUnlock = [this](bool wasLocked) { sessionDidUnlock(wasLocked); };
    settings_.makeView = [this] { return makeSettingsView(); };
}

void AppDelegate::installReadinessProviders() {
    QObject::connect(&cameraManager_, &CameraPreviewManager::findingChanged, &cameraManager_,
                     [this] { refreshReadiness(); });
    coordinator_.isPrivacyModeActive = [this] { return privacy_.isOn(); };
    coordinator_.isPrivacyModeAutomatic = [this] { return privacy_.isAutomatic(); };
    coordinator_.isDoNotDisturbOn = [this] { return platform_.doNotDisturb->isOn(); };
    quietChanges_ = platform_.doNotDisturb->addObserver(lifetime_.weak([this] { coordinator_.refresh(); }));
    coordinator_.cameraReadinessProvider = [this] { return checks_.cameraReadiness(); };
    coordinator_.micReadinessProvider = [this] { return checks_.microphoneReadiness(); };
}

void AppDelegate::setupStatusItem() {
    statusItem_ = platform_.statusBar->makeStatusItem();
    icon_.emplace(StatusIcon::Services{*statusItem_, privacy_, hidingWatch_, hotkeys_, language_,
                                       *platform_.resources, *platform_.hotKeyService, *platform_.keyboard});
    home_.emplace(
        HomeNotice::Services{*statusItem_, notifier_, hotkeys_, *platform_.keyboard, *platform_.mainQueue});
    statusItem_->setAction(statusItemEvents, [this](const auto& event) { statusItemClicked(event); });
    statusItem_->setSecondaryAction([this] { toggleModeFromHotkey(); });
    statusItem_->setMenu([this] { return statusMenu(); });
    icon_->update();
}

void AppDelegate::setupPopoverAutoClose() {
    dismissal_.start();
    // Nobody is there to be seen and heard.
    departureObserver_ = platform_.departures->addObserver([this] { userDeparted(); });
    lock_.start();
}

void AppDelegate::setupShortcut() {
    hotkeys_.onToggle = [this] { toggleModeFromHotkey(); };
    hotkeys_.start();
    icon_->updateToolTip();
    shortcutObserver_ =
        shortcuts_.observeShortcutByNameDidChange([this](const auto&) { icon_->updateToolTip(); });
}

void AppDelegate::setupAutoDetection() {
    notifier_.languageProvider = [this] { return language_.code(); };
    if (notifier_.enabled()) {
        notifier_.becomeDelegate();
    } else {
        platform_.log->writeLine("Curtain: notificaciones desactivadas (sin bundle)");
    }
    notifier_.onUndo = [this] { privacy_.undo(); };
    notifier_.onReveal = [this](const std::string& bundleID) { privacy_.reveal(bundleID); };
    notifier_.onOpen = [this] { open(); };
    shareResponse_.start();
}

void AppDelegate::greet() {
    if (!store_.load().hasOnboarded && !store_.damage()) {
        home_->tellWithPanel();
    }
}

void AppDelegate::menuOpen() {
    togglePopover();
}

void AppDelegate::open() {
    const Action action(store_);
    if (popover_.isShown()) {
        popover_.bringForward(*statusItem_);
    } else {
        togglePopover();
    }
}

void AppDelegate::menuQuit() {
    platform_.application->terminate();
}

void AppDelegate::restart() {
    // For as long as that takes, nobody would hide what returns, nor keep notices off the screen.
    if (privacy_.isAtRest()) {
        platform_.application->relaunch();
    }
}

void AppDelegate::openSettings() {
    const Action action(store_);
    if (popover_.isShown()) {
        popover_.close();
    }
    settings_.show();
    hidingWatch_.begin();
    platform_.application->activate(true);
}

void AppDelegate::toggleModeFromHotkey() {
    privacy_.toggle();
}

void AppDelegate::privacyRequested(PrivacyRequest request) {
    if (request == (privacy_.isOn() ? PrivacyRequest::on : PrivacyRequest::off)) {
        return;
    }
    toggleModeFromHotkey();
    // The toggle is what the user's own menus and shortcuts call.
    if (request == PrivacyRequest::off) {
        privacy_.tellOfEnd();
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

void AppDelegate::showStatusMenu() {
    if (popover_.isShown()) {
        popover_.close();
    }
    statusItem_->popUpMenu(statusMenu());
}

Platform::Menu AppDelegate::statusMenu() {
    const Action action(store_);
    using CurtainCore::LocKey;
    const auto lang = language_.code();
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

void AppDelegate::togglePopover() {
    const Action action(store_);
    if (popover_.isShown()) {
        popover_.close();
        return;
    }
    if (!store_.load().hasOnboarded) {
        showOnboardingWizard(CurtainCore::OnboardingStep::welcome());
        return;
    }
    checks_.start();
    if (privacy_.isOn()) {
        // What it shows depends on whether apps can be hidden at this moment.
        icon_->update();
    }
    // Who opens the popover has found it, and the notice may stand over it.
    notifier_.withdrawHome();
    popover_.open(*statusItem_);
    hidingWatch_.begin();
}

std::shared_ptr<MeetingReadinessView> AppDelegate::makeReadinessView() {
    MeetingReadinessActions actions{
        .onFixEverything = lifetime_.weak([this] { privacy_.fixEverything(); }),
        .onHidePrivateApps = lifetime_.weak([this] { privacy_.hidePrivateApps(); }),
        .onRestore = lifetime_.weak([this] { restore(); }),
        .onUndo = lifetime_.weak([this] { privacy_.undo(); }),
        .onToggleDesktop = lifetime_.weak([this] { toggleDesktop(); }),
        .onSelectCamera = lifetime_.weak([this](const std::string& cameraID) { selectCamera(cameraID); }),
        .onTakePhoto = lifetime_.weak([this] { cameraManager_.capture(); }),
        .onCopyPhoto = lifetime_.weak([this] { photoExport_.copy(); }),
        .onSavePhoto = lifetime_.weak([this] { photoExport_.save(); }),
        .onOpenSettings = lifetime_.weak([this] { openSettings(); }),
        .onQuit = lifetime_.weak([this] { menuQuit(); }),
    };
    const MeetingReadinessView::Services services{coordinator_,
                                                  cameraManager_,
                                                  micMonitor_,
                                                  store_,
                                                  *platform_.captureServices,
                                                  *platform_.workspace,
                                                  catalog_,
                                                  *platform_.urlOpener,
                                                  *platform_.locale,
                                                  *platform_.systemVersion};
    return std::make_shared<MeetingReadinessView>(services, language_.code(), std::move(actions));
}

void AppDelegate::userDeparted() {
    if (photoExport_.isPanelOpen() && popover_.isShown()) {
        // The photo is still needed where the dialog is cancelled, and whoever answers it is there again.
        checks_.rest();
    } else {
        popover_.close();
    }
}

void AppDelegate::sessionDidLock() {
    if (onboardingWC_) {
        onboardingWC_->viewModel()->sessionDidLock();
    }
}

void AppDelegate::sessionDidUnlock(bool wasLocked) {
    if (onboardingWC_) {
        onboardingWC_->viewModel()->sessionDidUnlock();
    }
    if (wasLocked && popover_.isShown() && !photoExport_.isPanelOpen()) {
        checks_.start();
    }
}

void AppDelegate::selectCamera(const std::string& cameraID) {
    const Action action(store_);
    auto preferences = store_.load();
    preferences.selectedCameraID = cameraID;
    store_.save(preferences);
    checks_.startCamera(cameraID);
}

void AppDelegate::toggleDesktop() {
    desktopController_.setIconsHidden(!desktopController_.iconsHidden());
    coordinator_.refresh();
}

void AppDelegate::restore() {
    const Action action(store_);
    if (desktopController_.iconsHidden()) {
        desktopController_.setIconsHidden(false);
    }
    privacy_.switchOff();
}

std::shared_ptr<SettingsView> AppDelegate::makeSettingsView() {
    settingsModel_ =
        std::make_unique<SettingsModel>(store_, *platform_.locale, *platform_.loginItem, *platform_.log);
    followPrivateApps(*settingsModel_);
    auto view = std::make_shared<SettingsView>(SettingsView::Services{
        *settingsModel_, catalog_, shortcuts_, *platform_.captureServices, *platform_.urlOpener,
        *platform_.keyboard, *platform_.systemShortcuts, *platform_.locale, *platform_.hotKeyService,
        screenWatcher_, *statusItem_, *platform_.systemVersion, *platform_.workspace});
    QObject::connect(view.get(), &SettingsView::langChanged, view.get(),
                     std::function<void()>(lifetime_.weak([this] { languageDidChange(); })));
    view->onRestart = lifetime_.weak([this] { restart(); });
    view->mayRestart = [this] { return privacy_.isAtRest(); };
    return view;
}

void AppDelegate::languageDidChange() {
    const Action action(store_);
    settings_.languageDidChange();
    icon_->updateToolTip();
    if (onboardingWC_) {
        onboardingWC_->viewModel()->setLang(language_.code());
    }
    popover_.renewView();
}

void AppDelegate::appAppeared(const std::string& bundleID) {
    if (popover_.isShown()) {
        coordinator_.refresh();
    }
    privacy_.appAppeared(bundleID);
}

void AppDelegate::hidingAnswered() {
    const Action action(store_);
    privacy_.hidingAnswered();
    // What hides the apps may also be what hears the shortcut.
    icon_->update();
    coordinator_.refresh();
    settings_.sessionDidAnswer();
}

template <class Source>
void AppDelegate::followPrivateApps(Source& source) {
    QObject::connect(&source, &Source::privateAppAdded, &source,
                     [this](const std::string& bundleID) { privateAppAdded(bundleID); });
    QObject::connect(&source, &Source::privateAppRemoved, &source,
                     [this](const std::string& bundleID) { privateAppRemoved(bundleID); });
}

void AppDelegate::privateAppAdded(const std::string& bundleID) {
    if (privacy_.isOn()) {
        privacy_.takeIn(bundleID);
        refreshReadiness();
    }
}

void AppDelegate::privateAppRemoved(const std::string& bundleID) {
    if (privacy_.isOn()) {
        privacy_.takeOut(bundleID);
        refreshReadiness();
    }
}

void AppDelegate::privacyModeDidChange() {
    icon_->update();
    settings_.sessionDidAnswer();
    refreshReadiness();
}

void AppDelegate::refreshReadiness() {
    coordinator_.refresh();
    platform_.mainQueue->asyncAfter(secondRefreshDelay, lifetime_.weak([this] { coordinator_.refresh(); }));
}

void AppDelegate::showOnboardingWizard(CurtainCore::OnboardingStep startAt) {
    if (onboardingWC_ && onboardingWC_->isOver()) {
        // What stood in the way then need not do so now.
        onboardingWC_.reset();
    }
    if (!onboardingWC_) {
        onboardingWC_ = std::make_unique<OnboardingWindowController>(
            *platform_.windows, *platform_.application, makeOnboardingModel(startAt));
    }
    home_->cancel();
    notifier_.withdrawHome();
    // It may have been another when the wizard was closed half-way.
    onboardingWC_->viewModel()->setLang(language_.code());
    onboardingWC_->show();
}

std::shared_ptr<OnboardingViewModel> AppDelegate::makeOnboardingModel(CurtainCore::OnboardingStep startAt) {
    const OnboardingViewModel::Services services{
        cameraManager_,
        micMonitor_,
        desktopChecker_,
        CompatibilityProbe({*platform_.systemVersion, *platform_.captureServices, *platform_.audioServices,
                            *platform_.workspace}),
        *platform_.mediaAuthorization,
        cameraServices_,
        *platform_.urlOpener};
    auto model = std::make_shared<OnboardingViewModel>(services, language_.code(), startAt);
    model->onFinish = lifetime_.weak([this] { finishOnboarding(); });
    if (lock_.isLocked()) {
        model->sessionDidLock();
    }
    return model;
}

void AppDelegate::finishOnboarding() {
    const Action action(store_);
    auto preferences = store_.load();
    preferences.hasOnboarded = true;
    store_.save(preferences);
    if (notifier_.enabled()) {
        notifier_.requestAuthorization([] {});
    }
    if (onboardingWC_) {
        onboardingWC_->close();
    }
    home_->tell();
    coordinator_.refresh();
    platform_.mainQueue->asyncAfter(wizardReleaseDelay, lifetime_.weak([this] { onboardingWC_.reset(); }));
}

} // namespace Curtain
