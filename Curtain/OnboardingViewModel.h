#pragma once

#include "Curtain/CameraPreviewManager.h"
#include "Curtain/CompatibilityProbe.h"
#include "Curtain/DesktopChecker.h"
#include "Curtain/HidingWatch.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/ViewTexts.h"
#include "core/Compatibility.h"
#include "core/OnboardingFlow.h"
#include "core/ReadinessChecklist.h"
#include "platform/Lifetime.h"
#include "platform/MediaAuthorization.h"
#include "platform/UrlOpener.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace Curtain {

/// The wizard's model, for OnboardingWizardView.qml. Main thread only.
class OnboardingViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString lang READ langText NOTIFY langChanged)
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY langChanged)
    Q_PROPERTY(Curtain::ViewTexts* texts READ texts CONSTANT)
    /// The current page: "welcome", "compatibility", "desktop", "microphone", "camera" or "summary".
    Q_PROPERTY(QString page READ page NOTIFY flowChanged)
    Q_PROPERTY(int stepIndex READ stepIndex NOTIFY flowChanged)
    Q_PROPERTY(int stepCount READ stepCount NOTIFY flowChanged)
    Q_PROPERTY(bool isCompatibilityKnown READ isCompatibilityKnown NOTIFY changed)
    Q_PROPERTY(bool isCompatible READ isCompatible NOTIFY changed)
    Q_PROPERTY(bool hasCameraOrMicrophone READ hasCameraOrMicrophone NOTIFY changed)
    Q_PROPERTY(bool hasVideoApps READ hasVideoApps NOTIFY changed)
    /// The names, ready to be shown.
    Q_PROPERTY(QString videoApps READ videoApps NOTIFY changed)
    /// One sentence on why apps cannot be hidden, empty where there is none.
    Q_PROPERTY(QString hidingObstacle READ hidingObstacle NOTIFY changed)
    /// One sentence on what helps against it, empty where nothing is to be said.
    Q_PROPERTY(QString hidingRemedy READ hidingRemedy NOTIFY changed)
    Q_PROPERTY(bool canSwitchExtensionOn READ canSwitchExtensionOn NOTIFY changed)
    /// Of the current page. On a page that asks for no permission both are false.
    Q_PROPERTY(bool isGranted READ isGranted NOTIFY changed)
    Q_PROPERTY(bool isDenied READ isDenied NOTIFY changed)
    /// Whether that is denied by the system itself, in whose settings nothing can be done about it.
    Q_PROPERTY(bool isForbidden READ isForbidden NOTIFY changed)
    /// One sentence, empty unless the settings page was asked for and there is none.
    Q_PROPERTY(QString settingsProblem READ settingsProblem NOTIFY changed)
    /// A few words on why the live area of the current page shows nothing; empty where there is something.
    Q_PROPERTY(QString deviceProblem READ deviceProblem NOTIFY changed)
    Q_PROPERTY(double level READ level NOTIFY changed)
    Q_PROPERTY(Curtain::CameraPreviewManager* camera READ camera CONSTANT)
    Q_PROPERTY(bool hasPreview READ hasPreview NOTIFY changed)
    Q_PROPERTY(bool isPreviewMirrored READ isPreviewMirrored NOTIFY changed)
    /// How many files there are to hide, in words.
    Q_PROPERTY(QString desktopSummary READ desktopSummary NOTIFY changed)
    /// A few words on what the summary of each leaves out; empty where nothing is missing.
    Q_PROPERTY(QString microphoneGap READ microphoneGap NOTIFY changed)
    Q_PROPERTY(QString cameraGap READ cameraGap NOTIFY changed)

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

    std::function<void()> onFinish = [] {};
    /// The user wants to be rid of the window.
    std::function<void()> onClose = [] {};

    CameraPreviewManager& cameraManager() const { return services_.cameraManager; }
    MicrophoneMonitor& micMonitor() const { return services_.micMonitor; }

    const std::string& lang() const { return lang_; }
    /// Every text follows.
    void setLang(std::string lang);
    const CurtainCore::OnboardingFlow& flow() const { return flow_; }
    const std::optional<CurtainCore::CompatibilityResult>& compatibility() const { return compatibility_; }
    /// A kind that is absent is neither granted nor denied.
    const std::map<CurtainCore::PermissionKind, CurtainCore::PermissionStatus>& status() const {
        return status_;
    }
    std::int64_t desktopFileCount() const { return desktopFileCount_; }

    /// To be called when the window has come up, for the first time or again: what the page shows live starts
    /// again, and the search for devices begins before the page that lists them.
    void windowDidShow();
    /// To be called when the window closes: camera and microphone stop, and no answer that comes later starts
    /// them.
    void windowWillClose();
    /// Camera and microphone stop, and start again with the end of the lock.
    void sessionDidLock();
    void sessionDidUnlock();

    QString langText() const;
    bool isRightToLeft() const;
    ViewTexts* texts() { return &texts_; }
    QString page() const;
    int stepIndex() const;
    int stepCount() const;
    bool isCompatibilityKnown() const;
    bool isCompatible() const;
    bool hasCameraOrMicrophone() const;
    bool hasVideoApps() const;
    QString videoApps() const;
    QString hidingObstacle() const;
    QString hidingRemedy() const;
    /// Whether what stands in the way of hiding is an extension that is off.
    bool canSwitchExtensionOn() const;
    bool isGranted() const;
    bool isDenied() const;
    bool isForbidden() const;
    QString settingsProblem() const;
    QString deviceProblem() const;
    double level() const;
    CameraPreviewManager* camera() const { return &services_.cameraManager; }
    bool hasPreview() const;
    bool isPreviewMirrored() const;
    QString desktopSummary() const;
    QString microphoneGap() const;
    QString cameraGap() const;

    Q_INVOKABLE void advance();
    /// To be called when the compatibility page is shown. Looks at the system the first time, as often as it
    /// does not know yet whether apps can be hidden, and when an extension that is off is switched on.
    Q_INVOKABLE void checkCompatibility();
    /// Looks at the system anew once the extension is on, or is not.
    Q_INVOKABLE void switchExtensionOn();
    /// Asks for the permission of the current page; nothing on a page without one.
    Q_INVOKABLE void requestCurrentPermission();
    /// To be called when the user comes back to the window: what was denied, on any page, may have been
    /// granted meanwhile.
    Q_INVOKABLE void lookAgain();
    Q_INVOKABLE void openSystemSettings();
    Q_INVOKABLE void finish();
    Q_INVOKABLE void close();

