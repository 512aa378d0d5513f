#pragma once

#include "Curtain/CameraPreviewManager.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/ReadinessCoordinator.h"
#include "Curtain/popover/LockWatch.h"
#include "core/PreferencesStore.h"
#include "platform/MediaAuthorization.h"

#include <string>

namespace Curtain {

/// When the popover's checks of camera and microphone run, and what they say. While the session is locked
/// none starts: whatever asks for it, nobody is there to see it. Main thread only.
class LiveChecks {
public:
    /// All of them outlive this object.
    struct Services {
        const CurtainCore::PreferencesStore& store;
        CameraPreviewManager& camera;
        MicrophoneMonitor& mic;
        Platform::MediaAuthorization& authorization;
        const LockWatch& lock;
    };

    explicit LiveChecks(const Services& services) : services_(services) {}

    /// Those that the user wants; the others stop.
    void start();
    void startCamera(const std::string& cameraID);
    /// Until `endRest`. The photo stays.
    void rest();
    /// Goes on if there was a rest.
    void endRest();
    /// Puts the photo away too.
    void end();

    ProviderReadiness cameraReadiness() const;
    ProviderReadiness microphoneReadiness() const;

private:
    void stop();

    Services services_;
    bool isResting_ = false;
};

} // namespace Curtain
