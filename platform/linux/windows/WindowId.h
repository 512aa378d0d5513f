#pragma once

#include <cstdint>
#include <functional>

namespace LinuxPlatform {

/// Names a window for as long as it exists.
using WindowId = std::uint64_t;

using WindowPredicate = std::function<bool(WindowId)>;

} // namespace LinuxPlatform
