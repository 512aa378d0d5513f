#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// The modes that keep every notice from the screen, in the order in which a configuration of mako has them.
/// Source: mako(5), criteria and the option `invisible`. Files that it includes are not read.
std::vector<std::string> quietMakoModes(std::string_view configuration);

} // namespace LinuxPlatform
