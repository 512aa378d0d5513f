#include "platform/qt/QtApplication.h"

#include <QGuiApplication>

namespace QtPlatform {

void QtApplication::setActivationPolicy(Platform::ActivationPolicy policy) {
    // An accessory lives on without windows, and closing one must not end it.
    QGuiApplication::setQuitOnLastWindowClosed(policy == Platform::ActivationPolicy::regular);
}

void QtApplication::terminate() {
    QGuiApplication::quit();
}

} // namespace QtPlatform
