#pragma once

#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusConnection>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace LinuxPlatform {

/// Outside a sandbox every program may use the devices that its user may open. Inside one the portal asks the
/// user about cameras, once in the life of this object; where it cannot be asked, the sandbox itself lets the
/// program use a camera, or does not show it. Of microphones the sandbox decides alone: the portal refuses
/// the question to programs inside of it.
class LinuxMediaAuthorization : public Platform::MediaAuthorization {
public:
    /// `queue` outlives this object. `mayUseCameras` says whether the user may open cameras, which are
    /// restricted otherwise; without it, he may. It is asked each time.
    LinuxMediaAuthorization(QDBusConnection sessionBus, Platform::MainQueue& queue, bool isSandboxed,
                            std::function<bool()> mayUseCameras = nullptr);

    static bool isThisProcessSandboxed();

    Platform::AuthorizationStatus status(Platform::MediaType type) override;
    /// Main thread only, as is the completion.
    void requestAccess(Platform::MediaType type, std::function<void(bool isGranted)> completion) override;

private:
    struct Access {
        Platform::AuthorizationStatus status = Platform::AuthorizationStatus::authorized;
        std::vector<std::function<void(bool isGranted)>> waiting;
        std::unique_ptr<PortalRequest> request;
    };

    void ask(Platform::MediaType type);
    void answered(Platform::MediaType type, Platform::AuthorizationStatus status);

    QDBusConnection sessionBus_;
    Platform::MainQueue& queue_;
    std::function<bool()> mayUseCameras_;
    std::map<Platform::MediaType, Access> accesses_;
};

} // namespace LinuxPlatform
