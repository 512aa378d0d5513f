#pragma once

#include "platform/linux/system/Patience.h"

#include <filesystem>
#include <functional>

namespace LinuxPlatform {

/// Connects to a socket in the file system and does not wait, then or later. The caller closes what it gets;
/// -1 where nobody listens, or where so many wait to be let in that there is no room.
int connectToSocket(const std::filesystem::path& path);

/// What is to be done over a connection.
struct SocketWork {
    /// The connection; negative once nothing is left to wait for.
    std::function<int()> socket;
    std::function<bool()> wantsToWrite;
    std::function<void()> write;
    std::function<void()> read;
};

/// Waits for the other side and does the work, at most for `patience`: where no event loop runs.
void serveSocket(const SocketWork& work, Patience patience);

} // namespace LinuxPlatform
