#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CurtainCore {

/// A JSON text in which every value can be held: numbers beyond the range of `double`, and texts in which an
/// escape sequence names half a character, have given way to objects, which no reader takes for a number or a
/// text. A member's name with half a character has the replacement character there. Nothing else is changed,
/// so that a text that is not JSON is not made so. Absent when there is a byte 0, which no JSON text has.
std::optional<std::string> jsonWithHoldableValues(std::string_view text);

} // namespace CurtainCore
