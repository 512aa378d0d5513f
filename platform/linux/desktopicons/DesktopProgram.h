#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Starts a program that is to outlive this one, without waiting for it. Returns whether it was started.
using StartDesktopProgram = std::function<bool(const std::vector<std::string>& command)>;

bool startDesktopProgram(const std::vector<std::string>& command);

/// False also for one that has ended and that nobody has asked about yet.
bool isRunning(std::uint32_t process, const std::filesystem::path& root = "/proc");

/// The part of a running program's command line that names its configuration profile; empty when it names
/// none.
std::vector<std::string> profileArguments(std::uint32_t process, const std::filesystem::path& root = "/proc");

} // namespace LinuxPlatform
