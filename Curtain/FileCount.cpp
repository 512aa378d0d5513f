#include "Curtain/FileCount.h"

#include "Curtain/PlatformWording.h"

#include <algorithm>
#include <array>

namespace Curtain {
namespace {

enum class NumberForm { one, few, many };

/// The forms of Unicode's plural rules that a language has beside the localizer's text, which is that for
/// many.
struct Forms {
    std::string_view lang;
    NumberForm (*formFor)(std::int64_t count);
    std::string_view one;
    /// Empty where the language has no such form.
    std::string_view few;
};

NumberForm singularAtOne(std::int64_t count) {
    return count == 1 ? NumberForm::one : NumberForm::many;
}

NumberForm singularBelowTwo(std::int64_t count) {
    return count < 2 ? NumberForm::one : NumberForm::many;
}

NumberForm russian(std::int64_t count) {
    const auto last = count % 10;
    if (count / 10 % 10 == 1 || last == 0 || last > 4) {
        return NumberForm::many;
    }
    return last == 1 ? NumberForm::one : NumberForm::few;
}

/// After a digit, the dual is usually written like the singular.
NumberForm arabic(std::int64_t count) {
    const auto lastTwo = count % 100;
    if (count == 0 || (lastTwo >= 3 && lastTwo <= 10)) {
        return NumberForm::few;
    }
    return lastTwo < 3 ? NumberForm::one : NumberForm::many;
}

constexpr auto languages = std::to_array<Forms>({
    {"es", singularAtOne, "archivo en el escritorio", {}},
    {"ar", arabic, "ملف على سطح المكتب", "ملفات على سطح المكتب"},
    {"pt", singularAtOne, "arquivo na área de trabalho", {}},
    {"fr", singularBelowTwo, "fichier sur le bureau", {}},
    {"ru", russian, "файл на рабочем столе", "файла на рабочем столе"},
});

std::string_view textFor(std::int64_t count, std::string_view lang) {
    const auto* const found = std::ranges::find(languages, lang, &Forms::lang);
    const auto form = found == languages.end() ? NumberForm::many : found->formFor(count);
    if (form == NumberForm::many) {
        return PlatformWording::string(CurtainCore::LocKey::filesOnDesktop, lang);
    }
    return form == NumberForm::one ? found->one : found->few;
}

} // namespace

std::string filesOnDesktop(std::int64_t count, std::string_view lang) {
    return std::to_string(count) + ' ' + std::string(textFor(count, lang));
}

} // namespace Curtain
