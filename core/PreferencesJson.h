#pragma once

#include "core/Preferences.h"

#include <optional>
#include <string>
#include <string_view>

namespace CurtainCore {

/// The record as a JSON document (UTF-8); absent when a text in it is not UTF-8. Absent identifiers are left
/// out.
std::optional<std::string> encodePreferences(const Preferences& preferences);

/// The record in a JSON document. A missing or null key takes its default; a value of the wrong type, an
/// enumeration text that matches no case, or an app without one of its two keys makes the whole result
/// absent.
std::optional<Preferences> decodePreferences(std::string_view document);

/// Whether a JSON document holds keys that are not the record's, as one of a later version may. False when it
/// is not JSON.
bool holdsUnknownKeys(std::string_view document);

} // namespace CurtainCore
