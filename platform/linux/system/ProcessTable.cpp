#include "platform/linux/system/ProcessTable.h"

#include "platform/linux/system/BoundedFile.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

constexpr std::size_t longestCommandLine = std::size_t{64} * 1024;
constexpr std::size_t longestEnvironment = std::size_t{1024} * 1024;
constexpr std::size_t longestOther = std::size_t{16} * 1024;

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

/// Pieces that end with a zero byte each.
std::vector<std::string> piecesOf(std::string_view text) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const auto length = std::min(text.find('\0'), text.size());
        pieces.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return pieces;
}

std::string controlGroupIn(const std::string& text) {
    std::istringstream lines(text);
    std::string found;
    for (std::string line; std::getline(lines, line);) {
        // The common hierarchy, or the process manager's own where the hierarchies are still apart.
        for (const std::string_view prefix : {"0::", "1:name=systemd:"}) {
            const bool isBetter = line.starts_with(prefix) && found.size() <= 1;
            found = isBetter ? line.substr(prefix.size()) : std::move(found);
        }
    }
    return found;
}

} // namespace

ProcessTable::ProcessTable(std::filesystem::path root) : root_(std::move(root)) {}

std::vector<std::uint32_t> ProcessTable::ownProcesses() const {
    std::vector<std::uint32_t> processes;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(root_, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const auto process = numberIn<std::uint32_t>(entry->path().filename().native());
        struct stat status {};
        if (process && stat(entry->path().c_str(), &status) == 0 && status.st_uid == geteuid()) {
            processes.push_back(*process);
        }
    }
    std::ranges::sort(processes);
    return processes;
}

std::optional<std::string> ProcessTable::executable(std::uint32_t process) const {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(root_ / std::to_string(process) / "exe", error);
    if (error) {
        return std::nullopt;
    }
    auto path = target.string();
    constexpr std::string_view replaced = " (deleted)";
    if (path.ends_with(replaced)) {
        path.resize(path.size() - replaced.size());
    }
    return path.empty() || path.ends_with('/') ? std::nullopt : std::optional(std::move(path));
}

std::optional<std::string> ProcessTable::program(std::uint32_t process) const {
    const auto path = executable(process);
    return path ? std::optional(std::filesystem::path(*path).filename().string()) : std::nullopt;
}

std::vector<std::string> ProcessTable::arguments(std::uint32_t process) const {
    return piecesOf(read(std::to_string(process), "cmdline", longestCommandLine));
}

std::optional<std::string> ProcessTable::environmentVariable(std::uint32_t process,
                                                             std::string_view name) const {
    const auto text = read(std::to_string(process), "environ", longestEnvironment);
    for (std::string_view rest = text; !rest.empty();) {
        const auto length = std::min(rest.find('\0'), rest.size());
        const auto variable = rest.substr(0, length);
        if (variable.starts_with(name) && variable.substr(name.size()).starts_with('=')) {
            return std::string(variable.substr(name.size() + 1));
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return std::nullopt;
}

std::optional<std::uint32_t> ProcessTable::parent(std::uint32_t process) const {
    constexpr std::size_t position = 1;
    const auto fields = statusFields(process);
    return fields.size() > position ? numberIn<std::uint32_t>(fields[position]) : std::nullopt;
}

std::optional<std::uint64_t> ProcessTable::startTime(std::uint32_t process) const {
    constexpr std::size_t position = 19;
    const auto fields = statusFields(process);
    return fields.size() > position ? numberIn<std::uint64_t>(fields[position]) : std::nullopt;
}

std::string ProcessTable::controlGroup(std::uint32_t process) const {
    return controlGroupIn(read(std::to_string(process), "cgroup", longestOther));
}

std::string ProcessTable::controlGroupOfSelf() const {
    return controlGroupIn(read("self", "cgroup", longestOther));
}

std::string ProcessTable::securityLabel(std::uint32_t process) const {
    return read(std::to_string(process), "attr/current", longestOther);
}

std::filesystem::path ProcessTable::pathSeenBy(std::uint32_t process,
                                               const std::filesystem::path& path) const {
    return root_ / std::to_string(process) / "root" / path.relative_path();
}

std::string ProcessTable::read(const std::string& process, const char* file, std::size_t limit) const {
    return readStartOfFile(root_ / process / file, limit);
}

std::vector<std::string> ProcessTable::statusFields(std::uint32_t process) const {
    const auto text = read(std::to_string(process), "stat", longestOther);
    // The program's name stands in parentheses and may hold anything.
    const auto end = text.rfind(')');
    std::istringstream rest(end == std::string::npos ? std::string() : text.substr(end + 1));
    std::vector<std::string> fields;
    for (std::string field; rest >> field;) {
        fields.push_back(std::move(field));
    }
    return fields;
}

} // namespace LinuxPlatform
