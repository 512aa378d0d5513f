#pragma once

#include "platform/linux/windows/i3/I3Place.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <cstdint>
#include <set>
#include <span>
#include <string>

namespace LinuxPlatform {

// The command language of i3 and sway. Every text is commands that end with a semicolon, unless it says
// otherwise. Source: i3's user guide, "List of commands", and sway(5).

/// What the command after it is for; no command itself.
std::string withId(std::int64_t id);
/// A name within a command.
std::string quoted(const I3Tree& tree, const std::string& name);
bool isAlongTheWidth(const std::string& layout);
/// Whether what is in there stands side by side.
bool isSplit(const std::string& layout);

/// Makes everybody see the workspaces that they see now, with the focus where it is or on what is next when
/// those that are `gone` are not there.
std::string keepView(const I3Tree& tree, const std::set<WindowId>& gone);
/// Lets what is fullscreen be so after commands that bring something to workspaces. i3 lets nothing come to
/// one that something fills with the focus, sway ends that where something leaves the scratchpad, and both
/// hand it on where containers are swapped.
std::string keepFullscreen(const I3Tree& tree, const std::set<std::string>& workspaces,
                           const std::string& commands);
/// Brings something back from the scratchpad.
std::string outOfScratchpad(const I3Tree& tree, const I3Place& place, std::int64_t id);
/// Gives something that floats the place of a window in it.
std::string toRect(const I3Tree& tree, std::int64_t id, const I3Place& place, const I3Rect& rect);
/// Makes a group tiles and lets it float anew; what has been in the scratchpad is none of its windows then.
/// `meanwhile` are commands.
std::string floatAnew(const I3Node& group, const std::string& meanwhile);
/// Puts windows, named as containers, from a group that floats into the scratchpad.
std::string outOfGroup(const I3Tree& tree, const I3Node& group, std::span<const std::int64_t> windows);

} // namespace LinuxPlatform
