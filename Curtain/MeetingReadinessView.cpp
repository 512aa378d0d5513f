#include "Curtain/MeetingReadinessView.h"

#include "Curtain/FileCount.h"
#include "Curtain/HidingWording.h"
#include "Curtain/NotificationChecker.h"
#include "Curtain/ViewText.h"
#include "core/Localizer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Curtain {
namespace {

using CurtainCore::LocKey;
using CurtainCore::ReadinessState;
using CurtainCore::ReadinessStatus;
using CurtainCore::RiskLevel;

QString statusName(ReadinessStatus status) {
    switch (status) {
    case ReadinessStatus::ok:
        return QStringLiteral("ok");
    case ReadinessStatus::warning:
        return QStringLiteral("warning");
    case ReadinessStatus::danger:
        return QStringLiteral("danger");
    case ReadinessStatus::unknown:
        return QStringLiteral("unknown");
    }
    return {};
}

bool isBad(ReadinessStatus status) {
    return status == ReadinessStatus::warning || status == ReadinessStatus::danger;
}

QString riskColour(RiskLevel risk) {
    switch (risk) {
    case RiskLevel::low:
        return QStringLiteral("green");
    case RiskLevel::medium:
    case RiskLevel::high:
        return QStringLiteral("orange");
    case RiskLevel::veryHigh:
        return QStringLiteral("red");
    }
    return {};
}

QString keyName(CurtainCore::LocKey key) {
    return toQString(CurtainCore::rawValue(key));
}

QVariantMap shareLine(const QString& key, const QString& text, const QString& tone) {
    return {{QStringLiteral("key"), key}, {QStringLiteral("text"), text}, {QStringLiteral("tone"), tone}};
}

bool isSevere(const CurtainCore::ReadinessIssue& issue) {
    return issue.severity == ReadinessStatus::danger;
}

} // namespace

MeetingReadinessView::MeetingReadinessView(const Services& services, std::string lang,
                                           MeetingReadinessActions actions)
    : services_(services),
      lang_(std::move(lang)),
      texts_(lang_),
      actions_(std::move(actions)),
      lists_({services.store, services.workspace, services.catalog}, services.locale.preferredLanguageCode()),
      microphone_(services.mic) {
    lists_.onPresenceChange = [this] { Q_EMIT appsChanged(); };
    connect(&services_.coordinator, &ReadinessCoordinator::stateChanged, this,
            &MeetingReadinessView::readState);
    connect(&services_.camera, &CameraPreviewManager::changed, this, &MeetingReadinessView::readCamera);
    connect(&services_.mic, &MicrophoneMonitor::changed, this, &MeetingReadinessView::readMicrophone);
    connect(&services_.camera, &CameraPreviewManager::photoFailed, this,
            [this] { tellOfPhoto(PhotoNews::notTaken); });
    connect(&services_.camera, &CameraPreviewManager::findingChanged, this, [this] {
        if (photoNews_ == PhotoNews::notTaken) {
            tellOfPhoto(PhotoNews::none);
        }
    });
    photo_ = services_.camera.capturedPhoto();
    showsRisk_ = services_.store.load().showEmbarrassmentScore;
    wasReady_ = isReady();
    lists_.fill();
}

bool MeetingReadinessView::isRightToLeft() const {
    return CurtainCore::Localizer::isRightToLeft(lang_);
}

QString MeetingReadinessView::capsuleText() const {
    if (std::ranges::any_of(state().issues, isSevere)) {
        return text(LocKey::sharingExposes);
    }
    const auto tone = capsuleTone();
    return text(tone == "orange" ? LocKey::needsAttention
                : tone == "gray" ? LocKey::readyForCall
                                 : LocKey::youAreReady);
}

QString MeetingReadinessView::capsuleTone() const {
    const auto& now = state();
    if (std::ranges::any_of(now.issues, isSevere)) {
        // The sentence is a warning, whatever the score.
        return now.risk == RiskLevel::low ? riskColour(RiskLevel::medium) : riskColour(now.risk);
    }
    // The level comes and goes with every word that is spoken; the checklist's row stays.
    const auto isMicrophoneOut = microphone_.mark() == ReadinessStatus::danger;
    const std::array rows{now.camera, isMicrophoneOut ? ReadinessStatus::danger : now.microphone,
                          now.notifications, now.desktop, privateAppsMark()};
    if (!now.issues.empty() || isPrivacyModeInVain() || std::ranges::any_of(rows, isBad)) {
        return QStringLiteral("orange");
    }
    return std::ranges::count(rows, ReadinessStatus::unknown) > 0 ? QStringLiteral("gray")
                                                                  : QStringLiteral("green");
}

