#pragma once

#include "platform/CaptureServices.h"
#include "platform/Image.h"

#include <QString>
#include <QVariantMap>

#include <optional>
#include <string_view>

namespace Curtain {

/// The text behind a name that a QML file uses: that of a `LocKey` or a `PlatformKey`. Aborts on any other
/// name.
QString viewText(const QString& key, std::string_view lang);

/// All of these texts, by their names.
QVariantMap viewTexts(std::string_view lang);

/// Why a camera shows nothing; empty for no reason.
QString interruptionText(std::optional<Platform::CaptureInterruption> interruption, std::string_view lang);

/// The address under which a QML file finds an app's icon; empty for an icon without a source.
QString iconAddress(const Platform::Image& icon);

QString toQString(std::string_view text);

/// A name from outside as one short line without control characters; the identifier when nothing is left of
/// it.
QString shownName(std::string_view name, std::string_view identifier);

} // namespace Curtain
