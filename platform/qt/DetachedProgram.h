#pragma once

#include <string>
#include <vector>

namespace QtPlatform {

/// Starts a program that lives on by itself, without waiting for it. False when there is none of that name.
bool startDetached(const std::vector<std::string>& command);

} // namespace QtPlatform
