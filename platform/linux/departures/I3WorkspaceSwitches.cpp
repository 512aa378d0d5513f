#include "platform/linux/departures/I3WorkspaceSwitches.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

I3WorkspaceSwitches::I3WorkspaceSwitches(const std::filesystem::path& socket, Platform::MainQueue& queue,
                                         std::function<void()> didSwitch)
    : didSwitch_(std::move(didSwitch)),
      connection_(
          socket, queue, {"workspace"},
          {[this] { begin(); }, nullptr, [this](I3Event /*event*/, const QByteArray& /*news*/) { look(); }}) {
    connection_.open();
}

void I3WorkspaceSwitches::begin() {
    // A window manager that was started again gives its workspaces other identifiers.
    inView_.clear();
    look();
}

void I3WorkspaceSwitches::look() {
    connection_.ask(I3Request::getWorkspaces, {},
                    [this](const QByteArray& workspaces) { compare(inView(workspaces)); });
}

void I3WorkspaceSwitches::compare(InView now) {
    const bool isSwitched = std::ranges::any_of(now, [this](const auto& output) {
        const auto before = inView_.find(output.first);
        return before != inView_.end() && before->second != output.second;
    });
    inView_ = std::move(now);
    if (isSwitched) {
        didSwitch_();
    }
}

I3WorkspaceSwitches::InView I3WorkspaceSwitches::inView(const QByteArray& workspaces) {
    InView inView;
    for (const auto& entry : jsonOf(workspaces).array()) {
        const auto workspace = entry.toObject();
        if (workspace.value(QLatin1String("visible")).toBool()) {
            inView.emplace(workspace.value(QLatin1String("output")).toString(),
                           workspace.value(QLatin1String("id")));
        }
    }
    return inView;
}

} // namespace LinuxPlatform
