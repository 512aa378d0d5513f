#include "platform/qt/QtWallClock.h"

#include <QDateTime>

namespace QtPlatform {

std::chrono::system_clock::time_point QtWallClock::now() {
    return std::chrono::system_clock::now();
}

std::string QtWallClock::localTimestamp(std::chrono::system_clock::time_point moment) {
    const auto sinceEpoch =
        std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(sinceEpoch)
        .toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"))
        .toStdString();
}

} // namespace QtPlatform
