#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/i3/I3Connection.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <filesystem>
#include <functional>
#include <map>

namespace LinuxPlatform {

/// Hears from i3 or sway that another workspace takes the place of one that was in view on its output. What
/// their events say is not enough: they name the workspace that had the focus, perhaps on another output, and
/// tell of each step of several that end where they began. The number that i3 tells the X server changes with
/// every workspace that ends, and with a pointer that moves to another output.
class I3WorkspaceSwitches {
public:
    /// `queue` outlives this object.
    I3WorkspaceSwitches(const std::filesystem::path& socket, Platform::MainQueue& queue,
                        std::function<void()> didSwitch);

private:
    /// The identifiers of the workspaces in view, by the names of their outputs.
    using InView = std::map<QString, QJsonValue>;

    static InView inView(const QByteArray& workspaces);
    void begin();
    void look();
    void compare(InView now);

    std::function<void()> didSwitch_;
    InView inView_;
    I3Connection connection_;
};

} // namespace LinuxPlatform
