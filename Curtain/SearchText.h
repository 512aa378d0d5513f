#pragma once

#include <QList>
#include <QString>

#include <string_view>
#include <vector>

namespace Curtain {

/// Text in the form in which people compare it: without regard to case, as it is in their language; letters
/// and their accents apart. Made once for each name, since a search compares all of them at every key.
class SearchText {
public:
    SearchText() = default;
    /// `lang` is the code of the user's language.
    SearchText(const QString& text, std::string_view lang);

    /// Whether the query stands in this text. A letter without an accent finds those with one, as people are
    /// used to; a letter with an accent finds only itself.
    bool contains(const SearchText& query) const;

private:
    struct Letter {
        char32_t base = 0;
        QString marks;

        bool matches(const Letter& wanted) const {
            return base == wanted.base && (wanted.marks.isEmpty() || marks == wanted.marks);
        }
    };
    using Letters = std::vector<Letter>;

    static Letters lettersOf(const QString& text);
    static bool contains(const Letters& text, const Letters& query);

    Letters letters_;
    /// By the rules for i of Turkish and Azerbaijani; empty for other languages.
    Letters turkishLetters_;
};

} // namespace Curtain
