#pragma once

#include <QDBusMessage>
#include <QString>

namespace LinuxPlatform {

/// Who makes a call, by the unique name that the bus itself has written into it. Of calls this is known in
/// every version of Qt; of replies it is not.
inline QString callerOf(const QDBusMessage& call) {
    return call.service();
}

} // namespace LinuxPlatform
