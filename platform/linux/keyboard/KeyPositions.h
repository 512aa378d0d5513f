#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace LinuxPlatform::KeyPositions {

/// The X Keyboard Extension's name for the position of a virtual key code: "AC06" is the sixth key of the row
/// that begins with A on a US keyboard. Empty for a code without a key.
std::string_view xkbName(std::int64_t keyCode);
/// The reverse; absent for a key that has no virtual key code.
std::optional<std::int64_t> keyCode(std::string_view xkbName);

} // namespace LinuxPlatform::KeyPositions
