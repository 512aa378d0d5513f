#pragma once

#include "Curtain/HidingWatch.h"
#include "core/Compatibility.h"
#include "platform/AudioServices.h"
#include "platform/CaptureServices.h"
#include "platform/Subscription.h"
#include "platform/SystemVersion.h"
#include "platform/Workspace.h"

#include <optional>

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

    /// Begins to look for devices, so that `run` does not wait for their lists. To be kept until then.
    [[nodiscard]] Platform::Subscription prepare() const;
    /// What is not known counts as not there.
    CurtainCore::CompatibilityResult run() const;
    /// Why apps cannot be hidden here; absent where they can.
    std::optional<Platform::HidingObstacle> hidingObstacle() const;
    /// As `Platform::SystemVersion::switchExtensionOn`.
    void switchExtensionOn() const { services_.system.switchExtensionOn(); }
    /// Waits for the answer to that.
    HidingWatch hidingWatch(Platform::MainQueue& mainQueue) const { return {services_.system, mainQueue}; }

private:
    Services services_;
};

} // namespace Curtain
