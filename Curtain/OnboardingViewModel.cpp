#include "Curtain/OnboardingViewModel.h"

#include "Curtain/HidingWording.h"
#include "Curtain/PlatformWording.h"
#include "Curtain/ViewText.h"
#include "core/Localizer.h"
#include "core/RawValue.h"

#include <QStringList>

#include <utility>

namespace Curtain {
namespace {

using CurtainCore::LocKey;
using CurtainCore::OnboardingStep;
using CurtainCore::PermissionKind;
using CurtainCore::PermissionStatus;
using Platform::AuthorizationStatus;
using Platform::MediaType;

} // namespace

OnboardingViewModel::OnboardingViewModel(const Services& services, std::string lang, OnboardingStep startAt)
    : services_(services),
      lang_(std::move(lang)),
      texts_(lang_),
      flow_(startAt),
      hidingWatch_(services.compatibilityProbe.hidingWatch(services.camera.mainQueue)) {
    hidingWatch_.onAnswer = [this] { lookAnew(); };
    // It may be switched on elsewhere too.
    hidingWatch_.isFollowed = [this] { return !compatibility_ || canSwitchExtensionOn(); };
    // Qt ends both with the model.
    connect(&services.cameraManager, &CameraPreviewManager::changed, this, &OnboardingViewModel::changed);
    connect(&services.micMonitor, &MicrophoneMonitor::changed, this, &OnboardingViewModel::changed);
}

void OnboardingViewModel::setLang(std::string lang) {
    if (lang != lang_) {
        lang_ = std::move(lang);
        texts_.setLang(lang_);
        Q_EMIT langChanged();
        Q_EMIT changed();
    }
}

void OnboardingViewModel::windowDidShow() {
    isClosed_ = false;
    if (canSwitchExtensionOn()) {
        compatibility_.reset();
    }
    if (!compatibility_) {
        preparation_ = services_.compatibilityProbe.prepare();
    }
    if (flow_.step() == OnboardingStep::compatibility()) {
        checkCompatibility();
    }
    startLiveAreaAgain();
}

void OnboardingViewModel::windowWillClose() {
    isClosed_ = true;
    preparation_ = {};
    hidingWatch_.end();
    services_.cameraManager.stop();
    services_.micMonitor.stop();
}

void OnboardingViewModel::sessionDidLock() {
    isLocked_ = true;
    if (!isClosed_) {
        services_.cameraManager.stop();
        services_.micMonitor.stop();
    }
}

void OnboardingViewModel::sessionDidUnlock() {
    if (std::exchange(isLocked_, false)) {
        startLiveAreaAgain();
    }
}

QString OnboardingViewModel::langText() const {
    return toQString(lang_);
}

bool OnboardingViewModel::isRightToLeft() const {
    return CurtainCore::Localizer::isRightToLeft(lang_);
}

QString OnboardingViewModel::page() const {
    switch (flow_.step().page()) {
    case OnboardingStep::Page::welcome:
        return QStringLiteral("welcome");
    case OnboardingStep::Page::compatibility:
        return QStringLiteral("compatibility");
    case OnboardingStep::Page::permission:
        return toQString(
            CurtainCore::rawValue(flow_.step().permissionKind().value_or(PermissionKind::desktop)));
    case OnboardingStep::Page::summary:
        return QStringLiteral("summary");
    }
    return {};
}

int OnboardingViewModel::stepIndex() const {
    return static_cast<int>(flow_.progress().index);
}

int OnboardingViewModel::stepCount() const {
    return static_cast<int>(flow_.progress().total);
}

bool OnboardingViewModel::isCompatibilityKnown() const {
    return compatibility_.has_value();
}

bool OnboardingViewModel::isCompatible() const {
    return compatibility_ && compatibility_->isCompatible();
}

bool OnboardingViewModel::hasCameraOrMicrophone() const {
    return compatibility_ && (compatibility_->hasCamera || compatibility_->hasMicrophone);
}

bool OnboardingViewModel::hasVideoApps() const {
    return compatibility_ && !compatibility_->videoAppNames.empty();
}

QString OnboardingViewModel::videoApps() const {
    QStringList names;
    if (compatibility_) {
        for (const auto& name : compatibility_->videoAppNames) {
            names.append(toQString(name));
        }
    }
    return names.join(QStringLiteral(" · "));
}

QString OnboardingViewModel::hidingObstacle() const {
    return hidingObstacle_ ? toQString(HidingWording::reason(*hidingObstacle_, lang_)) : QString();
}

QString OnboardingViewModel::hidingRemedy() const {
    return hidingObstacle_ ? toQString(HidingWording::remedy(*hidingObstacle_, lang_)) : QString();
}

bool OnboardingViewModel::canSwitchExtensionOn() const {
    return hidingObstacle_ == Platform::HidingObstacle::extensionOff;
}

bool OnboardingViewModel::isGranted() const {
    return currentStatus() == PermissionStatus::granted;
}

bool OnboardingViewModel::isDenied() const {
    return currentStatus() == PermissionStatus::denied;
}

bool OnboardingViewModel::isForbidden() const {
    return isDenied() && flow_.step().permissionKind() == PermissionKind::camera && isCameraForbidden_;
}

QString OnboardingViewModel::settingsProblem() const {
    return isSettingsPageMissing_ ? toQString(PlatformWording::string(PlatformKey::noPermissionPage, lang_))
                                  : QString();
}

QString OnboardingViewModel::deviceProblem() const {
    const auto kind = flow_.step().permissionKind();
    return kind ? problemOf(*kind) : QString();
}

QString OnboardingViewModel::problemOf(PermissionKind kind) const {
    // Before, nobody has looked for the device.
    if (statusOf(kind) != PermissionStatus::granted) {
        return {};
    }
    return kind == PermissionKind::microphone ? microphoneProblem()
           : kind == PermissionKind::camera   ? cameraProblem()
                                              : QString();
}

QString OnboardingViewModel::microphoneProblem() const {
    switch (services_.micMonitor.status()) {
    case MicStatus::noInputDevice:
        return toQString(PlatformWording::string(LocKey::micNoInput, lang_));
    case MicStatus::noPermission:
        return toQString(PlatformWording::string(LocKey::micAccessDenied, lang_));
    case MicStatus::unavailable:
        return toQString(PlatformWording::string(LocKey::notCheckedYet, lang_));
    default:
        return {};
    }
}

QString OnboardingViewModel::cameraProblem() const {
    switch (services_.cameraManager.status()) {
    case CameraStatus::noCameraFound:
        return toQString(PlatformWording::string(LocKey::noCameraFound, lang_));
    case CameraStatus::noPermission:
        return toQString(PlatformWording::string(LocKey::cameraNeedsAccess, lang_));
    case CameraStatus::unavailable:
        return toQString(PlatformWording::string(LocKey::notCheckedYet, lang_));
    default:
        return interruptionText(services_.cameraManager.interruption(), lang_);
    }
}

QString OnboardingViewModel::microphoneGap() const {
    return statusOf(PermissionKind::microphone) == PermissionStatus::denied
               ? toQString(PlatformWording::string(LocKey::micAccessDenied, lang_))
               : problemOf(PermissionKind::microphone);
}

QString OnboardingViewModel::cameraGap() const {
    return statusOf(PermissionKind::camera) == PermissionStatus::denied
               ? toQString(PlatformWording::string(LocKey::cameraNeedsAccess, lang_))
               : problemOf(PermissionKind::camera);
}

double OnboardingViewModel::level() const {
    return static_cast<double>(services_.micMonitor.level());
}

bool OnboardingViewModel::hasPreview() const {
    return services_.cameraManager.status() == CameraStatus::available;
}

bool OnboardingViewModel::isPreviewMirrored() const {
    return services_.cameraManager.mirrored();
}

QString OnboardingViewModel::desktopSummary() const {
    return toQString(PlatformWording::string(LocKey::wizSummaryDesktop, lang_))
        .replace(QStringLiteral("%@"), QString::number(desktopFileCount_));
}

void OnboardingViewModel::advance() {
    const auto before = flow_;
    flow_.advance();
    if (flow_ != before) {
        isSettingsPageMissing_ = false;
        Q_EMIT flowChanged();
        Q_EMIT changed();
    }
}

void OnboardingViewModel::checkCompatibility() {
    if (compatibility_) {
        return;
    }
    hidingObstacle_ = services_.compatibilityProbe.hidingObstacle();
    hidingWatch_.begin();
    if (hidingObstacle_ == Platform::HidingObstacle::notKnownYet) {
        Q_EMIT changed();
        return;
    }
    compatibility_ = services_.compatibilityProbe.run();
    if (!canSwitchExtensionOn()) {
        preparation_ = {};
    }
    if (compatibility_->isCompatible()) {
        hidingObstacle_.reset();
    }
    Q_EMIT changed();
}

void OnboardingViewModel::switchExtensionOn() {
    services_.compatibilityProbe.switchExtensionOn();
    lookAnew();
}

void OnboardingViewModel::lookAnew() {
    compatibility_.reset();
    checkCompatibility();
}

void OnboardingViewModel::requestCurrentPermission() {
    const auto kind = flow_.step().permissionKind();
    if (!kind) {
        return;
    }
    switch (*kind) {
    case PermissionKind::desktop:
        services_.desktopChecker.requestAccess(lifetime_.weak([this] { desktopAnswered(); }));
        return;
    case PermissionKind::microphone:
        if (services_.authorization.status(MediaType::audio) == AuthorizationStatus::notDetermined) {
            services_.micMonitor.requestPermission(lifetime_.weak([this] { microphoneAnswered(); }));
        } else {
            microphoneAnswered();
        }
        return;
    case PermissionKind::camera:
        if (services_.authorization.status(MediaType::video) == AuthorizationStatus::notDetermined) {
            CameraPreviewManager::requestPermission(services_.camera,
                                                    lifetime_.weak([this] { cameraAnswered(); }));
        } else {
            cameraAnswered();
        }
        return;
    }
}

void OnboardingViewModel::lookAgain() {
    const auto isGrantedMeanwhile = [this](PermissionKind kind, MediaType type) {
        return statusOf(kind) == PermissionStatus::denied &&
               services_.authorization.status(type) == AuthorizationStatus::authorized;
    };
    if (isGrantedMeanwhile(PermissionKind::microphone, MediaType::audio)) {
        microphoneAnswered();
    }
    if (isGrantedMeanwhile(PermissionKind::camera, MediaType::video)) {
        cameraAnswered();
    }
}

void OnboardingViewModel::openSystemSettings() {
    isSettingsPageMissing_ = !services_.urlOpener.open(Platform::SettingsLink::privacyAndSecurity);
    Q_EMIT changed();
}

void OnboardingViewModel::finish() {
    // A copy, since finishing may put another action in its place.
    const auto action = onFinish;
    action();
}

void OnboardingViewModel::close() {
    onClose();
}

void OnboardingViewModel::desktopAnswered() {
    desktopFileCount_ = services_.desktopChecker.fileCount();
    setStatus(PermissionKind::desktop, PermissionStatus::granted);
}

void OnboardingViewModel::microphoneAnswered() {
    startLiveArea(PermissionKind::microphone);
    // Not the camera's rule: here everything but a refusal counts.
    const auto answer = services_.authorization.status(MediaType::audio);
    const bool isRefused = answer == AuthorizationStatus::restricted || answer == AuthorizationStatus::denied;
    setStatus(PermissionKind::microphone, isRefused ? PermissionStatus::denied : PermissionStatus::granted);
}

void OnboardingViewModel::cameraAnswered() {
    const auto answer = services_.authorization.status(MediaType::video);
    const bool isGranted = answer == AuthorizationStatus::authorized;
    isCameraForbidden_ = answer == AuthorizationStatus::restricted;
    setStatus(PermissionKind::camera, isGranted ? PermissionStatus::granted : PermissionStatus::denied);
    if (isGranted) {
        startLiveArea(PermissionKind::camera);
    }
}

void OnboardingViewModel::setStatus(PermissionKind kind, PermissionStatus status) {
    status_[kind] = status;
    Q_EMIT changed();
}

std::optional<PermissionStatus> OnboardingViewModel::statusOf(PermissionKind kind) const {
    const auto found = status_.find(kind);
    return found == status_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<PermissionStatus> OnboardingViewModel::currentStatus() const {
    const auto kind = flow_.step().permissionKind();
    return kind ? statusOf(*kind) : std::nullopt;
}

void OnboardingViewModel::startLiveArea(PermissionKind kind) {
    // An answer may come after the window has closed, and nobody would see that the camera is on.
    if (isClosed_ || isLocked_) {
        return;
    }
    if (kind == PermissionKind::microphone) {
        services_.micMonitor.start();
    } else if (kind == PermissionKind::camera) {
        services_.cameraManager.start(std::nullopt);
    }
}

void OnboardingViewModel::startLiveAreaAgain() {
    if (const auto kind = flow_.step().permissionKind();
        kind && currentStatus() == PermissionStatus::granted) {
        startLiveArea(*kind);
    }
}

} // namespace Curtain
