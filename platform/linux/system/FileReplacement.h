#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace LinuxPlatform {

/// What the last system call of this thread said.
std::error_code lastError();

/// Makes the names in a folder last.
std::error_code syncFolder(const std::filesystem::path& folder);

/// Replaces the file by way of a new one beside it, through a symbolic link if there is one. It is there
/// whole and lasts, or what was there before still is; only its owner may read it. Any thread; may block.
std::error_code replaceFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace LinuxPlatform
