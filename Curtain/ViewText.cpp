#include "Curtain/ViewText.h"

#include "Curtain/PlatformWording.h"

#include <QUrl>

#include <optional>

namespace Curtain {
namespace {

/// More than any place for a name has room for.
constexpr qsizetype longestName = 200;

template <typename Key>
std::optional<QString> textFor(std::string_view name, std::string_view lang) {
    for (const auto& [key, keyName] : CurtainCore::RawValues<Key>::cases) {
        if (keyName == name) {
            return toQString(PlatformWording::string(key, lang));
        }
    }
    return std::nullopt;
}

template <typename Key>
void insertTexts(QVariantMap& texts, std::string_view lang) {
    for (const auto& [key, name] : CurtainCore::RawValues<Key>::cases) {
        texts.insert(toQString(name), toQString(PlatformWording::string(key, lang)));
    }
}

bool isKept(QChar character) {
    const auto category = character.category();
    const auto code = character.unicode();
    // Characters that join letters into other shapes are formatting too, but part of the name.
    const auto joins = code == 0x200C || code == 0x200D;
    return category != QChar::Other_Control && (category != QChar::Other_Format || joins);
}

QString oneShortLine(std::string_view name) {
    // More than enough bytes for that many characters, and not the whole of a name of any length.
    auto line = toQString(name.substr(0, static_cast<std::size_t>(longestName) * 8)).simplified();
    line.removeIf([](QChar character) { return !isKept(character); });
    if (line.size() > longestName) {
        const auto end = line.at(longestName - 1).isHighSurrogate() ? longestName - 1 : longestName;
        line.truncate(end);
    }
    return line.trimmed();
}

} // namespace

QString viewText(const QString& key, std::string_view lang) {
    const auto name = key.toStdString();
    if (auto text = textFor<CurtainCore::LocKey>(name, lang)) {
        return *text;
    }
    if (auto text = textFor<PlatformKey>(name, lang)) {
        return *text;
    }
    qFatal("there is no text %s", name.c_str());
}

QVariantMap viewTexts(std::string_view lang) {
    QVariantMap texts;
    insertTexts<CurtainCore::LocKey>(texts, lang);
    insertTexts<PlatformKey>(texts, lang);
    return texts;
}

QString interruptionText(std::optional<Platform::CaptureInterruption> interruption, std::string_view lang) {
    using Platform::CaptureInterruption;
    const auto text = [&](PlatformKey key) { return toQString(PlatformWording::string(key, lang)); };
    if (interruption) {
        switch (*interruption) {
        case CaptureInterruption::deviceNotAvailable:
            return text(PlatformKey::cameraGone);
        case CaptureInterruption::deviceInUse:
            return text(PlatformKey::cameraInUse);
        case CaptureInterruption::deviceFailed:
            return text(PlatformKey::cameraDoesNotStart);
        case CaptureInterruption::noPictures:
            return text(PlatformKey::cameraSendsNothing);
        }
    }
    return {};
}

QString iconAddress(const Platform::Image& icon) {
    return icon.source.empty() ? QString()
                               : QStringLiteral("image://icon/") +
                                     QString::fromLatin1(QUrl::toPercentEncoding(toQString(icon.source)));
}

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString shownName(std::string_view name, std::string_view identifier) {
    const auto line = oneShortLine(name);
    return line.isEmpty() ? oneShortLine(identifier) : line;
}

} // namespace Curtain
