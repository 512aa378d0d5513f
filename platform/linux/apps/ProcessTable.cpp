#include "platform/linux/apps/ProcessTable.h"

#include <string_view>
#include <system_error>
#include <utility>

namespace LinuxPlatform {

ProcessTable::ProcessTable(std::filesystem::path root) : root_(std::move(root)) {}

std::optional<std::string> ProcessTable::program(std::uint32_t process) const {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(root_ / std::to_string(process) / "exe", error);
    if (error) {
        return std::nullopt;
    }
    auto name = target.filename().string();
    constexpr std::string_view replaced = " (deleted)";
    if (name.ends_with(replaced)) {
        name.resize(name.size() - replaced.size());
    }
    return name.empty() ? std::nullopt : std::optional(std::move(name));
}

} // namespace LinuxPlatform
