#pragma once

#include "platform/HotKeyService.h"
#include "platform/Keyboard.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/SystemShortcuts.h"
#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/session/SessionEnvironment.h"
#include "platform/linux/x11/X11Connection.h"

#include <memory>

namespace LinuxPlatform {

/// The ports that have to do with keys. Later ones use earlier ones.
struct SessionKeys {
    std::unique_ptr<Platform::Keyboard> keyboard;
    std::unique_ptr<Platform::HotKeyService> hotKeyService;
    std::unique_ptr<Platform::SystemShortcuts> systemShortcuts;
};

/// Those of this session. `x11` may be null, where there is no X server; it, the queue and the log outlive
/// them. `boundShortcuts` is where it is written down which keys a session was asked for that does not forget
/// them.
SessionKeys keysOfSession(const SessionEnvironment& environment, X11Connection* x11,
                          EarlierValue boundShortcuts, Platform::MainQueue& queue, Platform::Log& log);

} // namespace LinuxPlatform
