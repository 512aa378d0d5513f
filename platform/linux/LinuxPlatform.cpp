#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/SessionKeys.h"
#include "platform/linux/SessionWindows.h"
#include "platform/linux/appearance/DesktopColorScheme.h"
#include "platform/linux/appearance/HighContrast.h"
#include "platform/linux/appearance/ReducedMotion.h"
#include "platform/linux/apps/AppIdentity.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/apps/DesktopEntryBundles.h"
#include "platform/linux/camera/CameraPortal.h"
#include "platform/linux/camera/CameraRights.h"
#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/linux/camera/V4l2Cameras.h"
#include "platform/linux/dbus/DBusSignal.h"
#include "platform/linux/departures/SessionDepartures.h"
#include "platform/linux/desktopicons/LinuxDesktopIcons.h"
#include "platform/linux/donotdisturb/DesktopDoNotDisturb.h"
#include "platform/linux/media/LinuxMediaAuthorization.h"
#include "platform/linux/notifications/DBusNotificationCenter.h"
#include "platform/linux/ownwindows/NoMenuBar.h"
#include "platform/linux/ownwindows/SwayWindowManagerClient.h"
#include "platform/linux/ownwindows/X11EventMonitors.h"
#include "platform/linux/ownwindows/X11MenuBar.h"
#include "platform/linux/ownwindows/X11WindowManagerClient.h"
#include "platform/linux/savepanel/PortalSavePanel.h"
#include "platform/linux/screenwatch/CaptureRoads.h"
#include "platform/linux/screenwatch/ScreenWatch.h"
#include "platform/linux/session/AutostartEntry.h"
#include "platform/linux/session/DesktopNames.h"
#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/session/LoginManager.h"
#include "platform/linux/session/RecordedNote.h"
#include "platform/linux/session/SessionMark.h"
#include "platform/linux/settingslinks/SettingsLinkOpener.h"
#include "platform/linux/shield/NoAppShield.h"
#include "platform/linux/shield/X11AppShield.h"
#include "platform/linux/soundlibrary/LazySound.h"
#include "platform/linux/soundlibrary/MissingSound.h"
#include "platform/linux/system/EnvironmentLocale.h"
#include "platform/linux/system/FileUserDefaults.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/linux/system/RuntimeFolder.h"
#include "platform/linux/system/StandardErrorLog.h"
#include "platform/linux/system/ThreadWorkQueues.h"
#include "platform/linux/system/XdgUserFolders.h"
#include "platform/linux/tray/TrayStatusBar.h"
#include "platform/linux/windows/gnome/GnomeShellProtocol.h"
#include "platform/linux/workspace/InterfaceLevel.h"
#include "platform/linux/workspace/LinuxWorkspace.h"
#include "platform/linux/workspace/ScopedApps.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/qt/DetachedProgram.h"
#include "platform/qt/OwnLibrary.h"
#include "platform/qt/PortalWindow.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtEventMonitors.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtResources.h"
#include "platform/qt/QtUuidSource.h"
#include "platform/qt/QtWallClock.h"
#include "platform/qt/savepanel/QtSavePanel.h"
#include "platform/qt/screens/ImageRendering.h"
#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/ScreenGeometry.h"
#include "platform/qt/screens/WindowManagerLink.h"
#include "platform/qt/views/LazyViews.h"
#include "platform/qt/views/ViewLibrary.h"

#include <QGuiApplication>
#include <QPalette>
#include <QScreen>

