#pragma once

#include "Curtain/CameraPreviewManager.h"
#include "Curtain/CompatibilityProbe.h"
#include "Curtain/DesktopChecker.h"
#include "Curtain/MicrophoneMonitor.h"
#include "core/Compatibility.h"
#include "core/OnboardingFlow.h"
#include "platform/MediaAuthorization.h"
#include "platform/UrlOpener.h"

#include <QObject>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace Curtain {

/// The wizard's model, for OnboardingWizardView.qml. Main thread only.
class OnboardingViewModel : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the model.
    struct Services {
        CameraPreviewManager& cameraManager;
        MicrophoneMonitor& micMonitor;
        const DesktopChecker& desktopChecker;
        CompatibilityProbe compatibilityProbe;
        Platform::MediaAuthorization& authorization;
        CameraPreviewManager::Services camera;
        Platform::UrlOpener& urlOpener;
    };

    OnboardingViewModel(const Services& services, std::string lang, CurtainCore::OnboardingStep startAt);

    std::function<void()> onFinish;

    CameraPreviewManager& cameraManager() const;
    MicrophoneMonitor& micMonitor() const;

Q_SIGNALS:
    void changed();
};

} // namespace Curtain
