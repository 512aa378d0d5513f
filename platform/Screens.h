#pragma once

#include "platform/Geometry.h"

#include <optional>
#include <vector>

namespace Platform {

/// One monitor.
struct Screen {
    Rect frame;
    /// The part that panels leave free. Panels, on whichever edge, are the menu bar.
    Rect visibleFrame;

    bool operator==(const Screen&) const = default;
};

/// The monitors, as they are at the time of the call. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;

    virtual std::vector<Screen> screens() = 0;
    /// The one that the user works on, which is the one with the pointer where that is known; absent without
    /// any.
    virtual std::optional<Screen> main() = 0;
    /// The one that shows that pixel of the whole screen; absent when none does.
    virtual std::optional<Screen> at(const Point& pixel) = 0;
    /// Absent where nobody tells where the pointer is.
    virtual std::optional<Point> mouseLocation() = 0;
};

} // namespace Platform
