#pragma once

#include "platform/KeyCode.h"

#include <cstdint>
#include <optional>

namespace Platform {

/// Kinds of input events; a mask of them has the bit with that number set.
namespace EventType {
inline constexpr std::uint64_t leftMouseDown = 1;
inline constexpr std::uint64_t leftMouseUp = 2;
inline constexpr std::uint64_t rightMouseDown = 3;
inline constexpr std::uint64_t rightMouseUp = 4;
inline constexpr std::uint64_t mouseMoved = 5;
inline constexpr std::uint64_t keyDown = 10;
/// Of any button but the first two.
inline constexpr std::uint64_t otherMouseUp = 26;
} // namespace EventType

/// Bits of `Event::modifierFlags`.
namespace EventModifier {
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t function = 0x800000;
} // namespace EventModifier

/// What the user did.
struct Event {
    std::uint64_t type = 0;
    std::uint64_t modifierFlags = 0;
    /// The virtual key code of key events; absent for keys that nobody asks for.
    std::optional<std::int64_t> keyCode = std::nullopt;
};

} // namespace Platform
