#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace CurtainCore {

/// The cases of an enumeration with their stored texts, in declaration order. Specialised beside each such
/// enumeration with a constant `cases`: an array of (case, text) pairs.
template <class Enumeration>
struct RawValues;

/// The text under which a case is stored; empty for a value that is none of the declared cases.
template <class Enumeration>
constexpr std::string_view rawValue(Enumeration value) {
    for (const auto& [candidate, text] : RawValues<Enumeration>::cases) {
        if (candidate == value) {
            return text;
        }
    }
    return {};
}

/// The case stored under a text; absent when none matches exactly.
template <class Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::string_view text) {
    for (const auto& [candidate, candidateText] : RawValues<Enumeration>::cases) {
        if (candidateText == text) {
            return candidate;
        }
    }
    return std::nullopt;
}

/// Every case in declaration order.
template <class Enumeration>
constexpr auto allCases() {
    constexpr auto count = RawValues<Enumeration>::cases.size();
    std::array<Enumeration, count> result{};
    for (std::size_t index = 0; index < count; ++index) {
        result[index] = RawValues<Enumeration>::cases[index].first;
    }
    return result;
}

} // namespace CurtainCore
