#pragma once

#include "platform/linux/windows/i3/I3Returning.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <optional>
#include <set>
#include <span>
#include <string>

namespace LinuxPlatform {

// What is to be done to the layout, in the command language of i3 and sway. Every text is one message, which
// ends with the focus and the visible workspaces as they were; empty where there is nothing to do.

/// Puts windows into the scratchpad. `leaving` are all that are to go there, with this message or after it.
std::string commandsToTake(const I3Tree& tree, std::span<const WindowId> windows,
                           const std::set<WindowId>& leaving);
/// Puts windows from the scratchpad back to their places, except for what `commandsToAdjust` and
/// `commandsToFinish` do. `toFocus` gets the focus afterwards, be it one of them or not.
std::string commandsToReturn(const I3Tree& tree, std::span<const I3Return> returns,
                             std::optional<WindowId> toFocus);
/// What needs the sizes to be right.
std::string commandsToFinish(const I3Tree& tree, std::span<const I3Return> returns);
/// Brings windows back to their workspaces, to where there is room. Does no harm to one that is there
/// already.
std::string commandsToReturnAnywhere(const I3Tree& tree, std::span<const I3Return> returns);
/// Brings a window of the user's own scratchpad up, as its user would.
std::string commandsToBringUp(const I3Tree& tree, WindowId window);
std::string commandToFocus(const I3Tree& tree, WindowId window);

} // namespace LinuxPlatform
