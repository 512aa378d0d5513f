#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/CameraPreviewManager.h"
#include "Curtain/MicrophoneMonitor.h"
#include "Curtain/ReadinessCoordinator.h"
#include "Curtain/ViewText.h"
#include "Curtain/ViewTexts.h"
#include "Curtain/popover/MicrophoneRow.h"
#include "Curtain/popover/PrivateAppLists.h"
#include "core/PreferencesStore.h"
#include "platform/Locale.h"
#include "platform/SystemVersion.h"
#include "platform/UrlOpener.h"
#include "platform/Workspace.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <memory>
#include <string>

namespace Curtain {

/// What the popover's content asks of the controller.
struct MeetingReadinessActions {
    std::function<void()> onFixEverything;
    std::function<void()> onHidePrivateApps;
    std::function<void()> onRestore;
    /// Ends privacy mode, as the notice of a share does.
    std::function<void()> onUndo;
    std::function<void()> onToggleDesktop;
    std::function<void(const std::string& cameraID)> onSelectCamera;
    std::function<void()> onTakePhoto;
    std::function<void()> onCopyPhoto;
    std::function<void()> onSavePhoto;
    std::function<void()> onOpenSettings;
    std::function<void()> onQuit;
};

/// What became of a test photo.
enum class PhotoNews { none, copied, notCopied, saved, noSpace, notAllowed, notSaved, notTaken };

/// The content of the popover, for MeetingReadinessView.qml: what its rows and buttons show, and what they
/// do. A tone is the name of a status colour: "green", "orange", "red" or "gray". Main thread only.
class MeetingReadinessView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString lang READ lang CONSTANT)
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft CONSTANT)
    Q_PROPERTY(Curtain::ViewTexts* texts READ texts CONSTANT)
    Q_PROPERTY(Curtain::CameraPreviewManager* camera READ camera CONSTANT)

    Q_PROPERTY(QString capsuleText READ capsuleText NOTIFY stateChanged)
    Q_PROPERTY(QString capsuleTone READ capsuleTone NOTIFY stateChanged)
    Q_PROPERTY(bool isPrivacyModeOn READ isPrivacyModeOn NOTIFY stateChanged)
    /// Whether a share that was noticed has switched it on.
    Q_PROPERTY(bool isPrivacyModeAutomatic READ isPrivacyModeAutomatic NOTIFY stateChanged)
    /// Whether it hides nothing, since nothing can be hidden here.
    Q_PROPERTY(bool isPrivacyModeInVain READ isPrivacyModeInVain NOTIFY stateChanged)
    /// One sentence on why apps cannot be hidden, empty where they can.
    Q_PROPERTY(QString hidingObstacle READ hidingObstacle NOTIFY stateChanged)
    /// Whether a switch-on could hide something, as far as is known.
    Q_PROPERTY(bool canHideApps READ canHideApps NOTIFY stateChanged)
    /// Whether a private app is left that can be hidden, as far as is known; and why not, in one sentence,
    /// empty where there is nothing to say.
    Q_PROPERTY(bool canHideMore READ canHideMore NOTIFY stateChanged)
    Q_PROPERTY(QString hideProblem READ hideProblem NOTIFY stateChanged)
    /// Whether anything that is wrong could be mended.
    Q_PROPERTY(bool canFix READ canFix NOTIFY stateChanged)
    Q_PROPERTY(bool showsRisk READ showsRisk NOTIFY stateChanged)
    Q_PROPERTY(int score READ score NOTIFY stateChanged)
    Q_PROPERTY(QString riskLabel READ riskLabel NOTIFY stateChanged)
    Q_PROPERTY(QString riskTone READ riskTone NOTIFY stateChanged)
    /// What the score leaves out, or else what it counts in vain, in a few words; empty where it can be taken
    /// as it is.
    Q_PROPERTY(QString scoreGap READ scoreGap NOTIFY stateChanged)
    Q_PROPERTY(bool hasIssues READ hasIssues NOTIFY stateChanged)
    Q_PROPERTY(QVariantList issues READ issues NOTIFY stateChanged)
    Q_PROPERTY(QVariantList shareLines READ shareLines NOTIFY stateChanged)

    Q_PROPERTY(QString cameraStatus READ cameraStatus NOTIFY stateChanged)
    Q_PROPERTY(QString cameraDetail READ cameraDetail NOTIFY stateChanged)
    Q_PROPERTY(QString notificationsStatus READ notificationsStatus NOTIFY stateChanged)
    Q_PROPERTY(QString notificationsDetail READ notificationsDetail NOTIFY stateChanged)
    Q_PROPERTY(QString desktopStatus READ desktopStatus NOTIFY stateChanged)
    Q_PROPERTY(QString desktopDetail READ desktopDetail NOTIFY stateChanged)
    Q_PROPERTY(bool isDesktopHidden READ isDesktopHidden NOTIFY stateChanged)
    Q_PROPERTY(QString privateAppsStatus READ privateAppsStatus NOTIFY stateChanged)
    Q_PROPERTY(QString privateAppsDetail READ privateAppsDetail NOTIFY stateChanged)

    Q_PROPERTY(QString microphoneStatus READ microphoneStatus NOTIFY microphoneChanged)
    Q_PROPERTY(QString microphoneDetail READ microphoneDetail NOTIFY microphoneChanged)
    Q_PROPERTY(QString microphoneName READ microphoneName NOTIFY microphoneChanged)
    Q_PROPERTY(QString echoLabel READ echoLabel NOTIFY microphoneChanged)
    Q_PROPERTY(double microphoneLevel READ microphoneLevel NOTIFY microphoneLevelChanged)

    Q_PROPERTY(QString cameraState READ cameraState NOTIFY cameraChanged)
    Q_PROPERTY(QString cameraProblem READ cameraProblem NOTIFY cameraChanged)
    /// Whether a camera without permission has none from the system itself.
    Q_PROPERTY(bool isCameraForbidden READ isCameraForbidden NOTIFY cameraChanged)
    Q_PROPERTY(bool hasPhoto READ hasPhoto NOTIFY cameraChanged)
    Q_PROPERTY(bool canTakePhoto READ canTakePhoto NOTIFY cameraChanged)
    /// What became of the last photo or of what was to be done with it, in one sentence; empty before.
    Q_PROPERTY(QString photoNews READ photoNews NOTIFY photoNewsChanged)
    Q_PROPERTY(QString photoNewsTone READ photoNewsTone NOTIFY photoNewsChanged)
    Q_PROPERTY(bool isMirrored READ isMirrored NOTIFY cameraChanged)
    Q_PROPERTY(bool isReady READ isReady NOTIFY readyChanged)

    Q_PROPERTY(QAbstractListModel* privateApps READ privateApps CONSTANT)
    Q_PROPERTY(bool hasPrivateApps READ hasPrivateApps NOTIFY appsChanged)
    Q_PROPERTY(QStringList visibilities READ visibilities NOTIFY stateChanged)
    Q_PROPERTY(QAbstractListModel* editedApps READ editedApps CONSTANT)
    Q_PROPERTY(bool editingApps READ editingApps WRITE setEditingApps NOTIFY editingAppsChanged)
    Q_PROPERTY(QString appQuery READ appQuery WRITE setAppQuery NOTIFY appQueryChanged)
    /// The row of the edited apps that was searched for, the first of them without a query; -1 where no name
    /// holds the query.
    Q_PROPERTY(int foundApp READ foundApp NOTIFY foundAppChanged)
    Q_PROPERTY(
        bool showingTestShare READ showingTestShare WRITE setShowingTestShare NOTIFY showingTestShareChanged)
    Q_PROPERTY(QString cameraSettingsProblem READ cameraSettingsProblem NOTIFY settingsProblemChanged)
    Q_PROPERTY(QString focusProblem READ focusProblem NOTIFY settingsProblemChanged)

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
        Platform::Locale& locale;
        Platform::SystemVersion& system;
    };

    MeetingReadinessView(const Services& services, std::string lang, MeetingReadinessActions actions);
    /// It is no longer shown, and from now on follows nothing.
    void rest();

    QString lang() const { return QString::fromStdString(lang_); }
    bool isRightToLeft() const;
    ViewTexts* texts() { return &texts_; }
    CameraPreviewManager* camera() const { return &services_.camera; }

    QString capsuleText() const;
    QString capsuleTone() const;
    bool isPrivacyModeOn() const { return state().privacyModeActive; }
    bool isPrivacyModeAutomatic() const;
    bool isPrivacyModeInVain() const;
    QString hidingObstacle() const;
    bool canHideApps() const;
    bool canHideMore() const;
    QString hideProblem() const;
    bool canFix() const;
    bool showsRisk() const { return showsRisk_; }
    int score() const { return state().score; }
    QString riskLabel() const;
    QString riskTone() const;
    QString scoreGap() const;
    bool hasIssues() const { return !state().issues.empty(); }
    /// Each with its `key`, `text` and `tone`.
    QVariantList issues() const;
    /// The issues, what has no effect and what cannot be told; a single one with an empty `key` where all is
    /// well.
    QVariantList shareLines() const;

    /// "ok", "warning", "danger" or "unknown", like that of every row.
    QString cameraStatus() const;
    QString cameraDetail() const;
    QString notificationsStatus() const;
    QString notificationsDetail() const;
    QString desktopStatus() const;
    QString desktopDetail() const;
    bool isDesktopHidden() const { return state().desktopHidden; }
    QString privateAppsStatus() const;
    QString privateAppsDetail() const;

    QString microphoneStatus() const;
    QString microphoneDetail() const;
    QString microphoneName() const { return microphone_.name(); }
    QString echoLabel() const;
    double microphoneLevel() const { return microphone_.level(); }

    /// "available", "noPermission", "noCameraFound" or "unavailable".
    QString cameraState() const;
    /// Why an available camera shows nothing; empty while it does, or may be about to.
    QString cameraProblem() const;
    bool isCameraForbidden() const;
    bool hasPhoto() const { return services_.camera.capturedPhoto() != nullptr; }
    bool canTakePhoto() const;
    QString photoNews() const;
    QString photoNewsTone() const;
    void tellOfPhoto(PhotoNews news);
    bool isMirrored() const { return services_.camera.mirrored(); }
    /// Whether a camera that shows a picture deserves the ready badge.
    bool isReady() const;

    QAbstractListModel* privateApps() { return &lists_.privateApps(); }
    bool hasPrivateApps() const { return lists_.hasPrivateApps(); }
    /// Those that occur among the private apps.
    QStringList visibilities() const;
    /// The private apps, and below them the others that match the query.
    QAbstractListModel* editedApps() { return &lists_.editedApps(); }
    bool editingApps() const { return lists_.isEditing(); }
    void setEditingApps(bool editing);
    const QString& appQuery() const { return lists_.query(); }
    void setAppQuery(const QString& query);
    int foundApp() const { return lists_.found(); }
    bool showingTestShare() const { return showingTestShare_; }
    void setShowingTestShare(bool showing);
    /// What to say after that settings page could not be opened; empty otherwise.
    QString cameraSettingsProblem() const;
    QString focusProblem() const;

    /// To be called on every opening of the popover.
    Q_INVOKABLE void didOpen();

    Q_INVOKABLE void fixEverything() { actions_.onFixEverything(); }
    Q_INVOKABLE void hidePrivateApps() { actions_.onHidePrivateApps(); }
    Q_INVOKABLE void restore() { actions_.onRestore(); }
    Q_INVOKABLE void undo() { actions_.onUndo(); }
    Q_INVOKABLE void toggleDesktop() { actions_.onToggleDesktop(); }
    Q_INVOKABLE void selectCamera(const QString& id) { actions_.onSelectCamera(id.toStdString()); }
    Q_INVOKABLE void takePhoto();
    Q_INVOKABLE void copyPhoto() { actions_.onCopyPhoto(); }
    Q_INVOKABLE void savePhoto() { actions_.onSavePhoto(); }
    Q_INVOKABLE void openSettings() { actions_.onOpenSettings(); }
    Q_INVOKABLE void quit() { actions_.onQuit(); }

    Q_INVOKABLE void discardPhoto();
    Q_INVOKABLE void toggleMirrored() { services_.camera.setMirrored(!isMirrored()); }
    /// The cameras at this moment, each with its `id`, `name` and whether it `isActive`.
    Q_INVOKABLE QVariantList cameras() const;
    Q_INVOKABLE void startEcho() { services_.mic.startEcho(); }
    Q_INVOKABLE void openCameraSettings();
    Q_INVOKABLE void openFocus();
    /// Whether a row of the edited apps only parts the others.
    Q_INVOKABLE bool isDivider(int row) const { return lists_.isDivider(row); }
    /// Makes one of the edited apps private, or no longer private.
    Q_INVOKABLE void toggleApp(const QString& bundleID);

