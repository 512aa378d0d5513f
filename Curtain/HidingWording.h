#pragma once

#include "platform/SystemVersion.h"

#include <string_view>

namespace Curtain {

/// What the user reads where apps cannot be hidden. Texts live as long as the program; callable from any
/// thread.
namespace HidingWording {

/// One sentence on why it is so.
std::string_view reason(Platform::HidingObstacle obstacle, std::string_view lang);

/// One sentence on what helps; empty where the reason says it or nothing but waiting does.
std::string_view remedy(Platform::HidingObstacle obstacle, std::string_view lang);

} // namespace HidingWording

} // namespace Curtain
