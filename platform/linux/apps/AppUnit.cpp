#include "platform/linux/apps/AppUnit.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <system_error>

namespace LinuxPlatform {
namespace {

constexpr std::size_t uuidLength = 36;

bool removeSuffix(std::string_view& text, std::string_view suffix) {
    const bool isThere = text.ends_with(suffix);
    text.remove_suffix(isThere ? suffix.size() : 0);
    return isThere;
}

bool removePrefix(std::string_view& text, std::string_view prefix) {
    const bool isThere = text.starts_with(prefix);
    text.remove_prefix(isThere ? prefix.size() : 0);
    return isThere;
}

/// Cuts the text before the last such character, and returns what stood after it.
std::string_view cutAtLast(std::string_view& text, char separator) {
    const auto position = text.rfind(separator);
    if (position == std::string_view::npos) {
        return {};
    }
    const auto rest = text.substr(position + 1);
    text = text.substr(0, position);
    return rest;
}

/// Units write what they cannot hold, and the dash, as \x and two digits.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        unsigned value = 0;
        const auto* const digits = text.data() + index + 2;
        const bool isEscape = text.substr(index).starts_with("\\x") && index + 4 <= text.size() &&
                              std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2;
        result += isEscape ? static_cast<char>(value) : text[index];
        index += isEscape ? 3 : 0;
    }
    return result;
}

std::optional<std::uint32_t> processIn(std::string_view text) {
    std::uint32_t process = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), process);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(process) : std::nullopt;
}

/// From "LAUNCHER-ID", "ID", and from launchers that leave the id's own dashes as they are.
std::vector<std::string> idsIn(std::string_view text) {
    std::vector<std::string> ids;
    for (auto rest = text;;) {
        const auto dash = rest.find('-');
        ids.push_back(unescaped(rest));
        if (dash == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(dash + 1);
    }
    // By the rules the id has no dash, so the last piece is the likeliest one.
    std::ranges::reverse(ids);
    std::erase(ids, std::string());
    return ids;
}

std::optional<AppUnit> snapUnit(std::string_view name) {
    if (name.size() > uuidLength + 1 && std::ranges::count(name.substr(name.size() - uuidLength), '-') >= 4) {
        name.remove_suffix(uuidLength + 1);
    }
    const auto dot = name.find('.');
    if (dot == std::string_view::npos) {
        return std::nullopt;
    }
    SnapApp app{unescaped(name.substr(0, dot)), unescaped(name.substr(dot + 1))};
    return AppUnit{{app.desktopEntryId()}, app, std::nullopt};
}

} // namespace

std::optional<AppUnit> AppUnit::ofControlGroup(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    auto name = path.substr(path.rfind('/') + 1);
    if (removeSuffix(name, ".scope")) {
        if (removePrefix(name, "snap.")) {
            return snapUnit(name);
        }
        if (!removePrefix(name, "app-")) {
            return std::nullopt;
        }
        const auto random = cutAtLast(name, '-');
        auto ids = idsIn(name);
        return ids.empty() ? std::nullopt
                           : std::optional(AppUnit{std::move(ids), std::nullopt, processIn(random)});
    }
    if (removeSuffix(name, ".service")) {
        cutAtLast(name, '@');
        std::vector<std::string> ids;
        if (removePrefix(name, "app-")) {
            ids = idsIn(name);
        } else if (removePrefix(name, "dbus-:")) {
            // After the bus's name for whoever asked comes the app's own.
            name.remove_prefix(std::min(name.find('-'), name.size()));
            ids = removePrefix(name, "-") ? idsIn(name) : ids;
        }
        return ids.empty() ? std::nullopt
                           : std::optional(AppUnit{std::move(ids), std::nullopt, std::nullopt});
    }
    return std::nullopt;
}

} // namespace LinuxPlatform
