#pragma once

#include "platform/linux/windows/i3/I3Returning.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <span>
#include <string>

namespace LinuxPlatform {

/// i3 does not lay out what nobody sees, and neither lays out what something fullscreen covers.
bool areSizesKnown(const I3Tree& tree, const I3Leaf& leaf);
/// Gives windows that are back, and what is beside them, the sizes that they had. A size depends on others:
/// it may take one message for each level of the layout. Those whose sizes are not known are left alone.
/// Empty where there is nothing to do.
std::string commandsToAdjust(const I3Tree& tree, std::span<const I3Return> returns);

} // namespace LinuxPlatform
