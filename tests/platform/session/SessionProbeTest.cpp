#include "platform/linux/session/SessionProbe.h"

#include "platform/linux/session/SessionMark.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using LinuxPlatform::SessionEnvironment;
using LinuxPlatform::SessionKind;
using LinuxPlatform::sessionMark;
using LinuxPlatform::XServerAnswer;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t compositorProcess = 70;

const std::string swaySocketByProcess =
    "/run/user/sway-ipc." + std::to_string(geteuid()) + "." + std::to_string(compositorProcess) + ".sock";

/// Who answers in a made-up session.
struct World {
    std::map<std::string, std::string> variables{};
    std::map<std::string, XServerAnswer> xServers{};
    /// By their sockets.
    std::map<std::string, LinuxPlatform::CompositorAnswer> compositors{};
    std::map<std::string, LinuxPlatform::I3Answer> i3{};
    std::map<std::string, std::uint32_t> busNames{};
    std::map<std::uint32_t, std::string> programs{};

    SessionEnvironment probe() const {
        return LinuxPlatform::probeSession({
            .variable = [&](const auto& name) { return answer(variables, name).value_or(""); },
            .askXServer = [&](const auto& display) { return answer(xServers, display); },
            .askCompositor = [&](const auto& socket) { return answer(compositors, socket.string()); },
            .askI3 = [&](const auto& socket) { return answer(i3, socket.string()); },
            .busOwners =
                [&](const auto& names) {
                    std::map<std::string, std::uint32_t> owners;
                    for (const auto& name : names) {
                        if (const auto owner = answer(busNames, name)) {
                            owners.emplace(name, *owner);
                        }
                    }
                    return owners;
                },
            .programName = [&](auto process) { return answer(programs, process).value_or(""); },
        });
    }

private:
    template <class Key, class Value>
    static std::optional<Value> answer(const std::map<Key, Value>& answers, const Key& question) {
        const auto found = answers.find(question);
        return found == answers.end() ? std::nullopt : std::optional(found->second);
    }
};

const std::map<std::string, std::string> x11Variables{{"DISPLAY", ":0"}, {"XDG_SESSION_TYPE", "x11"}};
const std::map<std::string, std::string> waylandVariables{
    {"DISPLAY", ":0"},
    {"WAYLAND_DISPLAY", "wayland-1"},
    {"XDG_RUNTIME_DIR", "/run/user"},
    {"XDG_SESSION_TYPE", "wayland"},
};
const std::map<std::string, LinuxPlatform::CompositorAnswer> compositor{
    {"/run/user/wayland-1", {compositorProcess}}};

std::map<std::string, XServerAnswer> realServer(std::optional<std::string> windowManager = {}) {
    return {{":0", {false, std::move(windowManager), {}}}};
}

std::map<std::string, XServerAnswer> guestServer(std::optional<std::string> windowManager = {}) {
    return {{":0", {true, std::move(windowManager), {}}}};
}

std::map<std::string, std::string> with(std::map<std::string, std::string> variables, const std::string& name,
                                        const std::string& value) {
    variables[name] = value;
    return variables;
}

std::map<std::string, std::string> without(std::map<std::string, std::string> variables,
                                           const std::string& name) {
    variables.erase(name);
    return variables;
}

struct KindCase {
    const char* name;
    World world;
    SessionKind kind;
    const char* display;
    const char* waylandSocket;
};