#include <QDBusConnection>
#include <dlfcn.h>
#include <glib.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace LinuxPlatform {
namespace {

/// `sway` is null in other sessions than sway's.
QtPlatform::WindowManagerLink linkTo(X11WindowManagerClient* windowManager, SwayWindowManagerClient* sway,
                                     const SessionEnvironment& environment) {
    if (windowManager == nullptr) {
        return {};
    }
    QtPlatform::WindowManagerLink link{
        .isComposited = [=] { return windowManager->isComposited(); },
        .markAsPopover = [=](WId window) { windowManager->markAsPopover(static_cast<xcb_window_t>(window)); },
        .setInputRegion =
            [=](WId window, const QRect& pixels) {
                windowManager->setInputRegion(static_cast<xcb_window_t>(window), pixels);
            },
        .activate = [=](WId window) { windowManager->activate(static_cast<xcb_window_t>(window)); },
        .panels = [=] { return windowManager->panels(); },
        .isPointerKnown = true,
    };
    if (environment.kind != SessionKind::x11) {
        // The panels are windows of Wayland's, and the pointer is known only over windows of X11.
        link.panels = nullptr;
        link.isPointerKnown = false;
        link.isCompositor = true;
    }
    if (sway != nullptr) {
        link.place = [=](WId window, const QPoint& corner, std::function<void()> whenThere) {
            sway->place(static_cast<xcb_window_t>(window), corner, std::move(whenThere));
        };
        link.panels = [=] { return sway->panels(); };
    }
    return link;
}

/// None where there is no server, or where its answer got lost since the session was asked for.
std::unique_ptr<X11Connection> connectionTo(const SessionEnvironment& environment) {
    return environment.hasXServer() ? X11Connection::open() : nullptr;
}

/// Null in other sessions than sway's.
std::unique_ptr<SwayWindowManagerClient> swayClientOf(const SessionEnvironment& environment,
                                                      Platform::MainQueue& queue) {
    const bool isSway = environment.isWayland() && !environment.i3Socket.empty();
    return isSway ? std::make_unique<SwayWindowManagerClient>(environment.i3Socket, queue) : nullptr;
}

/// What several ports stand on. Later members use earlier ones.
struct Session {
    Session(SessionEnvironment session, Platform::MainQueue& queue, Platform::Log& log)
        : environment(std::move(session)),
          sway(swayClientOf(environment, queue)),
          views(QtPlatform::OwnLibrary::pathOf(QtPlatform::ViewLibrary::fileName), log) {}

