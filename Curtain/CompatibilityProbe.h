#pragma once

#include "core/Compatibility.h"
#include "platform/AudioServices.h"
#include "platform/CaptureServices.h"
#include "platform/SystemVersion.h"
#include "platform/Workspace.h"

namespace Curtain {

/// Finds out whether this system is good for Curtain. Main thread only.
class CompatibilityProbe {
public:
    /// All of them outlive the probe.
    struct Services {
        Platform::SystemVersion& system;
        Platform::CaptureServices& capture;
        Platform::AudioServices& audio;
        Platform::Workspace& workspace;
    };

    explicit CompatibilityProbe(const Services& services) : services_(services) {}

    CurtainCore::CompatibilityResult run() const;

private:
    Services services_;
};

} // namespace Curtain
