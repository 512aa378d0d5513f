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

std::string modifierNames(std::int64_t modifiers, const Platform::ModifierStyle& style) {
    std::string result;
    const auto append = [&](std::int64_t modifier, std::string_view name) {
        if ((modifiers & modifier) != 0) {
            result.append(name).append("+");
        }
    };
    if (style.isCommandFirst) {
        append(CarbonModifier::command, style.command);
    }
    append(CarbonModifier::function, "Fn");
    append(CarbonModifier::control, "Ctrl");
    append(CarbonModifier::option, "Alt");
    append(CarbonModifier::shift, "Shift");
    if (!style.isCommandFirst) {
        append(CarbonModifier::command, style.command);
    }
    return result;
}

std::string usName(std::int64_t keyCode) {
    const auto name = keyName(keyCode);
    return name ? std::string(*name) : "key " + std::to_string(keyCode);
}

} // namespace

std::string Shortcut::description() const {
    return modifierNames(carbonModifiers, {}) + usName(carbonKeyCode);
}

std::string Shortcut::description(Platform::Keyboard& keyboard) const {
    return modifierNames(carbonModifiers, keyboard.modifierStyle()) +
           keyboard.keyLabel(carbonKeyCode).value_or(usName(carbonKeyCode));
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
