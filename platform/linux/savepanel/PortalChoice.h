#pragma once

#include <QVariantMap>

#include <optional>
#include <string>

namespace LinuxPlatform {

/// The file that the user chose, out of the results of org.freedesktop.portal.FileChooser's SaveFile; absent
/// when none was chosen. Without an ending of `mimeType` it gets one, unless that is a file already or the
/// portal lets this program write to the chosen file alone. What is outside the file system is told by its
/// address.
std::optional<std::string> portalChoice(const QVariantMap& results, const std::string& mimeType);

} // namespace LinuxPlatform
