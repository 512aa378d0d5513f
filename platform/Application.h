#pragma once

#include "platform/Workspace.h"

namespace Platform {

/// This process as the desktop sees it.
class Application {
public:
    virtual ~Application() = default;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
};

} // namespace Platform
