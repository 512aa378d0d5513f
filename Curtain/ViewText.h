#pragma once

#include <QString>

#include <string_view>

namespace Curtain {

/// The text behind a name that a QML file uses: that of a `LocKey` or a `PlatformKey`. Aborts on any other
/// name.
QString viewText(const QString& key, std::string_view lang);

/// A name from outside as one short line without control characters; the identifier when nothing is left of
/// it.
QString shownName(std::string_view name, std::string_view identifier);

} // namespace Curtain
