#include "platform/qt/QtApplication.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QWindow>

namespace QtPlatform {

void QtApplication::setActivationPolicy(Platform::ActivationPolicy policy) {
    // An accessory lives on without windows, and closing one must not end it.
    QGuiApplication::setQuitOnLastWindowClosed(policy == Platform::ActivationPolicy::regular);
}

void QtApplication::activate(bool ignoringOtherApps) {
    auto* const focused = QGuiApplication::focusWindow();
    if (focused != nullptr && !ignoringOtherApps) {
        return;
    }
    for (auto* const window : QGuiApplication::topLevelWindows()) {
        if (window->isVisible() && window->type() == Qt::Window) {
            window->raise();
            window->requestActivate();
        }
    }
}

std::optional<std::string> QtApplication::bundleIdentifier() const {
    const auto identifier = QGuiApplication::desktopFileName();
    const QFileInfo entry(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/applications/") +
                          identifier + QStringLiteral(".desktop"));
    return entry.exists() ? std::optional(identifier.toStdString()) : std::nullopt;
}

void QtApplication::terminate() {
    QGuiApplication::quit();
}

void QtApplication::relaunch() {
    QGuiApplication::exit(relaunchStatus);
}

} // namespace QtPlatform
