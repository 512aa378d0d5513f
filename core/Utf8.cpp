#include "core/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace CurtainCore {
namespace {

/// How a sequence begins: its length, what of the first byte belongs to the character, and the smallest
/// character that needs this length.
struct Lead {
    std::size_t length;
    std::uint32_t bits;
    std::uint32_t smallest;
};

constexpr Lead lead(unsigned char byte) {
    return byte < 0x80          ? Lead{1, byte, 0}
           : (byte >> 5U) == 6  ? Lead{2, byte & 0x1FU, 0x80}
           : (byte >> 4U) == 14 ? Lead{3, byte & 0x0FU, 0x800}
           : (byte >> 3U) == 30 ? Lead{4, byte & 0x07U, 0x10000}
                                : Lead{0, 0, 0};
}

} // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const auto [length, bits, smallest] = lead(static_cast<unsigned char>(text.front()));
        if (length == 0 || length > text.size()) {
            return false;
        }
        auto character = bits;
        for (const char next : text.substr(1, length - 1)) {
            const auto byte = static_cast<unsigned char>(next);
            if ((byte >> 6U) != 2) {
                return false;
            }
            character = (character << 6U) | (byte & 0x3FU);
        }
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        if (character < smallest || isSurrogate || character > 0x10FFFF) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

} // namespace CurtainCore
