#include "core/JsonText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>

namespace CurtainCore {
namespace {

constexpr std::string_view whitespace = " \t\r\n";
constexpr std::string_view digits = "0123456789";
constexpr std::string_view numberCharacters = "0123456789+-.eE";
constexpr std::string_view replacementEscape = "\\ufffd";
constexpr std::size_t escapeSize = 6;

/// The number in "\uXXXX" at the start of the text; absent for anything else.
std::optional<std::uint32_t> codeUnit(std::string_view text) {
    if (text.size() < escapeSize || !text.starts_with("\\u")) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    const auto* const end = text.data() + escapeSize;
    const auto parsed = std::from_chars(text.data() + 2, end, value, 16);
    return parsed.ec == std::errc{} && parsed.ptr == end ? std::optional(value) : std::nullopt;
}

bool isFirstHalf(std::optional<std::uint32_t> unit) {
    return unit && *unit >= 0xD800 && *unit < 0xDC00;
}

bool isSecondHalf(std::optional<std::uint32_t> unit) {
    return unit && *unit >= 0xDC00 && *unit < 0xE000;
}

/// The size of the string at the start of the text, with its quotation marks.
std::size_t stringSize(std::string_view text) {
    for (std::size_t index = 1; index < text.size(); ++index) {
        if (text[index] == '"') {
            return index + 1;
        }
        if (text[index] == '\\') {
            ++index;
        }
    }
    return text.size();
}

/// The string with the replacement character in the place of each half; absent when there is none.
std::optional<std::string> withoutHalves(std::string_view string) {
    std::optional<std::string> result;
    std::size_t copied = 0;
    for (std::size_t index = string.find('\\'); index < string.size(); index = string.find('\\', index)) {
        const auto unit = codeUnit(string.substr(index));
        const bool isPair = isFirstHalf(unit) && isSecondHalf(codeUnit(string.substr(index + escapeSize)));
        if (!isPair && (isFirstHalf(unit) || isSecondHalf(unit))) {
            result = result.value_or(std::string());
            result->append(string.substr(copied, index - copied)).append(replacementEscape);
            copied = index + escapeSize;
        }
        const auto size = isPair ? 2 * escapeSize : unit ? escapeSize : 2;
        index = std::min(index + size, string.size());
    }
    return result ? std::optional(result->append(string.substr(copied))) : std::nullopt;
}

bool isOutOfRange(std::string_view number) {
    double value = 0;
    const auto* const end = number.data() + number.size();
    return std::from_chars(number.data(), end, value).ec == std::errc::result_out_of_range;
}

/// A small number, and one only if the given one is: of each row of digits no more than two are left.
std::string shortened(std::string_view number) {
    std::string result;
    std::size_t row = 0;
    for (const char character : number) {
        row = digits.find(character) == std::string_view::npos ? 0 : row + 1;
        if (row <= 2) {
            result.push_back(character);
        }
    }
    return result;
}

class Rewriter {
public:
    explicit Rewriter(std::string_view text) : text_(text) {}

    std::string result() {
        while (position_ < text_.size()) {
            const char character = text_[position_];
            if (character == '"') {
                takeString();
            } else if (character == '-' || digits.find(character) != std::string_view::npos) {
                takeNumber();
            } else {
                ++position_;
            }
        }
        return result_.append(text_.substr(copied_));
    }

private:
    void takeString() {
        const auto size = stringSize(text_.substr(position_));
        if (const auto whole = withoutHalves(text_.substr(position_, size))) {
            const auto next = text_.find_first_not_of(whitespace, position_ + size);
            const bool isName = next != std::string_view::npos && text_[next] == ':';
            replace(size, isName ? *whole : "{\"\":" + *whole + "}");
        }
        position_ += size;
    }

    void takeNumber() {
        const auto end = std::min(text_.find_first_not_of(numberCharacters, position_), text_.size());
        const auto number = text_.substr(position_, end - position_);
        if (isOutOfRange(number)) {
            replace(number.size(), "{\"\":" + shortened(number) + "}");
        }
        position_ = end;
    }

    void replace(std::size_t size, const std::string& replacement) {
        result_.append(text_.substr(copied_, position_ - copied_)).append(replacement);
        copied_ = position_ + size;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t copied_ = 0;
    std::string result_;
};

} // namespace

std::optional<std::string> jsonWithHoldableValues(std::string_view text) {
    return text.find('\0') == std::string_view::npos ? std::optional(Rewriter(text).result()) : std::nullopt;
}

} // namespace CurtainCore
