#include "platform/qt/SessionRestart.h"

#include <QGuiApplication>
#include <QSessionManager>

namespace QtPlatform {

void stayOutOfSavedSessions(QGuiApplication& application) {
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application,
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
}

} // namespace QtPlatform
