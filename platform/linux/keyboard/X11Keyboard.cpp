#include "platform/linux/keyboard/X11Keyboard.h"

#include "platform/linux/keyboard/KeyPositions.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

// A member of a structure in there has this name.
#define explicit explicitMember // NOLINT
#include <xcb/xkb.h>
#undef explicit

namespace LinuxPlatform {
namespace {

namespace Modifier = Platform::HotKeyModifier;
constexpr std::int64_t knownModifiers =
    Modifier::command | Modifier::shift | Modifier::option | Modifier::control;

constexpr xcb_keysym_t altLeft = 0xFFE9;
constexpr xcb_keysym_t altRight = 0xFFEA;
constexpr xcb_keysym_t superLeft = 0xFFEB;
constexpr xcb_keysym_t superRight = 0xFFEC;
constexpr xcb_keysym_t numLock = 0xFF7F;
constexpr xcb_keysym_t scrollLock = 0xFF14;

std::string textOf(const xcb_xkb_key_name_t& name) {
    const std::string_view text(name.name, sizeof name.name);
    return std::string(text.substr(0, text.find('\0')));
}

} // namespace

X11Keyboard::X11Keyboard(X11Connection& connection) {
    readKeyNames(connection);
    readModifiers(connection);
}

std::optional<X11Keyboard::Combination>
X11Keyboard::translate(const Platform::HotKeyCombination& combination) const {
    if (lockCombinations_.empty()) {
        // The server did not tell which modifiers there are.
        return std::nullopt;
    }
    if ((combination.modifiers & ~knownModifiers) != 0) {
        // Without them it would be another combination, down to the bare key.
        return std::nullopt;
    }
    const auto key = keyCodes_.find(KeyPositions::xkbName(combination.keyCode));
    if (key == keyCodes_.end()) {
        return std::nullopt;
    }
    Combination result{key->second, 0};
    const std::array<std::pair<std::int64_t, std::uint16_t>, 4> modifiers{
        {{Modifier::command, super_},
         {Modifier::shift, XCB_MOD_MASK_SHIFT},
         {Modifier::option, alt_},
         {Modifier::control, XCB_MOD_MASK_CONTROL}}};
    for (const auto& [flag, mask] : modifiers) {
        if ((combination.modifiers & flag) != 0) {
            if (mask == 0) {
                return std::nullopt;
            }
            result.modifiers = static_cast<std::uint16_t>(result.modifiers | mask);
        }
    }
    return result;
}

std::uint16_t X11Keyboard::significantModifiers() const {
    return static_cast<std::uint16_t>(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | alt_ | super_);
}

void X11Keyboard::readKeyNames(X11Connection& connection) {
    auto* const xcb = connection.get();
    const XcbPointer<xcb_xkb_use_extension_reply_t> version(
        xcb_xkb_use_extension_reply(xcb, xcb_xkb_use_extension(xcb, 1, 0), nullptr));
    if (!version || version->supported == 0) {
        return;
    }
    const XcbPointer<xcb_xkb_get_names_reply_t> reply(xcb_xkb_get_names_reply(
        xcb, xcb_xkb_get_names(xcb, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES), nullptr));
    if (!reply || (reply->which & XCB_XKB_NAME_DETAIL_KEY_NAMES) == 0) {
        return;
    }
    xcb_xkb_get_names_value_list_t values{};
    xcb_xkb_get_names_value_list_unpack(
        xcb_xkb_get_names_value_list(reply.get()), reply->nTypes, reply->indicators, reply->virtualMods,
        reply->groupNames, reply->nKeys, reply->nKeyAliases, reply->nRadioGroups, reply->which, &values);
    for (unsigned index = 0; index < reply->nKeys; ++index) {
        // The first key of a name wins: some keyboards name spare codes alike.
        keyCodes_.emplace(textOf(values.keyNames[index]),
                          static_cast<xcb_keycode_t>(reply->firstKey + index));
    }
    keyCodes_.erase("");
}

void X11Keyboard::readModifiers(X11Connection& connection) {
    auto* const xcb = connection.get();
    const auto* const setup = xcb_get_setup(xcb);
    const auto firstKey = setup->min_keycode;
    const auto keyCount = static_cast<std::uint8_t>(setup->max_keycode - firstKey + 1);
    const auto mappingRequest = xcb_get_keyboard_mapping(xcb, firstKey, keyCount);
    const auto modifierRequest = xcb_get_modifier_mapping(xcb);
    const XcbPointer<xcb_get_keyboard_mapping_reply_t> mapping(
        xcb_get_keyboard_mapping_reply(xcb, mappingRequest, nullptr));
    const XcbPointer<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(xcb, modifierRequest, nullptr));
    if (!mapping || !modifiers) {
        return;
    }
    const auto* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const auto* const modifierKeys = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const unsigned symbolsPerKey = mapping->keysyms_per_keycode;
    const auto hasSymbol = [&](xcb_keycode_t key, xcb_keysym_t symbol) {
        if (key < firstKey || key - firstKey >= keyCount) {
            return false;
        }
        const auto* const first = symbols + static_cast<std::size_t>(key - firstKey) * symbolsPerKey;
        return std::find(first, first + symbolsPerKey, symbol) != first + symbolsPerKey;
    };
    const auto modifierWith = [&](std::initializer_list<xcb_keysym_t> wanted) -> std::uint16_t {
        for (const auto symbol : wanted) {
            for (unsigned modifier = 0; modifier < 8; ++modifier) {
                for (unsigned index = 0; index < modifiers->keycodes_per_modifier; ++index) {
                    const auto key = modifierKeys[modifier * modifiers->keycodes_per_modifier + index];
                    if (key != 0 && hasSymbol(key, symbol)) {
                        return static_cast<std::uint16_t>(1U << modifier);
                    }
                }
            }
        }
        return 0;
    };
    alt_ = modifierWith({altLeft, altRight});
    super_ = modifierWith({superLeft, superRight});
    lockCombinations_ = {0};
    for (const auto lock :
         {std::uint16_t{XCB_MOD_MASK_LOCK}, modifierWith({numLock}), modifierWith({scrollLock})}) {
        if (lock == 0 || std::ranges::find(lockCombinations_, lock) != lockCombinations_.end()) {
            continue;
        }
        const auto withoutLock = lockCombinations_;
        for (const auto other : withoutLock) {
            lockCombinations_.push_back(static_cast<std::uint16_t>(other | lock));
        }
    }
}

} // namespace LinuxPlatform
