#include "Curtain/ViewText.h"

#include <QUrl>

namespace Curtain {
namespace {

/// More than any place for a name has room for.
constexpr qsizetype longestName = 200;

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

QString viewText(CurtainCore::LocKey key, std::string_view lang) {
    return toQString(PlatformWording::string(key, lang));
}

QString viewText(PlatformKey key, std::string_view lang) {
    return toQString(PlatformWording::string(key, lang));
}

QString interruptionText(std::optional<Platform::CaptureInterruption> interruption, std::string_view lang) {
    using Platform::CaptureInterruption;
    if (interruption) {
        switch (*interruption) {
        case CaptureInterruption::deviceNotAvailable:
            return viewText(PlatformKey::cameraGone, lang);
        case CaptureInterruption::deviceInUse:
            return viewText(PlatformKey::cameraInUse, lang);
        case CaptureInterruption::deviceFailed:
            return viewText(PlatformKey::cameraDoesNotStart, lang);
        case CaptureInterruption::noPictures:
            return viewText(PlatformKey::cameraSendsNothing, lang);
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