    SessionEnvironment environment;
    DesktopEntries entries{DesktopEntries::standardFolders()};
    AppIdentity identity{entries, ProcessTable()};
    std::unique_ptr<X11Connection> x11 = connectionTo(environment);
    std::unique_ptr<CurtainCore::UserDefaults> windowState;
    /// What is of no use after the session.
    std::unique_ptr<CurtainCore::UserDefaults> sessionState;
    std::unique_ptr<WindowSystem> windowSystem;
    /// A connection of its own: others select the events of the root window on theirs.
    std::unique_ptr<X11Connection> shellConnection = connectionTo(environment);
    std::unique_ptr<X11WindowManagerClient> windowManager =
        shellConnection ? std::make_unique<X11WindowManagerClient>(*shellConnection) : nullptr;
    std::unique_ptr<SwayWindowManagerClient> sway;
    QtPlatform::QtScreens screens{linkTo(windowManager.get(), sway.get(), environment)};
    QtPlatform::ViewLibrary views;
    std::unique_ptr<ScopedApps> scopedApps;
    QtPlatform::Appearance appearance;
    ReducedMotion motion{QDBusConnection::sessionBus(), [this](bool isReduced) {
                             appearance.isMotionReduced = isReduced;
                             views.setAppearance(appearance);
                         }};
    HighContrast contrast{QDBusConnection::sessionBus(), [this](bool isHigh) {
                              appearance.isContrastHigh = isHigh;
                              views.setAppearance(appearance);
                          }};
    DesktopColorScheme colorScheme{QDBusConnection::sessionBus(), [this](std::optional<ColorScheme> scheme) {
                                       appearance.isDark = scheme == ColorScheme::dark;
                                       views.setAppearance(appearance);
                                   }};
    std::unique_ptr<LoginManager> loginManager;
    /// Null in other sessions than GNOME's.
    std::unique_ptr<DBusSignal> shellUse;
    std::unique_ptr<DBusSignal> sessionLock;
};

/// One user's sessions share the folder, each under its display.
EarlierValue sessionRecord(const Session& session, const std::string& name) {
    const auto& socket = session.environment.waylandSocket;
    auto display = socket.empty() ? session.environment.display : socket.filename().string();
    std::ranges::replace(display, '/', '_');
    return {*session.sessionState, "curtain-" + name + "." + display, sessionMark(session.environment)};
}

constexpr const char* hiddenWindows = "hidden-windows";

HiddenWindowsRecord hiddenWindowsRecord(const Session& session) {
    return HiddenWindowsRecord(hasLastingWindowIdentifiers(session.environment)
                                   ? std::optional(sessionRecord(session, hiddenWindows))
                                   : std::nullopt);
}

/// Nothing that is shown at the start needs the login manager or all desktop entries, so they are looked for
/// once it has been shown.
constexpr Platform::MainQueue::Seconds afterStartDelay{1};

/// At the start of a session everything starts at once; a window manager that is not there by then is
/// missing.
constexpr Platform::MainQueue::Seconds windowManagerDeadline{15};

void sayThatNoWindowManagerRuns(WindowSystem& windowSystem, Platform::Log& log) {
    if (windowSystem.hidingObstacle() == Platform::HidingObstacle::noWindowManager) {
        log.writeLine("Curtain: no window manager looks after the windows of this session, so apps cannot be "
                      "hidden until one does");
    }
}

/// What goes on when the computer sleeps, wakes and is turned off.
LoginManager::Handlers powerHandlers(Platform::Platform& platform, LinuxCaptureServices& cameras,
                                     SoundToolkit& sound, LinuxWorkspace& workspace) {
    const auto setSuspended = [&](bool isSuspended) {
        cameras.setSuspended(isSuspended);
        sound.setSuspended(isSuspended);
    };
    return {
        .willSleep = [=] { setSuspended(true); },
        .didWake =
            [=, &workspace] {
                setSuspended(false);
                // Whatever came up meanwhile counts as coming up now.
                workspace.announceVisible();
            },
        .willEnd = [&application = *platform.application] { application.terminate(); },
    };
}

Platform::ApplicationFolders applicationFolders() {
    Platform::ApplicationFolders folders{{}, "desktop"};
    for (const auto& folder : DesktopEntries::standardFolders()) {
        folders.paths.push_back(folder.string());
    }
    return folders;
}

/// Panels are no higher; the distance is that of two corners of an icon at most.
constexpr int farthestFromPointer = 128;

/// Absent where the pointer's place is not known.
std::optional<bool> isNearPointer(const QPoint& pixel, const SessionEnvironment& environment) {
    const auto pointer =
        environment.kind == SessionKind::x11 ? QtPlatform::ScreenGeometry::pointer() : std::nullopt;
    if (!pointer) {
        return std::nullopt;
    }
    return std::abs(pixel.x() - pointer->x()) <= farthestFromPointer &&
           std::abs(pixel.y() - pointer->y()) <= farthestFromPointer;
}

/// As far as panels are known.
bool isInPanel(const QPoint& pixel, const QtPlatform::QtScreens& screens) {
    const auto* const screen = QtPlatform::ScreenGeometry::screenAt(pixel);
    return screen != nullptr && !screens.visibleFrame(*screen).contains(
                                    QtPlatform::ScreenGeometry::inPoints({pixel, QSize(1, 1)}, *screen));
}

/// An icon that was clicked is at the pointer, and one that was chosen by the keyboard at least in a panel.
bool isPlausiblePlace(const QPoint& pixel, const SessionEnvironment& environment,
                      const QtPlatform::QtScreens& screens) {
    return isNearPointer(pixel, environment).value_or(false) || isInPanel(pixel, screens);
}

/// The references outlive the toolkit.
TrayToolkit trayToolkit(const SessionEnvironment& environment, const QtPlatform::QtScreens& screens,
                        QtPlatform::ViewLibrary& views) {
    const bool isPointerKnown = environment.kind == SessionKind::x11;
    return {
        .render = QtPlatform::renderImage,
        .popUpMenu =
            [&views](const auto& menu, const auto& place) {
                if (auto* const toolkit = views.toolkit()) {
                    toolkit->popUpMenu(menu, place);
                }
            },
        .pointer = [=] { return isPointerKnown ? QtPlatform::ScreenGeometry::pointer() : std::nullopt; },
        .isPlausible =
            [=, &screens](const QPoint& pixel) { return isPlausiblePlace(pixel, environment, screens); },
        .textColor = QGuiApplication::palette().color(QPalette::WindowText),
        .pixelsPerPoint = qGuiApp->devicePixelRatio(),
    };
}

SessionDepartures& addDepartures(Platform::Platform& platform, Session& session) {
    const auto bus = QDBusConnection::sessionBus();
    auto departures = std::make_unique<SessionDepartures>(bus);
    auto& added = *departures;
    if (!session.environment.i3Socket.empty()) {
        departures->hearI3(session.environment.i3Socket, *platform.mainQueue);
    } else if (session.shellConnection) {
        departures->hearWindowManager(*session.shellConnection);
    }
    if (isGnomeShell(session.environment)) {
        using namespace GnomeShellProtocol;
        session.sessionLock = std::make_unique<DBusSignal>(bus, extensionService, extensionPath,
                                                           extensionInterface, QStringLiteral("Locked"),
                                                           [&added](const auto&) { added.tellLock(true); });
    }
    platform.departures = std::move(departures);
    return added;
}

/// The popover, the windows and what surrounds them.
void addShell(Platform::Platform& platform, Session& session) {
    const auto& environment = session.environment;
    const auto windowManager = linkTo(session.windowManager.get(), session.sway.get(), environment);
    auto toolkitMonitors = std::make_unique<QtPlatform::QtEventMonitors>(*platform.mainQueue);
    if (isGnomeShell(environment)) {
        using namespace GnomeShellProtocol;
        session.shellUse = std::make_unique<DBusSignal>(
            QDBusConnection::sessionBus(), extensionService, extensionPath, extensionInterface,
            QStringLiteral("Used"),
            [monitors = toolkitMonitors.get()](const auto&) { monitors->noteClickElsewhere(); });
    }
    platform.screens = std::make_unique<QtPlatform::QtScreens>(windowManager);
    if (session.shellConnection && environment.kind == SessionKind::x11) {
        platform.eventMonitors =
            std::make_unique<X11EventMonitors>(*session.shellConnection, std::move(toolkitMonitors));
        platform.menuBar = std::make_unique<X11MenuBar>(*session.shellConnection);
    } else {
        platform.eventMonitors = std::move(toolkitMonitors);
        platform.menuBar = std::make_unique<NoMenuBar>();
    }
    platform.popover =
        std::make_unique<QtPlatform::LazyPopover>(session.views, session.screens, windowManager);
    platform.windows =
        std::make_unique<QtPlatform::LazyWindows>(session.views, session.screens, windowManager);
    platform.pasteboard = std::make_unique<QtPlatform::QtPasteboard>();
    platform.savePanel = std::make_unique<PortalSavePanel>(
        QDBusConnection::sessionBus(), *platform.mainQueue, QtPlatform::portalNameOfFocusedWindow,
        std::make_unique<QtPlatform::QtSavePanel>(*platform.windows));
    platform.urlOpener =
        std::make_unique<SettingsLinkOpener>(desktopNames(environment), QtPlatform::startDetached);
}

LinuxCaptureServices& addCamera(Platform::Platform& platform) {
    const auto bus = QDBusConnection::sessionBus();
    const bool isSandboxed = LinuxMediaAuthorization::isThisProcessSandboxed();
    PipeWireCameras::Connector connector;
    if (isSandboxed) {
        connector = [bus] { return openPipeWireRemote(bus); };
    }
    auto cameras = std::make_unique<LinuxCaptureServices>(
        *platform.mainQueue, *platform.workQueues, std::make_unique<PipeWireCameras>(connector),
        std::make_unique<V4l2Cameras>(std::make_shared<KernelVideoDeviceCalls>(), "/sys"));
    auto& added = *cameras;
    platform.captureServices = std::move(cameras);
    // The daemon may hand out cameras whose devices are closed to the user.
    platform.mediaAuthorization = std::make_unique<LinuxMediaAuthorization>(
        bus, *platform.mainQueue, isSandboxed, [&capture = *platform.captureServices] {
            KernelVideoDeviceCalls calls;
            return mayUseCameras(calls) || !capture.devices().empty();
        });
    return added;
}

/// Where the library cannot be loaded, what else there is goes on protecting its user.
std::unique_ptr<SoundToolkit> makeSoundToolkit(const QtPlatform::OwnLibrary& library,
                                               Platform::MainQueue& queue, Platform::Log& log) {
    if (auto* const make = library.entry<MakeSoundToolkit>(nameOfMakeSoundToolkit)) {
        return std::unique_ptr<SoundToolkit>(make(queue));
    }
    const std::string reason = dlerror();
    log.writeLine("Curtain: its sound cannot be loaded, so no microphone can be checked: " + reason);
    return std::make_unique<MissingSound>(queue, reason);
}

/// Both outlive it.
std::unique_ptr<LazySound> lazySound(Platform::MainQueue& queue, Platform::Log& log) {
    const auto library =
        std::make_shared<QtPlatform::OwnLibrary>(QtPlatform::OwnLibrary::pathOf(soundLibraryFileName));
    return std::make_unique<LazySound>(
        [library, &queue, &log] { return makeSoundToolkit(*library, queue, log); });
}

/// Outlived by the workspace.
std::unique_ptr<Platform::AppShield> appShieldOf(Session& session, LinuxWorkspace& workspace,
                                                 Platform::MainQueue& queue) {
    if (!session.x11 || session.environment.isWayland() || !session.environment.i3Socket.empty()) {
        return std::make_unique<NoAppShield>();
    }
    return std::make_unique<X11AppShield>(
        X11AppShield::Apps{
            .windowsOf = [&](const std::string& bundleID) { return workspace.windowsOf(bundleID); },
            .identify =
                [&](WindowId window, const WindowHints& hints) {
                    if (auto app = workspace.appOf(window)) {
                        return app;
                    }
                    const auto identifier = session.identity.identify(hints);
                    return identifier ? std::optional(identifier->bundleIdentifier) : std::nullopt;
                },
        },
        queue);
}

} // namespace

