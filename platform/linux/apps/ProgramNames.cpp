#include "platform/linux/apps/ProgramNames.h"

#include "platform/linux/apps/InterpretedProgram.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Without what tells the program itself from the script that starts it, and without its version.
std::string_view plain(std::string_view name) {
    constexpr std::array<std::string_view, 5> suffixes{".bin", "-bin", ".real", "-real", "-wrapped"};
    for (const auto suffix : suffixes) {
        if (name.size() > suffix.size() && name.ends_with(suffix)) {
            name.remove_suffix(suffix.size());
        }
    }
    const auto dash = name.find_last_not_of("0123456789.");
    const bool hasVersion =
        dash != std::string_view::npos && dash > 0 && dash + 1 < name.size() && name[dash] == '-';
    return hasVersion ? name.substr(0, dash) : name;
}

} // namespace

std::vector<std::string> ProgramNames::of(std::uint32_t process) const {
    std::vector<std::string> names;
    const auto add = [&](std::string_view name) {
        if (!name.empty() && std::ranges::find(names, name) == names.end()) {
            names.emplace_back(name);
        }
    };
    const auto program = processes_.program(process);
    if (!program) {
        return names;
    }
    const auto arguments = processes_.arguments(process);
    if (isInterpreter(*program)) {
        auto command = arguments;
        if (!command.empty()) {
            // The first word of the command line is whatever the caller called it.
            command.front() = *program;
        }
        add(interpretedProgram(command).value_or(std::string()));
        return names;
    }
    add(*program);
    // Scripts that start a program often lend it their own name.
    const auto called =
        arguments.empty() ? std::string() : std::filesystem::path(arguments.front()).filename().string();
    if (!isInterpreter(called)) {
        add(called);
    }
    add(plain(*program));
    return names;
}

} // namespace LinuxPlatform
