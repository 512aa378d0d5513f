#include "hotkeys/Shortcut.h"

#include <nlohmann/json.hpp>

#include <limits>

namespace KeyboardShortcuts {
namespace {

constexpr auto keyCodeMember = "carbonKeyCode";
constexpr auto modifiersMember = "carbonModifiers";

std::optional<std::int64_t> integerMember(const nlohmann::json& json, const char* name) {
    const auto found = json.find(name);
    if (found == json.end() || !found->is_number_integer()) {
        return std::nullopt;
    }
    const bool isTooLarge =
        found->is_number_unsigned() &&
        found->get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    return isTooLarge ? std::nullopt : std::optional(found->get<std::int64_t>());
}

} // namespace

std::string Shortcut::description() const {
    std::string result;
    const auto append = [&](std::int64_t modifier, std::string_view name) {
        if ((carbonModifiers & modifier) != 0) {
            result.append(name).append("+");
        }
    };
    append(CarbonModifier::function, "Fn");
    append(CarbonModifier::control, "Ctrl");
    append(CarbonModifier::option, "Alt");
    append(CarbonModifier::shift, "Shift");
    append(CarbonModifier::command, "Super");
    const auto name = keyName(carbonKeyCode);
    return result + (name ? std::string(*name) : "key " + std::to_string(carbonKeyCode));
}

std::string encodeShortcut(const Shortcut& shortcut) {
    return nlohmann::json{{keyCodeMember, shortcut.carbonKeyCode},
                          {modifiersMember, shortcut.carbonModifiers}}
        .dump();
}

std::optional<Shortcut> decodeShortcut(std::string_view text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto keyCode = integerMember(json, keyCodeMember);
    const auto modifiers = integerMember(json, modifiersMember);
    if (!keyCode || !modifiers) {
        return std::nullopt;
    }
    return Shortcut{*keyCode, *modifiers};
}

} // namespace KeyboardShortcuts
