#pragma once

#include <QDBusConnection>

namespace LinuxPlatform {

/// A socket of the PipeWire daemon on which a program in a sandbox may see the cameras (the method
/// OpenPipeWireRemote of org.freedesktop.portal.Camera), for the caller to own; negative while the user has
/// not let it see them. Any thread; waits for the portal no longer than a second.
int openPipeWireRemote(const QDBusConnection& sessionBus);

} // namespace LinuxPlatform
