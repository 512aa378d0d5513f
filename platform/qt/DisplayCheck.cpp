#include "platform/qt/DisplayCheck.h"

#include <QList>
#include <QtGlobal>

namespace QtPlatform {
namespace {

/// The toolkit has no other way to be told that leaves the command line alone.
constexpr auto platformVariable = "QT_QPA_PLATFORM";
constexpr auto x11Platform = "xcb";

} // namespace

bool showsItselfThroughX() {
    // A list begins with what is preferred, which may have options behind a colon.
    const auto chosen = qgetenv(platformVariable).split(';').value(0).split(':').value(0);
    return chosen.isEmpty() || chosen == x11Platform || chosen.startsWith("wayland");
}

PreferredDisplay::PreferredDisplay() : isOurs_(showsItselfThroughX()), before_(qgetenv(platformVariable)) {
    if (isOurs_) {
        qputenv(platformVariable, x11Platform);
    }
}

PreferredDisplay::~PreferredDisplay() {
    // Programs that Curtain starts choose for themselves.
    if (isOurs_ && before_.isEmpty()) {
        qunsetenv(platformVariable);
    } else if (isOurs_) {
        qputenv(platformVariable, before_);
    }
}

} // namespace QtPlatform