bool MeetingReadinessView::isPrivacyModeAutomatic() const {
    return isPrivacyModeOn() && services_.coordinator.isPrivacyModeAutomatic();
}

bool MeetingReadinessView::isPrivacyModeInVain() const {
    return isPrivacyModeOn() && !canHideApps();
}

bool MeetingReadinessView::canHideApps() const {
    const auto obstacle = services_.system.hidingObstacle();
    return !obstacle || obstacle == Platform::HidingObstacle::notKnownYet;
}

bool MeetingReadinessView::canHideMore() const {
    return canHideApps() && hasPrivateApps() &&
           (!isPrivacyModeOn() || lists_.isAny(PrivateAppVisibility::visible));
}

QString MeetingReadinessView::hideProblem() const {
    if (!canHideApps()) {
        return hidingObstacle();
    }
    return hasPrivateApps() ? QString() : text(LocKey::addPrivateAppsHint);
}

bool MeetingReadinessView::canFix() const {
    const auto isOpen = [&](CurtainCore::LocKey key) {
        return std::ranges::count(state().issues, key, &CurtainCore::ReadinessIssue::key) > 0;
    };
    return canHideApps() || isOpen(CurtainCore::LocKey::notifications) ||
           (isOpen(CurtainCore::LocKey::desktop) && services_.store.load().hideFinderWithFixEverything);
}

QString MeetingReadinessView::hidingObstacle() const {
    const auto obstacle = services_.system.hidingObstacle();
    return obstacle ? toQString(HidingWording::reason(*obstacle, lang_)) : QString();
}

bool MeetingReadinessView::isRiskOpen() const {
    return isScoreIncomplete() && state().risk == RiskLevel::low;
}

QString MeetingReadinessView::scoreGap() const {
    if (!isScoreIncomplete()) {
        return isPrivacyModeInVain() ? text(PlatformKey::privacyModeInVain) : QString();
    }
    const bool areSomeCounted = state().privateApps == ReadinessStatus::danger;
    return text(areSomeCounted ? PlatformKey::somePrivateAppsNotCounted : PlatformKey::privateAppsNotCounted);
}

QString MeetingReadinessView::riskLabel() const {
    if (isRiskOpen()) {
        return text(PlatformKey::cannotTell);
    }
    static constexpr std::array keys{LocKey::riskLow, LocKey::riskMedium, LocKey::riskHigh,
                                     LocKey::riskVeryHigh};
    return text(keys.at(static_cast<std::size_t>(state().risk)));
}

QString MeetingReadinessView::riskTone() const {
    return isRiskOpen() ? QStringLiteral("gray") : riskColour(state().risk);
}

QVariantList MeetingReadinessView::issues() const {
    QVariantList all;
    for (const auto& issue : state().issues) {
        all.push_back(shareLine(keyName(issue.key), text(issue.key),
                                isSevere(issue) ? QStringLiteral("red") : QStringLiteral("orange")));
    }
    return all;
}

QVariantList MeetingReadinessView::shareLines() const {
    auto all = issues();
    if (isPrivacyModeInVain()) {
        all.push_back(shareLine(QStringLiteral("privacyModeInVain"), text(PlatformKey::privacyModeInVain),
                                QStringLiteral("orange")));
    }
    if (isScoreIncomplete()) {
        all.push_back(shareLine(QStringLiteral("cannotTell"), text(PlatformKey::privateAppsUnseen),
                                QStringLiteral("gray")));
    }
    if (all.isEmpty() && !canHideApps()) {
        all.push_back(shareLine(QStringLiteral("hidingObstacle"), hidingObstacle(), QStringLiteral("gray")));
    }
    if (all.isEmpty()) {
        all.push_back(shareLine({}, text(LocKey::youAreReady), QStringLiteral("green")));
    }
    return all;
}

QString MeetingReadinessView::cameraStatus() const {
    return statusName(state().camera);
}

QString MeetingReadinessView::cameraDetail() const {
    switch (state().camera) {
    case ReadinessStatus::ok:
        return text(LocKey::looksGood);
    case ReadinessStatus::unknown:
        return text(LocKey::notCheckedYet);
    default:
        return text(LocKey::attentionNeeded);
    }
}

QString MeetingReadinessView::notificationsStatus() const {
    return statusName(state().notifications);
}