std::vector<KindCase> kindCases() {
    const World x11{x11Variables, realServer()};
    const World wayland{waylandVariables, guestServer(), compositor};
    const auto changed = [](World world, const auto& change) {
        change(world);
        return world;
    };
    return {
        {"nothing", {}, SessionKind::none, "", ""},
        {"X11", x11, SessionKind::x11, ":0", ""},
        {"X11 without a type", {{{"DISPLAY", ":0"}}, realServer()}, SessionKind::x11, ":0", ""},
        {"X11 with the variables of Wayland", {waylandVariables, realServer()}, SessionKind::x11, ":0", ""},
        {"X11 beside a compositor that answers",
         {waylandVariables, realServer(), compositor},
         SessionKind::x11,
         ":0",
         ""},
        {"an X server that does not answer", {x11Variables}, SessionKind::none, "", ""},
        {"Wayland", wayland, SessionKind::waylandWithX, ":0", "/run/user/wayland-1"},
        {"Wayland that calls itself X11",
         {with(waylandVariables, "XDG_SESSION_TYPE", "x11"), guestServer(), compositor},
         SessionKind::waylandWithX,
         ":0",
         "/run/user/wayland-1"},
        {"XWayland without another variable",
         {{{"DISPLAY", ":0"}}, guestServer()},
         SessionKind::waylandWithX,
         ":0",
         ""},
        {"XWayland beside the usual socket",
         {{{"DISPLAY", ":0"}, {"XDG_RUNTIME_DIR", "/run/user"}},
          guestServer(),
          {{"/run/user/wayland-0", {compositorProcess}}}},
         SessionKind::waylandWithX,
         ":0",
         "/run/user/wayland-0"},
        {"XWayland whose compositor does not answer",
         {waylandVariables, guestServer()},
         SessionKind::waylandWithX,
         ":0",
         ""},
        {"Wayland by an absolute path",
         {with(waylandVariables, "WAYLAND_DISPLAY", "/elsewhere/socket"),
          guestServer(),
          {{"/elsewhere/socket", {}}}},
         SessionKind::waylandWithX,
         ":0",
         "/elsewhere/socket"},
        {"Wayland alone",
         {without(waylandVariables, "DISPLAY"), {}, compositor},
         SessionKind::wayland,
         "",
         "/run/user/wayland-1"},
        {"Wayland whose X server does not answer",
         {waylandVariables, {}, compositor},
         SessionKind::wayland,
         "",
         "/run/user/wayland-1"},
        {"a compositor that does not answer",
         {without(waylandVariables, "DISPLAY")},
         SessionKind::none,
         "",
         ""},
        {"no runtime folder",
         {without(without(waylandVariables, "DISPLAY"), "XDG_RUNTIME_DIR"), {}, {{"wayland-1", {}}}},
         SessionKind::none,
         "",
         ""},
        {"an empty WAYLAND_DISPLAY",
         {with(x11Variables, "WAYLAND_DISPLAY", ""), realServer(), compositor},
         SessionKind::x11,
         ":0",
         ""},
        {"a server without outputs in a Wayland session",
         {waylandVariables, {{":0", {std::nullopt, {}, {}}}}, compositor},
         SessionKind::waylandWithX,
         ":0",
         "/run/user/wayland-1"},
        {"a server without outputs where the compositor does not answer",
         {waylandVariables, {{":0", {std::nullopt, {}, {}}}}},
         SessionKind::x11,
         ":0",
         ""},
        {"a server without outputs in an X11 session",
         {with(waylandVariables, "XDG_SESSION_TYPE", "x11"), {{":0", {std::nullopt, {}, {}}}}, compositor},
         SessionKind::x11,
         ":0",
         ""},
        {"another display than that of the answer",
         changed(x11, [](World& world) { world.variables["DISPLAY"] = ":1"; }), SessionKind::none, "", ""},
    };
}

TEST(SessionProbeTest, FindsOutTheKindOfTheSession) {
    for (const auto& each : kindCases()) {
        SCOPED_TRACE(each.name);
        const auto found = each.world.probe();
        EXPECT_EQ(found.kind, each.kind);
        EXPECT_EQ(found.display, each.display);
        EXPECT_EQ(found.waylandSocket, each.waylandSocket);
    }
}

struct ManagerCase {
    const char* name;
    World world;
    std::optional<std::string> windowManager;
    std::string i3Socket;
};

