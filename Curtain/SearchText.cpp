#include "Curtain/SearchText.h"

#include <algorithm>

namespace Curtain {
namespace {

QString withTurkishI(const QString& text) {
    return text.normalized(QString::NormalizationForm_C)
        .replace(QChar(u'İ'), QChar(u'i'))
        .replace(QChar(u'I'), QChar(u'ı'));
}

} // namespace

SearchText::SearchText(const QString& text, std::string_view lang) : letters_(lettersOf(text)) {
    if (lang == "tr" || lang == "az") {
        turkishLetters_ = lettersOf(withTurkishI(text));
    }
}

bool SearchText::contains(const SearchText& query) const {
    // Names of programs are English more often than not, and nobody types a dotless i to find them.
    return contains(letters_, query.letters_) || contains(turkishLetters_, query.turkishLetters_);
}

SearchText::Letters SearchText::lettersOf(const QString& text) {
    constexpr auto form = QString::NormalizationForm_KD;
    auto folded = text.normalized(form).toCaseFolded();
    folded.replace(QChar(u'ß'), QStringLiteral("ss"));
    const auto points = folded.normalized(form).toUcs4();
    Letters letters;
    letters.reserve(static_cast<std::size_t>(points.size()));
    for (const char32_t point : points) {
        switch (QChar::category(point)) {
        case QChar::Mark_NonSpacing:
        case QChar::Mark_Enclosing:
            if (letters.empty()) {
                letters.emplace_back();
            }
            letters.back().marks += QString::fromUcs4(&point, 1);
            break;
        case QChar::Other_Format:
            break;
        default:
            // The line that stretches Arabic words is no letter.
            if (point != U'ـ') {
                letters.push_back({point, {}});
            }
        }
    }
    return letters;
}

bool SearchText::contains(const Letters& text, const Letters& query) {
    if (query.empty()) {
        return false;
    }
    const auto found =
        std::search(text.begin(), text.end(), query.begin(), query.end(),
                    [](const Letter& letter, const Letter& wanted) { return letter.matches(wanted); });
    return found != text.end();
}

} // namespace Curtain
