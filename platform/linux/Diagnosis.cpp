#include "platform/linux/Diagnosis.h"

#include "platform/linux/SessionWindows.h"
#include "platform/linux/desktopicons/X11DesktopWindows.h"
#include "platform/linux/hotkeys/kglobalaccel/KGlobalAccelHotKeyService.h"
#include "platform/linux/screenwatch/CaptureRoads.h"
#include "platform/linux/session/SocketQuestion.h"
#include "platform/linux/windows/gnome/GnomeShellProtocol.h"
#include "platform/linux/x11/X11Connection.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QStringList>
#include <QSysInfo>
#include <QVariant>

#include <xcb/record.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

namespace LinuxPlatform {
namespace {

constexpr int busPatience = 1000;

std::string orNone(const std::string& text) {
    return text.empty() ? "none" : text;
}

std::string kindOf(const SessionEnvironment& environment) {
    switch (environment.kind) {
    case SessionKind::x11:
        return "X11";
    case SessionKind::waylandWithX:
        return "Wayland, with an X server for X11 programs";
    case SessionKind::wayland:
        return "Wayland, without an X server";
    case SessionKind::none:
        break;
    }
    return "none: neither an X server nor a Wayland compositor answers";
}

std::string desktopsOf(const SessionEnvironment& environment) {
    std::string names;
    for (const auto& name : environment.desktops) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return orNone(names);
}

std::string hidingOf(std::optional<Platform::HidingObstacle> obstacle) {
    using Platform::HidingObstacle;
    switch (obstacle.value_or(HidingObstacle::notKnownYet)) {
    case HidingObstacle::waylandSession:
        return "none can be hidden, since there is no back end for this Wayland session";
    case HidingObstacle::noWindowManager:
        return "none can be hidden, since nothing manages the windows";
    case HidingObstacle::nextSessionNeeded:
        return "none can be hidden before the next session";
    case HidingObstacle::windowManagerIgnoresHiding:
        return "none can be hidden, since the window manager does not do what it is asked";
    case HidingObstacle::extensionMissing:
        return "none can be hidden, since Curtain's extension for the shell is not installed";
    case HidingObstacle::extensionOff:
        return "none can be hidden, since Curtain's extension for the shell is off";
    case HidingObstacle::extensionFails:
        return "none can be hidden, since Curtain's extension for the shell does not work";
    case HidingObstacle::notKnownYet:
        break;
    }
    return obstacle ? "whether they can be hidden is not known yet" : "hiding has not been tried yet";
}

/// As the back end says that Curtain would choose.
std::string windowsOf(const SessionEnvironment& environment, X11Connection* x11,
                      Platform::MainQueue& mainQueue) {
    if (isScriptedKWin(environment)) {
        // It would take the place of the script of a Curtain that runs.
        return "asked of a script that Curtain gives KWin, which has not been tried";
    }
    const auto system = windowsOfSession(environment, x11, mainQueue);
    const auto count = system->windows().size();
    const auto obstacle = system->hidingObstacle();
    return std::to_string(count) + " listed, " +
           (system->knowsEveryWindow() ? "which are all; " : "and there may be others; ") +
           (obstacle == Platform::HidingObstacle::waylandSession && system->knowsEveryWindow()
                ? "whether this compositor hides them shows when it is asked to"
            : obstacle || environment.i3Socket.empty()
                ? hidingOf(obstacle)
                : "they are hidden in the scratchpad of " + environment.windowManager.value_or("i3"));
}

std::string shortcutOf(const SessionEnvironment& environment) {
    if (isScriptedKWin(environment) &&
        KGlobalAccelHotKeyService::isThere(QDBusConnection::sessionBus(), {})) {
        return "asked of KDE's global accelerators, which have it heard everywhere";
    }
    if (isGnomeShell(environment)) {
        return "asked of Curtain's extension for the shell, which has it heard everywhere, and without it of "
               "the "
               "X server, which has it heard only while a window of an X11 program has the focus";
    }
    if (environment.isWayland() && !environment.i3Socket.empty()) {
        return "bound in sway, which has it heard everywhere";
    }
    switch (environment.kind) {
    case SessionKind::x11:
        return "asked of the X server, which has it heard everywhere";
    case SessionKind::waylandWithX:
        return "asked of the X server, which has it heard only while a window of an X11 program has the "
               "focus";
    default:
        return "none, since there is no X server";
    }
}

/// What answers on the session bus, with a deadline for each question.
class Bus {
public:
    bool isConnected() const { return bus_.isConnected(); }

