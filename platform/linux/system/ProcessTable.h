#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// The processes of this machine, as a /proc folder shows them. Whatever cannot be known is absent or empty.
class ProcessTable {
public:
    explicit ProcessTable(std::filesystem::path root = "/proc");

    /// Those of this user, in ascending order.
    std::vector<std::uint32_t> ownProcesses() const;

    /// The path of the program that the process runs, even when its file has been replaced since.
    std::optional<std::string> executable(std::uint32_t process) const;
    /// The file name of that program.
    std::optional<std::string> program(std::uint32_t process) const;
    /// The command line, the name of the program as its first word.
    std::vector<std::string> arguments(std::uint32_t process) const;
    /// As it was when the program started.
    std::optional<std::string> environmentVariable(std::uint32_t process, std::string_view name) const;
    std::optional<std::uint32_t> parent(std::uint32_t process) const;
    /// Since the machine started, in a unit of the kernel's own.
    std::optional<std::uint64_t> startTime(std::uint32_t process) const;
    /// The path of the control group that the process manager put it into; empty when there is none.
    std::string controlGroup(std::uint32_t process) const;
    std::string controlGroupOfSelf() const;
    /// The rule set that confines it, and how strictly; empty when there is none.
    std::string securityLabel(std::uint32_t process) const;
    /// A folder or file as the process itself sees it.
    std::filesystem::path pathSeenBy(std::uint32_t process, const std::filesystem::path& path) const;

private:
    std::string read(const std::string& process, const char* file, std::size_t limit) const;
    std::vector<std::string> statusFields(std::uint32_t process) const;

    std::filesystem::path root_;
};

} // namespace LinuxPlatform
