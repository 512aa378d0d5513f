#include "Curtain/AppDelegate.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/dbus/SessionBusCheck.h"
#include "platform/qt/DisplayCheck.h"
#include "platform/qt/TerminationSignals.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

int main(int argumentCount, char** arguments) {
    if (const auto problem = QtPlatform::missingDisplay()) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        return EXIT_FAILURE;
    }
    LinuxPlatform::leaveSilentSessionBus();
    std::optional<QtPlatform::PreferredDisplay> display(std::in_place);
    QApplication application(argumentCount, arguments);
    display.reset();
    QApplication::setApplicationName(QStringLiteral("curtain"));
    QApplication::setApplicationDisplayName(QStringLiteral("Curtain"));
    QApplication::setApplicationVersion(QStringLiteral(CURTAIN_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.curtain.Curtain"));

    auto platform = LinuxPlatform::makeLinuxPlatform();
    Curtain::AppDelegate delegate(platform);
    const auto termination = QtPlatform::onTerminationSignal([] { QApplication::quit(); });
    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
