#include "platform/qt/DisplayCheck.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <memory>

#include <xcb/xcb.h>

namespace QtPlatform {
namespace {

/// The toolkit has no other way to be told that leaves the command line alone.
constexpr auto platformVariable = "QT_QPA_PLATFORM";
constexpr auto x11Platform = "xcb";

} // namespace

std::optional<std::string> missingDisplay() {
    // Whoever chooses the toolkit's platform by hand knows where it shows.
    if (const auto chosen = qgetenv(platformVariable); !chosen.isEmpty() && chosen != x11Platform) {
        return std::nullopt;
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        return "Curtain: there is no X display to show itself on (DISPLAY is not set); start it from within "
               "a desktop session";
    }
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return "Curtain: the X display " + qEnvironmentVariable("DISPLAY").toStdString() +
               " does not answer; start Curtain from within a desktop session";
    }
    return std::nullopt;
}

PreferredDisplay::PreferredDisplay() : isOurs_(qEnvironmentVariableIsEmpty(platformVariable)) {
    if (isOurs_) {
        qputenv(platformVariable, x11Platform);
    }
}

PreferredDisplay::~PreferredDisplay() {
    // Programs that Curtain starts choose for themselves.
    if (isOurs_) {
        qunsetenv(platformVariable);
    }
}

} // namespace QtPlatform
