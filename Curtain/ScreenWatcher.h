#pragma once

#include "platform/ScreenWatcherProbe.h"

#include <functional>

namespace Curtain {

/// Asks whether some process watches the screen.
class ScreenWatcher {
public:
    /// Looks the question up, once. `probe` outlives the watcher.
    explicit ScreenWatcher(Platform::ScreenWatcherProbe& probe);

    /// Empty where it cannot be asked; the screen then counts as never watched. Its answer is absent while
    /// nobody knows.
    Platform::ScreenWatcherProbe::Query fn;

    /// Whether it can be asked, and nobody knows the answer at this moment.
    bool isBlind() const { return fn && !fn().has_value(); }
};

} // namespace Curtain
