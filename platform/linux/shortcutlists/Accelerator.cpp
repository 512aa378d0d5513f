#include "platform/linux/shortcutlists/Accelerator.h"

#include "platform/HotKeyService.h"
#include "platform/linux/system/AsciiCase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

namespace Modifier = Platform::HotKeyModifier;

using ModifierNames = std::array<std::pair<std::string_view, std::int64_t>, 15>;

/// In lower case; what else a list may hold, such as Mod3 or AltGr, no shortcut has.
constexpr ModifierNames modifierNames{{
    {"control", Modifier::control},
    {"ctrl", Modifier::control},
    {"ctl", Modifier::control},
    {"primary", Modifier::control},
    {"alt", Modifier::option},
    {"mod1", Modifier::option},
    {"shift", Modifier::shift},
    {"shft", Modifier::shift},
    {"super", Modifier::command},
    {"mod4", Modifier::command},
    {"logo", Modifier::command},
    {"win", Modifier::command},
    // Desktops that know Meta beside Super mean the same key on today's keyboards.
    {"meta", Modifier::command},
    {"hyper", Modifier::command},
    {"lock", 0},
}};

std::optional<std::int64_t> modifierNamed(std::string_view name) {
    const auto lower = asciiLowerCase(name);
    const auto* const found =
        std::ranges::find(modifierNames, std::string_view(lower), &ModifierNames::value_type::first);
    return found == modifierNames.end() ? std::nullopt : std::optional(found->second);
}

std::optional<Accelerator> withKey(std::int64_t modifiers, std::string_view key) {
    const auto symbol = xkb_keysym_from_name(std::string(key).c_str(), XKB_KEYSYM_CASE_INSENSITIVE);
    return symbol == XKB_KEY_NoSymbol ? std::nullopt : std::optional(Accelerator{modifiers, symbol});
}

} // namespace

std::optional<Accelerator> Accelerator::fromGtk(std::string_view text) {
    std::int64_t modifiers = 0;
    while (text.starts_with('<')) {
        const auto end = text.find('>');
        const auto modifier =
            end == std::string_view::npos ? std::nullopt : modifierNamed(text.substr(1, end - 1));
        if (!modifier) {
            return std::nullopt;
        }
        modifiers |= *modifier;
        text.remove_prefix(end + 1);
    }
    return withKey(modifiers, text);
}

std::optional<Accelerator> Accelerator::fromI3(std::string_view text) {
    std::int64_t modifiers = 0;
    for (auto end = text.find('+'); end != std::string_view::npos; end = text.find('+')) {
        const auto modifier = modifierNamed(text.substr(0, end));
        if (!modifier) {
            return std::nullopt;
        }
        modifiers |= *modifier;
        text.remove_prefix(end + 1);
    }
    return withKey(modifiers, text);
}

bool WantedShortcut::matches(const std::optional<Accelerator>& accelerator) const {
    return accelerator && accelerator->modifiers == modifiers &&
           std::ranges::any_of(symbols, [&](xkb_keysym_t symbol) {
               return xkb_keysym_to_lower(symbol) == xkb_keysym_to_lower(accelerator->symbol);
           });
}

} // namespace LinuxPlatform
