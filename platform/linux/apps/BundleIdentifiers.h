#pragma once

#include <string>
#include <string_view>

namespace LinuxPlatform {

/// The bundle identifier of an app on this system: its desktop-entry id, except for the packagings of a few
/// well-known programs, which all give the one identifier under which the program is known everywhere. Upper
/// and lower case of `desktopEntryId` count as the same in that table.
std::string bundleIdentifierFor(std::string_view desktopEntryId);

} // namespace LinuxPlatform
