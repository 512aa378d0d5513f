#include "platform/qt/PortalWindow.h"

#include <QGuiApplication>
#include <QWindow>

namespace QtPlatform {

QString portalNameOfFocusedWindow() {
    const auto* const window = QGuiApplication::focusWindow();
    if (window == nullptr || QGuiApplication::platformName() != QLatin1String("xcb")) {
        return {};
    }
    return QStringLiteral("x11:") + QString::number(window->winId(), 16);
}

} // namespace QtPlatform
