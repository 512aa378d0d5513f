#include "platform/qt/DisplayCheck.h"

#include <QString>
#include <QtGlobal>

#include <memory>

#include <xcb/xcb.h>

namespace QtPlatform {

std::optional<std::string> missingDisplay() {
    // Whoever chooses the toolkit's platform by hand knows where it shows.
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
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

} // namespace QtPlatform
