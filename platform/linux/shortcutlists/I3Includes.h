#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform::I3Includes {

/// The files that an `include` of i3's or sway's configuration names, which is read as a shell reads words;
/// relative ones begin in the folder. One that would run a command names none. Source: sway(5).
std::vector<std::filesystem::path> files(const std::string& words, const std::filesystem::path& folder);

/// What such a file says; absent where it is no file, cannot be read or is longer than anybody writes.
std::optional<std::string> read(const std::filesystem::path& file);

} // namespace LinuxPlatform::I3Includes
