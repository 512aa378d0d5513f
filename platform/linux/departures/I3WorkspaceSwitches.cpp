#include "platform/linux/departures/I3WorkspaceSwitches.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <utility>

namespace LinuxPlatform {
namespace {

bool takesThePlaceOfAnother(const QByteArray& payload) {
    const auto news = jsonOf(payload).object();
    const auto outputOf = [&](const char* workspace) {
        return news.value(QLatin1String(workspace)).toObject().value(QLatin1String("output")).toString();
    };
    return news.value(QLatin1String("change")).toString() == QLatin1String("focus") &&
           !outputOf("old").isEmpty() && outputOf("old") == outputOf("current");
}

} // namespace

I3WorkspaceSwitches::I3WorkspaceSwitches(const std::filesystem::path& socket, Platform::MainQueue& queue,
                                         std::function<void()> didSwitch)
    : connection_(
          socket, queue, {"workspace"},
          {nullptr, nullptr, [didSwitch = std::move(didSwitch)](I3Event event, const QByteArray& payload) {
               if (event == I3Event::workspace && takesThePlaceOfAnother(payload)) {
                   didSwitch();
               }
           }}) {
    connection_.open();
}

} // namespace LinuxPlatform
