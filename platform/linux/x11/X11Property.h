#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// What a property of 32-bit items holds: numbers, atoms or windows. Empty after an error and for a property
/// that is absent or of another size. Valid as long as the reply.
inline std::span<const std::uint32_t> numbersIn(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    return {static_cast<const std::uint32_t*>(xcb_get_property_value(reply)), reply->value_len};
}

/// The same, beyond the reply's life.
inline std::vector<std::uint32_t> listIn(const xcb_get_property_reply_t& reply) {
    const auto numbers = numbersIn(&reply);
    return {numbers.begin(), numbers.end()};
}

/// What a property of bytes holds; empty in the same cases.
inline std::string_view bytesIn(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply)), reply->value_len};
}

} // namespace LinuxPlatform
