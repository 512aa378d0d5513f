#pragma once

#include <cstdint>

/// Virtual key codes: positions on an ANSI keyboard, named by what a US layout writes there, whatever the
/// user's layout does.
namespace Platform::KeyCode {

inline constexpr std::int64_t h = 4;
inline constexpr std::int64_t tab = 48;
/// Above the return key; "Backspace" on many keyboards.
inline constexpr std::int64_t deleteBackward = 51;
inline constexpr std::int64_t escape = 53;
inline constexpr std::int64_t forwardDelete = 117;

} // namespace Platform::KeyCode
