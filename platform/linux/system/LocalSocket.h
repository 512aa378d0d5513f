#pragma once

#include <filesystem>

namespace LinuxPlatform {

/// Connects to a socket in the file system and does not wait, then or later. The caller closes what it gets;
/// -1 where nobody listens, or where so many wait to be let in that there is no room.
int connectToSocket(const std::filesystem::path& path);

} // namespace LinuxPlatform
