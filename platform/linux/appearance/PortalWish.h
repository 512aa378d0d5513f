#pragma once

#include "platform/linux/dbus/PortalSetting.h"

#include <QDBusConnection>
#include <QString>
#include <QVariant>

#include <deque>
#include <functional>
#include <vector>

namespace LinuxPlatform {

/// Something that the desktop asks of its programs, which several settings of its portal may say. Without a
/// portal nothing is asked for.
class PortalWish {
public:
    struct Source {
        QString group;
        QString key;
        /// Whether a value of the setting asks for it.
        std::function<bool(const QVariant&)> asks;
    };
    using Handler = std::function<void(bool)>;

    /// `onChange` is called from the event loop, when the first answer comes and when one changes.
    PortalWish(const QDBusConnection& bus, const std::vector<Source>& sources, Handler onChange);

    /// Of a switch: whether it stands like this. Values of other types are none.
    static std::function<bool(const QVariant&)> isSwitched(bool on);

private:
    void report();

    Handler onChange_;
    std::deque<bool> asked_;
    std::deque<PortalSetting> settings_;
};

} // namespace LinuxPlatform