Q_SIGNALS:
    void stateChanged();
    void microphoneChanged();
    void microphoneLevelChanged();
    void cameraChanged();
    /// A new photo is there.
    void photoTaken();
    void photoNewsChanged();
    void readyChanged();
    void appsChanged();
    void editingAppsChanged();
    void appQueryChanged();
    void foundAppChanged();
    void showingTestShareChanged();
    void settingsProblemChanged();

private:
    enum class SettingsPage { none, camera, focus };

    const CurtainCore::ReadinessState& state() const { return services_.coordinator.state(); }
    template <typename Key>
    QString text(Key key) const {
        return viewText(key, lang_);
    }
    bool isScoreIncomplete() const { return state().privateAppsUnknown > 0; }
    /// Whether the risk would be called low, and apps that were not counted may raise it.
    bool isRiskOpen() const;
    CurtainCore::ReadinessStatus privateAppsMark() const;
    void readState();
    void readCamera();
    void readMicrophone();
    void readReady();
    void setMissingPage(SettingsPage page);
    QString problemWith(SettingsPage page) const;

    Services services_;
    std::string lang_;
    ViewTexts texts_;
    MeetingReadinessActions actions_;
    PrivateAppLists lists_;
    MicrophoneRow microphone_;
    bool showsRisk_ = true;
    bool showingTestShare_ = false;
    SettingsPage missingPage_ = SettingsPage::none;
    bool wasReady_ = false;
    std::shared_ptr<const Platform::Picture> photo_;
    PhotoNews photoNews_ = PhotoNews::none;
};

} // namespace Curtain