    bool hasOwner(const QString& name) const {
        const auto answer =
            ask(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"), {name});
        return answer.value(0).toBool();
    }

    QVariantList ask(const QString& service, const QString& path, const QString& interface,
                     const QString& method, const QVariantList& arguments = {}) const {
        if (!bus_.isConnected()) {
            return {};
        }
        auto call = QDBusMessage::createMethodCall(service, path, interface, method);
        call.setAutoStartService(false);
        call.setArguments(arguments);
        const auto reply = bus_.call(call, QDBus::Block, busPatience);
        return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
    }

private:
    QDBusConnection bus_ = QDBusConnection::sessionBus();
};

std::string runningOf(const Bus& bus) {
    if (!bus.isConnected()) {
        return "not known, since there is no session bus";
    }
    return bus.hasOwner(QStringLiteral("com.curtain.Curtain")) ? "yes" : "no";
}

std::string trayOf(const Bus& bus, X11Connection* x11) {
    const auto watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    const auto host = bus.ask(watcher, QStringLiteral("/StatusNotifierWatcher"),
                              QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                              {watcher, QStringLiteral("IsStatusNotifierHostRegistered")});
    const bool isShown = host.value(0).value<QDBusVariant>().variant().toBool();
    std::string text = isShown                 ? "StatusNotifierItem, with a host"
                       : bus.hasOwner(watcher) ? "StatusNotifierItem, without a host"
                                               : "no StatusNotifierItem";
    if (bus.hasOwner(GnomeShellProtocol::extensionService)) {
        text += "; GNOME Shell's panel, by Curtain's extension";
    }
    if (x11 != nullptr) {
        constexpr std::array<std::string_view, 1> names{"_NET_SYSTEM_TRAY_S0"};
        const auto owner = x11->reply<xcb_get_selection_owner_reply>(
            xcb_get_selection_owner(x11->get(), x11->atoms(names).front()));
        text += owner && owner->owner != XCB_WINDOW_NONE ? "; a tray of X windows" : "; no tray of X windows";
    }
    return text;
}

std::string notificationsOf(const Bus& bus) {
    const auto name = QStringLiteral("org.freedesktop.Notifications");
    const auto server = bus.ask(name, QStringLiteral("/org/freedesktop/Notifications"), name,
                                QStringLiteral("GetServerInformation"));
    if (server.size() < 3) {
        return bus.hasOwner(name) ? "a server that does not answer" : "none";
    }
    return (server[0].toString() + QLatin1Char(' ') + server[2].toString()).toStdString();
}

/// Programs that are known to draw icons, by the class of their desktop's window.
std::string iconProgramsOf(const Bus& bus, X11Connection* x11) {
    constexpr std::array<std::string_view, 6> known{"Xfdesktop", "Nemo-desktop", "Caja",
                                                    "Pcmanfm",   "pcmanfm-qt",   "plasmashell"};
    std::string names;
    const auto add = [&](std::string_view name) { names += (names.empty() ? "" : ", ") + std::string(name); };
    for (const auto& window :
         x11 != nullptr ? X11DesktopWindows(*x11).list() : std::vector<DesktopScene::Window>()) {
        add(std::ranges::find(known, window.className) != known.end() ? std::string_view(window.className)
                                                                      : "a program that is not known");
    }
    for (const auto* name : {"org.gnome.Shell", "org.kde.plasmashell"}) {
        if (bus.hasOwner(QString::fromLatin1(name))) {
            add(name);
        }
    }
    return orNone(names);
}

std::filesystem::path runtimeFolder() {
    const auto* const folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr ? folder : "";
}

bool listens(const std::filesystem::path& socket) {
    return askSocket(
               socket, {}, [](std::string_view) { return true; }, std::chrono::seconds(1))
        .has_value();
}

std::string soundOf() {
    const bool isServer = listens(runtimeFolder() / "pulse/native");
    const bool isPipeWire = listens(runtimeFolder() / "pipewire-0");
    return std::string(isServer ? "a PulseAudio socket answers" : "no PulseAudio socket answers") +
           (isPipeWire ? "; PipeWire runs" : "; PipeWire does not run");
}

std::string camerasOf() {
    const auto devices =
        QDir(QStringLiteral("/sys/class/video4linux")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    return std::string(listens(runtimeFolder() / "pipewire-0") ? "PipeWire" : "no PipeWire") + "; " +
           std::to_string(devices.size()) + " video devices of the kernel";
}

std::string roadsOf(const SessionEnvironment& environment, X11Connection* x11) {
    const auto* const record = isScreenReadFromXServer(environment) && x11 != nullptr
                                   ? xcb_get_extension_data(x11->get(), &xcb_record_id)
                                   : nullptr;
    std::string text;
    const auto add = [&](const char* road) { text += (text.empty() ? "" : ", ") + std::string(road); };
    if (record != nullptr && record->present != 0) {
        add("requests to the X server");
    }
    if (listens(runtimeFolder() / "pipewire-0")) {
        add("streams of PipeWire");
    }
    if (environment.isWayland()) {
        add("processes of wf-recorder and wl-screenrec");
    }
    return orNone(text);
}

/// Libraries wait for some of the answers without a deadline.
std::jthread endAfter(std::chrono::seconds patience, const std::function<void(const std::string&)>& print) {
    return std::jthread([patience, print](const std::stop_token& stop) {
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any over;
        over.wait_for(lock, stop, patience, [] { return false; });
        if (!stop.stop_requested()) {
            print("The rest is not known: somebody does not answer");
            std::_Exit(EXIT_FAILURE);
        }
    });
}

} // namespace

void diagnose(const SessionEnvironment& environment, Platform::MainQueue& mainQueue,
              const std::function<void(const std::string&)>& print) {
    const auto deadline = endAfter(std::chrono::seconds(10), print);
    const Bus bus;
    const auto x11 = environment.hasXServer() ? X11Connection::open() : nullptr;
    print("Session: " + kindOf(environment));
    print("Window manager: " + orNone(environment.windowManager.value_or("")));
    print("Desktop: " + desktopsOf(environment));
    print("Display: " + orNone(environment.display) +
          (environment.silentDisplay.empty() ? "" : " (" + environment.silentDisplay + " does not answer)"));
    print(std::string("Session bus: ") + (bus.isConnected() ? "answers" : "none"));
    print("Curtain is running: " + runningOf(bus));
    print("Windows: " + windowsOf(environment, x11.get(), mainQueue));
    print("Shortcut: " + shortcutOf(environment));
    print("Tray: " + trayOf(bus, x11.get()));
    print("Notifications: " + notificationsOf(bus));
    print("Sound: " + soundOf());
    print("Cameras: " + camerasOf());
    print("Desktop icons: " + iconProgramsOf(bus, x11.get()));
    print("Screen sharing is seen by: " + roadsOf(environment, x11.get()));
    print(std::string("Qt: ") + qVersion());
    print("System: " + QSysInfo::prettyProductName().toStdString());
}

} // namespace LinuxPlatform
