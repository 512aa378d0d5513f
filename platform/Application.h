#pragma once

#include "platform/Workspace.h"

#include <optional>
#include <string>

namespace Platform {

/// This process as the desktop sees it.
class Application {
public:
    virtual ~Application() = default;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    /// Makes this program the one that the user works with, on the strength of what the user did last.
    virtual void activate(bool ignoringOtherApps) = 0;
    /// Absent when the program runs from a folder in which it was only built.
    virtual std::optional<std::string> bundleIdentifier() const = 0;
    /// Ends the program once the current event has been dealt with.
    virtual void terminate() = 0;
    /// The same, and starts it anew when it has ended.
    virtual void relaunch() = 0;
};

} // namespace Platform
