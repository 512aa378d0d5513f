#include "platform/qt/items/DesktopStyle.h"

#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QStringList>

#include <algorithm>
#include <array>

namespace QtPlatform {
namespace {

/// Faces for what the interface's own has no letters for, best first. Without them the session's language
/// chooses: outside a Chinese session it draws Chinese in Japanese shapes.
QStringList facesFor(const QString& language) {
    if (language == "zh") {
        return {QStringLiteral("Noto Sans CJK SC"),    QStringLiteral("Noto Sans SC"),
                QStringLiteral("Source Han Sans SC"),  QStringLiteral("Source Han Sans CN"),
                QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei")};
    }
    if (language == "ar") {
        return {QStringLiteral("Noto Sans Arabic"), QStringLiteral("Noto Sans Arabic UI")};
    }
    return {};
}

/// A family whose missing letters come from these faces.
QString familyWith(const QString& family, const QString& language) {
    const auto faces = facesFor(language);
    if (faces.isEmpty()) {
        return family;
    }
    const auto name = family + QStringLiteral(" for ") + language;
    QFont::insertSubstitutions(name, QStringList{family} + faces);
    return name;
}

} // namespace

void DesktopStyle::setAppearance(const Appearance& appearance) {
    if (appearance != appearance_) {
        appearance_ = appearance;
        Q_EMIT changed();
    }
}

void DesktopStyle::setLanguage(const QString& language) {
    if (language != language_) {
        language_ = language;
        Q_EMIT changed();
    }
}

QString DesktopStyle::fontFamily() const {
    static constexpr std::array generic{"", "Sans", "Sans Serif", "sans-serif"};
    const auto chosen = QGuiApplication::font().family();
    const auto isChosen =
        std::ranges::none_of(generic, [&](const char* name) { return chosen == QLatin1String(name); });
    const auto preferred = QStringLiteral("Inter");
    // A generic name means that nobody chose a font. The preferred one has no Indic letters.
    const auto& family =
        isChosen || language_ == "hi" || !QFontDatabase::hasFamily(preferred) ? chosen : preferred;
    return familyWith(family, language_);
}

} // namespace QtPlatform
