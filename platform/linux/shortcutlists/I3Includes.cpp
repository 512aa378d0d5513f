#include "platform/linux/shortcutlists/I3Includes.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include <wordexp.h>

namespace LinuxPlatform::I3Includes {
namespace {

constexpr std::uintmax_t longestFile = std::uintmax_t{1} << 20U;

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        result += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return result + "'";
}

bool isRelative(const std::string& words) {
    const auto first = words.find_first_not_of("\"'");
    return first != std::string::npos && std::string_view("/~$").find(words[first]) == std::string_view::npos;
}

} // namespace

std::vector<std::filesystem::path> files(const std::string& words, const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> result;
    wordexp_t expansion{};
    const auto pattern = isRelative(words) ? quoted(folder.string() + "/") + words : words;
    if (::wordexp(pattern.c_str(), &expansion, WRDE_NOCMD) == 0) {
        result.assign(expansion.we_wordv, expansion.we_wordv + expansion.we_wordc);
        ::wordfree(&expansion);
    }
    return result;
}

std::optional<std::string> read(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) ||
        std::filesystem::file_size(file, error) > longestFile || error) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    return stream ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace LinuxPlatform::I3Includes
