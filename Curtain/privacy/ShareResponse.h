#pragma once

#include "Curtain/Notifier.h"
#include "Curtain/ScreenWatcher.h"
#include "Curtain/ShareMonitor.h"
#include "Curtain/privacy/PrivacyMode.h"
#include "core/PreferencesStore.h"
#include "core/ShareDetector.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/ScreenWatcherProbe.h"
#include "platform/Workspace.h"

namespace Curtain {

/// Switches privacy mode, or asks its user to, when a share of the screen begins or ends. Main thread only.
class ShareResponse {
public:
    /// All of them outlive this object.
    struct Services {
        PrivacyMode& privacy;
        const CurtainCore::PreferencesStore& store;
        Notifier& notifier;
        const ScreenWatcher& screenWatcher;
        Platform::ScreenWatcherProbe& probe;
        Platform::Workspace& workspace;
        Platform::MainQueue& mainQueue;
    };

    explicit ShareResponse(const Services& services);

    /// From now on, where its user wants that.
    void start();
    /// To be called when privacy mode is on for a share that an earlier run had noticed: of its end while
    /// nobody watched, nothing else would tell.
    void awaitShare();

private:
    void confidenceChanged(CurtainCore::DetectionConfidence confidence);
    void lookLater();
    void endUnlessShared();
    void undoWhatIsAutomatic();

    Services services_;
    ShareMonitor monitor_;
    /// The share of an earlier run, if it goes on, has not been noticed yet.
    bool isShareAwaited_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
