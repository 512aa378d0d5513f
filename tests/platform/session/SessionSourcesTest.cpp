#include "platform/linux/session/SessionProbe.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <ostream>
#include <string>

#include <sys/stat.h>

namespace LinuxPlatform {

void PrintTo(const SessionEnvironment& session, std::ostream* stream) {
    *stream << "kind " << static_cast<int>(session.kind) << ", manager "
            << session.windowManager.value_or("none") << ", display '" << session.display << "', silent '"
            << session.silentDisplay << "', " << session.waylandSocket << ", " << session.i3Socket << ", "
            << testing::PrintToString(session.desktops);
}

} // namespace LinuxPlatform

namespace {

using LinuxPlatform::probeSession;
using LinuxPlatform::SessionEnvironment;
using LinuxPlatform::SessionKind;

std::string variable(const char* name) {
    const auto* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// However long the machine stalls, whoever is there answers.
LinuxPlatform::SessionSources patientSources() {
    using std::chrono::seconds;
    return LinuxPlatform::sourcesOfThisSession(
        {.xServer = seconds(60), .socket = seconds(60), .bus = seconds(60)});
}

/// The sources as they are, but for a variable.
LinuxPlatform::SessionSources sourcesWith(const std::string& name, const std::string& value) {
    auto sources = patientSources();
    sources.variable = [ask = sources.variable, name, value](const std::string& other) {
        return other == name ? value : ask(other);
    };
    return sources;
}

struct Expectation {
    SessionKind kind;
    std::optional<std::string> windowManager;
};

/// What holds in the virtual desktop that this program runs in.
Expectation expectation() {
    const std::map<std::string, Expectation> expectations{
        {"x11-bare", {SessionKind::x11, std::nullopt}},
        {"x11-openbox", {SessionKind::x11, "Openbox"}},
        {"x11-i3", {SessionKind::x11, "i3"}},
        {"sway", {SessionKind::waylandWithX, "sway"}},
        {"weston", {SessionKind::waylandWithX, "weston"}},
    };
    return expectations.at(variable("VIRTUAL_DESKTOP_SESSION"));
}

bool isSocket(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

struct SessionSourcesTest : testing::Test {
    Expectation expected = expectation();
    SessionEnvironment session = probeSession(patientSources());

    bool isWayland() const { return expected.kind == SessionKind::waylandWithX; }
};

TEST_F(SessionSourcesTest, ThisSessionIsKnown) {
    EXPECT_EQ(session.kind, expected.kind);
    EXPECT_EQ(session.windowManager, expected.windowManager);
    EXPECT_EQ(session.display, variable("DISPLAY"));
    EXPECT_EQ(isSocket(session.waylandSocket), isWayland()) << session.waylandSocket;
    EXPECT_EQ(isSocket(session.i3Socket), expected.windowManager == "i3" || expected.windowManager == "sway")
        << session.i3Socket;
}

TEST_F(SessionSourcesTest, WithoutVariablesTheServerStillSaysWhatItIs) {
    auto sources = patientSources();
    sources.variable = [](const std::string& name) { return name == "DISPLAY" ? variable("DISPLAY") : ""; };
    const auto found = probeSession(sources);
    EXPECT_EQ(found.kind, expected.kind);
    EXPECT_EQ(found.display, variable("DISPLAY"));
}

TEST_F(SessionSourcesTest, VariablesOfAnotherSessionCountForNothing) {
    EXPECT_EQ(probeSession(sourcesWith("XDG_SESSION_TYPE", isWayland() ? "x11" : "wayland")), session);
    EXPECT_EQ(probeSession(sourcesWith("WAYLAND_DISPLAY", "wayland-of-nobody")).kind, expected.kind);
    EXPECT_EQ(probeSession(sourcesWith("SWAYSOCK", "/nowhere")), session);
}

TEST_F(SessionSourcesTest, WithoutAnXServerOnlyACompositorMakesASession) {
    for (const auto* display : {"", ":4711", "nonsense"}) {
        const auto found = probeSession(sourcesWith("DISPLAY", display));
        EXPECT_EQ(found.kind, isWayland() ? SessionKind::wayland : SessionKind::none);
        EXPECT_EQ(found.display, "");
        EXPECT_EQ(found.waylandSocket, session.waylandSocket);
    }
}

} // namespace
