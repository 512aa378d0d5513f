#include "platform/linux/windows/kwin/KWinRequests.h"

#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

using Act = KWinRequests::Act;

constexpr qsizetype windowsAtOnce = 16;
/// KWin reads nothing while it does what it is asked, and may read one picture of a window from its X server
/// before it is asked for more. The X server, which sends a picture of each window that is shown, ends when
/// it can send no more, and all X11 programs with it.
constexpr qsizetype shownAtOnce = 1;

QString nameOf(Act act) {
    switch (act) {
    case Act::hide:
        return QStringLiteral("hide");
    case Act::show:
        return QStringLiteral("show");
    case Act::activate:
        break;
    }
    return QStringLiteral("activate");
}

} // namespace

void KWinRequests::add(Act act, const QStringList& windows) {
    if (windows.isEmpty()) {
        return;
    }
    if (act == Act::hide) {
        withdraw(Act::show, windows);
        // It would bring them into view as well.
        withdraw(Act::activate, windows);
    } else if (act == Act::show) {
        withdraw(Act::hide, windows);
    }
    const auto isLater = [act](const Request& other) { return act == Act::hide && other.act != Act::hide; };
    waiting_.insert(std::ranges::find_if(waiting_, isLater), {act, windows});
}

void KWinRequests::withdraw(Act act, const QStringList& windows) {
    for (auto& request : waiting_) {
        if (request.act == act) {
            request.windows.removeIf([&](const QString& window) { return windows.contains(window); });
        }
    }
    std::erase_if(waiting_, [](const Request& request) { return request.windows.isEmpty(); });
}

KWinRequests::Portion KWinRequests::takePortion() {
    Portion portion;
    auto left = windowsAtOnce;
    auto showsLeft = shownAtOnce;
    while (!waiting_.empty()) {
        auto& next = waiting_.front();
        const bool isShow = next.act == Act::show;
        const auto count = std::min(next.windows.size(), isShow ? std::min(left, showsLeft) : left);
        if (count == 0) {
            break;
        }
        portion.push_back({next.act, next.windows.first(count)});
        left -= count;
        showsLeft -= isShow ? count : 0;
        next.windows.remove(0, count);
        if (next.windows.isEmpty()) {
            waiting_.erase(waiting_.begin());
        }
    }
    return portion;
}

void KWinRequests::putBack(const Portion& portion) {
    for (const auto& [act, windows] : std::exchange(waiting_, portion)) {
        add(act, windows);
    }
}

bool KWinRequests::shows(const Portion& portion, const QString& window) {
    return std::ranges::any_of(portion, [&](const Request& request) {
        return request.act == Act::show && request.windows.contains(window);
    });
}

bool KWinRequests::hasShow(const Portion& portion) {
    return std::ranges::any_of(portion, [](const Request& request) { return request.act == Act::show; });
}

QJsonArray KWinRequests::forScript(const Portion& portion) {
    QJsonArray requests;
    for (const auto& [act, windows] : portion) {
        requests.append(QJsonObject{{QStringLiteral("act"), nameOf(act)},
                                    {QStringLiteral("ids"), QJsonArray::fromStringList(windows)}});
    }
    return requests;
}

} // namespace LinuxPlatform
