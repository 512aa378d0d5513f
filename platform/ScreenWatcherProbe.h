#pragma once

#include "platform/Subscription.h"

#include <functional>
#include <optional>
#include <string>

namespace Platform {

/// The question that `ScreenWatcherProbe::lookUp` knows.
inline constexpr const char* screenWatcherSymbol = "CGSIsScreenWatcherPresent";

/// Tells whether some process watches the screen.
class ScreenWatcherProbe {
public:
    virtual ~ScreenWatcherProbe() = default;

    /// Whether the screen is watched; absent while that is not known.
    using Query = std::function<std::optional<bool>()>;

    /// The query behind a symbol's name; empty where no such question can ever be answered here. Queries are
    /// cheap, do not block, and may outlive each other but not the probe. Main thread only.
    virtual Query lookUp(const std::string& symbol) = 0;

    /// `handler` is called when the answer may have become another one. Not all changes are told: whoever has
    /// to know asks again and again as well.
    virtual Subscription addNewsObserver(std::function<void()> handler) = 0;
};

} // namespace Platform
