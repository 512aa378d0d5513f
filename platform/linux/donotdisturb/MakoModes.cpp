#include "platform/linux/donotdisturb/MakoModes.h"

#include <algorithm>
#include <optional>

namespace LinuxPlatform {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Of "[mode=NAME]". One with further criteria hides only some notices, and one with quotation marks or
/// escapes is not understood.
std::optional<std::string_view> modeIn(std::string_view section) {
    constexpr std::string_view criterion = "mode=";
    auto inner = trimmed(section.substr(1, section.size() - 2));
    if (!inner.starts_with(criterion)) {
        return std::nullopt;
    }
    inner.remove_prefix(criterion.size());
    const bool isPlain = inner.find_first_of(" \t\"'\\") == std::string_view::npos;
    return isPlain && !inner.empty() ? std::optional(inner) : std::nullopt;
}

/// Whether the option is set by this line; absent when it is about another one.
std::optional<bool> invisibleIn(std::string_view line) {
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || trimmed(line.substr(0, equals)) != "invisible") {
        return std::nullopt;
    }
    const auto value = trimmed(line.substr(equals + 1));
    return value == "1" || value == "true";
}

} // namespace

std::vector<std::string> quietMakoModes(std::string_view configuration) {
    std::vector<std::string> modes;
    std::optional<std::string_view> mode;
    while (!configuration.empty()) {
        const auto end = std::min(configuration.find('\n'), configuration.size());
        const auto line = trimmed(configuration.substr(0, end));
        configuration.remove_prefix(std::min(end + 1, configuration.size()));
        if (line.starts_with('[') && line.ends_with(']')) {
            mode = modeIn(line);
        } else if (const auto isInvisible = invisibleIn(line); mode && isInvisible) {
            std::erase(modes, *mode);
            if (*isInvisible) {
                modes.emplace_back(*mode);
            }
        }
    }
    return modes;
}

} // namespace LinuxPlatform