QString MeetingReadinessView::notificationsDetail() const {
    switch (state().notifications) {
    case ReadinessStatus::ok:
        return text(LocKey::notifHandled);
    case ReadinessStatus::unknown:
        return text(LocKey::notCheckedYet);
    default:
        return text(LocKey::notificationsMayAppear);
    }
}

QString MeetingReadinessView::desktopStatus() const {
    return statusName(state().desktop);
}

QString MeetingReadinessView::desktopDetail() const {
    return state().desktopHidden ? text(LocKey::desktopHidden)
                                 : toQString(filesOnDesktop(state().desktopFileCount, lang_));
}

/// That none is seen is no protection where none could be hidden.
ReadinessStatus MeetingReadinessView::privateAppsMark() const {
    const auto status = state().privateApps;
    return status == ReadinessStatus::ok && !canHideApps() ? ReadinessStatus::unknown : status;
}

QString MeetingReadinessView::privateAppsStatus() const {
    return statusName(privateAppsMark());
}

QString MeetingReadinessView::privateAppsDetail() const {
    const auto mark = privateAppsMark();
    if (mark == ReadinessStatus::ok) {
        return text(LocKey::youAreReady);
    }
    if (mark == ReadinessStatus::unknown &&
        (isScoreIncomplete() || !services_.workspace.knowsEveryWindow())) {
        return text(PlatformKey::cannotTell);
    }
    return QString::number(lists_.count(PrivateAppVisibility::visible)) + ' ' +
           text(LocKey::privateAppsVisible);
}

QString MeetingReadinessView::microphoneStatus() const {
    return statusName(microphone_.mark());
}

QString MeetingReadinessView::microphoneDetail() const {
    return microphone_.detail(lang_);
}

QString MeetingReadinessView::echoLabel() const {
    return microphone_.echoLabel(lang_);
}

QString MeetingReadinessView::cameraState() const {
    switch (services_.camera.status()) {
    case CameraStatus::available:
        return QStringLiteral("available");
    case CameraStatus::noPermission:
        return QStringLiteral("noPermission");
    case CameraStatus::noCameraFound:
        return QStringLiteral("noCameraFound");
    case CameraStatus::unavailable:
        break;
    }
    return QStringLiteral("unavailable");
}

QString MeetingReadinessView::cameraProblem() const {
    return interruptionText(services_.camera.interruption(), lang_);
}

bool MeetingReadinessView::canTakePhoto() const {
    return services_.camera.status() == CameraStatus::available && !services_.camera.interruption();
}

QString MeetingReadinessView::photoNews() const {
    static constexpr std::array keys{
        PlatformKey::photoCopied,          PlatformKey::photoNotCopied,          PlatformKey::photoSaved,
        PlatformKey::photoNotSavedNoSpace, PlatformKey::photoNotSavedNotAllowed, PlatformKey::photoNotSaved,
        PlatformKey::photoNotTaken};
    return photoNews_ == PhotoNews::none ? QString()
                                         : text(keys.at(static_cast<std::size_t>(photoNews_) - 1));
}

QString MeetingReadinessView::photoNewsTone() const {
    const bool isGood = photoNews_ == PhotoNews::copied || photoNews_ == PhotoNews::saved;
    return isGood ? QStringLiteral("green") : QStringLiteral("orange");
}

void MeetingReadinessView::tellOfPhoto(PhotoNews news) {
    photoNews_ = news;
    Q_EMIT photoNewsChanged();
}

void MeetingReadinessView::takePhoto() {
    tellOfPhoto(PhotoNews::none);
    actions_.onTakePhoto();
}

void MeetingReadinessView::discardPhoto() {
    tellOfPhoto(PhotoNews::none);
    services_.camera.clearCapturedPhoto();
}

bool MeetingReadinessView::isReady() const {
    const auto& now = state();
    const std::array rows{now.camera, microphone_.mark(), now.notifications, now.desktop, privateAppsMark()};
    return services_.camera.status() == CameraStatus::available && now.issues.empty() &&
           !isScoreIncomplete() && canHideApps() && std::ranges::none_of(rows, isBad);
}

bool MeetingReadinessView::isCameraForbidden() const {
    return services_.camera.isForbidden();
}

