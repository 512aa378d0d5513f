#pragma once

#include "core/UserDefaults.h"
#include "platform/AppShield.h"
#include "platform/Application.h"
#include "platform/AudioServices.h"
#include "platform/Bundle.h"
#include "platform/CaptureServices.h"
#include "platform/Departures.h"
#include "platform/DoNotDisturb.h"
#include "platform/EventMonitors.h"
#include "platform/FileManager.h"
#include "platform/HotKeyService.h"
#include "platform/Keyboard.h"
#include "platform/Locale.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"
#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/MenuBar.h"
#include "platform/Pasteboard.h"
#include "platform/Popover.h"
#include "platform/ProcessRunner.h"
#include "platform/SavePanel.h"
#include "platform/ScreenWatcherProbe.h"
#include "platform/Screens.h"
#include "platform/SessionNote.h"
#include "platform/StatusItem.h"
#include "platform/SystemShortcuts.h"
#include "platform/SystemVersion.h"
#include "platform/UrlOpener.h"
#include "platform/UserFolders.h"
#include "platform/UserNotificationCenter.h"
#include "platform/UuidSource.h"
#include "platform/WallClock.h"
#include "platform/Windows.h"
#include "platform/WorkQueue.h"
#include "platform/Workspace.h"

#include <memory>

namespace Platform {

/// Everything that the application needs of the system it runs on. Later members may use earlier ones.
struct Platform {
    std::unique_ptr<Log> log;
    std::unique_ptr<MainQueue> mainQueue;
    std::unique_ptr<WallClock> wallClock;
    std::unique_ptr<UuidSource> uuids;
    /// What the ports that follow share among themselves.
    std::shared_ptr<void> foundation;
    std::unique_ptr<CurtainCore::UserDefaults> userDefaults;
    /// What privacy mode is doing.
    std::unique_ptr<SessionNote> sessionNote;
    std::unique_ptr<Locale> locale;
    std::unique_ptr<Resources> resources;
    std::unique_ptr<FileManager> fileManager;
    std::unique_ptr<UserFolders> userFolders;
    std::unique_ptr<ProcessRunner> processRunner;
    std::unique_ptr<Bundles> bundles;
    ApplicationFolders applicationFolders;
    std::unique_ptr<Application> application;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<AppShield> appShield;
    std::unique_ptr<SystemVersion> systemVersion;
    std::unique_ptr<Keyboard> keyboard;
    std::unique_ptr<HotKeyService> hotKeyService;
    std::unique_ptr<SystemShortcuts> systemShortcuts;
    std::unique_ptr<StatusBar> statusBar;
    std::unique_ptr<ScreenWatcherProbe> screenWatcherProbe;
    std::unique_ptr<UserNotificationCenter> userNotificationCenter;
    std::unique_ptr<DoNotDisturb> doNotDisturb;
    std::unique_ptr<Screens> screens;
    std::unique_ptr<EventMonitors> eventMonitors;
    std::unique_ptr<Departures> departures;
    std::unique_ptr<MenuBar> menuBar;
    std::unique_ptr<Popover> popover;
    std::unique_ptr<Windows> windows;
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<SavePanel> savePanel;
    std::unique_ptr<UrlOpener> urlOpener;
    std::unique_ptr<AudioServices> audioServices;
    std::unique_ptr<CaptureServices> captureServices;
    std::unique_ptr<MediaAuthorization> mediaAuthorization;
    /// The first to go: a task that is under way may use any of the others.
    std::unique_ptr<WorkQueues> workQueues;
};

} // namespace Platform
