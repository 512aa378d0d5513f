#include "hotkeys/Shortcut.h"

#include "core/JsonText.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace KeyboardShortcuts {
namespace {

constexpr auto keyCodeMember = "carbonKeyCode";
constexpr auto modifiersMember = "carbonModifiers";

/// The same number where it is a whole one: 4.0 is 4.
std::optional<std::int64_t> wholeNumber(double number) {
    // Beyond the last number of 64 bits, and the first one.
    constexpr double limit = 9223372036854775808.0;
    const bool isWhole = std::trunc(number) == number && number >= -limit && number < limit;
    return isWhole ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

std::optional<std::int64_t> integerMember(const nlohmann::json& json, const char* name) {
    const auto found = json.find(name);
    if (found == json.end() || !found->is_number()) {
        return std::nullopt;
    }
    if (found->is_number_float()) {
        return wholeNumber(found->get<double>());
    }
    const bool isTooLarge =
        found->is_number_unsigned() &&
        found->get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    return isTooLarge ? std::nullopt : std::optional(found->get<std::int64_t>());
}

std::string modifierNames(std::uint64_t modifiers, const Platform::ModifierStyle& style) {
    std::string result;
    const auto append = [&](std::uint64_t modifier, std::string_view name) {
        if ((modifiers & modifier) != 0) {
            result.append(name).append("+");
        }
    };
    if (style.isCommandFirst) {
        append(ModifierFlag::command, style.command);
    }
    append(ModifierFlag::function, "Fn");
    append(ModifierFlag::control, "Ctrl");
    append(ModifierFlag::option, "Alt");
    append(ModifierFlag::shift, "Shift");
    if (!style.isCommandFirst) {
        append(ModifierFlag::command, style.command);
    }
    return result;
}

std::string usName(std::int64_t keyCode) {
    const auto name = keyName(keyCode);
    return name ? std::string(*name) : "key " + std::to_string(keyCode);
}

} // namespace

std::string Shortcut::description() const {
    return modifierNames(modifierFlags(carbonModifiers), {}) + usName(carbonKeyCode);
}

std::string Shortcut::description(Platform::Keyboard& keyboard) const {
    return modifierNames(modifierFlags(carbonModifiers), keyboard.modifierStyle()) +
           keyboard.keyLabel(carbonKeyCode).value_or(usName(carbonKeyCode));
}

std::string encodeShortcut(const Shortcut& shortcut) {
    return nlohmann::json{{keyCodeMember, shortcut.carbonKeyCode},
                          {modifiersMember, shortcut.carbonModifiers}}
        .dump();
}

std::optional<Shortcut> decodeShortcut(std::string_view text) {
    const auto holdable = CurtainCore::jsonWithHoldableValues(text);
    if (!holdable) {
        return std::nullopt;
    }
    const auto json = nlohmann::json::parse(*holdable, nullptr, false);
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
