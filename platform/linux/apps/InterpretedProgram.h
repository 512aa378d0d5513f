#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace LinuxPlatform {

/// Whether the program of this file name runs other programs, so that its own name tells nothing about the
/// app: interpreters, virtual machines and application frameworks, of any version.
bool isInterpreter(std::string_view program);

/// Whether the program of this file name only starts others and waits for them, such as a shell.
bool isLauncher(std::string_view program);

/// The name of the program that an interpreter was told to run, without folder and suffix; where its file has
/// a name that every program could have, the name of its folder. `arguments` are a command line, the
/// interpreter as its first word. Absent where no program is named.
std::optional<std::string> interpretedProgram(std::span<const std::string> arguments);

} // namespace LinuxPlatform
