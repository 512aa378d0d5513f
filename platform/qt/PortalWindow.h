#pragma once

#include <QString>

namespace QtPlatform {

/// The window that has the keyboard, as portals name windows; empty when none of this program's has it.
QString portalNameOfFocusedWindow();

} // namespace QtPlatform
