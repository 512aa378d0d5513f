#pragma once

#include <filesystem>

namespace LinuxPlatform {

/// A folder for what is to be gone with the session at the latest: the session's run-time folder where it is
/// this user's alone, or else one below the user's cache, which is made where it is missing.
std::filesystem::path runtimeFolder();

} // namespace LinuxPlatform
