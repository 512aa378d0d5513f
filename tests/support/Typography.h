#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string_view>
#include <vector>

namespace TestSupport {

/// What the typography of one language asks for or forbids.
struct Typography {
    std::string_view code;
    std::string_view fullStop;
    std::vector<std::string_view> forbidden;

    friend std::ostream& operator<<(std::ostream& stream, const Typography& typography) {
        return stream << typography.code;
    }
};

/// Every language that has texts, English first.
inline const std::array<Typography, 8> typographies{{
    {"en", ".", {"...", "’", "“", "”"}},
    {"es", ".", {"...", "'", "\""}},
    {"zh", "。", {"...", ",", "?", "!", ";", ": ", "(", ")", "\"", "'"}},
    {"hi", "।", {"...", ". ", "\"", "'"}},
    {"ar", ".", {"...", ",", "?", ";", "\"", "'"}},
    {"pt", ".", {"...", "'", "\""}},
    {"fr", ".", {"...", "'", "\"", " !", " :", " ;"}},
    {"ru", ".", {"...", "'", "\""}},
}};

inline std::size_t count(std::string_view text, std::string_view part) {
    std::size_t result = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) {
        ++result;
    }
    return result;
}

} // namespace TestSupport