QStringList MeetingReadinessView::visibilities() const {
    static constexpr std::array names{std::pair{PrivateAppVisibility::visible, "visible"},
                                      std::pair{PrivateAppVisibility::hidden, "hidden"},
                                      std::pair{PrivateAppVisibility::notRunning, "notRunning"},
                                      std::pair{PrivateAppVisibility::notInstalled, "notInstalled"},
                                      std::pair{PrivateAppVisibility::unknown, "cannotTell"}};
    QStringList found;
    for (const auto& [visibility, name] : names) {
        if (lists_.isAny(visibility)) {
            found.push_back(QString::fromLatin1(name));
        }
    }
    return found;
}

void MeetingReadinessView::setEditingApps(bool editing) {
    if (editing != lists_.isEditing()) {
        lists_.setEditing(editing);
        setAppQuery({});
        lists_.fill();
        Q_EMIT editingAppsChanged();
    }
}

void MeetingReadinessView::setAppQuery(const QString& query) {
    if (query != lists_.query()) {
        lists_.setQuery(query);
        Q_EMIT foundAppChanged();
        Q_EMIT appQueryChanged();
    }
}

void MeetingReadinessView::setShowingTestShare(bool showing) {
    if (showing != showingTestShare_) {
        showingTestShare_ = showing;
        Q_EMIT showingTestShareChanged();
    }
}

QString MeetingReadinessView::cameraSettingsProblem() const {
    return problemWith(SettingsPage::camera);
}

QString MeetingReadinessView::focusProblem() const {
    return problemWith(SettingsPage::focus);
}

QString MeetingReadinessView::problemWith(SettingsPage page) const {
    return missingPage_ == page ? text(PlatformKey::noSettingsPage) : QString();
}

void MeetingReadinessView::rest() {
    services_.coordinator.disconnect(this);
    services_.camera.disconnect(this);
    services_.mic.disconnect(this);
}

void MeetingReadinessView::didOpen() {
    const CurtainCore::PreferencesStore::Action action(services_.store);
    setEditingApps(false);
    setMissingPage(SettingsPage::none);
    tellOfPhoto(PhotoNews::none);
    setShowingTestShare(services_.store.load().runTestShareModeOnOpen);
    readState();
}

QVariantList MeetingReadinessView::cameras() const {
    QVariantList all;
    for (const auto& camera : CameraPreviewManager::availableCameras(services_.capture)) {
        all.push_back(
            QVariantMap{{QStringLiteral("id"), QString::fromStdString(camera.id)},
                        {QStringLiteral("name"), shownName(camera.name, camera.id)},
                        {QStringLiteral("isActive"), services_.camera.activeDeviceID() == camera.id}});
    }
    return all;
}

void MeetingReadinessView::openCameraSettings() {
    const auto isOpen = services_.urlOpener.open(Platform::SettingsLink::cameraPrivacy);
    setMissingPage(isOpen ? SettingsPage::none : SettingsPage::camera);
}

void MeetingReadinessView::openFocus() {
    const auto isOpen = NotificationChecker::openFocusSettings(services_.urlOpener);
    setMissingPage(isOpen ? SettingsPage::none : SettingsPage::focus);
}

void MeetingReadinessView::toggleApp(const QString& bundleID) {
    if (const auto app = lists_.editedApp(bundleID.toStdString())) {
        services_.coordinator.toggleTargetApp(*app);
    }
}

void MeetingReadinessView::readState() {
    showsRisk_ = services_.store.load().showEmbarrassmentScore;
    lists_.fill();
    Q_EMIT stateChanged();
    readReady();
}

void MeetingReadinessView::readCamera() {
    Q_EMIT cameraChanged();
    if (photo_ != services_.camera.capturedPhoto()) {
        photo_ = services_.camera.capturedPhoto();
        if (photo_) {
            Q_EMIT photoTaken();
        }
    }
    readReady();
}

void MeetingReadinessView::readMicrophone() {
    const auto markBefore = microphone_.mark();
    const bool isOnlyLevel = !microphone_.look();
    Q_EMIT microphoneLevelChanged();
    if (isOnlyLevel) {
        return;
    }
    Q_EMIT microphoneChanged();
    if (markBefore != microphone_.mark()) {
        Q_EMIT stateChanged();
        readReady();
    }
}

void MeetingReadinessView::readReady() {
    if (const auto ready = isReady(); ready != wasReady_) {
        wasReady_ = ready;
        Q_EMIT readyChanged();
    }
}

void MeetingReadinessView::setMissingPage(SettingsPage page) {
    if (page != missingPage_) {
        missingPage_ = page;
        Q_EMIT settingsProblemChanged();
    }
}

} // namespace Curtain
