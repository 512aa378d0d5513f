#pragma once

#include "platform/Event.h"
#include "platform/HotKeyService.h"
#include "platform/KeyCode.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace KeyboardShortcuts {

namespace KeyCode = Platform::KeyCode;
namespace CarbonModifier = Platform::HotKeyModifier;
namespace ModifierFlag = Platform::EventModifier;

/// The mask for the hot-key service; flags that it does not know are dropped.
std::int64_t carbonModifiers(std::uint64_t modifierFlags);
/// The reverse of `carbonModifiers`.
std::uint64_t modifierFlags(std::int64_t carbonModifiers);

bool isFunctionKey(std::int64_t keyCode);

/// What a US keyboard has on this key, absent for a code without a key.
std::optional<std::string_view> keyName(std::int64_t keyCode);

} // namespace KeyboardShortcuts
