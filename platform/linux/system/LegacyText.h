#pragma once

#include <string>
#include <string_view>

namespace LinuxPlatform {

/// Text in UTF-8, out of text of unknown encoding: what is not UTF-8 is taken for Latin-1, which old X11
/// programs write.
std::string utf8FromLegacyText(std::string_view text);

} // namespace LinuxPlatform
