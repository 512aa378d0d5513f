#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace LinuxPlatform {

/// Identifiers and window classes are ASCII; other characters stay as they are, whatever the locale.
constexpr char asciiLowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

inline std::string asciiLowerCase(std::string_view text) {
    std::string result(text);
    for (auto& character : result) {
        character = asciiLowerCase(character);
    }
    return result;
}

inline bool equalsIgnoringAsciiCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(
        left, right, {}, [](char character) { return asciiLowerCase(character); },
        [](char character) { return asciiLowerCase(character); });
}

} // namespace LinuxPlatform
