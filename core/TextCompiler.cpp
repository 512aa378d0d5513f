// Checks the texts of every language and writes them as a C++ table:
//
//     TextCompiler FOLDER OUTPUT
//
// FOLDER holds one file per language ("en.txt", ...); docs/translating.md describes it. Every mistake is
// reported as FILE:LINE: MESSAGE; then the exit status is 1 and OUTPUT is left alone.

#include "core/LocKey.h"
#include "core/Preferences.h"
#include "core/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using CurtainCore::AppLanguage;
using CurtainCore::LocKey;
using CurtainCore::locKeyCount;
using CurtainCore::rawValue;

constexpr auto keys = CurtainCore::allCases<LocKey>();

struct Text {
    std::string text;
    /// 1 is the first line; 0 says that the key is missing.
    std::size_t line = 0;
};

struct Language {
    std::filesystem::path path;
    std::string code;
    std::array<Text, locKeyCount> texts;
};

class Problems {
public:
    bool any() const { return any_; }

    void report(const std::filesystem::path& path, std::size_t line, const std::string& message) {
        std::cerr << path.string() << ':' << line << ": " << message << '\n';
        any_ = true;
    }

private:
    bool any_ = false;
};

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::size_t count(std::string_view text, std::string_view part) {
    std::size_t result = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) {
        ++result;
    }
    return result;
}

/// Whether there is a space at either end, two in a row, or a control character. Any kind of space counts,
/// also those that an editor does not show.
bool hasStrayWhiteSpace(std::string text) {
    if (std::ranges::any_of(text, [](unsigned char byte) { return byte < 0x20U || byte == 0x7FU; })) {
        return true;
    }
    for (const std::string_view space : {"\u00A0", "\u2002", "\u2003", "\u2007", "\u2009", "\u200A", "\u200B",
                                         "\u202F", "\u3000", "\uFEFF"}) {
        for (auto at = text.find(space); at != std::string_view::npos; at = text.find(space, at)) {
            text.replace(at, space.size(), " ");
        }
    }
    return text.starts_with(' ') || text.ends_with(' ') || text.find("  ") != std::string_view::npos;
}

class LanguageReader {
public:
    LanguageReader(Language& language, Problems& problems) : language_(language), problems_(problems) {}

    void read() {
        std::ifstream file(language_.path, std::ios::binary);
        std::string line;
        while (std::getline(file, line)) {
            ++line_;
            if (!line.empty() && !line.starts_with('#')) {
                readLine(line);
            }
        }
        if (!file.eof()) {
            report("the file cannot be read");
            return;
        }
        reportMissingKeys();
    }

private:
    void report(const std::string& message) {
        problems_.report(language_.path, std::max<std::size_t>(line_, 1), message);
    }

    void readLine(std::string_view line) {
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            report("expected 'key = text'");
            return;
        }
        auto name = line.substr(0, equals);
        auto text = line.substr(equals + 1);
        if (name.ends_with(' ')) {
            name.remove_suffix(1);
        }
        if (text.starts_with(' ')) {
            text.remove_prefix(1);
        }
        const auto key = CurtainCore::fromRawValue<LocKey>(name);
        if (!key) {
            report("unknown key " + quoted(name));
            return;
        }
        auto& entry = language_.texts[static_cast<std::size_t>(*key)];
        if (entry.line != 0) {
            report("second text for " + quoted(name) + ", the first is in line " +
                   std::to_string(entry.line));
            return;
        }
        if (previous_ && *key < *previous_) {
            report(quoted(name) + " belongs before " + quoted(rawValue(*previous_)));
        } else {
            previous_ = key;
        }
        entry = {std::string(text), line_};
        checkText(name, text);
    }

    void checkText(std::string_view name, std::string_view text) {
        if (text.empty()) {
            report("empty text for " + quoted(name));
        } else if (!CurtainCore::isUtf8(text)) {
            report("the text of " + quoted(name) + " is not UTF-8");
        } else if (hasStrayWhiteSpace(std::string(text))) {
            report("stray white space in the text of " + quoted(name));
        }
    }

    void reportMissingKeys() {
        // From the end, so that each is reported at the line of the key before which it belongs.
        for (std::size_t index = locKeyCount; index-- > 0;) {
            if (language_.texts[index].line != 0) {
                line_ = language_.texts[index].line;
            } else {
                report("missing key " + quoted(rawValue(keys[index])));
            }
        }
    }

    Language& language_;
    Problems& problems_;
    std::size_t line_ = 0;
    std::optional<LocKey> previous_;
};

void checkPlaceholders(const Language& language, const Language& english, Problems& problems) {
    constexpr std::string_view placeholder = "%@";
    for (std::size_t index = 0; index < locKeyCount; ++index) {
        const auto& [text, line] = language.texts[index];
        const auto expected = count(english.texts[index].text, placeholder);
        if (line != 0 && english.texts[index].line != 0 && count(text, placeholder) != expected) {
            problems.report(language.path, line,
                            quoted(rawValue(keys[index])) + " must hold %@ as often as in English (" +
                                std::to_string(expected) + ")");
        }
    }
}

std::vector<Language> readLanguages(const std::filesystem::path& folder, Problems& problems) {
    std::vector<Language> languages;
    for (const auto choice : CurtainCore::allCases<AppLanguage>()) {
        if (choice != AppLanguage::system) {
            const std::string code(rawValue(choice));
            languages.push_back({folder / (code + ".txt"), code, {}});
        }
    }
    for (auto& language : languages) {
        LanguageReader(language, problems).read();
    }
    for (const auto& language : languages) {
        checkPlaceholders(language, languages.front(), problems);
    }
    return languages;
}

std::string literal(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return result + '"';
}

bool writeTable(const std::filesystem::path& path, const std::vector<Language>& languages) {
    std::ofstream file(path, std::ios::binary);
    file << "#include \"core/TextTable.h\"\n\nnamespace CurtainCore {\n\n"
            "constinit const std::array<LanguageTexts, languageCount> textTable{{\n";
    for (const auto& language : languages) {
        file << "    {{'" << language.code.at(0) << "', '" << language.code.at(1) << "'}, {{\n";
        for (const auto& entry : language.texts) {
            file << "        " << literal(entry.text) << ",\n";
        }
        file << "    }}},\n";
    }
    file << "}};\n\n} // namespace CurtainCore\n";
    file.close();
    return !file.fail();
}

int run(const std::filesystem::path& folder, const std::filesystem::path& output) {
    Problems problems;
    const auto languages = readLanguages(folder, problems);
    if (problems.any()) {
        return 1;
    }
    if (!writeTable(output, languages)) {
        std::cerr << output.string() << ": cannot be written\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: TextCompiler FOLDER OUTPUT\n";
        return 2;
    }
    try {
        return run(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::cerr << "TextCompiler: " << error.what() << '\n';
        return 1;
    }
}