std::optional<std::string> missingXServer(const SessionEnvironment& environment) {
    if (environment.hasXServer()) {
        return std::nullopt;
    }
    if (environment.silentDisplay.empty()) {
        return "Curtain: there is no X display to show itself on (DISPLAY is not set); start it from within "
               "a desktop session";
    }
    return "Curtain: the X display " + environment.silentDisplay +
           " does not answer; start Curtain from within a desktop session";
}

Platform::Platform makeLinuxPlatform(const SessionEnvironment& environment) {
    Platform::Platform platform;
    platform.log = std::make_unique<StandardErrorLog>();
    platform.mainQueue = std::make_unique<QtPlatform::QtMainQueue>();
    platform.workQueues = std::make_unique<ThreadWorkQueues>();
    platform.wallClock = std::make_unique<QtPlatform::QtWallClock>();
    platform.uuids = std::make_unique<QtPlatform::QtUuidSource>();
    auto session = std::make_shared<Session>(environment, *platform.mainQueue, *platform.log);
    const auto stateFolder = std::filesystem::path(g_get_user_state_dir()) / "curtain";
    session->windowState = std::make_unique<FileUserDefaults>(stateFolder, *platform.log);
    session->sessionState = std::make_unique<FileUserDefaults>(runtimeFolder(), *platform.log);
    platform.sessionNote = std::make_unique<RecordedNote>(sessionRecord(*session, "privacy-mode"),
                                                          sessionRecord(*session, hiddenWindows));
    session->windowSystem = windowsOfSession(
        environment, session->x11.get(), *platform.mainQueue,
        EarlierValue(*session->windowState, "takenWindows", sessionMark(environment)), platform.log.get());
    auto keys = keysOfSession(environment, session->x11.get(),
                              EarlierValue(*session->windowState, "boundShortcuts", sessionMark(environment)),
                              *platform.mainQueue, *platform.log);
    platform.hotKeyService = std::move(keys.hotKeyService);
    platform.systemShortcuts = std::move(keys.systemShortcuts);
    platform.keyboard = std::move(keys.keyboard);
    platform.userDefaults = std::make_unique<FileUserDefaults>(
        std::filesystem::path(g_get_user_config_dir()) / "curtain", *platform.log);
    platform.locale = std::make_unique<EnvironmentLocale>();
    platform.resources = std::make_unique<QtPlatform::QtResources>();
    platform.fileManager = std::make_unique<PosixFileManager>();
    platform.userFolders = std::make_unique<XdgUserFolders>();
    platform.processRunner =
        std::make_unique<LinuxDesktopIcons>(environment, session->x11.get(), QDBusConnection::sessionBus(),
                                            *platform.mainQueue, *platform.log, stateFolder);
    const auto thisProgram = QGuiApplication::desktopFileName().toStdString();
    platform.bundles = std::make_unique<DesktopEntryBundles>(session->entries, thisProgram);
    platform.applicationFolders = applicationFolders();
    platform.application = std::make_unique<QtPlatform::QtApplication>();
    platform.loginItem = std::make_unique<AutostartEntry>(
        g_get_user_config_dir(), QCoreApplication::applicationFilePath().toStdString());
    session->scopedApps = std::make_unique<ScopedApps>(session->entries, *platform.mainQueue);
    auto workspace = std::make_unique<LinuxWorkspace>(
        *session->windowSystem, session->identity, session->entries, *session->scopedApps,
        *platform.mainQueue, thisProgram, hiddenWindowsRecord(*session));
    platform.appShield = appShieldOf(*session, *workspace, *platform.mainQueue);
    platform.systemVersion = std::make_unique<InterfaceLevel>(*session->windowSystem);
    platform.statusBar = std::make_unique<TrayStatusBar>(
        *platform.mainQueue, *platform.log, trayToolkit(environment, session->screens, session->views));
    platform.screenWatcherProbe = std::make_unique<ScreenWatch>(captureRoads(environment, *platform.log));
    platform.userNotificationCenter = std::make_unique<DBusNotificationCenter>(
        QDBusConnection::sessionBus(), *platform.mainQueue, "Curtain", thisProgram);
    platform.doNotDisturb = std::make_unique<DesktopDoNotDisturb>(
        QDBusConnection::sessionBus(), *platform.mainQueue, *session->windowState, sessionMark(environment),
        [](const NotificationServer& server) {
            return quietRoadOf(server, QDBusConnection::sessionBus(), g_get_user_config_dir());
        });
    auto& departures = addDepartures(platform, *session);
    addShell(platform, *session);
    auto sound = lazySound(*platform.mainQueue, *platform.log);
    if (!QDBusConnection::sessionBus().isConnected()) {
        platform.log->writeLine(
            "Curtain: there is no session bus, so the icon shows only in trays of X windows");
    }
    platform.mainQueue->asyncAfter(windowManagerDeadline,
                                   [weak = std::weak_ptr(session), &log = *platform.log] {
                                       if (const auto running = weak.lock()) {
                                           sayThatNoWindowManagerRuns(*running->windowSystem, log);
                                       }
                                   });
    auto& cameras = addCamera(platform);
    platform.mainQueue->asyncAfter(
        afterStartDelay, [weak = std::weak_ptr(session),
                          handlers = powerHandlers(platform, cameras, *sound, *workspace), &departures] {
            if (const auto running = weak.lock()) {
                running->entries.readAhead();
                const auto systemBus = LoginManager::systemBus();
                running->loginManager = std::make_unique<LoginManager>(systemBus, handlers);
                departures.hearLoginManager(systemBus);
            }
        });
    platform.audioServices = std::move(sound);
    platform.workspace = std::move(workspace);
    platform.foundation = std::move(session);
    return platform;
}

} // namespace LinuxPlatform
