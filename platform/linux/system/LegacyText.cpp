#include "platform/linux/system/LegacyText.h"

#include <glib.h>

namespace LinuxPlatform {

std::string utf8FromLegacyText(std::string_view text) {
    if (g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE) {
        return std::string(text);
    }
    std::string utf8;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80U) {
            utf8.push_back(character);
        } else {
            utf8.push_back(static_cast<char>(0xC0U | code >> 6U));
            utf8.push_back(static_cast<char>(0x80U | (code & 0x3FU)));
        }
    }
    return utf8;
}

} // namespace LinuxPlatform
