#include "Curtain/AppDelegate.h"
#include "Usage.h"
#include "platform/linux/Diagnosis.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/session/ApplicationBus.h"
#include "platform/linux/session/InstanceLock.h"
#include "platform/linux/session/NameOwner.h"
#include "platform/linux/session/SessionBusCheck.h"
#include "platform/linux/session/SessionProbe.h"
#include "platform/linux/soundlibrary/SoundToolkit.h"
#include "platform/qt/DisplayCheck.h"
#include "platform/qt/ForeignFileMessages.h"
#include "platform/qt/OwnLibrary.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/SessionRestart.h"
#include "platform/qt/TerminationSignals.h"
#include "platform/qt/views/ViewLibrary.h"

#include <QDBusConnection>
#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace {

void printLine(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

/// A dump of the memory would hold the camera's pictures and the voice. With a limit of 0 the kernel still
/// hands one to a program that collects them.
void leaveNoDump() {
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = std::min<rlim_t>(1, limit.rlim_max);
        setrlimit(RLIMIT_CORE, &limit);
    }
}

/// What a command line other than the bare name asks for; the process's status.
int answerOption(int argumentCount, char** arguments) {
    const std::string_view option = arguments[1];
    const bool isAlone = argumentCount == 2;
    if (isAlone && option == "--version") {
        printLine("curtain " CURTAIN_VERSION);
        return EXIT_SUCCESS;
    }
    if (isAlone && option == "--help") {
        std::fputs(usageText, stdout);
        return EXIT_SUCCESS;
    }
    if (isAlone && option == "--diagnose") {
        LinuxPlatform::leaveSilentSessionBus();
        const auto session = LinuxPlatform::probeSession(LinuxPlatform::sourcesOfThisSession());
        const QCoreApplication application(argumentCount, arguments);
        printLine("Curtain: " CURTAIN_VERSION);
        QtPlatform::QtMainQueue mainQueue;
        LinuxPlatform::diagnose(session, mainQueue, printLine);
        return EXIT_SUCCESS;
    }
    const auto* const refused = isAlone ? arguments[1] : arguments[2];
    std::fprintf(stderr, "curtain: there is no option %s here; curtain --help tells what there is\n",
                 refused);
    constexpr int wrongUse = 2;
    return wrongUse;
}

std::optional<std::string> missingLibrary() {
    using QtPlatform::OwnLibrary;
    const auto problem =
        OwnLibrary::problemWith(OwnLibrary::pathOf(QtPlatform::ViewLibrary::fileName), "windows");
    return problem
               ? problem
               : OwnLibrary::problemWith(OwnLibrary::pathOf(LinuxPlatform::soundLibraryFileName), "sounds");
}

/// What the program was given. A run that leaves a silent bus alone takes it away, and the next one is to
/// look for itself.
class SessionBusVariable {
public:
    void restore() const {
        if (value_) {
            setenv(name, value_->c_str(), 1);
        } else {
            unsetenv(name);
        }
    }

private:
    static constexpr const char* name = "DBUS_SESSION_BUS_ADDRESS";
    std::optional<std::string> value_ =
        std::getenv(name) != nullptr ? std::optional<std::string>(std::getenv(name)) : std::nullopt;
};

/// From the start to the end; the process's status, or `QtApplication::relaunchStatus`. The program's file is
/// told once it is known.
int run(int argumentCount, char** arguments, std::string& file) {
    leaveNoDump();
    LinuxPlatform::leaveSilentSessionBus();
    const auto session = LinuxPlatform::probeSession(LinuxPlatform::sourcesOfThisSession());
    if (const auto problem = LinuxPlatform::missingXServer(session);
        problem && QtPlatform::showsItselfThroughX()) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        return EXIT_FAILURE;
    }
    // A screen reader that asks after what has just left the screen is no news to anybody else.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.accessibility.atspi.warning=false"));
    const QtPlatform::ForeignFileMessages foreign(qEnvironmentVariableIsSet("CURTAIN_DEBUG"));
    std::optional<QtPlatform::PreferredDisplay> display(std::in_place);
    QGuiApplication application(argumentCount, arguments);
    display.reset();
    QGuiApplication::setApplicationName(QStringLiteral("curtain"));
    QGuiApplication::setApplicationVersion(QStringLiteral(CURTAIN_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.curtain.Curtain"));
    file = QFile::encodeName(QGuiApplication::applicationFilePath()).toStdString();

    if (const auto problem = missingLibrary()) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        return EXIT_FAILURE;
    }
    QtPlatform::stayOutOfSavedSessions(application);

    // Whoever finds it on the bus may end it.
    const auto termination = QtPlatform::onTerminationSignal([] { QGuiApplication::quit(); });
    std::optional<LinuxPlatform::InstanceLock> lock;
    LinuxPlatform::ApplicationBus bus(
        QDBusConnection::sessionBus(), QGuiApplication::desktopFileName(), [&](std::uint32_t process) {
            return LinuxPlatform::judgeNameOwner(LinuxPlatform::ProcessTable(), process,
                                                 static_cast<std::uint32_t>(getpid()), session);
        });
    const auto claim = bus.claim();
    using Claim = LinuxPlatform::ApplicationBus::Claim;
    if (claim == Claim::stranger || claim == Claim::otherSession) {
        std::fprintf(
            stderr,
            "Curtain: %s has its name on the session bus, so menus and scripts do not reach this one\n",
            claim == Claim::stranger ? "another program" : "one in another session of yours");
    }
    switch (claim) {
    case Claim::otherOpened:
        return EXIT_SUCCESS;
    case Claim::otherSilent:
        std::fputs("Curtain: it runs already in this session, but does not answer\n", stderr);
        return EXIT_FAILURE;
    case Claim::first:
        break;
    case Claim::stranger:
    case Claim::otherSession:
    case Claim::noBus:
        lock.emplace(LinuxPlatform::InstanceLock::fileFor(session.display));
        if (lock->isTaken()) {
            std::fprintf(
                stderr,
                "Curtain: it runs already on this display, and without %s it cannot be asked to open\n",
                claim == Claim::noBus ? "a session bus" : "its name on the session bus");
            return EXIT_FAILURE;
        }
        break;
    }

    auto platform = LinuxPlatform::makeLinuxPlatform(session);
    Curtain::AppDelegate delegate(platform);
    delegate.applicationDidFinishLaunching();
    using Request = Curtain::AppDelegate::PrivacyRequest;
    bus.setActions({.open = [&] { delegate.open(); },
                    .named = {{"open", [&] { delegate.open(); }},
                              {"settings", [&] { delegate.openSettings(); }},
                              {"toggle-privacy", [&] { delegate.privacyRequested(Request::toggle); }},
                              {"privacy-on", [&] { delegate.privacyRequested(Request::on); }},
                              {"privacy-off", [&] { delegate.privacyRequested(Request::off); }},
                              {"quit", [&] { delegate.menuQuit(); }}}});
    return QGuiApplication::exec();
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount > 1) {
        return answerOption(argumentCount, arguments);
    }
    std::string file;
    const SessionBusVariable busVariable;
    const int status = run(argumentCount, arguments, file);
    if (status != QtPlatform::QtApplication::relaunchStatus) {
        return status;
    }
    if (QtPlatform::isTerminationPending()) {
        return EXIT_SUCCESS;
    }
    busVariable.restore();
    // In the same process, for whoever started this one waits for its end.
    execv(file.c_str(), arguments);
    std::perror("Curtain: it could not be started again");
    return EXIT_FAILURE;
}
