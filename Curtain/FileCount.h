#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Curtain {

/// So many files on the desktop: the number and the localizer's `filesOnDesktop`, or the form of it that the
/// language asks for after this number. UTF-8; English when the two-letter code is not known.
std::string filesOnDesktop(std::int64_t count, std::string_view lang);

} // namespace Curtain
