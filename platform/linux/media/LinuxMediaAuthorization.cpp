#include "platform/linux/media/LinuxMediaAuthorization.h"

#include <QVariant>

#include <filesystem>
#include <system_error>
#include <utility>

namespace LinuxPlatform {

using Platform::AuthorizationStatus;
using Platform::MediaType;

namespace {

AuthorizationStatus statusAfter(PortalRequest::Outcome outcome) {
    using Outcome = PortalRequest::Outcome;
    switch (outcome) {
    case Outcome::no:
        return AuthorizationStatus::denied;
    case Outcome::noAnswer:
    case Outcome::departed:
        // The user may be asked again.
        return AuthorizationStatus::notDetermined;
    case Outcome::yes:
    case Outcome::notAsked:
    case Outcome::silent:
        break;
    }
    return AuthorizationStatus::authorized;
}

} // namespace

LinuxMediaAuthorization::LinuxMediaAuthorization(QDBusConnection sessionBus, Platform::MainQueue& queue,
                                                 bool isSandboxed, std::function<bool()> mayUseCameras)
    : sessionBus_(std::move(sessionBus)),
      queue_(queue),
      mayUseCameras_(std::move(mayUseCameras)) {
    // No portal asks about microphones: a sandbox has the sound server's socket, or has not.
    accesses_[MediaType::audio].status = AuthorizationStatus::authorized;
    accesses_[MediaType::video].status =
        isSandboxed ? AuthorizationStatus::notDetermined : AuthorizationStatus::authorized;
}

bool LinuxMediaAuthorization::isThisProcessSandboxed() {
    std::error_code error;
    return std::filesystem::exists("/.flatpak-info", error);
}

AuthorizationStatus LinuxMediaAuthorization::status(MediaType type) {
    const auto status = accesses_.at(type).status;
    const bool isForbidden = type == MediaType::video && status == AuthorizationStatus::authorized &&
                             mayUseCameras_ && !mayUseCameras_();
    return isForbidden ? AuthorizationStatus::restricted : status;
}

void LinuxMediaAuthorization::requestAccess(MediaType type, std::function<void(bool isGranted)> completion) {
    auto& access = accesses_.at(type);
    if (access.status != AuthorizationStatus::notDetermined) {
        completion(status(type) == AuthorizationStatus::authorized);
        return;
    }
    access.waiting.push_back(std::move(completion));
    if (!access.request) {
        ask(type);
    }
}

void LinuxMediaAuthorization::ask(MediaType type) {
    const auto answer = [this, type](PortalRequest::Outcome outcome, const QVariantMap& /*results*/) {
        answered(type, statusAfter(outcome));
    };
    accesses_.at(type).request = std::make_unique<PortalRequest>(
        sessionBus_, queue_,
        PortalRequest::Question{
            QStringLiteral("org.freedesktop.portal.Camera"), QStringLiteral("AccessCamera"), {}, {}},
        answer);
}

void LinuxMediaAuthorization::answered(MediaType type, AuthorizationStatus status) {
    auto& access = accesses_.at(type);
    access.status = status;
    // Kept until here: it is what is calling.
    const auto request = std::move(access.request);
    for (const auto& completion : std::exchange(access.waiting, {})) {
        completion(status == AuthorizationStatus::authorized);
    }
}

} // namespace LinuxPlatform
