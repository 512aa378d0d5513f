#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/CameraPreviewManager.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/ReadinessCoordinator.h"
#include "core/PreferencesStore.h"
#include "platform/UrlOpener.h"
#include "platform/Workspace.h"

#include <QObject>

#include <functional>
#include <string>

namespace Curtain {

/// What the popover's content asks of the controller.
struct MeetingReadinessActions {
    std::function<void()> onFixEverything;
    std::function<void()> onHidePrivateApps;
    std::function<void()> onRestore;
    std::function<void()> onToggleDesktop;
    std::function<void(const std::string& cameraID)> onSelectCamera;
    std::function<void()> onTakePhoto;
    std::function<void()> onCopyPhoto;
    std::function<void()> onSavePhoto;
    std::function<void()> onOpenSettings;
    std::function<void()> onQuit;
};

/// The content of the popover, for MeetingReadinessView.qml. Main thread only.
class MeetingReadinessView : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the view.
    struct Services {
        ReadinessCoordinator& coordinator;
        CameraPreviewManager& camera;
        MicrophoneMonitor& mic;
        CurtainCore::PreferencesStore& store;
        Platform::CaptureServices& capture;
        Platform::Workspace& workspace;
        const AppCatalog& catalog;
        Platform::UrlOpener& urlOpener;
    };

    MeetingReadinessView(const Services& services, std::string lang, MeetingReadinessActions actions);
};

} // namespace Curtain
