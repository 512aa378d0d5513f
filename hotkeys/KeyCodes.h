#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace KeyboardShortcuts {

/// Virtual key codes of the hot-key service: positions on an ANSI keyboard, named by what a US layout writes
/// there.
namespace KeyCode {
inline constexpr std::int64_t h = 4;
inline constexpr std::int64_t tab = 48;
/// Above the return key; "Backspace" on many keyboards.
inline constexpr std::int64_t deleteBackward = 51;
inline constexpr std::int64_t escape = 53;
inline constexpr std::int64_t forwardDelete = 117;
} // namespace KeyCode

/// Bits of `carbonModifiers`.
namespace CarbonModifier {
inline constexpr std::int64_t command = 256;
inline constexpr std::int64_t shift = 512;
inline constexpr std::int64_t option = 2048;
inline constexpr std::int64_t control = 4096;
inline constexpr std::int64_t function = 131072;
} // namespace CarbonModifier

/// Bits of an event's modifier flags.
namespace ModifierFlag {
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t function = 0x800000;
} // namespace ModifierFlag

/// The mask for the hot-key service; flags that it does not know are dropped.
std::int64_t carbonModifiers(std::uint64_t modifierFlags);
/// The reverse of `carbonModifiers`.
std::uint64_t modifierFlags(std::int64_t carbonModifiers);

bool isFunctionKey(std::int64_t keyCode);

/// What a US keyboard has on this key, absent for a code without a key.
std::optional<std::string_view> keyName(std::int64_t keyCode);

} // namespace KeyboardShortcuts