Q_SIGNALS:
    /// All texts are others; comes before `changed`.
    void langChanged();
    /// The current page is another one; comes before `changed`.
    void flowChanged();
    /// Any of the published values has changed, or one of the camera manager's or the microphone monitor's.
    void changed();

private:
    void lookAnew();
    void desktopAnswered();
    void microphoneAnswered();
    void cameraAnswered();
    void setStatus(CurtainCore::PermissionKind kind, CurtainCore::PermissionStatus status);
    std::optional<CurtainCore::PermissionStatus> statusOf(CurtainCore::PermissionKind kind) const;
    std::optional<CurtainCore::PermissionStatus> currentStatus() const;
    QString problemOf(CurtainCore::PermissionKind kind) const;
    QString microphoneProblem() const;
    QString cameraProblem() const;
    void startLiveArea(CurtainCore::PermissionKind kind);
    void startLiveAreaAgain();

    Services services_;
    std::string lang_;
    ViewTexts texts_;
    CurtainCore::OnboardingFlow flow_;
    std::optional<CurtainCore::CompatibilityResult> compatibility_;
    std::optional<Platform::HidingObstacle> hidingObstacle_;
    HidingWatch hidingWatch_;
    std::map<CurtainCore::PermissionKind, CurtainCore::PermissionStatus> status_;
    bool isCameraForbidden_ = false;
    std::int64_t desktopFileCount_ = 0;
    bool isSettingsPageMissing_ = false;
    bool isClosed_ = false;
    bool isLocked_ = false;
    Platform::Subscription preparation_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
