#pragma once

#include "platform/Workspace.h"

namespace Platform {

/// This process as the desktop sees it.
class Application {
public:
    virtual ~Application() = default;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    /// Ends the program once the current event has been dealt with.
    virtual void terminate() = 0;
};

} // namespace Platform