std::vector<ManagerCase> managerCases() {
    const World i3{with(x11Variables, "I3SOCK", "/run/i3"), realServer("i3"), {}, {{"/run/i3", {"i3", 8}}}};
    const World sway{with(waylandVariables, "SWAYSOCK", "/run/sway"),
                     guestServer("wlroots wm"),
                     compositor,
                     {{"/run/sway", {"sway", compositorProcess}}},
                     {},
                     {{compositorProcess, "sway"}}};
    const World wayland{waylandVariables, guestServer("wlroots wm"), compositor};
    const auto changed = [](World world, const auto& change) {
        change(world);
        return world;
    };
    const auto busName = [&](const char* name, std::uint32_t owner, const char* program) {
        return changed(wayland, [&](World& world) {
            world.busNames[name] = owner;
            world.programs[compositorProcess] = program;
        });
    };
    return {
        {"no window manager", {x11Variables, realServer()}, std::nullopt, ""},
        {"Openbox", {x11Variables, realServer("Openbox")}, "Openbox", ""},
        {"no session", {with(waylandVariables, "SWAYSOCK", "/run/sway"), {}, {}, sway.i3}, std::nullopt, ""},

        {"i3", i3, "i3", "/run/i3"},
        {"i3 whose window has no name yet", changed(i3, [](World& world) { world.xServers = realServer(); }),
         "i3", "/run/i3"},
        {"i3 that says on the server where it listens",
         {x11Variables, {{":0", {false, "i3", "/run/i3"}}}, {}, i3.i3},
         "i3",
         "/run/i3"},
        {"i3 that does not answer", {i3.variables, realServer("i3")}, "i3", ""},
        {"the variable of an i3 that is elsewhere",
         changed(i3, [](World& world) { world.xServers = realServer("Openbox"); }), "Openbox", ""},
        {"the variable of sway in an X11 session",
         {with(x11Variables, "I3SOCK", "/run/sway"), realServer(), {}, sway.i3},
         std::nullopt,
         ""},

        {"sway", sway, "sway", "/run/sway"},
        {"sway without a process of its own",
         changed(sway,
                 [](World& world) {
                     world.compositors = {{"/run/user/wayland-1", {}}};
                 }),
         "sway", "/run/sway"},
        {"sway without its variable",
         changed(sway,
                 [](World& world) {
                     world.variables.erase("SWAYSOCK");
                     world.i3 = {{swaySocketByProcess, {"sway", compositorProcess}}};
                 }),
         "sway", swaySocketByProcess},
        {"sway that does not answer", changed(sway, [](World& world) { world.i3.clear(); }), "sway", ""},
        {"the variable of another sway",
         changed(sway,
                 [](World& world) {
                     world.i3 = {{"/run/sway", {"sway", 71}}};
                     world.programs = {{compositorProcess, "labwc"}};
                 }),
         "labwc", ""},
        {"an i3 in a window of a Wayland session",
         changed(sway,
                 [](World& world) {
                     world.i3 = {{"/run/sway", {"i3", std::nullopt}}};
                     world.programs = {{compositorProcess, "labwc"}};
                 }),
         "labwc", ""},

        {"GNOME", busName("org.gnome.Shell", compositorProcess, "gnome-shell"), "GNOME Shell", ""},
        {"GNOME under another program's name", busName("org.gnome.Shell", compositorProcess, "kiosk"),
         "GNOME Shell", ""},
        {"GNOME of another session on the same bus", busName("org.gnome.Shell", 71, "labwc"), "labwc", ""},
        {"GNOME without a bus",
         changed(wayland, [](World& world) { world.programs[compositorProcess] = "gnome-shell"; }),
         "GNOME Shell", ""},
        {"Plasma", busName("org.kde.KWin", compositorProcess, "kwin_wayland"), "KWin", ""},
        {"Plasma whose helper keeps the socket", busName("org.kde.KWin", 71, "kwin_wayland_wr"), "KWin", ""},
        {"a compositor that only its program names", busName("org.example", 1, "weston"), "weston", ""},
        {"a compositor in another namespace",
         changed(wayland,
                 [](World& world) {
                     world.compositors = {{"/run/user/wayland-1", {}}};
                     world.busNames["org.kde.KWin"] = 4;
                 }),
         "KWin", ""},
        {"a compositor that nothing names but its X server", wayland, "wlroots wm", ""},
        {"a compositor that nothing names", {waylandVariables, guestServer(), compositor}, std::nullopt, ""},
    };
}

TEST(SessionProbeTest, FindsOutWhoManagesTheWindows) {
    for (const auto& each : managerCases()) {
        SCOPED_TRACE(each.name);
        const auto found = each.world.probe();
        EXPECT_EQ(found.windowManager, each.windowManager);
        EXPECT_EQ(found.i3Socket, each.i3Socket);
    }
}

TEST(SessionProbeTest, TakesTheDesktopsNamesInTheirOrder) {
    EXPECT_THAT(World{}.probe().desktops, IsEmpty());
    EXPECT_THAT((World{{{"XDG_CURRENT_DESKTOP", "Budgie:GNOME"}}}.probe().desktops),
                ElementsAre("Budgie", "GNOME"));
    EXPECT_THAT((World{{{"XDG_CURRENT_DESKTOP", ":KDE::"}}}.probe().desktops), ElementsAre("KDE"));
}

TEST(SessionMarkTest, ASessionLastsAsLongAsItsDisplayServer) {
    const TestSupport::TemporaryFolder folder;
    const auto socket = folder.path() / "wayland-0";
    TestSupport::writeFile(socket, "");
    SessionEnvironment environment;
    environment.kind = SessionKind::wayland;
    environment.waylandSocket = socket;
    const auto first = sessionMark(environment);
    EXPECT_EQ(sessionMark(environment), first);
    EXPECT_EQ(first.find('\n'), std::string::npos);
    // Made while the other is still there, so that it is surely another one.
    TestSupport::writeFile(folder.path() / "next", "");
    std::filesystem::rename(folder.path() / "next", socket);
    const auto second = sessionMark(environment);
    EXPECT_NE(second, first);
    std::filesystem::remove(socket);
    EXPECT_NE(sessionMark(environment), second);
}

TEST(SessionMarkTest, DiffersBetweenDisplays) {
    SessionEnvironment one;
    one.kind = SessionKind::x11;
    one.display = ":7001";
    auto other = one;
    other.display = ":7002";
    auto screen = one;
    screen.display = ":7001.1";
    EXPECT_NE(sessionMark(one), sessionMark(other));
    EXPECT_EQ(sessionMark(one), sessionMark(screen));
}

} // namespace
