#pragma once

#include <string>
#include <vector>

namespace Platform {

/// Covers windows of apps from the moment at which they are there, where the desktop lets us: hiding them
/// takes longer. A cover hides what is in a window and in its frame, not the window. Main thread only.
class AppShield {
public:
    virtual ~AppShield() = default;

    /// From now on the windows of these apps and of no others are covered. Asked for, not waited for.
    virtual void cover(const std::vector<std::string>& bundleIDs) = 0;
};

} // namespace Platform
