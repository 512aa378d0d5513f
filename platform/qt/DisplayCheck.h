#pragma once

#include <optional>
#include <string>

namespace QtPlatform {

/// One sentence for the user when there is no display that a QApplication could open; it would abort. To be
/// asked before one is made.
std::optional<std::string> missingDisplay();

} // namespace QtPlatform
