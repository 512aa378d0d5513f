#pragma once

#include "platform/linux/system/LegacyText.h"
#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace LinuxPlatform {

/// Up to the first zero byte, in UTF-8.
inline std::string textIn(std::string_view bytes) {
    return utf8FromLegacyText(bytes.substr(0, bytes.find('\0')));
}

/// The two halves of WM_CLASS, into a window or what it says of its app.
template <class Window>
void readClassInto(Window& window, const xcb_get_property_reply_t* reply) {
    const auto bytes = bytesIn(reply);
    const auto end = std::min(bytes.find('\0'), bytes.size());
    window.instanceName = textIn(bytes);
    window.className = textIn(bytes.substr(std::min(end + 1, bytes.size())));
}

} // namespace LinuxPlatform
