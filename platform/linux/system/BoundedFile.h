#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace LinuxPlatform {

/// The first `limit` bytes of a regular file; empty when it cannot be read.
std::string readStartOfFile(const std::filesystem::path& path, std::size_t limit);

} // namespace LinuxPlatform
