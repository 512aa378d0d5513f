#pragma once

#include "platform/linux/session/SessionEnvironment.h"
#include "platform/linux/system/ProcessTable.h"

#include <cstdint>

namespace LinuxPlatform {

/// Who has this program's name on the session bus.
enum class NameOwner {
    /// This program in this session, as far as can be known.
    thisSessions,
    /// This program in another session of the same user, that shares the bus.
    anotherSessions,
    /// Another program.
    stranger,
};

/// `thisProcess` is one of this program and session.
NameOwner judgeNameOwner(const ProcessTable& processes, std::uint32_t owner, std::uint32_t thisProcess,
                         const SessionEnvironment& session);

} // namespace LinuxPlatform
