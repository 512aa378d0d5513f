#include "platform/linux/SessionKeys.h"

#include "platform/linux/SessionWindows.h"
#include "platform/linux/hotkeys/NoHotKeyService.h"
#include "platform/linux/hotkeys/X11HotKeyService.h"
#include "platform/linux/hotkeys/gnome/GnomeHotKeyService.h"
#include "platform/linux/hotkeys/kglobalaccel/KGlobalAccelHotKeyService.h"
#include "platform/linux/hotkeys/sway/SwayHotKeyService.h"
#include "platform/linux/keyboard/XkbKeyboard.h"
#include "platform/linux/session/DesktopNames.h"
#include "platform/linux/shortcutlists/DesktopShortcuts.h"
#include "platform/linux/shortcutlists/GSettingsShortcuts.h"
#include "platform/linux/shortcutlists/I3Shortcuts.h"
#include "platform/linux/shortcutlists/KdeShortcuts.h"
#include "platform/linux/shortcutlists/XfconfShortcuts.h"

#include <QDBusConnection>

#include <cstdint>
#include <utility>
#include <vector>

namespace LinuxPlatform {
namespace {

/// What every hot-key service is made of. All of it outlives the service.
struct Session {
    const SessionEnvironment& environment;
    X11Connection* x11;
    XkbKeyboard& keyboard;
    Platform::MainQueue& queue;
    Platform::Log& log;
};

std::unique_ptr<SwayHotKeyService> swayHotKeyServiceOf(const Session& session, EarlierValue boundShortcuts) {
    auto& keyboard = session.keyboard;
    return std::make_unique<SwayHotKeyService>(
        session.environment.i3Socket, session.queue, session.log,
        SwayHotKeyService::Keys{[&keyboard](std::int64_t keyCode) { return keyboard.scanCodeOf(keyCode); },
                                [&keyboard](std::int64_t keyCode) { return keyboard.symbols(keyCode); }},
        std::move(boundShortcuts), SwayHotKeyService::Patience());
}

std::unique_ptr<Platform::HotKeyService> x11HotKeyServiceOf(const Session& session) {
    if (session.x11 == nullptr) {
        return std::make_unique<NoHotKeyService>();
    }
    // The server grants every combination, but hears of keys only what its compositor hands on.
    const auto reach = session.environment.isWayland() ? Platform::HotKeyReach::inX11WindowsOnly
                                                       : Platform::HotKeyReach::everywhere;
    return std::make_unique<X11HotKeyService>(*session.x11, session.queue, session.log, reach);
}

std::unique_ptr<Platform::HotKeyService> hotKeyServiceOf(const Session& session,
                                                         EarlierValue boundShortcuts) {
    const auto bus = QDBusConnection::sessionBus();
    const auto& environment = session.environment;
    auto& keyboard = session.keyboard;
    if (isScriptedKWin(environment) && KGlobalAccelHotKeyService::isThere(bus, {})) {
        return std::make_unique<KGlobalAccelHotKeyService>(
            bus, session.queue, [&keyboard](std::int64_t keyCode) { return keyboard.symbols(keyCode); },
            KGlobalAccelHotKeyService::Patience());
    }
    if (environment.isWayland() && !environment.i3Socket.empty()) {
        auto service = swayHotKeyServiceOf(session, std::move(boundShortcuts));
        if (service->reach() == Platform::HotKeyReach::everywhere) {
            return service;
        }
    }
    if (isGnomeShell(environment)) {
        return std::make_unique<GnomeHotKeyService>(
            bus, session.queue, session.log,
            [&keyboard](std::int64_t keyCode) { return keyboard.scanCodeOf(keyCode); },
            x11HotKeyServiceOf(session));
    }
    return x11HotKeyServiceOf(session);
}

/// A list that is not this session's costs a question that fails at once.
std::vector<std::unique_ptr<ShortcutList>> shortcutLists(const SessionEnvironment& environment) {
    std::vector<std::unique_ptr<ShortcutList>> lists;
    const auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        lists.push_back(std::make_unique<XfconfShortcuts>(bus));
        lists.push_back(std::make_unique<KdeShortcuts>(bus));
    }
    lists.push_back(
        std::make_unique<GSettingsShortcuts>(GSettingsShortcuts::schemasOf(desktopNames(environment))));
    lists.push_back(std::make_unique<I3Shortcuts>(environment.i3Socket.string()));
    return lists;
}

} // namespace

SessionKeys keysOfSession(const SessionEnvironment& environment, X11Connection* x11,
                          EarlierValue boundShortcuts, Platform::MainQueue& queue, Platform::Log& log) {
    auto keyboard = std::make_unique<XkbKeyboard>(x11, desktopNames(environment));
    auto hotKeyService =
        hotKeyServiceOf({environment, x11, *keyboard, queue, log}, std::move(boundShortcuts));
    auto systemShortcuts = std::make_unique<DesktopShortcuts>(
        *hotKeyService, queue,
        [keys = keyboard.get()](std::int64_t keyCode) { return keys->symbols(keyCode); },
        shortcutLists(environment));
    return {std::move(keyboard), std::move(hotKeyService), std::move(systemShortcuts)};
}

} // namespace LinuxPlatform
