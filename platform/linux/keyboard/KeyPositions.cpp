#include "platform/linux/keyboard/KeyPositions.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace LinuxPlatform::KeyPositions {
namespace {

/// Indexed by virtual key code.
constexpr std::array<std::string_view, 128> keyNames{
    "AC01", "AC02", "AC03", "AC04", "AC06", "AC05", "AB01", "AB02", // 0
    "AB03", "AB04", "LSGT", "AB05", "AD01", "AD02", "AD03", "AD04", // 8
    "AD06", "AD05", "AE01", "AE02", "AE03", "AE04", "AE06", "AE05", // 16
    "AE12", "AE09", "AE07", "AE11", "AE08", "AE10", "AD12", "AD09", // 24
    "AD07", "AD11", "AD08", "AD10", "RTRN", "AC09", "AC07", "AC11", // 32
    "AC08", "AC10", "BKSL", "AB08", "AB10", "AB06", "AB07", "AB09", // 40
    "TAB",  "SPCE", "TLDE", "BKSP", "",     "ESC",  "",     "",     // 48
    "",     "",     "",     "",     "",     "",     "",     "",     // 56
    "FK17", "KPDL", "",     "KPMU", "",     "KPAD", "",     "NMLK", // 64
    "",     "",     "",     "KPDV", "KPEN", "",     "KPSU", "FK18", // 72
    "FK19", "KPEQ", "KP0",  "KP1",  "KP2",  "KP3",  "KP4",  "KP5",  // 80
    "KP6",  "KP7",  "FK20", "KP8",  "KP9",  "",     "",     "",     // 88
    "FK05", "FK06", "FK07", "FK03", "FK08", "FK09", "",     "FK11", // 96
    "",     "FK13", "FK16", "FK14", "",     "FK10", "COMP", "FK12", // 104
    "",     "FK15", "INS",  "HOME", "PGUP", "DELE", "FK04", "END",  // 112
    "FK02", "PGDN", "FK01", "LEFT", "RGHT", "DOWN", "UP",   "",     // 120
};

} // namespace

std::string_view xkbName(std::int64_t keyCode) {
    return keyCode >= 0 && keyCode < static_cast<std::int64_t>(keyNames.size())
               ? keyNames[static_cast<std::size_t>(keyCode)]
               : std::string_view();
}

std::optional<std::int64_t> keyCode(std::string_view xkbName) {
    const auto* const found = std::ranges::find(keyNames, xkbName);
    return xkbName.empty() || found == keyNames.end() ? std::nullopt
                                                      : std::optional<std::int64_t>(found - keyNames.begin());
}

} // namespace LinuxPlatform::KeyPositions
