#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/i3/I3Connection.h"

#include <filesystem>
#include <functional>

namespace LinuxPlatform {

/// Hears from i3 or sway that another workspace takes the place of one that was in view. The number that i3
/// tells the X server changes with every workspace that ends, and with a pointer that moves to another
/// output.
class I3WorkspaceSwitches {
public:
    /// `queue` outlives this object.
    I3WorkspaceSwitches(const std::filesystem::path& socket, Platform::MainQueue& queue,
                        std::function<void()> didSwitch);

private:
    I3Connection connection_;
};

} // namespace LinuxPlatform
