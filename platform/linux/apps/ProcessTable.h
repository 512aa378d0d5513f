#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// The processes of this machine, as a /proc folder shows them.
class ProcessTable {
public:
    explicit ProcessTable(std::filesystem::path root = "/proc");

    /// The file name of the program that the process runs, even when its file has been replaced since; absent
    /// when it cannot be known.
    std::optional<std::string> program(std::uint32_t process) const;

private:
    std::filesystem::path root_;
};

} // namespace LinuxPlatform
