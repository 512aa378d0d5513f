#include "platform/linux/windows/kwin/KWinRequests.h"

#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr qsizetype windowsAtOnce = 16;
/// KWin reads nothing while it does what it is asked, and may read one picture of a window from its X server
/// before it is asked for more. The X server, which sends a picture of each window that is shown, ends when
/// it can send no more, and all X11 programs with it.
constexpr qsizetype shownAtOnce = 1;

const QString actKey = QStringLiteral("act");
const QString idsKey = QStringLiteral("ids");

QString nameOf(KWinRequests::Act act) {
    switch (act) {
    case KWinRequests::Act::hide:
        return QStringLiteral("hide");
    case KWinRequests::Act::show:
        return QStringLiteral("show");
    case KWinRequests::Act::activate:
        break;
    }
    return QStringLiteral("activate");
}

QJsonArray cutOff(QJsonArray& windows, qsizetype count) {
    QJsonArray front;
    while (front.size() < count) {
        front.append(windows.takeAt(0));
    }
    return front;
}

} // namespace

void KWinRequests::add(Act act, const QStringList& windows) {
    if (!windows.isEmpty()) {
        waiting_.append(QJsonObject{{actKey, nameOf(act)}, {idsKey, QJsonArray::fromStringList(windows)}});
    }
}

QJsonArray KWinRequests::takePortion() {
    QJsonArray portion;
    auto left = windowsAtOnce;
    while (!waiting_.isEmpty() && left > 0) {
        auto request = waiting_.takeAt(0).toObject();
        auto windows = request.value(idsKey).toArray();
        const bool isShow = request.value(actKey).toString() == nameOf(Act::show);
        left = isShow ? std::min(left, shownAtOnce) : left;
        if (windows.size() > left) {
            portion.append(QJsonObject{{actKey, request.value(actKey)}, {idsKey, cutOff(windows, left)}});
            request[idsKey] = windows;
            waiting_.prepend(request);
            return portion;
        }
        portion.append(request);
        left -= windows.size();
    }
    return portion;
}

void KWinRequests::putBack(QJsonArray portion) {
    for (const auto& later : std::as_const(waiting_)) {
        portion.append(later);
    }
    waiting_ = std::move(portion);
}

bool KWinRequests::hasShow(const QJsonArray& portion) {
    return std::ranges::any_of(
        portion, [](const QJsonValue& request) { return request[actKey].toString() == nameOf(Act::show); });
}

} // namespace LinuxPlatform
